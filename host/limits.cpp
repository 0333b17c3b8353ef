#include "host/limits.h"
#include <unistd.h>
#include <cmath>
#include <filesystem>
#include "host/errors.h"
#include "host/value.h"

namespace host {

namespace fs = std::filesystem;

void CheckImageSize(int64_t width, int64_t height, const std::string& what)
{
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    if (width > kMaxImageSide || height > kMaxImageSide)
        throw BadInput(what + ": " + size + " is larger than " + std::to_string(kMaxImageSide) +
                       " pixels a side");
    if (width * height > kMaxImagePixels)
        throw BadInput(what + ": " + size + " is more than " + std::to_string(kMaxImagePixels) +
                       " pixels (16384x16384)");
}

void CheckTime(double time, const std::string& what)
{
    if (!(std::fabs(time) <= kMaxWhole))
        throw BadInput(what + ": " + Number(time).ToText() + " is not a time from -16777216 to 16777216");
}

void CheckReadableFile(const std::string& path, uintmax_t maxBytes, const std::string& what,
                       const std::string& context)
{
    auto fail = [&](const std::string& message) {
        return BadInput(context.empty() ? message : message + " (" + context + ")");
    };
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (status.type() == fs::file_type::not_found) throw fail(what + " not found: " + path);
    if (ec) throw fail("cannot read " + what + " " + path + ": " + ec.message());
    if (status.type() == fs::file_type::directory) throw fail(what + " " + path + " is a folder");
    if (status.type() != fs::file_type::regular) throw fail(what + " " + path + " is not a regular file");
    if (access(path.c_str(), R_OK) != 0) throw fail("cannot read " + what + " " + path + ": permission denied");
    const uintmax_t bytes = fs::file_size(path, ec);
    if (ec) throw fail("cannot read " + what + " " + path + ": " + ec.message());
    if (bytes > maxBytes)
        throw fail(what + " " + path + " is larger than " + std::to_string(maxBytes >> 20) + " MiB");
}

}  // namespace host
