// Helpers of the host image tests: images that recycle themselves, blank or
// filled channel by channel.
#pragma once
#include <memory>
#include <vector>
#include "host/image.h"

namespace zvhost {

struct Free {
    void operator()(host::Image* i) const { i->Recycle(); }
};
using Img = std::unique_ptr<host::Image, Free>;

inline Img Blank(int w, int h, bool isFloat, std::vector<int> aux = {})
{
    host::ImageSpec spec;
    spec.width = w;
    spec.height = h;
    spec.depth = isFloat ? host::DepthFloat32 : host::DepthInt16;
    spec.aux = std::move(aux);
    return Img(host::Image::New(spec));
}

// A w x h image with channel c of pixel x, y set to fn(x, y, c).
template <typename Fn>
Img Make(int w, int h, bool isFloat, Fn fn, std::vector<int> aux = {})
{
    Img img = Blank(w, h, isFloat, std::move(aux));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c) {
                if (isFloat) img->RowF(y)[x * 4 + c] = static_cast<float>(fn(x, y, c));
                else img->RowW(y)[x * 4 + c] = static_cast<uint16_t>(fn(x, y, c));
            }
    return img;
}

}  // namespace zvhost
