// The zelvarine commands; each returns the exit status or throws BadInput.
#pragma once
#include <string>
#include <vector>

namespace app {

int ToolsCommand(bool json);
// `all` lists too the inputs the tool has no use for.
int InfoCommand(const std::string& tool, bool json, bool all);

struct RunOptions {
    std::string tool;
    std::vector<std::string> assignments;  // ID=VALUE
    std::string output;
    double time = 0.0;
    std::string size;   // WxH
    std::string depth;  // int16 or float
    std::string frames;   // A or A-B: a sequence of outputs in place of --time
    std::string cacheMb;  // the frame cache's budget; empty: the flow's default
    std::string slice;  // x=, y= or z= and a number: the plane a region is written through
};
int RunCommand(const RunOptions& options);

struct RenderOptions {
    std::string flow;
    std::string frames;   // A or A-B
    std::string threads;  // empty: one per core
    std::string cacheMb;
};
int RenderCommand(const RenderOptions& options);

}  // namespace app
