#include "host/image.h"
#include <algorithm>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include "host/limits.h"

namespace host {

namespace {
constexpr size_t kHugePage = size_t(2) << 20;
}

// Below a few huge pages the heap serves; above, an anonymous mapping (zeroed
// by the kernel) aligned to a huge page and advised to use them.
Image::Pixels Image::Allocate(size_t bytes)
{
    if (bytes < 4 * kHugePage) return Pixels(new uint8_t[bytes ? bytes : 1](), Release{0});
    bytes = (bytes + kHugePage - 1) & ~(kHugePage - 1);
    const size_t span = bytes + kHugePage;
    void* m = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) throw std::bad_alloc();
    uint8_t* base = static_cast<uint8_t*>(m);
    uint8_t* aligned = reinterpret_cast<uint8_t*>(
        (reinterpret_cast<uintptr_t>(base) + kHugePage - 1) & ~(kHugePage - 1));
    if (aligned > base) munmap(base, aligned - base);
    const size_t tail = span - (aligned - base) - bytes;
    if (tail) munmap(aligned + bytes, tail);
    madvise(aligned, bytes, MADV_HUGEPAGE);
    return Pixels(aligned, Release{bytes});
}

void Image::Release::operator()(uint8_t* p) const
{
    if (bytes) munmap(p, bytes);
    else delete[] p;
}

Image::Image(const ImageSpec& spec) : spec_(spec)
{
    spec_.width = std::max(spec_.width, 0);
    spec_.height = std::max(spec_.height, 0);
    CheckImageSize(spec_.width, spec_.height, "cannot make an image");
    rowBytes_ = static_cast<size_t>(spec_.width) * PixelBytes();
    size_t bytes = rowBytes_ * static_cast<size_t>(spec_.height);
    data_ = Allocate(bytes);
    std::vector<int> aux;
    for (int c : spec_.aux)
        if (c > ChanAlpha && std::find(aux.begin(), aux.end(), c) == aux.end()) aux.push_back(c);
    spec_.aux = aux;
    size_t plane = static_cast<size_t>(spec_.width) * static_cast<size_t>(spec_.height);
    for (size_t i = 0; i < aux.size(); ++i) auxData_.emplace_back(new float[plane ? plane : 1]());
}

Image* Image::New(const ImageSpec& spec) { return new Image(spec); }

Image* Image::NewLike(const Image& tmpl, int width, int height)
{
    ImageSpec spec = tmpl.spec_;
    if (width > 0) spec.width = width;
    if (height > 0) spec.height = height;
    return new Image(spec);
}

void Image::Recycle() const
{
    if (--uses_ == 0) delete this;
}

bool Image::HasChannel(int channel) const
{
    if (channel >= 0 && channel <= ChanAlpha) return true;
    return std::find(spec_.aux.begin(), spec_.aux.end(), channel) != spec_.aux.end();
}

float* Image::AuxPlane(int channel)
{
    auto it = std::find(spec_.aux.begin(), spec_.aux.end(), channel);
    return it == spec_.aux.end() ? nullptr : auxData_[it - spec_.aux.begin()].get();
}

const float* Image::AuxPlane(int channel) const
{
    return const_cast<Image*>(this)->AuxPlane(channel);
}

Image* Image::CopyOfImage() const
{
    Image* copy = new Image(spec_);
    std::memcpy(copy->data_.get(), data_.get(), rowBytes_ * spec_.height);
    size_t plane = static_cast<size_t>(spec_.width) * spec_.height;
    for (size_t i = 0; i < auxData_.size(); ++i)
        std::memcpy(copy->auxData_[i].get(), auxData_[i].get(), plane * sizeof(float));
    return copy;
}

}  // namespace host
