// Image files through OpenImageIO, and frame sequences named with '#' runs
// (plate.####.exr) or printf patterns (plate.%04d.exr).
#pragma once
#include <optional>
#include <string>
#include <utility>
#include "host/image.h"

namespace host {

// What a Saver writes: Auto keeps the depth of the file the image was read
// from (an image made from nothing has its own), or a chosen one.
enum class FileDepth { Auto = 0, Int8 = 1, Int16 = 2, Half = 3, Float = 4 };

bool IsSequence(const std::string& pattern);
// The file of `frame`; a pattern without a frame number names one file for all frames.
std::string FramePath(const std::string& pattern, int frame);

// The first and last frame of a sequence whose files are on disk, found by
// listing its folder; none when no file matches.
std::optional<std::pair<int, int>> SequenceRange(const std::string& pattern);

// Extra planes in multi-channel files (EXR): the host channel that a file's
// channel name stands for, or -1 (common names, any case: vel.x, motion.x,
// N.x, Z, ...); and the name a channel is written under, or empty.
int AuxChannelOf(const std::string& name);
std::string AuxNameOf(int channel);

// Reads a file: 8- and 16-bit files as 16-bit integer images, half and float
// files as float images, each noting the file's bits per channel. Row 0 is the bottom of the picture, as everywhere in
// the host; files keep their top row first. Throws BadInput naming the file
// and what is wrong.
Image* ReadImage(const std::string& path);

// Opens the file's header: BadInput when it is missing, not an image, or
// larger than the host's limits.
void CheckImageFile(const std::string& path);

// Writes through a temporary name in the same folder and renames it when
// complete, so a failed write leaves nothing behind. Throws BadInput.
void WriteImage(const Image& image, const std::string& path, FileDepth depth);

// True when the extension names an image format that can be written.
bool IsImageFileName(const std::string& path);

}  // namespace host
