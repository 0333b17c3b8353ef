// Shapes to and from SVG. A file is drawn in the pixels of a picture: shape
// space maps to it the way a render places shapes, x = (sx + 0.5) W and
// y = H / 2 - sy W, y down. The picture's size is the viewBox, else the
// width and height, else 1920 x 1080.
#pragma once
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>
#include "shape/shape.h"

// A file that cannot be read as SVG; the text is one line naming why.
class KSvgError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct KSvgRead {
    std::unique_ptr<ShapeListVector> shapes;
    int32_t width = 1920, height = 1080;
    // Features met and left out, each named once ("<text>", "arc flags").
    std::vector<std::string> unsupported;
};

// Paths, basic shapes and groups with their transforms and paint. One list
// per group at the top level, one for the shapes outside any group.
KSvgRead KReadSvg(const std::string& text);
KSvgRead KReadSvgFile(const std::string& path);

// One group per list, one path per shape with its fill and pen.
std::string KWriteSvg(const ShapeListVector& shapes, int32_t width, int32_t height);
