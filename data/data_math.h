// dMath, and dSelect which is the same tool under a second name: a Float
// channel "result" computed from up to eight channels, each offset and
// scaled, combined left to right by the operation behind each value.
#pragma once
#include <array>
#include <string>
#include "data/effect_data.h"

class KEffectDataMath : public KEffectData {
public:
    KEffectDataMath();
    std::unique_ptr<KDataTable> Compute() override;

private:
    struct Value {
        std::string name;
        float add = 0.0f, multiply = 1.0f;
        bool override = false;
    };
    std::string resultName = "result";
    std::array<Value, 8> values;
    std::array<int32_t, 7> operations{};
};
