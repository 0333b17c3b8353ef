#include "framework/numeric.h"
#include <cmath>

namespace {
thread_local uint32_t randState = 1;
}

void KSrand(uint32_t seed) { randState = seed; }

int32_t KRand()
{
    randState = randState * 1103515245u + 12345u;
    return static_cast<int32_t>((randState / 65536u) % 32768u);
}

float KRandom(float range) { return static_cast<float>(KRand()) * range * kRandScale; }

float KRandomRange(float lo, float hi)
{
    return static_cast<float>(KRand()) * (hi - lo) * kRandScale + lo;
}

int32_t KRandomInt(int32_t n) { return KRand() % n; }

// An empty range draws nothing and gives its bound.
int32_t KRandomIntRange(int32_t lo, int32_t hi) { return hi == lo ? lo : lo + KRand() % (hi - lo); }

void KRandomSeed(int32_t seed)
{
    KSrand(static_cast<uint32_t>(seed));
    for (int32_t i = seed % 97; i > 0; --i) KRand();
}

float KTimeNoise(float time, int32_t seed)
{
    double s = static_cast<double>(time) * 10.0 + seed;
    KRandomSeed(static_cast<int32_t>(static_cast<uint32_t>(s)));
    return static_cast<float>(KRand()) * kRandScale;
}

float KRamp(float x, float a, float b, int32_t shape)
{
    if (a > b) return x <= a ? 1.0f : 0.0f;  // a reversed ramp is a hard step at a
    if (a == b) return x >= a ? 1.0f : 0.0f;
    if (x <= a) return 0.0f;
    if (x >= b) return 1.0f;
    float t = (x - a) / (b - a);
    switch (shape) {
    case 1: return t * t;
    case 2: return 1.0f - (1.0f - t) * (1.0f - t);
    case 3: return (3.0f - 2.0f * t) * t * t;
    default: return t;
    }
}

bool KQuadraticRoots(float a, float b, float c, float& r1, float& r2)
{
    float d = b * b - a * 4.0f * c;
    if (!(d >= 0.0f)) return false;
    float s = std::sqrt(d);
    r1 = (s - b) * (0.5f / a);
    r2 = (-b - s) * (0.5f / a);
    return true;
}
