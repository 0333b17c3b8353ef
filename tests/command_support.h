// Running the built zelvarine command in a folder, as a user would.
#pragma once
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
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

// A folder of the running test's own, removed with it; tests may run side by side.
struct TempDir {
    TempDir()
        : path(std::filesystem::temp_directory_path() /
               ("zv." + std::to_string(getpid()) + "." +
                ::testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~TempDir() { std::filesystem::remove_all(path); }
    // Writes `text` as it stands to a file of the folder; gives its full name.
    std::string Write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path / name, std::ios::binary) << text;
        return (path / name).string();
    }
    CommandResult Run(const std::string& args) const { return RunCommand(path, args); }

    std::filesystem::path path;
};

}  // namespace zvtest
