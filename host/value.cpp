#include "host/value.h"
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include "host/image.h"

namespace host {

const char* DataTypeName(DataType type)
{
    switch (type) {
    case DataType::Number: return "Number";
    case DataType::Point: return "Point";
    case DataType::Text: return "Text";
    case DataType::Image: return "Image";
    case DataType::Mask: return "Mask";
    case DataType::LookUpTable: return "LookUpTable";
    case DataType::Custom: return "Custom";
    }
    return "?";
}

namespace {
std::string Shortest(double v)
{
    // Most numbers are single-precision values widened: print them as such.
    const float f = static_cast<float>(v);
    if (static_cast<double>(f) == v) {
        for (int precision = 6; precision <= 9; ++precision) {
            char trial[64];
            std::snprintf(trial, sizeof trial, "%.*g", precision, f);
            if (std::strtof(trial, nullptr) == f) return trial;
        }
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    for (int precision = 6; precision <= 17; ++precision) {
        char trial[64];
        std::snprintf(trial, sizeof trial, "%.*g", precision, v);
        if (std::strtod(trial, nullptr) == v) return trial;
    }
    return buf;
}
}  // namespace

std::string Number::ToText() const { return Shortest(value); }

std::string Point::ToText() const { return Shortest(x) + "," + Shortest(y); }

ImageValue::ImageValue(Image* img, bool takeUse) : image(img)
{
    if (image && takeUse) image->Use();
}

ImageValue::~ImageValue()
{
    if (image) image->Recycle();
}

std::string ImageValue::ToText() const
{
    if (!image) return "no image";
    return std::to_string(image->Width()) + "x" + std::to_string(image->Height()) +
           (image->IsFloat() ? " float" : " int16");
}

LookUpTable::LookUpTable(std::vector<std::pair<double, double>> p) : points(std::move(p))
{
    std::sort(points.begin(), points.end());
}

double LookUpTable::At(double x) const
{
    if (points.empty()) return x;
    if (x <= points.front().first) return points.front().second;
    if (x >= points.back().first) return points.back().second;
    auto hi = std::upper_bound(points.begin(), points.end(), std::make_pair(x, -1e300));
    auto lo = hi - 1;
    double span = hi->first - lo->first;
    double t = span > 0.0 ? (x - lo->first) / span : 0.0;
    return lo->second + (hi->second - lo->second) * t;
}

std::vector<uint16_t> LookUpTable::Table(int count, double x0, double x1) const
{
    std::vector<uint16_t> table(std::max(count, 0));
    for (int i = 0; i < count; ++i) {
        double x = count > 1 ? x0 + (x1 - x0) * i / (count - 1) : x0;
        double v = std::clamp(At(x), 0.0, 1.0);
        table[i] = static_cast<uint16_t>(v * 65535.0 + 0.5);
    }
    return table;
}

std::string LookUpTable::ToText() const
{
    std::string s = "curve";
    for (auto& [x, y] : points) s += " " + Shortest(x) + ":" + Shortest(y);
    return s;
}

Value MakeNumber(double v) { return std::make_shared<Number>(v); }
Value MakePoint(double x, double y) { return std::make_shared<Point>(x, y); }
Value MakeText(std::string v) { return std::make_shared<Text>(std::move(v)); }
Value MakeImage(Image* image) { return std::make_shared<ImageValue>(image); }

namespace {
std::map<std::string, ParameterClass>& Classes()
{
    static std::map<std::string, ParameterClass> classes;
    return classes;
}
}  // namespace

void RegisterParameterClass(const ParameterClass& info) { Classes()[info.typeId] = info; }

const ParameterClass* FindParameterClass(const std::string& typeId)
{
    auto it = Classes().find(typeId);
    return it == Classes().end() ? nullptr : &it->second;
}

namespace {
const ParameterClass* FindByExtension(const std::string& extension, bool reading)
{
    for (auto& [id, c] : Classes()) {
        if (reading ? !c.read : !c.write) continue;
        const std::vector<std::string>& known = reading && !c.readExtensions.empty() ? c.readExtensions : c.extensions;
        if (std::find(known.begin(), known.end(), extension) != known.end()) return &c;
    }
    return nullptr;
}
}  // namespace

const ParameterClass* FindParameterClassReading(const std::string& extension)
{
    return FindByExtension(extension, true);
}

const ParameterClass* FindParameterClassWriting(const std::string& extension)
{
    return FindByExtension(extension, false);
}

std::string FileExtension(const std::string& path)
{
    const size_t slash = path.find_last_of('/'), dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
    std::string ext = path.substr(dot);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

std::string TypeName(DataType type, const std::string& typeId)
{
    if (typeId.empty()) return DataTypeName(type);
    const ParameterClass* c = FindParameterClass(typeId);
    return c && !c->name.empty() ? c->name : typeId;
}

}  // namespace host
