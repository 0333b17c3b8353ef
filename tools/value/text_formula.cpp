// Formula: a text template in which the names of nine number, nine point and
// nine text inputs ("n1", "p1x", "p1y", "t1", ...) are replaced by their values.
// Replacement is literal and in a fixed order, numbers first and texts last.
#include <cmath>
#include <cstdio>
#include <string>
#include "framework/effect.h"
#include "framework/registration.h"

namespace {

constexpr int32_t kSlots = 9;

// Replaces every occurrence of `from`, going on behind each replacement.
void ReplaceAll(std::string& s, const std::string& from, const std::string& to)
{
    for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
        s.replace(at, from.size(), to);
}

double Power10(int32_t n) { return std::pow(10.0, n); }

}  // namespace

class KEffectTextFormula : public KEffectText {
public:
    KEffectTextFormula()
    {
        inputList.BeginNest("Number In", "GrNu"_id, 0);
        for (int32_t n = 1; n <= kSlots; ++n) {
            const std::string label = "n" + std::to_string(n);
            inputList.AddSlider(&numbers[n - 1], 0.0f, label.c_str(), "NuIm"_id + n, 0, 0.0, 1.0);
        }
        inputList.EndNest();
        inputList.BeginNest("Point In", "GrPo"_id, 0);
        for (int32_t n = 1; n <= kSlots; ++n) {
            const std::string label = "p" + std::to_string(n);
            inputList.AddPoint(&points[n - 1], {0.0f, 0.0f}, label.c_str(), "PoIm"_id + n, 0, 0);
        }
        inputList.EndNest();
        inputList.BeginNest("Text In", "GrTI"_id, 0);
        for (int32_t n = 1; n <= kSlots; ++n) {
            const std::string label = "t" + std::to_string(n);
            inputList.AddTextEdit(&texts[n - 1], "", label.c_str(), "TeIm"_id + n, 0, 2);
        }
        inputList.EndNest();
        inputList.BeginNest("Text Out", "GrTO"_id, 0);
        inputList.AddTextEdit(&text, "", "Text", "Text"_id, 0, 10);
        inputList.AddSlider(&numberPrecision, 2, "Precision number values", "TePN"_id, 0, 0, 6);
        inputList.AddSlider(&numberDigits, 1, "Minimum number value digits before dot", "TeDN"_id,
                            0, 1, 6);
        inputList.AddCheckbox(&numberZeros, false, "Leading zero's (number values)", "TeZN"_id, 0,
                              1);
        inputList.AddCheckbox(&numberSpace, false, "Add space if not negative (number values)",
                              "TeNM"_id, 0, 1);
        inputList.AddSlider(&pointPrecision, 2, "Precision point values", "TePP"_id, 0, 0, 6);
        inputList.AddSlider(&pointDigits, 1, "Minimum point value digits before dot", "TeDP"_id, 0,
                            1, 6);
        inputList.AddCheckbox(&pointZeros, false, "Leading zero's (point values)", "TeZP"_id, 0, 1);
        inputList.AddCheckbox(&pointSpace, false, "Add space if not negative (point values)",
                              "TePM"_id, 0, 1);
        inputList.EndNest();
        outputList.AddTextOutput(&output, "Output", 1, 0);
    }

    void FinishRender() override
    {
        std::string s = text;
        char name[8];
        for (int32_t n = 1; n <= kSlots; ++n) {
            std::snprintf(name, sizeof name, "n%d", n);
            ReplaceAll(s, name, Format(numbers[n - 1], numberPrecision, numberDigits, numberZeros,
                                       numberSpace));
        }
        for (int32_t n = 1; n <= kSlots; ++n) {
            std::snprintf(name, sizeof name, "p%dx", n);
            ReplaceAll(s, name, Format(points[n - 1].x, pointPrecision, pointDigits, pointZeros,
                                       pointSpace));
            std::snprintf(name, sizeof name, "p%dy", n);
            ReplaceAll(s, name, Format(points[n - 1].y, pointPrecision, pointDigits, pointZeros,
                                       pointSpace));
        }
        for (int32_t n = 1; n <= kSlots; ++n) {
            std::snprintf(name, sizeof name, "t%d", n);
            ReplaceAll(s, name, texts[n - 1]);
        }
        output = s;
    }

private:
    // The padding character follows the number setting for points too: the
    // tool has always read that one switch.
    std::string Format(float value, int32_t precision, int32_t digits, bool zeros,
                       bool space) const
    {
        const bool negative = value < 0.0f;
        if (zeros) value = std::fabs(value);
        const int32_t p = precision < 0 ? 0 : precision;
        char format[16];
        std::snprintf(format, sizeof format, "%%.%df", p);
        std::string s(static_cast<size_t>(std::snprintf(nullptr, 0, format, value)), '\0');
        std::snprintf(s.data(), s.size() + 1, format, value);
        const float d = static_cast<float>(Power10(p));
        const float f = std::floor(d * value + 0.5f);
        const double whole = std::fabs(std::trunc(f / d));
        for (int32_t i = 2; i <= digits; ++i)
            if (whole < Power10(i - 1)) s.insert(0, numberZeros ? "0" : " ");
        if (zeros && negative) s.insert(0, "-");
        if (!negative && space) s.insert(0, " ");
        return s;
    }

    float numbers[kSlots] = {};
    KPoint2 points[kSlots];
    std::string texts[kSlots];
    std::string text;
    int32_t numberPrecision = 2, numberDigits = 1;
    bool numberZeros = false, numberSpace = false;
    int32_t pointPrecision = 2, pointDigits = 1;
    bool pointZeros = false, pointSpace = false;
    std::string output;
};

ZV_TOOL(KEffectTextFormula, ZV_TextFormula);
