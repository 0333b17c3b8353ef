#include "app/flowfile.h"
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <nlohmann/json.hpp>
#include "app/values.h"
#include "host/errors.h"
#include "host/imageio.h"
#include "host/limits.h"

namespace app {

namespace fs = std::filesystem;
using host::BadInput;
using host::DataType;
using json = nlohmann::ordered_json;

namespace {

std::string Where(const std::string& tool, const std::string& id)
{
    return "input " + id + " of tool " + tool;
}

std::string Kind(const json& v)
{
    if (v.is_number()) return "a number";
    if (v.is_string()) return "a text";
    if (v.is_array()) return "a list";
    if (v.is_object()) return "an object";
    if (v.is_boolean()) return "true or false";
    return "null";
}

std::string Resolved(const FlowFile& ff, const std::string& file)
{
    if (file.empty() || fs::path(file).is_absolute()) return file;
    return (fs::path(ff.folder) / file).lexically_normal().string();
}

double Time(const std::string& key, const std::string& where)
{
    char* end = nullptr;
    double t = std::strtod(key.c_str(), &end);
    if (key.empty() || *end) throw BadInput(where + ": key time '" + key + "' is not a number");
    host::CheckTime(t, where + ": key time");
    return t;
}

// The class of a custom input whose values may be written out in the flow.
const host::ParameterClass* WrittenClass(const host::Input& in)
{
    if (in.attrs.dataType != DataType::Custom) return nullptr;
    const host::ParameterClass* c = host::FindParameterClass(in.attrs.typeId);
    return c && c->parse ? c : nullptr;
}

host::Value Parsed(const host::ParameterClass& c, const json& v, const FlowFile& ff, const std::string& where)
{
    try {
        return c.parse(v.dump(), ff.folder);
    } catch (const BadInput& e) {
        throw BadInput(where + ": " + e.what());
    }
}

void SetInput(FlowFile& ff, host::Flow::Node& node, const std::string& id, const json& v)
{
    host::Input* in = ResolveInput(*node.op, "tool " + node.name, id);
    const std::string where = Where(node.name, id);
    const DataType type = in->attrs.dataType;
    auto expect = [&](const std::string& got) {
        return BadInput(where + " expects " + DescribeType(*in) + ", got " + got);
    };
    if (v.is_object() && v.contains("from")) {
        if (!v["from"].is_string()) throw BadInput(where + ": \"from\" names a tool as text");
        std::string from = v["from"].get<std::string>(), outId;
        host::Flow::Node* src = ff.flow.Find(from);
        if (!src) {
            const size_t dot = from.rfind('.');
            if (dot != std::string::npos) {
                outId = from.substr(dot + 1);
                from = from.substr(0, dot);
                src = ff.flow.Find(from);
            }
        }
        if (!src) throw BadInput(where + " is connected to a missing tool: " + from);
        const host::Output* out = outId.empty() ? src->op->MainOutput() : src->op->FindOutput(outId);
        if (!out) throw BadInput(where + ": tool " + from + " has no output " + (outId.empty() ? "" : outId));
        const bool image = type == DataType::Image || type == DataType::Mask;
        const bool fits = in->attrs.anyValue ? true
                        : image ? out->dataType == DataType::Image
                        : type == DataType::Custom ? out->typeId == in->attrs.typeId
                                                   : out->dataType == type;
        if (!fits)
            throw BadInput(where + " expects " + DescribeType(*in) + ", but " + from + "." + out->id +
                           " gives " + host::TypeName(out->dataType, out->typeId));
        ff.flow.Connect(node, in, *src, out);
        return;
    }
    if (v.is_object() && v.contains("keys")) {
        const json& keys = v["keys"];
        if (!keys.is_object() || keys.empty()) throw BadInput(where + ": \"keys\" maps times to values");
        if (type == DataType::Number) {
            std::map<double, double> k;
            for (auto& [t, val] : keys.items()) {
                if (!val.is_number()) throw expect(Kind(val) + " at key " + t);
                k[Time(t, where)] = host::ConformNumber(*in, val.get<double>(), where + " at key " + t);
            }
            ff.flow.SetKeys(node, in, k);
        } else if (type == DataType::Point) {
            std::map<double, std::pair<double, double>> k;
            for (auto& [t, val] : keys.items()) {
                if (!val.is_array() || val.size() != 2 || !val[0].is_number() || !val[1].is_number())
                    throw expect(Kind(val) + " at key " + t);
                host::Conform(*in, host::MakePoint(val[0].get<double>(), val[1].get<double>()), where + " at key " + t);
                k[Time(t, where)] = {val[0].get<double>(), val[1].get<double>()};
            }
            ff.flow.SetPointKeys(node, in, k);
        } else if (const host::ParameterClass* c = WrittenClass(*in); c && c->interpolate) {
            // Each key a value of the class; neighbours must blend, which is
            // checked now rather than at the frame that needs it.
            std::map<double, host::Value> k;
            for (auto& [t, val] : keys.items()) k[Time(t, where)] = Parsed(*c, val, ff, where + " at key " + t);
            for (auto a = k.begin(), b = std::next(a); b != k.end(); ++a, ++b) {
                try {
                    c->interpolate(*a->second, *b->second, 0.5);
                } catch (const BadInput& e) {
                    throw BadInput(where + ": keys " + host::Number(a->first).ToText() + " and " +
                                   host::Number(b->first).ToText() + " do not blend: " + e.what());
                }
            }
            ff.flow.SetValueKeys(node, in, k);
        } else {
            throw BadInput(where + " takes " + DescribeType(*in) + ", which cannot be keyed");
        }
        return;
    }
    switch (type) {
    case DataType::Number:
        if (!v.is_number() && !v.is_boolean()) throw expect(Kind(v));
        return ff.flow.SetValue(node, in, host::Conform(*in, host::MakeNumber(v.get<double>()), where));
    case DataType::Point:
        if (!v.is_array() || v.size() != 2 || !v[0].is_number() || !v[1].is_number()) throw expect(Kind(v));
        return ff.flow.SetValue(node, in,
                                host::Conform(*in, host::MakePoint(v[0].get<double>(), v[1].get<double>()), where));
    case DataType::Text: {
        if (!v.is_string()) throw expect(Kind(v));
        std::string text = v.get<std::string>();
        if (in->attrs.control == host::Control::File) text = Resolved(ff, text);
        return ff.flow.SetValue(node, in, host::MakeText(text));
    }
    default:
        if (const host::ParameterClass* c = WrittenClass(*in))
            return ff.flow.SetValue(node, in, Parsed(*c, v, ff, where));
        throw BadInput(where + " takes " + DescribeType(*in) + ": connect it with {\"from\": \"tool\"}");
    }
}

}  // namespace

std::string FileOf(const host::Flow::Node& node)
{
    host::Input* in = node.op->FindInput("File");
    if (!in) return {};
    auto* t = dynamic_cast<const host::Text*>(in->ValueAt(0).get());
    return t ? t->value : std::string();
}

std::unique_ptr<FlowFile> LoadFlowFile(const std::string& path)
{
    host::CheckReadableFile(path, host::kMaxFlowFileBytes, "flow file");
    std::ifstream file(path);
    if (!file) throw BadInput("cannot read flow file " + path);
    json root;
    try {
        root = json::parse(file);
    } catch (const json::parse_error& e) {
        throw BadInput("flow file " + path + " is not valid JSON: byte " + std::to_string(e.byte));
    } catch (const json::exception& e) {
        const std::string what = e.what();  // "[json.exception.out_of_range.406] number overflow ..."
        throw BadInput("flow file " + path + ": " + what.substr(what.find("] ") + 2));
    }
    auto ff = std::make_unique<FlowFile>();
    ff->path = path;
    ff->folder = fs::path(path).parent_path().string();
    if (!root.is_object()) throw BadInput(path + ": a flow is one JSON object");
    for (auto& [key, _] : root.items())
        if (key != "frames" && key != "tools") throw BadInput(path + ": unknown key \"" + key + "\"");
    if (root.contains("frames")) {
        const json& f = root["frames"];
        if (!f.is_array() || f.size() != 2 || !f[0].is_number_integer() || !f[1].is_number_integer())
            throw BadInput(path + ": \"frames\" is [first, last], two whole numbers");
        // Beyond 64 bits the numbers are unsigned; as doubles they still compare.
        auto at = [&](int i) {
            const double v = f[i].get<double>();
            return static_cast<int64_t>(std::clamp(v, -1e18, 1e18));
        };
        ff->frames = FrameRange(at(0), at(1), path + ": \"frames\"");
    }
    if (!root.contains("tools") || !root["tools"].is_object() || root["tools"].empty())
        throw BadInput(path + ": \"tools\" names at least one tool");
    const json& tools = root["tools"];

    // All tools first, so that connections may point at tools named later.
    for (auto& [name, spec] : tools.items()) {
        if (!spec.is_object() || !spec.contains("tool") || !spec["tool"].is_string())
            throw BadInput("tool " + name + ": needs \"tool\" with a tool name");
        const host::Registration& reg = ResolveTool(spec["tool"].get<std::string>());
        host::Flow::Node& node = ff->flow.Add(name, reg);
        if (reg.className == "Saver") ff->savers.push_back(&node);
        if (reg.className == "Loader") ff->loaders.push_back(&node);
        // Files first: a Loader's file decides the type of value it gives.
        if (spec.contains("file")) {
            if (!node.op->FindInput("File") || !spec["file"].is_string())
                throw BadInput("tool " + name + ": \"file\" is a file name, for a Loader or Saver");
            SetInput(*ff, node, "File", spec["file"]);
        }
    }
    for (auto& [name, spec] : tools.items()) {
        host::Flow::Node& node = *ff->flow.Find(name);
        for (auto& [key, value] : spec.items()) {
            if (key == "tool" || key == "file") continue;
            if (key == "inputs") {
                if (!value.is_object()) throw BadInput("tool " + name + ": \"inputs\" is an object");
                for (auto& [id, v] : value.items()) SetInput(*ff, node, id, v);
            } else {
                throw BadInput("tool " + name + ": unknown key \"" + key + "\"");
            }
        }
    }
    for (host::Flow::Node* n : ff->loaders)
        if (FileOf(*n).empty()) throw BadInput("Loader " + n->name + ": no file given");
    for (host::Flow::Node* n : ff->savers) {
        if (FileOf(*n).empty()) throw BadInput("Saver " + n->name + ": no file given");
        if (!ff->flow.ConnectionOf(n->op->FindInput("Image")))
            throw BadInput("Saver " + n->name + ": its Image input is not connected");
    }
    if (std::string cycle = ff->flow.FindCycle(); !cycle.empty())
        throw BadInput("cycle in flow through tool " + cycle);
    // Files the tools read themselves are checked now, before any frame renders
    // (the host checks them again as it hands them over).
    for (auto& node : ff->flow.Nodes()) {
        if (node->registration->hostTool) continue;
        for (auto& in : node->op->Inputs()) {
            auto* t = dynamic_cast<const host::Text*>(in->constant.get());
            if (in->attrs.control == host::Control::File && in->attrs.visible && t && !t->value.empty() &&
                !ff->flow.ConnectionOf(in.get()))
                host::CheckReadableFile(t->value, host::kMaxTextFileBytes, "file", Where(node->name, in->id));
        }
    }
    return ff;
}

std::pair<int, int> FrameRange(int64_t first, int64_t last, const std::string& what)
{
    const int64_t most = static_cast<int64_t>(host::kMaxWhole);
    for (int64_t frame : {first, last})
        if (frame < -most || frame > most)
            throw BadInput(what + ": frame " + std::to_string(frame) + " is outside -16777216..16777216");
    if (first > last) throw BadInput(what + ": the first frame " + std::to_string(first) + " is after the last " +
                                     std::to_string(last));
    if (last - first + 1 > host::kMaxFramesPerRender)
        throw BadInput(what + ": " + std::to_string(last - first + 1) + " frames; a render makes at most " +
                       std::to_string(host::kMaxFramesPerRender));
    return {static_cast<int>(first), static_cast<int>(last)};
}

void CheckFrames(const FlowFile& ff, int first, int last)
{
    std::set<std::string> inputs;
    for (host::Flow::Node* n : ff.loaders) {
        const std::string pattern = FileOf(*n);
        const bool sequence = host::IsSequence(pattern);
        for (int frame = first; frame <= (sequence ? last : first); ++frame) {
            const std::string file = host::FramePath(pattern, frame);
            std::error_code ec;
            if (sequence && !fs::exists(file, ec))
                throw BadInput("missing frame " + std::to_string(frame) + " of " + pattern + ": " + file);
            if (host::FindParameterClassReading(host::FileExtension(file)))
                host::CheckReadableFile(file, host::kMaxFlowFileBytes, "file", "Loader " + n->name);
            else
                host::CheckImageFile(file);
            inputs.insert(fs::weakly_canonical(file).string());
        }
    }
    std::map<std::string, const host::Flow::Node*> written;
    for (host::Flow::Node* n : ff.savers) {
        const std::string pattern = FileOf(*n);
        // An image goes to an image file; a value of a kind's own to that kind's files.
        const host::Flow::Connection* from = ff.flow.ConnectionOf(n->op->FindInput("Image"));
        const host::ParameterClass* kind =
            from && from->output->dataType == DataType::Custom ? host::FindParameterClass(from->output->typeId) : nullptr;
        if (kind) {
            const std::string ext = host::FileExtension(pattern);
            if (!kind->write || std::find(kind->extensions.begin(), kind->extensions.end(), ext) == kind->extensions.end()) {
                std::string list;
                for (const std::string& e : kind->extensions) list += (list.empty() ? "" : ", ") + e;
                throw BadInput("Saver " + n->name + ": a " + kind->name + " value is written to " +
                               (list.empty() ? "no file" : list) + ", not " + pattern);
            }
        } else if (from && from->output->dataType != DataType::Image) {
            throw BadInput("Saver " + n->name + ": " + from->from->name + " gives " +
                           host::TypeName(from->output->dataType, from->output->typeId) + ", which is not saved to a file");
        } else if (!host::IsImageFileName(pattern)) {
            throw BadInput("Saver " + n->name + ": not an image file name: " + pattern);
        }
        const fs::path folder = fs::path(pattern).has_parent_path() ? fs::path(pattern).parent_path() : ".";
        if (!fs::is_directory(folder))
            throw BadInput("Saver " + n->name + ": cannot write " + pattern + ": no folder " + folder.string());
        if (first != last && !host::IsSequence(pattern))
            throw BadInput("Saver " + n->name + " would write " + pattern + " over again on each of " +
                           std::to_string(last - first + 1) +
                           " frames: put # in its file name for the frame number (name.####.exr)");
        for (int frame = first; frame <= last; ++frame) {
            const std::string file = host::FramePath(pattern, frame);
            const std::string canonical = fs::weakly_canonical(file).string();
            if (inputs.count(canonical)) throw BadInput("Saver " + n->name + " would overwrite its input " + file);
            if (auto [at, fresh] = written.emplace(canonical, n); !fresh)
                throw BadInput("Savers " + at->second->name + " and " + n->name + " would both write " + file);
        }
    }
}

}  // namespace app
