#include "data/table_files.h"
#include <charconv>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>
#include "host/errors.h"
#include "host/limits.h"

namespace {

using host::BadInput;

struct TypeName {
    int32_t type;
    const char* word;
};
constexpr TypeName kTypeNames[] = {
    {kDataBool, "Bool"},       {kDataInteger, "Integer"}, {kDataFloat, "Float"},   {kDataVector2, "Vector2"},
    {kDataVector3, "Vector3"}, {kDataColor, "Color"},     {kDataText, "Text"},     {kDataMatrix, "Matrix"},
};

const char* TypeWord(int32_t type)
{
    for (const TypeName& t : kTypeNames)
        if (t.type == type) return t.word;
    return "Any";
}

std::string Float(float v)
{
    char text[32];
    std::string s(text, std::to_chars(text, text + sizeof text, v).ptr);
    if (s.find_first_not_of("-0123456789") == std::string::npos) s += ".0";
    return s;
}

int32_t Components(const KDataChannel& c) { return c.intComponents + c.floatComponents; }

std::string Cell(const KDataChannel& c, int32_t e, int32_t i)
{
    if (c.intComponents) return std::to_string(c.ints[size_t(e) * c.intComponents + i]);
    return Float(c.floats[size_t(e) * c.floatComponents + i]);
}

const char* const kXyz[] = {".x", ".y", ".z"};
const char* const kRgba[] = {".r", ".g", ".b", ".a"};

// A channel's columns: "position.x", "color.a"; one component is the name alone.
std::vector<std::string> Columns(const KDataChannel& c)
{
    const int32_t n = Components(c);
    if (n == 1) return {c.name};
    std::vector<std::string> names;
    for (int32_t i = 0; i < n; ++i) names.push_back(c.name + (c.type == kDataColor ? kRgba[i] : kXyz[i]));
    return names;
}

std::string Where(const std::string& file, size_t line, size_t column)
{
    return file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": ";
}

std::string Trim(const std::string& s)
{
    const size_t a = s.find_first_not_of(" \t\r");
    return a == std::string::npos ? std::string() : s.substr(a, s.find_last_not_of(" \t\r") - a + 1);
}

bool ParseFloat(const std::string& s, float& out)
{
    const char* end = s.data() + s.size();
    auto [p, ec] = std::from_chars(s.data(), end, out);
    return ec == std::errc() && p == end;
}

bool ParseInt(const std::string& s, int32_t& out)
{
    const char* end = s.data() + s.size();
    auto [p, ec] = std::from_chars(s.data(), end, out);
    return ec == std::errc() && p == end;
}

// A channel that the header's columns [first, first + n) make.
struct Group {
    std::string name;
    int32_t type;
    size_t first, n;
};

std::vector<Group> GroupColumns(const std::vector<std::string>& header)
{
    std::vector<Group> groups;
    for (size_t c = 1; c < header.size();) {
        const std::string& h = header[c];
        const auto run = [&](const char* const* suffixes, size_t most) {
            const size_t dot = h.size() >= 2 ? h.size() - 2 : 0;
            if (h.size() < 3 || h.compare(dot, 2, suffixes[0]) != 0) return size_t(0);
            const std::string base = h.substr(0, dot);
            size_t n = 0;
            while (n < most && c + n < header.size() && header[c + n] == base + suffixes[n]) ++n;
            return n;
        };
        const size_t xyz = run(kXyz, 3), rgba = run(kRgba, 4);
        if (rgba == 4) {
            groups.push_back({h.substr(0, h.size() - 2), kDataColor, c, 4});
        } else if (xyz >= 2) {
            groups.push_back({h.substr(0, h.size() - 2), xyz == 3 ? kDataVector3 : kDataVector2, c, xyz});
        } else {
            groups.push_back({h, kDataFloat, c, 1});
        }
        c += groups.back().n;
    }
    return groups;
}

}  // namespace

std::string KTableToCsv(const KDataTable& t)
{
    std::string text = "item";
    for (size_t i = 0; i < t.ChannelCount(); ++i)
        for (const std::string& column : Columns(*t.Channel(i))) text += "," + column;
    text += "\n";
    for (int32_t e = 0; e < t.maximumCount; ++e) {
        text += std::to_string(e);
        for (size_t i = 0; i < t.ChannelCount(); ++i) {
            const KDataChannel& c = *t.Channel(i);
            for (int32_t k = 0; k < Components(c); ++k) text += e < c.count ? "," + Cell(c, e, k) : ",";
        }
        text += "\n";
    }
    return text;
}

std::string KTableToJson(const KDataTable& t)
{
    std::string text = "{\n  \"channels\": [";
    for (size_t i = 0; i < t.ChannelCount(); ++i) {
        const KDataChannel& c = *t.Channel(i);
        text += std::string(i ? "," : "") + "\n    {\"name\": " + nlohmann::json(c.name).dump() + ", \"type\": \"" +
                TypeWord(c.type) + "\", \"count\": " + std::to_string(c.count) + ", \"values\": [";
        for (int32_t e = 0; e < c.count; ++e)
            for (int32_t k = 0; k < Components(c); ++k) text += (e || k ? ", " : "") + Cell(c, e, k);
        text += "]}";
    }
    return text + "\n  ]\n}\n";
}

std::unique_ptr<KDataTable> KTableFromCsv(const std::string& text, const std::string& file)
{
    if (text.find('\0') != std::string::npos) throw BadInput(file + ": not a text table (it holds binary data)");
    std::vector<std::vector<std::string>> rows;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> cells;
        size_t from = 0;
        for (size_t comma; (comma = line.find(',', from)) != std::string::npos; from = comma + 1)
            cells.push_back(Trim(line.substr(from, comma - from)));
        cells.push_back(Trim(line.substr(from)));
        rows.push_back(std::move(cells));
    }
    while (!rows.empty() && rows.back().size() == 1 && rows.back()[0].empty()) rows.pop_back();
    if (rows.empty()) throw BadInput(file + ": empty, not a table");
    const std::vector<std::string>& header = rows[0];
    for (size_t c = 1; c < header.size(); ++c)
        if (header[c].empty()) throw BadInput(Where(file, 1, c + 1) + "a column without a name");

    const std::vector<Group> groups = GroupColumns(header);
    auto table = std::make_unique<KDataTable>();
    for (const Group& g : groups) {
        // Cells are read down the group's columns; the first empty row ends the channel.
        int32_t count = 0;
        while (size_t(count) + 1 < rows.size()) {
            const auto& row = rows[size_t(count) + 1];
            if (row.size() != header.size())
                throw BadInput(Where(file, size_t(count) + 2, std::min(row.size(), header.size()) + 1) + "a row of " +
                               std::to_string(row.size()) + " cells under a header of " +
                               std::to_string(header.size()));
            if (row[g.first].empty()) break;
            ++count;
        }
        for (size_t r = size_t(count) + 1; r < rows.size(); ++r)
            for (size_t k = 0; k < g.n; ++k) {
                if (rows[r].size() != header.size())
                    throw BadInput(Where(file, r + 1, std::min(rows[r].size(), header.size()) + 1) + "a row of " +
                                   std::to_string(rows[r].size()) + " cells under a header of " +
                                   std::to_string(header.size()));
                if (!rows[r][g.first + k].empty())
                    throw BadInput(Where(file, r + 1, g.first + k + 1) + "a value below an empty cell of column " +
                                   header[g.first + k]);
            }
        bool whole = g.type == kDataFloat && count > 0;
        for (int32_t e = 0; e < count && whole; ++e) {
            int32_t v;
            whole = ParseInt(rows[size_t(e) + 1][g.first], v);
        }
        auto channel = KDataChannel::Create(g.name, whole ? kDataInteger : g.type, count);
        for (int32_t e = 0; e < count; ++e)
            for (size_t k = 0; k < g.n; ++k) {
                const std::string& cell = rows[size_t(e) + 1][g.first + k];
                const bool ok = whole ? ParseInt(cell, channel->ints[size_t(e)])
                                      : ParseFloat(cell, channel->floats[size_t(e) * g.n + k]);
                if (!ok)
                    throw BadInput(Where(file, size_t(e) + 2, g.first + k + 1) + "'" + cell + "' is not a number");
            }
        table->Add(std::move(channel));
    }
    return table;
}

std::unique_ptr<KDataTable> KTableFromJson(const std::string& text, const std::string& file)
{
    nlohmann::json root;
    try {
        root = nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& e) {
        // The library's line ends "... at line 3, column 5: what"; keep that order in ours.
        std::string what = e.what();
        const size_t at = what.find("at line ");
        size_t line = 1, column = 1;
        if (at != std::string::npos) std::sscanf(what.c_str() + at, "at line %zu, column %zu", &line, &column);
        const size_t colon = what.find(": ", at == std::string::npos ? 0 : at);
        throw BadInput(Where(file, line, column) + (colon == std::string::npos ? what : what.substr(colon + 2)));
    }
    // Values have no positions once parsed: a wrong one is found again in the text,
    // searching from its channel's name onward.
    size_t cursor = 0;
    const auto fail = [&](const std::string& needle, const std::string& why) -> BadInput {
        const size_t at = text.find(needle, cursor);
        const size_t pos = at == std::string::npos ? cursor : at;
        size_t line = 1, column = 1;
        for (size_t i = 0; i < pos; ++i) line += text[i] == '\n', column = text[i] == '\n' ? 1 : column + 1;
        return BadInput(Where(file, line, column) + why);
    };
    if (!root.is_object() || !root.contains("channels") || !root["channels"].is_array())
        throw fail("{", "not a table: expected an object with \"channels\", a list");
    auto table = std::make_unique<KDataTable>();
    for (const nlohmann::json& c : root["channels"]) {
        if (!c.is_object() || !c.contains("name") || !c["name"].is_string() || !c.contains("type") ||
            !c["type"].is_string())
            throw fail("{", "a channel needs \"name\" and \"type\"");
        const std::string name = c["name"].get<std::string>();
        if (size_t at = text.find(nlohmann::json(name).dump(), cursor); at != std::string::npos) cursor = at;
        const std::string word = c["type"].get<std::string>();
        int32_t type = kDataAny;
        for (const TypeName& t : kTypeNames)
            if (word == t.word) type = t.type;
        if (type == kDataAny)
            throw fail("\"" + word + "\"", "unknown channel type \"" + word +
                                               "\" (Bool, Integer, Float, Vector2, Vector3, Color, Text, Matrix)");
        const nlohmann::json values = c.value("values", nlohmann::json::array());
        if (!values.is_array()) throw fail("\"values\"", "\"values\" is a list of numbers");
        auto channel = KDataChannel::Create(name, type, 0);
        const size_t n = size_t(Components(*channel));
        if (n == 0 ? !values.empty() : values.size() % n != 0)
            throw fail("\"values\"", "channel " + name + " has " + std::to_string(values.size()) +
                                         " values, not a whole number of " + std::to_string(n) + "-component items");
        const int64_t count = n ? int64_t(values.size() / n) : c.value("count", int64_t(0));
        if (c.contains("count") && (!c["count"].is_number_integer() || c["count"].get<int64_t>() != count))
            throw fail("\"count\"", "channel " + name + ": \"count\" does not match its values");
        channel = KDataChannel::Create(name, type, int32_t(count));
        for (size_t i = 0; i < values.size(); ++i) {
            const nlohmann::json& v = values[i];
            const bool ok = channel->intComponents ? v.is_number_integer() : v.is_number();
            if (!ok) throw fail(v.dump(), "channel " + name + ": value " + std::to_string(i) + " (" + v.dump() +
                                              ") is not " + (channel->intComponents ? "a whole number" : "a number"));
            if (channel->intComponents) channel->ints[i] = v.get<int32_t>();
            else channel->floats[i] = v.get<float>();
        }
        table->Add(std::move(channel));
    }
    return table;
}

std::unique_ptr<KDataTable> KReadTableFile(const std::string& path)
{
    host::CheckReadableFile(path, host::kMaxTableFileBytes, "table file");
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in && !in.eof()) throw BadInput("cannot read " + path);
    const bool json = path.size() >= 5 && path.compare(path.size() - 5, 5, ".json") == 0;
    return json ? KTableFromJson(text.str(), path) : KTableFromCsv(text.str(), path);
}
