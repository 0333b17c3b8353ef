// What the host accepts from outside, checked before anything is allocated or
// read; docs/limits.md states the same for users. Each check throws BadInput
// whose line begins with `what`.
#pragma once
#include <cstdint>
#include <string>

namespace host {

constexpr int64_t kMaxImageSide = 32768;
constexpr int64_t kMaxImagePixels = int64_t(16384) * 16384;
// Tools see times and whole numbers in single precision, exact up to 2^24.
constexpr double kMaxWhole = 16777216.0;
constexpr int64_t kMaxFramesPerRender = 1000000;
constexpr uintmax_t kMaxTextFileBytes = uintmax_t(16) << 20;
constexpr uintmax_t kMaxTableFileBytes = uintmax_t(256) << 20;
constexpr uintmax_t kMaxFlowFileBytes = uintmax_t(64) << 20;

void CheckImageSize(int64_t width, int64_t height, const std::string& what);

// A time to render at, or a key's time: finite and within kMaxWhole.
void CheckTime(double time, const std::string& what);

// A regular file that can be read, of at most `maxBytes`. `what` names the
// kind of file; `context`, when given, ends the line in brackets.
void CheckReadableFile(const std::string& path, uintmax_t maxBytes, const std::string& what,
                       const std::string& context = {});

}  // namespace host
