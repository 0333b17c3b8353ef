// Procedural noise functions of the generator tools, kept apart so that other
// tools (a noise region in space, for one) can ask them for values too.
//
// Everything is single precision on purpose: the hashes take the fraction of
// a large multiple of a sine, so their values rest on that precision. Several
// functions keep irregularities of their own (a common weight for all corners,
// odd offsets, swapped roles in a hash); they shape the look of the patterns
// and are part of each function's contract.
#pragma once
#include <cstdint>

struct KNoise2 {
    float x = 0.0f, y = 0.0f;
};
struct KNoise3 {
    float x = 0.0f, y = 0.0f, z = 0.0f;
};
struct KNoise4 {
    float v[4] = {0.0f, 0.0f, 0.0f, 0.0f};
};

// The turns that a time gives the simplex noises, worked out once for all the
// lattice points of one sample.
struct KNoiseTime {
    explicit KNoiseTime(float time);
    float t;
    float hashCos, hashSin;      // -0.7 t: the gradients of the 2D hash
    float offsetCos, offsetSin;  // 0.5 t: the offsets of the 2D simplex
    float flowCos, flowSin;      // -0.5 t: the flow hash
};

// v - floor(v).
float KNoiseFract(float v);
// (3 - 2a) a a with a clamped to 0..1; a non-number counts as 0.
float KNoiseSmooth(float a);

// Gradient of a lattice cell, turned by -0.7 t.
KNoise2 KSimplexHash2(KNoise2 c, const KNoiseTime& t);
// Two-dimensional simplex noise whose offsets turn with 0.5 t; one weight,
// the sum of the squared corner falloffs, multiplies all three corners.
float KSimplex2(KNoise2 p, const KNoiseTime& t);
// Hash of a lattice point of the flow noise, its x and y turned by -0.5 t.
KNoise3 KSimplexFlowHash(KNoise3 c, const KNoiseTime& t);
// Three-dimensional simplex noise of the fluid pattern.
float KSimplexFlow3(KNoise3 v, const KNoiseTime& t);
// Two octaves of flow noise over a plane plus a broad two-dimensional layer.
float KFluidField(float x, float y, const KNoiseTime& t);

inline KNoise2 KSimplexHash2(KNoise2 c, float t) { return KSimplexHash2(c, KNoiseTime(t)); }
inline float KSimplex2(KNoise2 p, float t) { return KSimplex2(p, KNoiseTime(t)); }
inline KNoise3 KSimplexFlowHash(KNoise3 c, float t) { return KSimplexFlowHash(c, KNoiseTime(t)); }
inline float KSimplexFlow3(KNoise3 v, float t) { return KSimplexFlow3(v, KNoiseTime(t)); }
inline float KFluidField(float x, float y, float t) { return KFluidField(x, y, KNoiseTime(t)); }
// A random offset per lattice point, smoothly blended: components in -0.5..0.5.
KNoise2 KVectorNoise2(KNoise2 p);
// Smooth value noise in 0..1.
float KValueNoise2(KNoise2 p);
// Smooth value noise of another hash, in -1..1.
float KSignedValueNoise2(KNoise2 p);
// Classic three-dimensional simplex noise, about -1..1; 0 on lattice points.
float KSimplex3(KNoise3 v);
// Sum of `octaves` halving layers of lattice noise that repeats every
// `period` lattice cells; modes 1 and 4 drift the point by mode * 50 * t / octave.
float KPeriodicTurbulence(KNoise2 p, float t, float size, int32_t mode, int32_t octaves,
                          KNoise2 period);
// Five octaves of interfering waves; `noise` sets the wave length, `detail`
// how far the lattice offsets bend it.
float KWaterField(float x, float y, float t, float noise, float detail);
// Smoothed cell noise: the smooth-minimum distance to the moving feature points
// of the cells around p, and three colour components carried along with it.
KNoise4 KSmoothVoronoi(KNoise2 p, float t, float smoothness);
