#include "host/imageio.h"
#include <OpenImageIO/imageio.h>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <regex>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>
#include "host/errors.h"
#include "host/limits.h"

namespace host {

namespace fs = std::filesystem;

namespace {

const std::regex& PrintfRun()
{
    static const std::regex re("%(0?)([0-9]*)d");
    return re;
}

std::string Lower(std::string s)
{
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// The first line of a reader's message: the front ends show one line.
std::string FirstLine(std::string message)
{
    const size_t nl = message.find('\n');
    if (nl != std::string::npos) message.resize(nl);
    return message.empty() ? "unknown error" : message;
}

// Some format libraries print their own complaints; a bad file must give one
// line, ours. Standard error is closed to them while they work.
class QuietStderr {
public:
    QuietStderr()
    {
        std::fflush(stderr);
        saved_ = dup(STDERR_FILENO);
        int null = open("/dev/null", O_WRONLY);
        if (saved_ >= 0 && null >= 0) dup2(null, STDERR_FILENO);
        if (null >= 0) close(null);
    }
    ~QuietStderr()
    {
        if (saved_ < 0) return;
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }

private:
    int saved_ = -1;
};

// Extra planes of multi-channel files, by host channel: the name written, then
// the other common names read for it, matched without regard to case.
struct AuxName {
    int channel;
    std::vector<std::string> names;
};
const std::vector<AuxName>& AuxNames()
{
    static const std::vector<AuxName> names = {
        {ChanZ, {"Z", "depth.Z", "depth"}},
        {ChanU, {"uv.u", "U", "uv.x"}},
        {ChanV, {"uv.v", "V", "uv.y"}},
        {ChanNormalX, {"N.x", "normal.x", "N.X", "nx"}},
        {ChanNormalY, {"N.y", "normal.y", "N.Y", "ny"}},
        {ChanNormalZ, {"N.z", "normal.z", "N.Z", "nz"}},
        {ChanVectorX, {"vel.x", "motion.x", "velocity.x", "vector.x", "mv.x", "forward.u"}},
        {ChanVectorY, {"vel.y", "motion.y", "velocity.y", "vector.y", "mv.y", "forward.v"}},
    };
    return names;
}

}  // namespace

int AuxChannelOf(const std::string& name)
{
    const std::string lower = Lower(name);
    for (const AuxName& a : AuxNames())
        for (const std::string& n : a.names)
            if (Lower(n) == lower) return a.channel;
    return -1;
}

std::string AuxNameOf(int channel)
{
    for (const AuxName& a : AuxNames())
        if (a.channel == channel) return a.names[0];
    return {};
}

namespace {

std::string Padded(int frame, int width)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%0*d", width, frame);
    return buf;
}

}  // namespace

bool IsSequence(const std::string& pattern)
{
    return pattern.find('#') != std::string::npos || std::regex_search(pattern, PrintfRun());
}

std::string FramePath(const std::string& pattern, int frame)
{
    // The last run of '#' is the frame number: folders may hold others.
    const size_t end = pattern.find_last_of('#');
    if (end != std::string::npos) {
        size_t begin = end;
        while (begin > 0 && pattern[begin - 1] == '#') --begin;
        return pattern.substr(0, begin) + Padded(frame, static_cast<int>(end - begin + 1)) +
               pattern.substr(end + 1);
    }
    std::smatch m;
    if (std::regex_search(pattern, m, PrintfRun())) {
        const int width = m[2].length() ? std::stoi(m[2].str()) : 0;
        return m.prefix().str() + Padded(frame, width) + m.suffix().str();
    }
    return pattern;
}

std::optional<std::pair<int, int>> SequenceRange(const std::string& pattern)
{
    // Frames 0 and 1 differ in the last digit of the run; the zeros before it
    // are its padding. A file matches when its middle reads back through the
    // pattern as the same name.
    const std::string zero = FramePath(pattern, 0), one = FramePath(pattern, 1);
    size_t last = 0;
    while (last < zero.size() && zero[last] == one[last]) ++last;
    if (last == zero.size()) return std::nullopt;
    size_t first = last;
    while (first > 0 && zero[first - 1] == '0') --first;
    const fs::path head(zero.substr(0, first) + "x");
    const std::string lead = head.filename().string().substr(0, head.filename().string().size() - 1);
    const std::string suffix = zero.substr(last + 1);
    const fs::path folder = head.has_parent_path() ? head.parent_path() : fs::path(".");
    std::optional<std::pair<int, int>> range;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(folder, ec)) {
        const std::string name = entry.path().filename().string();
        if (name.size() <= lead.size() + suffix.size() || name.rfind(lead, 0) != 0 ||
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
            continue;
        const std::string middle = name.substr(lead.size(), name.size() - lead.size() - suffix.size());
        const size_t sign = middle[0] == '-' ? 1 : 0;
        if (middle.size() <= sign || middle.size() > 9 ||
            middle.find_first_not_of("0123456789", sign) != std::string::npos)
            continue;
        const int frame = std::stoi(middle);
        if (fs::path(FramePath(pattern, frame)).filename().string() != name) continue;
        range = range ? std::make_pair(std::min(range->first, frame), std::max(range->second, frame))
                      : std::make_pair(frame, frame);
    }
    return range;
}

void CheckImageFile(const std::string& path)
{
    CheckReadableFile(path, UINTMAX_MAX, "file");
    QuietStderr quiet;
    auto in = OIIO::ImageInput::open(path);
    if (!in) throw BadInput("cannot read image " + path + ": " + FirstLine(OIIO::geterror()));
    CheckImageSize(in->spec().width, in->spec().height, "cannot read image " + path);
}

bool IsImageFileName(const std::string& path)
{
    static const char* known[] = {".exr", ".tif", ".tiff", ".png", ".jpg", ".jpeg", ".dpx",
                                  ".hdr", ".tga", ".bmp", ".sgi", ".rgb", ".pnm", ".ppm"};
    const std::string ext = Lower(fs::path(path).extension().string());
    return std::find(std::begin(known), std::end(known), ext) != std::end(known);
}

Image* ReadImage(const std::string& path)
{
    CheckReadableFile(path, UINTMAX_MAX, "file");
    QuietStderr quiet;
    auto in = OIIO::ImageInput::open(path);
    if (!in) throw BadInput("cannot read image " + path + ": " + FirstLine(OIIO::geterror()));
    const OIIO::ImageSpec& spec = in->spec();
    if (spec.width <= 0 || spec.height <= 0 || spec.nchannels <= 0)
        throw BadInput("cannot read image " + path + ": no pixels");
    CheckImageSize(spec.width, spec.height, "cannot read image " + path);
    const OIIO::TypeDesc::BASETYPE base = static_cast<OIIO::TypeDesc::BASETYPE>(spec.format.basetype);
    const bool isFloat = base == OIIO::TypeDesc::HALF || base == OIIO::TypeDesc::FLOAT ||
                         base == OIIO::TypeDesc::DOUBLE;
    // Planes the host knows by name (vectors, normals, depth, ...) come along;
    // the first of the file's names for a channel wins.
    std::vector<std::pair<int, int>> planes;  // file channel, host channel
    for (int c = 0; c < spec.nchannels; ++c) {
        const int channel = AuxChannelOf(spec.channel_name(c));
        if (channel < 0 || c == spec.alpha_channel) continue;
        if (std::none_of(planes.begin(), planes.end(), [&](auto& p) { return p.second == channel; }))
            planes.push_back({c, channel});
    }
    const int plain = spec.nchannels - static_cast<int>(planes.size());
    int alpha = spec.alpha_channel;
    if (alpha < 0 && (plain == 4 || plain == 2)) alpha = plain - 1;
    const int colours = std::max(std::min(alpha >= 0 ? plain - 1 : plain, 3), 1);
    ImageSpec is;
    is.width = spec.width;
    is.height = spec.height;
    is.depth = isFloat ? DepthFloat32 : DepthInt16;
    is.fileBits = static_cast<int>(spec.format.size()) * 8;
    for (auto& p : planes) is.aux.push_back(p.second);
    is.xAspect = spec.get_float_attribute("PixelAspectRatio", 1.0f);
    if (!(is.xAspect > 0.0)) is.xAspect = 1.0;
    // Only the channels used are read, each in the image's own type: a file
    // of many layers costs no more than its colours and alpha (which follows
    // them in files that have more).
    const int nc = std::max(colours, alpha + 1);
    const size_t count = size_t(spec.width) * spec.height * nc;
    std::vector<float> fpix;
    std::vector<uint16_t> wpix;
    bool ok;
    if (isFloat) {
        fpix.resize(count);
        ok = in->read_image(0, 0, 0, nc, OIIO::TypeDesc::FLOAT, fpix.data());
    } else {
        wpix.resize(count);
        ok = in->read_image(0, 0, 0, nc, OIIO::TypeDesc::UINT16, wpix.data());
    }
    if (!ok) throw BadInput("cannot read image " + path + ": " + FirstLine(in->geterror()));
    Image* img = Image::New(is);
    // Rows count upward from the bottom of the picture, files downward from the top.
    for (int y = 0; y < spec.height; ++y) {
        const int fileRow = spec.height - 1 - y;
        for (int x = 0; x < spec.width; ++x) {
            const size_t at = (size_t(fileRow) * spec.width + x) * nc;
            for (int c = 0; c < 4; ++c) {
                int from;
                if (c == 3) from = alpha;
                else from = colours >= 3 ? c : 0;  // grey spreads to all three
                if (isFloat) img->RowF(y)[4 * x + c] = from >= 0 ? fpix[at + from] : 1.0f;
                else img->RowW(y)[4 * x + c] = from >= 0 ? wpix[at + from] : 65535;
            }
        }
    }
    std::vector<float> plane(size_t(spec.width) * spec.height);
    for (auto& [fileChannel, channel] : planes) {
        if (!in->read_image(0, 0, fileChannel, fileChannel + 1, OIIO::TypeDesc::FLOAT, plane.data())) {
            img->Recycle();
            throw BadInput("cannot read image " + path + ": " + FirstLine(in->geterror()));
        }
        float* to = img->AuxPlane(channel);
        for (int y = 0; y < spec.height; ++y)
            std::copy_n(plane.data() + size_t(spec.height - 1 - y) * spec.width, spec.width, to + size_t(y) * spec.width);
    }
    return img;
}

void WriteImage(const Image& image, const std::string& path, FileDepth depth)
{
    if (!IsImageFileName(path)) throw BadInput("not an image file name: " + path);
    const fs::path target(path);
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder)) throw BadInput("cannot write " + path + ": no folder " + folder.string());
    if (access(folder.c_str(), W_OK) != 0) throw BadInput("cannot write " + path + ": folder not writable");
    if (fs::exists(target) && access(target.c_str(), W_OK) != 0)
        throw BadInput("cannot write " + path + ": file not writable");

    // The temporary keeps the extension so the writer picks the same format.
    const fs::path temp = folder / ("." + target.stem().string() + ".tmp" +
                                    std::to_string(getpid()) + target.extension().string());
    QuietStderr quiet;
    auto out = OIIO::ImageOutput::create(temp.string());
    if (!out) throw BadInput("cannot write " + path + ": " + FirstLine(OIIO::geterror()));

    OIIO::TypeDesc format;
    switch (depth) {
    case FileDepth::Int8: format = OIIO::TypeDesc::UINT8; break;
    case FileDepth::Int16: format = OIIO::TypeDesc::UINT16; break;
    case FileDepth::Half: format = OIIO::TypeDesc::HALF; break;
    case FileDepth::Float: format = OIIO::TypeDesc::FLOAT; break;
    default:
        // The depth of the file the image came from, else the image's own.
        if (image.FileBits() == 8) format = OIIO::TypeDesc::UINT8;
        else if (image.FileBits() == 16 && image.IsFloat()) format = OIIO::TypeDesc::HALF;
        else format = image.IsFloat() ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT16;
    }
    // Formats that lack the depth get their nearest: EXR has no 16-bit
    // integers (half), PNG no floats (16-bit), JPEG only 8 bits.
    const std::string fmt = out->format_name();
    if (fmt == "openexr" && (format == OIIO::TypeDesc::UINT16 || format == OIIO::TypeDesc::UINT8))
        format = OIIO::TypeDesc::HALF;
    if ((fmt == "png" || fmt == "dpx") && (format == OIIO::TypeDesc::FLOAT || format == OIIO::TypeDesc::HALF))
        format = OIIO::TypeDesc::UINT16;
    if (fmt == "jpeg") format = OIIO::TypeDesc::UINT8;

    // EXR takes the extra planes under their common names, always as floats.
    std::vector<int> planes;
    if (fmt == "openexr")
        for (int c : image.AuxChannels())
            if (!AuxNameOf(c).empty()) planes.push_back(c);
    const int channels = (fmt == "jpeg" ? 3 : 4) + static_cast<int>(planes.size());
    OIIO::ImageSpec spec(image.Width(), image.Height(), channels, format);
    if (channels >= 4) spec.alpha_channel = 3;
    if (!planes.empty()) {
        spec.channelnames = {"R", "G", "B", "A"};
        spec.channelformats.assign(4, format);
        for (int c : planes) {
            spec.channelnames.push_back(AuxNameOf(c));
            spec.channelformats.push_back(OIIO::TypeDesc::FLOAT);
        }
    }
    spec.attribute("PixelAspectRatio", static_cast<float>(image.XAspect() / image.YAspect()));
    if (!out->open(temp.string(), spec)) {
        std::error_code ec;
        fs::remove(temp, ec);
        throw BadInput("cannot write " + path + ": " + FirstLine(out->geterror()));
    }
    bool ok;
    // The file's first row is the picture's top one: written from the last row upward.
    const OIIO::stride_t pixel = static_cast<OIIO::stride_t>(image.PixelBytes());
    const OIIO::stride_t up = -static_cast<OIIO::stride_t>(image.RowBytes());
    const void* top = image.Row(image.Height() - 1);
    if (!planes.empty()) {
        // Colours and planes side by side, a row at a time, in floats.
        const int w = image.Width(), h = image.Height();
        std::vector<float> row(size_t(w) * channels);
        ok = true;
        for (int fileRow = 0; fileRow < h && ok; ++fileRow) {
            const int y = h - 1 - fileRow;
            for (int x = 0; x < w; ++x) {
                float* o = row.data() + size_t(x) * channels;
                for (int c = 0; c < 4; ++c)
                    o[c] = image.IsFloat() ? image.RowF(y)[4 * x + c]
                                           : static_cast<float>(image.RowW(y)[4 * x + c]) / 65535.0f;
                for (size_t p = 0; p < planes.size(); ++p) o[4 + p] = image.AuxPlane(planes[p])[size_t(y) * w + x];
            }
            ok = out->write_scanline(fileRow, 0, OIIO::TypeDesc::FLOAT, row.data());
        }
    } else if (image.IsFloat()) {
        ok = out->write_image(OIIO::TypeDesc::FLOAT, top, pixel, up);
    } else {
        ok = out->write_image(OIIO::TypeDesc::UINT16, top, pixel, up);
    }
    ok = out->close() && ok;
    if (!ok) {
        std::error_code ec;
        fs::remove(temp, ec);
        throw BadInput("cannot write " + path + ": " + FirstLine(out->geterror()));
    }
    std::error_code ec;
    fs::rename(temp, target, ec);
    if (ec) {
        fs::remove(temp, ec);
        throw BadInput("cannot write " + path + ": " + ec.message());
    }
}

}  // namespace host
