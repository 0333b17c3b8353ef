// The packing of the Pack tool, shared with the data tools that turn a
// picture into items: the picture is cut into rectangles of near-uniform
// colour, each an item with a position, a size and its mean colour.
//
// Cutting starts from the whole picture and always takes the largest piece
// still waiting: a piece whose colour varies more than the tolerance (the
// standard deviation of any of red, green, blue, alpha), or that is larger
// than the maximum size, is halved across its longer side, unless its halves
// would fall below the minimum size. When the item budget is spent, the
// pieces still waiting are kept whole, so the budget goes to the large
// pieces first and fine detail is what a small budget gives up.
#pragma once
#include <cstdint>
#include <vector>
#include "framework/parameter.h"
#include "raster/pixel.h"

class KImage;

struct KPackItem {
    // The centre as fractions of the picture's width and height (y up), and
    // the size as fractions of the picture's width, so that a square item has
    // w = h on a picture of any shape.
    float x = 0.0f, y = 0.0f, w = 0.0f, h = 0.0f;
    KPixelF color;                     // mean premultiplied colour
    int32_t left = 0, bottom = 0;      // the rectangle in pixels
    int32_t right = 0, top = 0;        // one past its last column and row
};

struct KPackSettings {
    float tolerance = 0.05f;
    int32_t minimumSize = 4;      // pixels
    int32_t maximumSize = 128;    // pixels
    int32_t maximumItems = 5000;
    bool skipTransparent = true;  // leave out items whose mean alpha is 0

    // The group "Pack" of every tool that packs.
    void Declare(KParameterList& list);
};

// Items largest first (ties bottom to top, left to right). `scale` multiplies
// the sizes in pixels, for pictures at a proxy scale. With `cover`, every
// pixel's item index (or -1 where a skipped item lies), row by row.
std::vector<KPackItem> KPack(const KImage& image, const KPackSettings& settings, float scale,
                             std::vector<int32_t>* cover = nullptr);
