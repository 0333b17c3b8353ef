// dLoader Create: a table from a comma-separated text file, as a spreadsheet
// exports it. The first cell of each row (or column) is its channel's name;
// the first row (or column) names the items and carries no numbers, so it
// comes in as an empty Text channel. Whatever the extension, the file is read
// this way; nothing in it is refused: text that is not a number reads as its
// numeric prefix, or 0.
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>
#include "data/effect_data.h"
#include "framework/registration.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

// Lines split at newline characters only, cells at every comma; a carriage
// return stays in the last cell, where the number reading stops at it.
Rows ReadCells(const std::string& path)
{
    Rows rows;
    std::ifstream file(path, std::ios::binary);
    std::string line;
    while (file && std::getline(file, line)) {
        std::vector<std::string> cells;
        size_t from = 0;
        for (size_t comma; (comma = line.find(',', from)) != std::string::npos; from = comma + 1)
            cells.push_back(line.substr(from, comma - from));
        cells.push_back(line.substr(from));
        rows.push_back(std::move(cells));
    }
    return rows;
}

}  // namespace

class KEffectDataLoaderCreate : public KEffectData {
public:
    KEffectDataLoaderCreate()
    {
        inputList.AddLabel("Data Loader", 0, 0);
        inputList.AddFile(&filename, "", "Filename", "DFiN"_id, 0, "Data file (*.cvs)|*.cvs");
        inputList.AddMultiButton(&direction, 0, "Channels Direction", "CDir"_id, 0,
                                 {"By Row", "By Column", "[end]"});
        // Offered, and without effect: the first row and column always name.
        inputList.AddMultiButton(&firstRow, 0, "First Row", "CDir"_id, 0,
                                 {"Automatic", "Channel Names", "Channel Data", "[end]"});
        inputList.AddMultiButton(&firstColumn, 0, "First Column", "CDir"_id, 0,
                                 {"Automatic", "Channel Names", "Channel Data", "[end]"});
        inputList.AddTextEdit(&prefix, "channel", "Channel Name Prefix (out)", "CNPr"_id, 0, 1);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        auto table = std::make_unique<KDataTable>();
        if (filename.empty()) return table;
        const Rows rows = ReadCells(filename);
        size_t width = 0;
        for (const auto& row : rows) width = std::max(width, row.size());
        if (rows.empty() || width == 0) return table;

        const auto number = [](const std::string& cell) { return static_cast<float>(std::atof(cell.c_str())); };
        if (direction == 0) {
            for (size_t r = 0; r < rows.size(); ++r) {
                const auto& row = rows[r];
                const int32_t count = static_cast<int32_t>(row.size()) - 1;
                auto channel = KDataChannel::Create(row[0], r == 0 ? kDataText : kDataFloat, count);
                if (r > 0)
                    for (int32_t j = 0; j < count; ++j) channel->floats[size_t(j)] = number(row[size_t(j) + 1]);
                table->Add(std::move(channel));
            }
        } else {
            const int32_t count = static_cast<int32_t>(rows.size()) - 1;
            for (size_t c = 0; c < width; ++c) {
                const std::string name = c < rows[0].size() ? rows[0][c] : "Value";
                auto channel = KDataChannel::Create(name, c == 0 ? kDataText : kDataFloat, count);
                if (c > 0)
                    for (int32_t j = 0; j < count; ++j) {
                        const auto& row = rows[size_t(j) + 1];
                        channel->floats[size_t(j)] = c < row.size() ? number(row[c]) : 0.0f;
                    }
                table->Add(std::move(channel));
            }
        }
        return table;
    }

private:
    std::string filename, prefix = "channel";
    int32_t direction = 0, firstRow = 0, firstColumn = 0;
};

ZV_TOOL(KEffectDataLoaderCreate, ZV_DataLoaderCreate);
