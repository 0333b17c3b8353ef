// Shuffle: cuts the picture into a grid of cells and moves them about, by
// sliding them into a blank cell as in a sliding puzzle, or by swapping pairs.
// The blank cell of "Slide" is left empty.
#include <algorithm>
#include <cmath>
#include <vector>
#include "framework/effect.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectShuffle : public KEffectWarp {
public:
    KEffectShuffle()
    {
        inputList.AddPage("Shuffle");
        inputList.AddSeed(&seed, "Random Seed", 0, 0);
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, 0, {"Slide", "Swap", "[end]"});
        inputList.AddSlider(&columns, 5, "Horizontal subdivisions", "SuHo"_id, 0, 1, 24);
        inputList.AddSlider(&rows, 5, "Vertical subdivisions", "SuVe"_id, 0, 1, 24);
        inputList.AddScrew(&amount, 5.0f, "Amount", "Amnt"_id, 0, 0.0, 100.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // No move leaves every cell where it is, and no blank either.
        if (!(amount > 0.0f)) return false;
        h = std::max(columns, 1);
        v = std::max(rows, 1);
        const int32_t n = h * v;
        cells.resize(n);
        for (int32_t i = 0; i < n; ++i) cells[i] = i;
        KRandomSeed(seed + 1234);
        // A fractional amount makes one more move: the count is compared as a float.
        if (type == 0) {
            int32_t at = KRandomInt(n);
            blank = cells[at];
            int32_t back = -1;
            for (int32_t i = 0; i < amount; ++i) {
                int32_t dir;
                do dir = KRandomInt(4);
                while (dir == back);
                int32_t x = at % h, y = at / h;
                switch (dir) {
                case 0: x = (x + 1) % h; break;
                case 1: y = (y + 1) % v; break;
                case 2: x = (x + h - 1) % h; break;
                default: y = (y + v - 1) % v; break;
                }
                const int32_t next = y * h + x;
                std::swap(cells[at], cells[next]);
                at = next;
                back = (dir + 2) % 4;
            }
        } else {
            blank = -1;
            for (int32_t i = 0; i < amount; ++i) {
                const int32_t a = KRandomInt(n);
                const int32_t b = KRandomInt(n);
                std::swap(cells[a], cells[b]);
            }
        }
        cellsX = static_cast<float>(h);
        cellsY = static_cast<float>(v) * pictureAspect;  // rows run to 1 / picture aspect
        cellW = 1.0f / cellsX;
        cellH = 1.0f / cellsY;
        return true;
    }

    void Stop(KImage** output) override
    {
        cells.clear();
        cells.shrink_to_fit();
        KEffectWarp::Stop(output);
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const float gx = in.x * cellsX, gy = in.y * cellsY;
        const int32_t cx = std::clamp(static_cast<int32_t>(std::floor(gx)), 0, h - 1);
        const int32_t cy = std::clamp(static_cast<int32_t>(std::floor(gy)), 0, v - 1);
        const int32_t from = cells[cy * h + cx];
        if (from == blank) return false;
        // Same place within the cell, in the cell the content came from;
        // written whole, as the process reads the pair back as one value.
        out = KPosition{(gx + static_cast<float>(from % h - cx)) * cellW,
                        (gy + static_cast<float>(from / h - cy)) * cellH};
        return true;
    }

private:
    int32_t seed = 0;
    int32_t type = 0;
    int32_t columns = 5, rows = 5;
    float amount = 5.0f;
    // Made by Start, freed by Stop: the source cell of each cell.
    std::vector<int32_t> cells;
    int32_t h = 1, v = 1, blank = -1;
    float cellsX = 1.0f, cellsY = 1.0f, cellW = 1.0f, cellH = 1.0f;
};

ZV_TOOL(KEffectShuffle, ZV_Shuffle);
