// Tables travel between tools in a host value of the plug-in's own class. A
// tool reads its own copy and hands over a copy of its result, so no table is
// shared between tools.
#include <charconv>
#include <fstream>
#include <memory>
#include <string>
#include <vector>
#include "bridge/value_kinds.h"
#include "data/table.h"
#include "host/errors.h"

namespace {

class KDataParameter : public host::Parameter {
public:
    explicit KDataParameter(std::unique_ptr<KDataTable> t) : table(std::move(t)) {}
    host::DataType Type() const override { return host::DataType::Custom; }
    std::string TypeId() const override { return "TorvenMarsh.ZV_DataParameter"; }
    std::string ToText() const override { return table ? table->Dump() : "- no data -"; }
    std::unique_ptr<KDataTable> table;
};

void Release(void* field)
{
    auto** table = static_cast<KDataTable**>(field);
    delete *table;
    *table = nullptr;
}

// With nothing connected the tool gets an empty table, never null.
void Read(const host::Parameter* value, void* field)
{
    Release(field);
    auto* data = dynamic_cast<const KDataParameter*>(value);
    *static_cast<KDataTable**>(field) =
        data && data->table ? data->table->Clone().release() : new KDataTable;
}

host::Value Write(const void* field)
{
    const KDataTable* table = *static_cast<KDataTable* const*>(field);
    return std::make_shared<KDataParameter>(table ? table->Clone() : nullptr);
}

// The shortest text that reads back as the same float.
std::string Shortest(float v)
{
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, v).ptr);
}

const char* TypeWord(int32_t type)
{
    switch (type) {
    case kDataBool: return "Bool";
    case kDataColor: return "Color";
    case kDataInteger: return "Integer";
    case kDataFloat: return "Float";
    case kDataVector2: return "Vector2";
    case kDataVector3: return "Vector3";
    case kDataText: return "Text";
    case kDataMatrix: return "Matrix";
    default: return "Any";
    }
}

// The components of a channel as columns: "position.x", "color.a"; a
// channel of one component is its name alone.
std::vector<std::string> Columns(const KDataChannel& c)
{
    const int32_t n = c.intComponents + c.floatComponents;
    if (n == 1) return {c.name};
    static const char* xyz[] = {".x", ".y", ".z"};
    static const char* rgba[] = {".r", ".g", ".b", ".a"};
    std::vector<std::string> names;
    for (int32_t i = 0; i < n; ++i) names.push_back(c.name + (c.type == kDataColor ? rgba[i] : xyz[i]));
    return names;
}

// Component i of element e as text: integers as they are, floats shortest.
std::string Cell(const KDataChannel& c, int32_t e, int32_t i)
{
    if (c.intComponents) return std::to_string(c.ints[size_t(e) * c.intComponents + i]);
    return Shortest(c.floats[size_t(e) * c.floatComponents + i]);
}

const KDataTable& TableOf(const host::Parameter& value)
{
    static const KDataTable none;
    const auto* data = dynamic_cast<const KDataParameter*>(&value);
    return data && data->table ? *data->table : none;
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw host::BadInput("cannot write " + path);
}

// CSV: a header of channel.component names, then one row per item; a channel
// shorter than the table leaves its cells empty.
void WriteCsv(const host::Parameter& value, const std::string& path)
{
    const KDataTable& t = TableOf(value);
    std::string text, header;
    for (size_t i = 0; i < t.ChannelCount(); ++i)
        for (const std::string& column : Columns(*t.Channel(i))) header += (header.empty() ? "" : ",") + column;
    text = header + "\n";
    for (int32_t e = 0; e < t.maximumCount; ++e) {
        std::string row;
        bool first = true;
        for (size_t i = 0; i < t.ChannelCount(); ++i) {
            const KDataChannel& c = *t.Channel(i);
            for (int32_t k = 0; k < c.intComponents + c.floatComponents; ++k) {
                row += first ? "" : ",";
                first = false;
                if (e < c.count) row += Cell(c, e, k);
            }
        }
        text += row + "\n";
    }
    WriteFile(path, text);
}

// JSON: the channels in order, each with its name, type, count and values,
// components of an element side by side.
void WriteJson(const host::Parameter& value, const std::string& path)
{
    const KDataTable& t = TableOf(value);
    auto quoted = [](const std::string& s) {
        std::string q = "\"";
        for (char ch : s) {
            if (ch == '"' || ch == '\\') q += '\\';
            if (static_cast<unsigned char>(ch) < 0x20) {
                char esc[8];
                std::snprintf(esc, sizeof esc, "\\u%04x", ch);
                q += esc;
            } else {
                q += ch;
            }
        }
        return q + "\"";
    };
    std::string text = "{\n  \"channels\": [";
    for (size_t i = 0; i < t.ChannelCount(); ++i) {
        const KDataChannel& c = *t.Channel(i);
        text += std::string(i ? "," : "") + "\n    {\"name\": " + quoted(c.name) + ", \"type\": \"" + TypeWord(c.type) +
                "\", \"count\": " + std::to_string(c.count) + ", \"values\": [";
        const int32_t n = c.intComponents + c.floatComponents;
        for (int32_t e = 0; e < c.count; ++e)
            for (int32_t k = 0; k < n; ++k) text += (e || k ? ", " : "") + Cell(c, e, k);
        text += "]}";
    }
    text += "\n  ]\n}\n";
    WriteFile(path, text);
}

KValueKind DataKind()
{
    KValueKind data;
    data.valueKind = kValueData;
    data.dataType = host::DataType::Custom;
    data.typeId = "TorvenMarsh.ZV_DataParameter";
    data.outputId = "Output";
    data.read = Read;
    data.write = Write;
    data.release = Release;
    data.name = "Data";
    data.extensions = {".csv", ".json"};
    data.writeFile = [](const host::Parameter& value, const std::string& path, const std::string& extension,
                        const host::WriteOptions&) {
        if (extension == ".json") WriteJson(value, path);
        else WriteCsv(value, path);
    };
    return data;
}

}  // namespace

ZV_VALUE_KIND(DataKind);
