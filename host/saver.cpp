// Saver: the host's own tool that writes its input to a file, the frame of a
// sequence that matches the request time, at the input's depth or a chosen one.
// A plug-in's own value (a region, a table) is written by its class instead.
#include <unistd.h>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include "host/errors.h"
#include "host/imageio.h"
#include "host/operator.h"
#include "host/registry.h"

namespace host {

namespace {

namespace fs = std::filesystem;

// The class of a plug-in's own value that writes files of this name's
// extension (a region's slice to .png, a table to .csv), or null.
const ParameterClass* WriterOf(const Value& value, const std::string& path)
{
    const ParameterClass* kind = value ? FindParameterClass(value->TypeId()) : nullptr;
    if (!kind || !kind->write) return nullptr;
    const std::string ext = FileExtension(path);
    return std::find(kind->extensions.begin(), kind->extensions.end(), ext) != kind->extensions.end() ? kind
                                                                                                       : nullptr;
}

// Through the class's writer, whole or not at all.
void WriteValue(const Parameter& value, const ParameterClass& kind, const std::string& path)
{
    const std::string ext = FileExtension(path);
    WriteThroughTemporary(path, [&](const std::string& temp) { kind.write(value, temp, ext, {}); });
}

class Saver : public ThreadedOperator {
public:
    Saver()
    {
        InputAttrs image;
        image.dataType = DataType::Image;
        image.linkNumber = 1;
        image.anyValue = true;
        imageInput = AddInput("Image", "Image", image);
        InputAttrs file;
        file.dataType = DataType::Text;
        file.control = Control::File;
        file.defaultText = "";
        fileInput = AddInput("File", "File", file);
        InputAttrs depth;
        depth.control = Control::Combo;
        depth.items = {"Auto", "8-bit", "16-bit", "Half", "Float"};
        depth.softMin = 0.0;
        depth.softMax = 4.0;
        depth.defaultNumber = 0.0;
        depthInput = AddInput("Depth", "Depth", depth);
        output = AddOutput("Output", "Output", DataType::Image, 1);
    }

    void Process(Request& request) override
    {
        auto* text = dynamic_cast<const Text*>(request.GetInputData(fileInput).get());
        if (!text || text->value.empty()) throw BadInput("Saver: no file given");
        const int frame = static_cast<int>(std::lround(request.Time()));
        const std::string path = FramePath(text->value, frame);
        Value value = request.GetInputData(imageInput);
        auto* image = dynamic_cast<const ImageValue*>(value.get());
        if (!image) {
            // A value of the plug-in's own that writes this kind of file.
            if (const ParameterClass* kind = WriterOf(value, path)) {
                WriteValue(*value, *kind, path);
                request.SetOutputData(output, nullptr);
                return;
            }
        }
        if (!image || !image->image) throw BadInput("Saver " + path + ": no image to save");
        auto* depth = dynamic_cast<const Number*>(request.GetInputData(depthInput).get());
        const int choice = depth ? static_cast<int>(std::lround(depth->value)) : 0;
        WriteImage(*image->image, path, static_cast<FileDepth>(choice >= 0 && choice <= 4 ? choice : 0));
        request.SetOutputData(output, value);
    }

private:
    Input* imageInput;
    Input* fileInput;
    Input* depthInput;
    Output* output;
};

[[maybe_unused]] const bool registered = [] {
    Registration r;
    r.creator = [] { return static_cast<Operator*>(new Saver); };
    r.baseClass = "ThreadedOperator";
    r.className = "Saver";
    r.name = "Saver";
    r.category = "Host";
    r.shortName = "SV";
    r.help = "Writes its image to a file or a frame of a sequence";
    r.hostTool = true;
    Registry::Get().Register(std::move(r));
    return true;
}();

}  // namespace

}  // namespace host
