// Numeric helpers shared by every tool: the random generator, ramps, roots.
#pragma once
#include <cstdint>

// The generator is the C standard's reference rand (15 bits, RAND_MAX 32767),
// kept per thread so that a job that seeds and draws gets the same numbers
// whichever thread runs it and however many threads there are.
constexpr int32_t kRandMax = 32767;
constexpr float kRandScale = 3.051851e-05f;  // close to 1 / 32767

void KSrand(uint32_t seed);
int32_t KRand();

float KRandom(float range);
float KRandomRange(float lo, float hi);
int32_t KRandomInt(int32_t n);
int32_t KRandomIntRange(int32_t lo, int32_t hi);
void KRandomSeed(int32_t seed);
float KTimeNoise(float time, int32_t seed);

float KRamp(float x, float a, float b, int32_t shape);
bool KQuadraticRoots(float a, float b, float c, float& r1, float& r2);
