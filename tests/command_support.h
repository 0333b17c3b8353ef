// Running the built zelvarine command in a folder, as a user would.
#pragma once
#include <sys/wait.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace zvtest {

struct CommandResult {
    int code;
    std::string out, err;
};

inline std::string Slurp(const std::filesystem::path& p)
{
    std::ifstream f(p);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

// Runs `zelvarine ARGS` in `dir` with no standard input; what it printed is kept.
inline CommandResult RunCommand(const std::filesystem::path& dir, const std::string& args)
{
    const std::filesystem::path out = dir / ".stdout", err = dir / ".stderr";
    const std::string cmd = "cd '" + dir.string() + "' && '" ZV_COMMAND "' " + args + " > '" +
                            out.string() + "' 2> '" + err.string() + "' < /dev/null";
    const int status = std::system(cmd.c_str());
    CommandResult r{WEXITSTATUS(status), Slurp(out), Slurp(err)};
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return r;
}

}  // namespace zvtest
