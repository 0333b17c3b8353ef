#include "app/values.h"
#include <cerrno>
#include <cstdlib>
#include "host/errors.h"
#include "host/image.h"
#include "host/imageio.h"

namespace app {

using host::BadInput;
using host::DataType;

const host::Registration& ResolveTool(const std::string& name)
{
    auto found = host::Registry::Get().Lookup(name);
    if (found.empty()) throw BadInput("unknown tool: " + name + " (see: zelvarine tools)");
    if (found.size() > 1) {
        std::string list;
        for (auto* r : found) list += (list.empty() ? "" : ", ") + r->name + " (" + r->className + ")";
        throw BadInput("ambiguous short name " + name + ": " + list);
    }
    return *found.front();
}

namespace {
// A tool's name as it pastes into a shell.
std::string Quoted(const std::string& name) { return "\"" + name + "\""; }
}  // namespace

host::Input* ResolveInput(host::Operator& op, const std::string& what, const std::string& id)
{
    if (host::Input* in = op.FindInput(id); in && !in->attrs.nest) return in;
    throw BadInput("unknown input " + id + " of " + what + " (see: zelvarine info " +
                   Quoted(op.registration->name) + ")");
}

std::string DescribeType(const host::Input& input)
{
    switch (input.attrs.dataType) {
    case DataType::Number: return "a number";
    case DataType::Point: return "a point x,y";
    case DataType::Text: return "a text";
    case DataType::Image: return "an image";
    case DataType::Mask: return "a mask image";
    case DataType::LookUpTable: return "a curve";
    case DataType::Custom: return "a " + host::TypeName(DataType::Custom, input.attrs.typeId) + " value";
    }
    return "a value";
}

namespace {

bool ParseNumber(const std::string& text, double& out)
{
    if (text.empty()) return false;
    char* end = nullptr;
    out = std::strtod(text.c_str(), &end);
    return end && *end == '\0';
}

}  // namespace

bool ParseWhole(const std::string& text, int64_t& out)
{
    const size_t digits = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    if (text.size() <= digits || text.find_first_not_of("0123456789", digits) != std::string::npos) return false;
    errno = 0;
    out = std::strtoll(text.c_str(), nullptr, 10);
    return errno == 0;
}

host::Image* ConvertDepth(host::Image* image, int depth)
{
    if (depth == 0 || (depth == 2) == image->IsFloat()) return image;
    host::ImageSpec spec = image->Spec();
    spec.depth = depth == 2 ? host::DepthFloat32 : host::DepthInt16;
    host::Image* out = host::Image::New(spec);
    for (int y = 0; y < image->Height(); ++y)
        for (int i = 0; i < 4 * image->Width(); ++i) {
            if (depth == 2) {
                out->RowF(y)[i] = static_cast<float>(image->RowW(y)[i]) * 1.5259022e-05f;
            } else {
                const double v = static_cast<double>(image->RowF(y)[i] * 65535.0f);
                out->RowW(y)[i] = static_cast<uint16_t>(v <= 0.0 ? 0 : v >= 65535.0 ? 65535 : v);
            }
        }
    image->Recycle();
    return out;
}

host::Value ParseValue(const host::Input& input, const std::string& where, const std::string& text,
                       int depth)
{
    auto wrong = [&]() -> BadInput {
        return BadInput(where + " expects " + DescribeType(input) + ", got '" + text + "'");
    };
    switch (input.attrs.dataType) {
    case DataType::Number: {
        double v;
        if (!ParseNumber(text, v)) throw wrong();
        return host::Conform(input, host::MakeNumber(v), where);
    }
    case DataType::Point: {
        const size_t comma = text.find(',');
        double x, y;
        if (comma == std::string::npos || !ParseNumber(text.substr(0, comma), x) ||
            !ParseNumber(text.substr(comma + 1), y))
            throw wrong();
        return host::Conform(input, host::MakePoint(x, y), where);
    }
    case DataType::Text:
        return host::MakeText(text);
    case DataType::Image:
    case DataType::Mask:
        return std::make_shared<host::ImageValue>(ConvertDepth(host::ReadImage(text), depth), false);
    case DataType::Custom: {
        // A value of a kind's own comes from a file that kind reads (a shape
        // from .svg), or is written out as JSON where the kind reads that.
        const host::ParameterClass* wanted = host::FindParameterClass(input.attrs.typeId);
        if (wanted && wanted->parse && !text.empty() && (text[0] == '{' || text[0] == '[')) {
            try {
                return wanted->parse(text, ".");
            } catch (const BadInput& e) {
                throw BadInput(where + ": " + e.what());
            }
        }
        const host::ParameterClass* kind = host::FindParameterClassReading(host::FileExtension(text));
        if (kind && kind->typeId == input.attrs.typeId) return kind->read(text);
        std::string list;
        const std::vector<std::string> none, &read = !wanted ? none : wanted->readExtensions.empty() ? wanted->extensions : wanted->readExtensions;
        for (const std::string& e : read) list += (list.empty() ? "" : ", ") + e;
        if (wanted && wanted->parse && list.empty())
            throw BadInput(where + " takes " + DescribeType(input) + " written as JSON, got '" + text + "'");
        if (!wanted || !wanted->read || list.empty())
            throw BadInput(where + " takes " + DescribeType(input) + ", which cannot be given on the command line");
        throw BadInput(where + " takes " + DescribeType(input) + " from a " + list + " file, got '" + text + "'");
    }
    default:
        throw BadInput(where + " takes " + DescribeType(input) + ", which cannot be given on the command line");
    }
}

}  // namespace app
