// Tables travel between tools in a host value of the plug-in's own class. A
// tool reads its own copy and hands over a copy of its result, so no table is
// shared between tools.
#include <fstream>
#include <memory>
#include <string>
#include "bridge/value_kinds.h"
#include "data/table_files.h"
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

// With nothing connected the tool gets an empty table, never null.
void Read(const host::Parameter* value, void* field)
{
    auto* data = dynamic_cast<const KDataParameter*>(value);
    KSetField(field, data && data->table ? data->table->Clone().release() : new KDataTable);
}

host::Value Write(const void* field)
{
    const KDataTable* table = *static_cast<KDataTable* const*>(field);
    return std::make_shared<KDataParameter>(table ? table->Clone() : nullptr);
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw host::BadInput("cannot write " + path);
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
    data.release = KReleaseField<KDataTable>;
    data.name = "Data";
    data.extensions = {".csv", ".json"};
    data.writeFile = [](const host::Parameter& value, const std::string& path, const std::string& extension,
                        const host::WriteOptions&) {
        static const KDataTable none;
        const auto* data = dynamic_cast<const KDataParameter*>(&value);
        const KDataTable& table = data && data->table ? *data->table : none;
        WriteFile(path, extension == ".json" ? KTableToJson(table) : KTableToCsv(table));
    };
    data.readFile = [](const std::string& path) -> host::Value {
        return std::make_shared<KDataParameter>(KReadTableFile(path));
    };
    return data;
}

}  // namespace

ZV_VALUE_KIND(DataKind);
