// The range generator: lets a set of items (data elements, polygons, copies)
// appear one after another. From a count and the "Range" controls it gives each
// item a start, a length and two eased progress values, c at the range's
// minimum and d at its maximum.
#pragma once
#include <cstdint>
#include <vector>
#include "framework/parameter.h"

struct KRangeItem {
    float start = 0.0f, length = 0.0f, c = 0.0f, d = 0.0f;
};

struct KRange {
    // Declares the "Range" group on the record's own fields.
    void Declare(KParameterList& list);
    // One item per element; n below 1 gives none and draws no numbers.
    std::vector<KRangeItem> Generate(int32_t n) const;

    KRange2 span{0.0f, 1.0f};  // "Range Min", "Range Max"
    int32_t seed = 0;
    bool oneByOne = false;
    int32_t type = 0;  // "Forward", "Outside In", "Random"
    int32_t seeds = 1;
    int32_t offset = 0;  // not a control: seed positions stay where they fall
    float seedsJitter = 0.0f;
    float overlap = 0.0f;
    float length = 1.0f;
    float lengthJitter = 0.0f;  // not a control of this group
    int32_t curve = 0;  // "Linear", "Ease In", "Ease Out", "Ease In/Out"
};

// Progress of x from a to b along the curve: 0 before a, 1 from b on; a
// reversed or empty span is a step at a.
float KRangeEase(float x, float a, float b, int32_t curve);
