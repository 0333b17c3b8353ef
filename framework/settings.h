// What one render tells an effect and its process beside the parameters.
#pragma once
#include <cstdint>

class KImage;

struct KRenderSettings {
    float time = 0.0f;
    bool quick = false;
    int32_t depth = 1;  // 1 integer, 2 float
    int32_t colorSpace = 1;
    bool red = true, green = true, blue = true, alpha = true;
    bool preDivide = false;
    int32_t underSample = 1;
    int32_t superSampling = 1;
    float filterSize = 1.0f;
    int32_t filter = 1;
    int32_t edges = 0;
    float postBlur = 0.0f;  // set by an effect in Start; no control writes it
    bool multiThread = true;
    bool trails = false;
    float trailFade = 0.9f;
    bool prepared = false;
    KImage* warpMask = nullptr;
};
