// GrowField: how far each pixel lies from a set of seeds, walking only through
// the pixels a channel range leaves open. Distances are in pixels, diagonal
// steps counting the square root of two; a pixel no seed reaches holds -1.
#pragma once
#include <cstdint>
#include <vector>
#include "framework/parameter.h"

class KImage;

class KGrowField {
public:
    // Pixels whose channel value (0 to 3, or any other for the luminance
    // 0.299, 0.587, 0.114) lies within `walls` are closed.
    KGrowField(const KImage& source, int32_t channel, KRange2 walls);

    // A seed at pixel (x, y) whose distances start from `offset`; seeds on a
    // closed pixel or outside the picture reach nothing.
    void Seed(int32_t x, int32_t y, float offset);
    // Spreads the seeds' distances over every pixel they reach.
    void Grow();

    float At(int32_t x, int32_t y) const { return distance[size_t(y) * width + x]; }

    int32_t width = 0, height = 0;
    std::vector<float> distance;

private:
    std::vector<uint8_t> open;
    std::vector<int32_t> seeds;
};
