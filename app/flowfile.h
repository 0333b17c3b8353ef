// Flow files: JSON with "frames" and "tools", each tool named by display,
// class or short name, its inputs set by id to constants, keys or connections.
// Everything is checked before the first frame renders.
#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include "host/flow.h"

namespace app {

struct FlowFile {
    std::string path;
    std::string folder;  // relative file names in the flow are taken from here
    host::Flow flow;
    std::optional<std::pair<int, int>> frames;
    std::vector<host::Flow::Node*> savers;
    std::vector<host::Flow::Node*> loaders;
};

std::unique_ptr<FlowFile> LoadFlowFile(const std::string& path);

// Frames `first` to `last` as a render takes them: frame numbers the tools see
// exactly, first <= last, and not more of them than a render makes. BadInput
// begins with `what`.
std::pair<int, int> FrameRange(int64_t first, int64_t last, const std::string& what);

// Every Loader frame exists and reads; every Saver can write, overwrites no
// input, and writes each file once: no two Savers one file, no Saver one file
// over several frames. The frames are a FrameRange.
void CheckFrames(const FlowFile& flow, int first, int last);

// The file pattern set on a Loader's or Saver's "File" input.
std::string FileOf(const host::Flow::Node& node);

}  // namespace app
