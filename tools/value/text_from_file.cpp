// From file: a text taken line by line from a text file or the text box. One
// line per frame (held and looped), one chosen line, or lines that each begin
// with the frame from which their text holds.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include "framework/effect.h"
#include "framework/registration.h"

namespace {

// Line `index` by the tool's own walk: each next newline is sought from one
// past the character behind the previous one, so an empty line joins the next.
std::string LineAt(const std::string& content, int32_t index)
{
    size_t newline = content.find('\n');
    if (newline == std::string::npos) return content;
    size_t start = 0;
    for (int32_t k = 0; k < index; ++k) {
        start = newline + 1;
        newline = content.find('\n', newline + 2);
        if (newline == std::string::npos) break;
    }
    return content.substr(start, newline == std::string::npos ? std::string::npos : newline - start);
}

// Lines of the form "frame text": the text of the last line whose frame has come.
std::string TextAtFrame(const std::string& content, int32_t frame)
{
    std::string result;
    int32_t last = -1;
    size_t from = 0;
    while (from <= content.size() && frame > last) {
        size_t end = content.find('\n', from);
        if (end == std::string::npos) end = content.size();
        std::string line = content.substr(from, end - from);
        from = end + 1;
        line.erase(0, line.find_first_not_of(" \t"));
        if (line.empty()) continue;
        const size_t p = line.find_first_of(" \t");
        if (p == std::string::npos) {
            last = std::atoi(line.c_str());
            continue;
        }
        last = std::atoi(line.substr(0, p).c_str());
        if (frame >= last) result = line.substr(p + 1);
    }
    return result;
}

}  // namespace

class KEffectTextFromFile : public KEffectText {
public:
    KEffectTextFromFile()
    {
        inputList.AddPage("From File");
        inputList.AddMultiButton(&source, 0, "Source", "Sour"_id, kFlagNotify,
                                 {"File", "Textbox", "[end]"});
        inputList.AddFile(&fileName, "", "Filename", "FiNa"_id, 0, "Text file (*.txt)|*.txt");
        // Hidden until they apply under the defaults: "File" and a start frame per line.
        inputList.AddTextEdit(&text, "", "Text", "Text"_id, kFlagHidden, 30);
        inputList.AddCombo(&format, 1, "Format", "FiFo"_id, kFlagNotify,
                           {"Each line a frame", "Startframe and text", "Line on frame...", "[end]"});
        inputList.AddSlider(&holdFrames, 1, "Hold frames", "Hold"_id, kFlagHidden, 1, 25);
        inputList.AddCheckbox(&loop, false, "Loop", "Loop"_id, kFlagHidden, 1);
        inputList.AddSlider(&line, 0, "Line", "Line"_id, kFlagHidden, 0, 100);
        outputList.AddTextOutput(&output, "Output", 1, 0);
    }

    void FinishRender() override
    {
        output.clear();
        std::string content;
        if (source == 0) {
            std::ifstream file(fileName);
            if (!file) return;  // no file, no text
            content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        } else {
            content = text;
        }
        const int32_t frame = static_cast<int32_t>(settings.time);
        int32_t lines = 0;
        if (!content.empty()) {
            lines = 1;
            for (char c : content) lines += c == '\n';
        }

        std::string result;
        if (format == 1) {
            result = TextAtFrame(content, frame);
        } else {
            int32_t index;
            if (format == 0) {
                if (holdFrames < 1) return;
                index = frame / holdFrames;
                if (loop) {
                    if (lines == 0) return;  // nothing to loop over
                    index %= lines;
                }
                if (index >= lines) return;
            } else {
                index = line;
                if (index < 0 || index >= lines) return;
            }
            result = LineAt(content, index);
        }
        for (size_t at = result.find("\\n"); at != std::string::npos; at = result.find("\\n", at + 2))
            result.replace(at, 2, "\r\n");
        output = result;
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        const int32_t v = value.intValue;
        if (id == "Sour"_id) {
            list.Add(kMessageVisible, "FiNa"_id, v == 0 ? 1.0f : 0.0f);
            list.Add(kMessageVisible, "Text"_id, v == 1 ? 1.0f : 0.0f);
        } else if (id == "FiFo"_id) {
            list.Add(kMessageVisible, "Hold"_id, v == 0 ? 1.0f : 0.0f);
            list.Add(kMessageVisible, "Loop"_id, v == 0 ? 1.0f : 0.0f);
            list.Add(kMessageVisible, "Line"_id, v == 2 ? 1.0f : 0.0f);
        }
        return list;
    }

private:
    int32_t source = 0;
    std::string fileName;
    std::string text;
    int32_t format = 1;
    int32_t holdFrames = 1;
    bool loop = false;
    int32_t line = 0;
    std::string output;
};

ZV_TOOL(KEffectTextFromFile, ZV_TextFromFile);
