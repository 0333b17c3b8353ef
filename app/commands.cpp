#include "app/commands.h"
#include <unistd.h>
#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include "app/flowfile.h"
#include "app/values.h"
#include "host/errors.h"
#include "host/image.h"
#include "host/imageio.h"
#include "host/limits.h"
#include "host/threads.h"

namespace app {

namespace fs = std::filesystem;
using host::BadInput;
using host::DataType;
using json = nlohmann::ordered_json;

namespace {

std::string Number(double v) { return host::Number(v).ToText(); }

std::string TypeName(const host::Input& in)
{
    return host::TypeName(in.attrs.dataType, in.attrs.typeId);
}

std::string DefaultText(const host::Input& in)
{
    if (in.attrs.defaultPoint) return Number(in.attrs.defaultPoint->first) + "," + Number(in.attrs.defaultPoint->second);
    if (in.attrs.defaultText) return "\"" + *in.attrs.defaultText + "\"";
    if (in.attrs.defaultNumber) return Number(*in.attrs.defaultNumber);
    return "";
}

std::string Limits(const host::Input& in)
{
    const auto& a = in.attrs;
    auto end = [](const std::optional<double>& hard, const std::optional<double>& soft) {
        if (hard) return Number(*hard) + "!";
        if (soft) return Number(*soft);
        return std::string();
    };
    std::string lo = end(a.hardMin, a.softMin), hi = end(a.hardMax, a.softMax);
    if (lo.empty() && hi.empty()) return "";
    return lo + ".." + hi;
}

void PrintTable(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<size_t> width;
    for (auto& r : rows)
        for (size_t i = 0; i < r.size(); ++i) {
            if (width.size() <= i) width.push_back(0);
            width[i] = std::max(width[i], r[i].size());
        }
    for (auto& r : rows) {
        std::string line;
        for (size_t i = 0; i < r.size(); ++i) {
            line += r[i];
            if (i + 1 < r.size()) line += std::string(width[i] - r[i].size() + 2, ' ');
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        std::cout << line << "\n";
    }
}

std::vector<const host::Registration*> SortedTools()
{
    std::vector<const host::Registration*> all;
    for (auto& r : host::Registry::Get().All()) all.push_back(&r);
    std::stable_sort(all.begin(), all.end(), [](auto* a, auto* b) {
        return a->category != b->category ? a->category < b->category : a->name < b->name;
    });
    return all;
}

// A progress line on a terminal: frames done, time per frame, time left.
class Progress {
public:
    // Shown for more than one frame, and only on a terminal.
    Progress(int total) : total_(total), shown_(total > 1 && isatty(STDERR_FILENO)), start_(Clock::now()) {}
    void Frame(int done)
    {
        if (!shown_) return;
        const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
        const double each = done ? elapsed / done : 0.0;
        const int width = 30, filled = total_ ? width * done / total_ : width;
        std::fprintf(stderr, "\r[%s%s] %d/%d frames  %.2f s/frame  %.1f s left ",
                     std::string(filled, '#').c_str(), std::string(width - filled, '.').c_str(), done,
                     total_, each, each * (total_ - done));
        std::fflush(stderr);
    }
    void Done()
    {
        if (shown_) std::fprintf(stderr, "\n");
    }

private:
    using Clock = std::chrono::steady_clock;
    int total_;
    bool shown_;
    Clock::time_point start_;
};

// Frames A or A-B as --frames gives them.
std::pair<int, int> ParseFrames(const std::string& text)
{
    // A lone frame, or A-B; the dash after a leading sign parts them.
    const size_t dash = text.find('-', 1);
    int64_t a = 0, b = 0;
    if (!ParseWhole(text.substr(0, dash), a) || (dash != std::string::npos && !ParseWhole(text.substr(dash + 1), b)))
        throw BadInput("--frames takes A or A-B, whole frame numbers, got '" + text + "'");
    return FrameRange(a, dash == std::string::npos ? a : b, "--frames " + text);
}

// --cache-mb: the frame cache's budget in bytes.
void SetCacheBudget(host::Flow& flow, const std::string& text)
{
    if (text.empty()) return;
    int64_t mb = 0;
    if (!ParseWhole(text, mb) || mb < 0 || mb > (int64_t(1) << 30))
        throw BadInput("--cache-mb takes a whole number of megabytes from 0, got '" + text + "'");
    flow.cacheBudget = uint64_t(mb) << 20;
}

}  // namespace

int ToolsCommand(bool asJson)
{
    auto tools = SortedTools();
    if (asJson) {
        json out = json::array();
        for (auto* r : tools)
            out.push_back({{"name", r->name}, {"class", r->className}, {"short", r->shortName},
                           {"category", r->category}, {"help", r->help}});
        std::cout << out.dump(2) << "\n";
        return 0;
    }
    std::vector<std::vector<std::string>> rows{{"NAME", "CLASS", "SHORT", "CATEGORY"}};
    for (auto* r : tools) rows.push_back({r->name, r->className, r->shortName, r->category});
    PrintTable(rows);
    return 0;
}

int InfoCommand(const std::string& name, bool asJson, bool all)
{
    const host::Registration& reg = ResolveTool(name);
    std::unique_ptr<host::Operator> op(host::CreateOperator(reg));
    auto listed = [&](const host::Input& in) { return !in.attrs.nest && (all || in.attrs.applies); };
    if (asJson) {
        json inputs = json::array(), outputs = json::array();
        for (auto& in : op->Inputs()) {
            if (!listed(*in)) continue;
            const auto& a = in->attrs;
            json j{{"id", in->id}, {"alias", in->alias}, {"name", in->label}, {"type", TypeName(*in)},
                   {"control", host::ControlName(a.control)}, {"page", in->page},
                   {"visible", a.visible}, {"slots", a.slots}, {"group", a.group}};
            if (a.defaultPoint) j["default"] = {a.defaultPoint->first, a.defaultPoint->second};
            else if (a.defaultText) j["default"] = *a.defaultText;
            else if (a.defaultNumber) j["default"] = *a.defaultNumber;
            if (a.softMin) j["softMin"] = *a.softMin;
            if (a.softMax) j["softMax"] = *a.softMax;
            if (a.hardMin) j["hardMin"] = *a.hardMin;
            if (a.hardMax) j["hardMax"] = *a.hardMax;
            if (!a.items.empty()) j["items"] = a.items;
            if (a.integer) j["integer"] = true;
            if (!a.applies) j["unused"] = true;
            inputs.push_back(j);
        }
        for (auto& out : op->Outputs())
            outputs.push_back({{"id", out->id},
                               {"type", host::TypeName(out->dataType, out->typeId)}});
        json tool{{"name", reg.name}, {"class", reg.className}, {"short", reg.shortName},
                  {"category", reg.category}, {"help", reg.help}, {"summary", op->summary},
                  {"inputs", inputs}, {"outputs", outputs}};
        std::cout << tool.dump(2) << "\n";
        return 0;
    }
    std::cout << reg.name << " (" << reg.className << ", " << reg.shortName << ") in " << reg.category << "\n";
    if (!reg.help.empty()) std::cout << reg.help << "\n";
    if (!op->summary.empty()) std::cout << op->summary << "\n";
    std::cout << "\nInputs\n";
    std::vector<std::vector<std::string>> rows{
        {"ID", "ALIAS", "NAME", "TYPE", "CONTROL", "DEFAULT", "RANGE", "PAGE", "NOTES"}};
    for (auto& in : op->Inputs()) {
        if (!listed(*in)) continue;
        const auto& a = in->attrs;
        std::string notes;
        if (!a.items.empty()) {
            for (size_t i = 0; i < a.items.size(); ++i) notes += (i ? ", " : "") + std::to_string(i) + " " + a.items[i];
        }
        if (!a.applies) notes += std::string(notes.empty() ? "" : "; ") + "unused";
        else if (!a.visible) notes += std::string(notes.empty() ? "" : "; ") + "hidden";
        if (a.slots > 1) notes += std::string(notes.empty() ? "" : "; ") + std::to_string(a.slots) + " slots";
        if (a.group >= 0) notes += std::string(notes.empty() ? "" : "; ") + "group " + std::to_string(a.group);
        std::string control = host::ControlName(a.control);
        if (a.integer) control += " (integer)";
        rows.push_back({in->id, in->alias, in->label, TypeName(*in), control, DefaultText(*in), Limits(*in), in->page, notes});
    }
    PrintTable(rows);
    std::cout << "\nOutputs\n";
    std::vector<std::vector<std::string>> outs{{"ID", "TYPE"}};
    for (auto& out : op->Outputs())
        outs.push_back({out->id, host::TypeName(out->dataType, out->typeId)});
    PrintTable(outs);
    return 0;
}

namespace {

int DepthChoice(const std::string& depth)
{
    if (depth.empty()) return 0;
    if (depth == "int16") return 1;
    if (depth == "float") return 2;
    throw BadInput("--depth takes int16 or float, got '" + depth + "'");
}

std::string Lower(std::string s)
{
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// An output goes to an existing folder and overwrites no input.
void CheckOutput(const std::string& output, const std::vector<std::string>& inputs)
{
    std::error_code ec;
    for (auto& in : inputs)
        if (fs::exists(in) && fs::equivalent(in, output, ec))
            throw BadInput("output " + output + " would overwrite the input " + in);
    const fs::path folder = fs::path(output).has_parent_path() ? fs::path(output).parent_path() : ".";
    if (!fs::is_directory(folder)) throw BadInput("cannot write " + output + ": no folder " + folder.string());
}

// Written under a temporary name in the same folder and renamed when complete:
// `write` fills the temporary file, and throws naming what went wrong.
void WriteWhole(const std::string& path, const std::function<void(const std::string&)>& write)
{
    const fs::path target(path);
    // The temporary keeps the extension, by which writers pick the format.
    const fs::path temp = target.parent_path() / ("." + target.stem().string() + ".tmp" + std::to_string(getpid()) +
                                                  target.extension().string());
    std::error_code ec;
    try {
        write(temp.string());
    } catch (...) {
        fs::remove(temp, ec);
        throw;
    }
    fs::rename(temp, target, ec);
    if (ec) {
        fs::remove(temp, ec);
        throw BadInput("cannot write " + path + ": " + ec.message());
    }
}

void WriteText(const std::string& path, const std::string& text)
{
    WriteWhole(path, [&](const std::string& temp) {
        std::ofstream file(temp, std::ios::binary);
        file << text;
        file.close();
        if (!file) throw BadInput("cannot write " + path);
    });
}

// Whether the output's own kind writes files with this extension (shapes to
// .svg, tables to .csv, ...).
bool WritesTo(const host::Output* out, const std::string& ext)
{
    const host::ParameterClass* kind = out ? host::FindParameterClass(out->typeId) : nullptr;
    if (!kind || !kind->write) return false;
    return std::find(kind->extensions.begin(), kind->extensions.end(), ext) != kind->extensions.end();
}

// Whether the output's own kind reads this option when it writes a file.
bool Takes(const host::Output* out, const std::string& option)
{
    const host::ParameterClass* kind = out ? host::FindParameterClass(out->typeId) : nullptr;
    return kind && std::find(kind->options.begin(), kind->options.end(), option) != kind->options.end();
}

std::string Kind(const host::Output& out)
{
    if (out.dataType == DataType::Number) return "a number";
    if (out.dataType == DataType::Text) return "a text";
    return "a " + host::TypeName(out.dataType, out.typeId) + " value";
}

}  // namespace

int RunCommand(const RunOptions& o)
{
    const host::Registration& reg = ResolveTool(o.tool);
    if (reg.hostTool) throw BadInput(reg.name + " is a flow tool: use it in a flow file");
    const int depth = DepthChoice(o.depth);
    host::CheckTime(o.time, "--time");
    host::Flow flow;
    host::Flow::Node& node = flow.Add(reg.name, reg);
    auto* source = dynamic_cast<host::SourceOperator*>(node.op.get());
    if (!o.size.empty()) {
        const size_t x = o.size.find('x');
        int64_t w = 0, h = 0;
        if (x == std::string::npos || !ParseWhole(o.size.substr(0, x), w) || !ParseWhole(o.size.substr(x + 1), h))
            throw BadInput("--size takes WIDTHxHEIGHT, got '" + o.size + "'");
        if (source) {
            const std::string what = "--size " + o.size + ": ";
            flow.SetValue(node, source->widthInput,
                          host::Conform(*source->widthInput, host::MakeNumber(double(w)), what + "Width"));
            flow.SetValue(node, source->heightInput,
                          host::Conform(*source->heightInput, host::MakeNumber(double(h)), what + "Height"));
        } else if (!Takes(node.op->MainOutput(), "size")) {
            throw BadInput(reg.name + " takes its size from its image: --size is for tools that make images");
        }
        host::CheckImageSize(w, h, "--size " + o.size);
    }
    if (source) source->floatDepth = depth == 2;

    std::vector<std::string> files;
    for (const std::string& a : o.assignments) {
        const size_t eq = a.find('=');
        if (eq == std::string::npos || eq == 0) throw BadInput("expected ID=VALUE, got '" + a + "'");
        const std::string id = a.substr(0, eq), text = a.substr(eq + 1);
        host::Input* in = ResolveInput(*node.op, reg.name, id);
        const bool image = in->attrs.dataType == DataType::Image || in->attrs.dataType == DataType::Mask;
        if (image && host::IsSequence(text)) {
            // A sequence comes through a Loader, which finds the frame of each time asked.
            if (depth) throw BadInput("--depth converts single images; the frames of " + text + " keep their files' depth");
            const auto range = host::SequenceRange(text);
            if (!range) throw BadInput("input " + id + " of " + reg.name + ": no file of the sequence " + text);
            for (int f = range->first; f <= range->second; ++f) files.push_back(host::FramePath(text, f));
            host::Flow::Node& loader = flow.Add("Loader " + id, ResolveTool("Loader"));
            flow.SetValue(loader, loader.op->FindInput("File"), host::MakeText(text));
            flow.Connect(node, in, loader, loader.op->MainOutput());
            continue;
        }
        if (image || in->attrs.dataType == DataType::Custom || in->attrs.control == host::Control::File)
            files.push_back(text);
        flow.SetValue(node, in, ParseValue(*in, "input " + id + " of " + reg.name, text, depth), o.time);
    }
    SetCacheBudget(flow, o.cacheMb);
    std::optional<std::pair<int, int>> frames;
    if (!o.frames.empty()) frames = ParseFrames(o.frames);

    const host::Output* main = node.op->MainOutput();
    const bool makesImage = main && main->dataType == DataType::Image;
    const std::string ext = Lower(fs::path(o.output).extension().string());
    // Choices for the writer of the output's kind, passed on as given.
    host::WriteOptions options;
    if (!o.size.empty() && !source) options["size"] = o.size;
    if (!o.slice.empty()) {
        if (!Takes(main, "slice"))
            throw BadInput("--slice is for tools that make a region, and " + reg.name + " makes none");
        options["slice"] = o.slice;
    }
    if (makesImage) {
        if (o.output.empty()) throw BadInput(reg.name + " makes an image: give -o FILE");
        if (!host::IsImageFileName(o.output))
            throw BadInput("-o " + o.output + ": not an image file name (.exr, .tif, .png, .jpg, .dpx, ...)");
        if (frames && frames->first != frames->second && !host::IsSequence(o.output))
            throw BadInput("-o " + o.output + " would be written over again on each of " +
                           std::to_string(frames->second - frames->first + 1) +
                           " frames: put # in its name for the frame number (name.####.exr)");
        if (frames)
            for (int f = frames->first; f <= frames->second; ++f) CheckOutput(host::FramePath(o.output, f), files);
        else
            CheckOutput(o.output, files);
    } else if (frames) {
        throw BadInput("--frames is for tools that make images; " + reg.name + " makes " +
                       (main ? Kind(*main) : "no value"));
    } else if (!o.output.empty() && !WritesTo(main, ext)) {
        if (ext != ".txt" && ext != ".json")
            throw BadInput("-o " + o.output + ": " + reg.name + " makes " + (main ? Kind(*main) : "no value") +
                           ", printed on standard output or written to a .txt or .json file");
        CheckOutput(o.output, files);
    } else if (!o.output.empty()) {
        CheckOutput(o.output, files);
    }
    flow.StartRender();
    flow.BeginFrame();
    if (makesImage && frames) {
        Progress progress(frames->second - frames->first + 1);
        for (int f = frames->first; f <= frames->second; ++f) {
            flow.BeginFrame();
            host::Value v = flow.Evaluate(node, main, f);
            auto* image = dynamic_cast<const host::ImageValue*>(v.get());
            if (!image || !image->image) {
                progress.Done();
                throw BadInput("frame " + std::to_string(f) + ": " + reg.name + " made no image: is its image input given there?");
            }
            host::WriteImage(*image->image, host::FramePath(o.output, f), host::FileDepth::Auto);
            progress.Frame(f - frames->first + 1);
        }
        progress.Done();
        return 0;
    }
    if (makesImage) {
        host::Value v = flow.Evaluate(node, main, o.time);
        auto* image = dynamic_cast<const host::ImageValue*>(v.get());
        if (!image || !image->image) throw BadInput(reg.name + " made no image: is its image input given?");
        host::WriteImage(*image->image, o.output, host::FileDepth::Auto);
        return 0;
    }
    if (WritesTo(main, ext)) {
        host::Value v = flow.Evaluate(node, main, o.time);
        if (!v) throw BadInput(reg.name + " made no value to write to " + o.output);
        const host::ParameterClass& kind = *host::FindParameterClass(main->typeId);
        WriteWhole(o.output, [&](const std::string& temp) { kind.write(*v, temp, ext, options); });
        return 0;
    }
    const auto& outs = node.op->Outputs();
    std::string text;
    json values = json::object();
    for (auto& out : outs) {
        host::Value v = flow.Evaluate(node, out.get(), o.time);
        const std::string t = v ? v->ToText() : "";
        // A table's dump already ends its lines.
        const std::string line = !t.empty() && t.back() == '\n' ? t : t + "\n";
        text += outs.size() == 1 ? line : out->id + " = " + line;
        // Numbers keep the short form they print in.
        auto* n = dynamic_cast<const host::Number*>(v.get());
        values[out->id] = !n ? json(t) : std::isfinite(n->value) ? json::parse(t) : json(nullptr);
    }
    if (o.output.empty()) std::cout << text;
    else WriteText(o.output, ext == ".json" ? values.dump(2) + "\n" : text);
    return 0;
}

int RenderCommand(const RenderOptions& o)
{
    if (!o.threads.empty()) {
        int64_t n = 0;
        if (!ParseWhole(o.threads, n) || n < 1 || n > 1024)
            throw BadInput("--threads takes a count from 1 to 1024, got '" + o.threads + "'");
        host::SetThreadCount(static_cast<int>(n));
    }
    std::unique_ptr<FlowFile> ff = LoadFlowFile(o.flow);
    SetCacheBudget(ff->flow, o.cacheMb);
    auto [first, last] = ff->frames.value_or(std::make_pair(1, 1));
    if (!o.frames.empty()) std::tie(first, last) = ParseFrames(o.frames);
    if (ff->savers.empty()) throw BadInput(o.flow + ": the flow has no Saver, so nothing would be written");
    CheckFrames(*ff, first, last);

    Progress progress(last - first + 1);
    ff->flow.StartRender();
    for (int frame = first; frame <= last; ++frame) {
        ff->flow.BeginFrame();
        try {
            for (host::Flow::Node* saver : ff->savers) ff->flow.Evaluate(*saver, saver->op->MainOutput(), frame);
        } catch (const BadInput& e) {
            progress.Done();
            throw BadInput("frame " + std::to_string(frame) + ": " + e.what());
        }
        progress.Frame(frame - first + 1);
    }
    progress.Done();
    for (host::Flow::Node* saver : ff->savers) {
        const std::string pattern = FileOf(*saver);
        if (host::IsSequence(pattern))
            std::cout << "wrote " << host::FramePath(pattern, first) << " .. " << host::FramePath(pattern, last) << "\n";
        else
            std::cout << "wrote " << pattern << "\n";
    }
    return 0;
}

}  // namespace app
