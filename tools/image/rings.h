// The ring scheme of Flur and Microwaves: square rings around a centre, each
// pixel of a ring inheriting from the ring next to it where the ray from the
// centre through the pixel crosses that ring's row or column. Each ring costs
// one step per pixel, so the cost does not grow with the reach of the effect.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstdint>

struct KRings {
    float cx = 0.0f, cy = 0.0f;  // centre in pixels
    int32_t icx = 0, icy = 0;    // their integer parts
    int32_t width = 0, height = 0;
    int32_t count = 0;           // rings 0 .. count - 1
    int32_t first = 0;           // the first ring that reaches the image

    // A centre beyond a million pixels only moves the rays by less than float
    // precision, and its integer part must fit an int.
    KRings(float x, float y, int32_t w, int32_t h) : width(w), height(h)
    {
        cx = std::isfinite(x) ? std::clamp(x, -1.0e6f, w + 1.0e6f) : 0.0f;
        cy = std::isfinite(y) ? std::clamp(y, -1.0e6f, h + 1.0e6f) : 0.0f;
        icx = static_cast<int32_t>(cx);
        icy = static_cast<int32_t>(cy);
        count = std::max({icx + 1, w - icx, h - icy, icy + 1});
        // Rings nearer than the image's nearest pixel (Chebyshev) touch nothing.
        const int32_t dx = icx < 0 ? -icx : icx >= w ? icx - (w - 1) : 0;
        const int32_t dy = icy < 0 ? -icy : icy >= h ? icy - (h - 1) : 0;
        first = std::max(std::max(dx, dy) - 1, 1);
    }

    bool RowIn(int32_t y) const { return y >= 0 && y < height; }
    bool ColumnIn(int32_t x) const { return x >= 0 && x < width; }

    // One ring of the outward walk. row(y, from, x0, x1) updates pixels x0..x1-1 of row y
    // from row `from`; column(x, from, y0, y1) likewise down a column. Corners inherit
    // from their row when cornersFromRows says so for n, else from their column.
    template <class Row, class Column, class CornerFromRow>
    void Outward(int32_t n, Row&& row, Column&& column, CornerFromRow&& cornersFromRows) const
    {
        const int32_t yT = icy - n, yB = icy + n, xL = icx - n, xR = icx + n;
        const bool t = RowIn(yT), b = RowIn(yB), l = ColumnIn(xL), r = ColumnIn(xR);
        if (t || b) {
            const int32_t x0 = std::max(xL + 1, 0), x1 = std::min(xR, width);
            if (t) row(yT, yT + 1, x0, x1);
            if (b) row(yB, yB - 1, x0, x1);
        }
        if (l || r) {
            const int32_t y0 = std::max(yT + 1, 0), y1 = std::min(yB, height);
            if (l) column(xL, xL + 1, y0, y1);
            if (r) column(xR, xR - 1, y0, y1);
        }
        const bool fromRows = cornersFromRows(n);
        auto corner = [&](bool ok, int32_t x, int32_t y, int32_t towardX, int32_t towardY) {
            if (!ok) return;
            if (fromRows) row(y, y + towardY, x, x + 1);
            else column(x, x + towardX, y, y + 1);
        };
        corner(l && t, xL, yT, 1, 1);
        corner(r && t, xR, yT, -1, 1);
        corner(l && b, xL, yB, 1, -1);
        corner(r && b, xR, yB, -1, -1);
    }

    // One ring of the inward walk, each line inheriting from the line beyond it.
    // The spans shift by one with the ring's parity, so two corners of a ring are
    // reached twice and two not at all, alternating from ring to ring.
    template <class Row, class Column> void Inward(int32_t n, Row&& row, Column&& column) const
    {
        const int32_t yT = icy - n, yB = icy + n, xL = icx - n, xR = icx + n;
        const int32_t e = n % 2 == 0 ? 1 : 0, e2 = 1 - e;
        if (RowIn(yT) || RowIn(yB)) {
            const int32_t x0 = std::max(e - n + icx, 0), x1 = std::min(e + n + icx, width);
            if (RowIn(yT)) row(yT, yT - 1, x0, x1);
            if (RowIn(yB)) row(yB, yB + 1, x0, x1);
        }
        if (ColumnIn(xL) || ColumnIn(xR)) {
            const int32_t y0 = std::max(e2 - n + icy, 0), y1 = std::min(e2 + n + icy, height);
            if (ColumnIn(xL)) column(xL, xL - 1, y0, y1);
            if (ColumnIn(xR)) column(xR, xR + 1, y0, y1);
        }
    }

    // Where the ray through (x, y) meets row `to`: t = (to - cy) / (y - cy), and the
    // crossing is t (x - cx) + cx; along a column the axes swap.
    float RowT(int32_t y, int32_t to) const { return (static_cast<float>(to) - cy) / (static_cast<float>(y) - cy); }
    float ColumnT(int32_t x, int32_t to) const { return (static_cast<float>(to) - cx) / (static_cast<float>(x) - cx); }
};

// The integer part of a crossing and its fraction; a crossing that is not finite
// reads at the clamp's lower bound.
inline int32_t KCrossing(float s, float& fraction)
{
    fraction = 0.0f;
    if (!std::isfinite(s)) return -2000000000;
    if (!(std::fabs(s) < 2.0e9f)) return s > 0.0f ? 2000000000 : -2000000000;
    const int32_t i = static_cast<int32_t>(s);
    fraction = s - static_cast<float>(i);
    return i;
}
