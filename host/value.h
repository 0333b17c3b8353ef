// Values that cross between tools: numbers, points, texts, images, masks,
// look-up tables, and the plug-in's own parameter classes by type id.
#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace host {

class Image;

enum class DataType { Number, Point, Text, Image, Mask, LookUpTable, Custom };

const char* DataTypeName(DataType type);

class Parameter {
public:
    virtual ~Parameter() = default;
    virtual DataType Type() const = 0;
    // The registered type id of a custom class; empty for the host's own.
    virtual std::string TypeId() const { return {}; }
    // A readable form for terminals and dumps.
    virtual std::string ToText() const = 0;
};

using Value = std::shared_ptr<const Parameter>;

class Number : public Parameter {
public:
    explicit Number(double v) : value(v) {}
    DataType Type() const override { return DataType::Number; }
    std::string ToText() const override;
    double value;
};

class Point : public Parameter {
public:
    Point(double px, double py) : x(px), y(py) {}
    DataType Type() const override { return DataType::Point; }
    std::string ToText() const override;
    double x, y;
};

class Text : public Parameter {
public:
    explicit Text(std::string v) : value(std::move(v)) {}
    DataType Type() const override { return DataType::Text; }
    std::string ToText() const override { return value; }
    std::string value;
};

// Holds one use of a host image for as long as the value lives.
class ImageValue : public Parameter {
public:
    explicit ImageValue(Image* image, bool takeUse = true);
    ~ImageValue() override;
    ImageValue(const ImageValue&) = delete;
    ImageValue& operator=(const ImageValue&) = delete;
    DataType Type() const override { return DataType::Image; }
    std::string ToText() const override;
    Image* image;
};

// A curve through control points over x in 0..1, sampled into a table on request.
class LookUpTable : public Parameter {
public:
    explicit LookUpTable(std::vector<std::pair<double, double>> points);
    DataType Type() const override { return DataType::LookUpTable; }
    std::string ToText() const override;
    double At(double x) const;  // linear between points, flat beyond the ends
    // `count` 16-bit entries of the curve (0..1 scaled to 0..65535) over x0..x1.
    std::vector<uint16_t> Table(int count, double x0, double x1) const;
    std::vector<std::pair<double, double>> points;
};

Value MakeNumber(double v);
Value MakePoint(double x, double y);
Value MakeText(std::string v);
Value MakeImage(Image* image);  // takes a new use of the image

// Choices a writer may be given beside the file, by name: "slice" -> "z=0.3".
using WriteOptions = std::map<std::string, std::string>;

// What the host knows of a plug-in's own parameter class: the name `info`
// shows for it, and the files a value of it can be written to.
struct ParameterClass {
    std::string typeId;
    std::string name;
    std::vector<std::string> extensions;  // lower case, with the dot: ".svg"
    // Writes the value to `path` in the format of `extension` (one of the
    // above; the path itself may be a temporary name, with the extension kept),
    // or throws naming what went wrong.
    std::function<void(const Parameter& value, const std::string& path, const std::string& extension,
                       const WriteOptions& options)> write;
    // The names of the options `write` reads; others are no choice of this class.
    std::vector<std::string> options;
    // Reads a file of one of the extensions into a value, or throws BadInput
    // naming the file and what is wrong; empty for a class that reads no files.
    std::function<Value(const std::string& path)> read;
    // The extensions `read` takes, when fewer than those written; empty: all.
    std::vector<std::string> readExtensions;
    // Reads a value written out in JSON (a flow file's value, a command line's
    // text); files it names are taken from `folder`. Throws BadInput naming
    // what is wrong. Empty for a class that is only connected.
    std::function<Value(const std::string& json, const std::string& folder)> parse;
    // The value a fraction `f` of the way from `a` to `b`, for keys; throws
    // BadInput when the two cannot be blended. Empty: values of the class are not keyed.
    std::function<Value(const Parameter& a, const Parameter& b, double f)> interpolate;
};
void RegisterParameterClass(const ParameterClass& info);
const ParameterClass* FindParameterClass(const std::string& typeId);
// The class that reads or writes files with this extension (lower case, with
// the dot), or null.
const ParameterClass* FindParameterClassReading(const std::string& extension);
const ParameterClass* FindParameterClassWriting(const std::string& extension);
// The extension of a path, lower case with the dot.
std::string FileExtension(const std::string& path);
// A value type as users read it: a custom class by its registered name.
std::string TypeName(DataType type, const std::string& typeId);

}  // namespace host
