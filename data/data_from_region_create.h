// How dFrom Region Create samples a region into a table, shared with the
// command line, which writes a region to .csv or .json as this tool's table.
#pragma once
#include <memory>
#include <string>
#include "data/table.h"

class KRegion3D;

struct KRegionSampling {
    std::string positionName = "position";  // read, compatible with Vector3
    std::string valueName = "value";        // written, compatible with Float
    bool replaceAll = false;                // else the present value is the base
    float value = 1.0f;                     // where the region is full
    float outside = 0.0f;                   // the base under "Replace All"
};

// The input's clone with each element of the value channel moved toward
// `value` by the region's value at its position. A missing value channel is
// made (behind the others, of the positions' count) and turns `replaceAll` on.
std::unique_ptr<KDataTable> KSampleRegion(const KDataTable* input, const KRegion3D* region, KRegionSampling& how);
