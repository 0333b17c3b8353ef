// Tables as files. CSV carries numbers: a header row of `item` and the
// channels' components (`position.x`, `color.r`, `index`), then one row per
// item, led by its number. JSON carries every channel with its name, type,
// count and values. Both write floats in the shortest text that reads back
// as the same float, and a float that is a whole number with ".0", so that
// a CSV column of floats never reads back as integers.
//
// The readers are strict: a file that is not such a table is refused with
// one line naming file, line and column ("a.csv:3:2: ...").
#pragma once
#include <memory>
#include <string>
#include "data/table.h"

std::string KTableToCsv(const KDataTable& table);
std::string KTableToJson(const KDataTable& table);

// `file` names the source in error lines. CSV columns group by their names:
// `n.x`, `n.y` (and `n.z`) make a Vector2 (Vector3) channel `n`, `n.r` to `n.a`
// a Color, any other column a Float, or an Integer when every cell is a whole
// number written without a point. Trailing empty cells make a channel shorter.
std::unique_ptr<KDataTable> KTableFromCsv(const std::string& text, const std::string& file);
std::unique_ptr<KDataTable> KTableFromJson(const std::string& text, const std::string& file);

// Reads `.json` as JSON and anything else as CSV.
std::unique_ptr<KDataTable> KReadTableFile(const std::string& path);
