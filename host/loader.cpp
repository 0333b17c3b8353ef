// Loader: the host's own tool that reads an image file, or the frame of a
// sequence that matches the request time. A file of a value kind's own
// (a shape's .svg) is read by that kind, and the output carries its type.
#include <cmath>
#include "host/errors.h"
#include "host/imageio.h"
#include "host/operator.h"
#include "host/registry.h"

namespace host {

namespace {

class Loader : public ThreadedOperator {
public:
    Loader()
    {
        InputAttrs file;
        file.dataType = DataType::Text;
        file.control = Control::File;
        file.defaultText = "";
        fileInput = AddInput("File", "File", file);
        output = AddOutput("Output", "Output", DataType::Image, 1);
    }

    void Process(Request& request) override
    {
        auto* text = dynamic_cast<const Text*>(request.GetInputData(fileInput).get());
        if (!text || text->value.empty()) throw BadInput("Loader: no file given");
        // Frame n of a sequence stands from time n until n + 1: tools ask
        // just past a whole time, and a time between two frames gets the earlier.
        const int frame = static_cast<int>(std::floor(request.Time() + 0.001));
        // A sequence has no frame before its first file or after its last: a
        // tool asking there for a neighbour gets none.
        if (IsSequence(text->value)) {
            if (text->value != rangeOf) {
                range = SequenceRange(text->value);
                rangeOf = text->value;
            }
            if (!range || frame < range->first || frame > range->second) {
                request.SetOutputData(output, nullptr);
                return;
            }
        }
        const std::string path = FramePath(text->value, frame);
        if (path != cachedPath) {
            const ParameterClass* kind = FindParameterClassReading(FileExtension(path));
            cached = kind ? kind->read(path) : std::make_shared<ImageValue>(ReadImage(path), false);
            cachedPath = path;
        }
        request.SetOutputData(output, cached);
    }

    // Connections are checked against the output's type, which the file names.
    void NotifyChanged(Input* input, const Parameter* value, double) override
    {
        auto* text = dynamic_cast<const Text*>(value);
        if (input != fileInput || !text) return;
        const ParameterClass* kind = FindParameterClassReading(FileExtension(text->value));
        output->dataType = kind ? DataType::Custom : DataType::Image;
        output->typeId = kind ? kind->typeId : std::string();
    }

private:
    Input* fileInput;
    Output* output;
    std::string cachedPath;
    Value cached;
    std::string rangeOf;
    std::optional<std::pair<int, int>> range;
};

[[maybe_unused]] const bool registered = [] {
    Registration r;
    r.creator = [] { return static_cast<Operator*>(new Loader); };
    r.baseClass = "ThreadedOperator";
    r.className = "Loader";
    r.name = "Loader";
    r.category = "Host";
    r.shortName = "LD";
    r.help = "Reads an image file or a frame of a sequence";
    r.hostTool = true;
    Registry::Get().Register(std::move(r));
    return true;
}();

}  // namespace

}  // namespace host
