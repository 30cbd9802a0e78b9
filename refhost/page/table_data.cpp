#include "page/table_data.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "page/data_file.h"
#include "page/new_file.h"

namespace qvhost::page {

using nlohmann::ordered_json;

namespace {

constexpr std::size_t kRowsAFile = 10'000;

struct Column {
    std::string id;
    std::string label;
    unsigned width = 0;
};

std::vector<Column> columns_of(const Store& store, const TableInfo& table) {
    const auto properties = store.properties(table.id);
    std::vector<Column> columns;
    const auto add = [&](const std::string& id, unsigned width) {
        if (std::any_of(columns.begin(), columns.end(),
                        [&](const Column& known) { return known.id == id; }))
            return;
        const auto found = std::find_if(properties.begin(), properties.end(),
                                        [&](const PropertyInfo& one) { return one.id == id; });
        columns.push_back({id, found == properties.end() ? id : found->display, width});
    };
    if (const auto* sheet = std::get_if<ColumnLayout>(&table.layout)) {
        for (const auto& id : sheet->headers) add(id, 0);
    } else if (const auto* rows = std::get_if<RowLayout>(&table.layout)) {
        for (std::size_t i = 0; i < rows->headers.size(); ++i)
            add(rows->headers[i], i < rows->widths.size() ? rows->widths[i] : 0);
    }
    for (const auto& property : properties) add(property.id, 0);
    return columns;
}

ordered_json json_of(const std::variant<std::string, int>& value) {
    return std::visit([](const auto& plain) { return ordered_json(plain); }, value);
}

// Rows column by column, as the page holds them.
class Chunk {
public:
    explicit Chunk(const std::vector<Column>& columns) {
        for (std::size_t i = 0; i < columns.size(); ++i) place_[columns[i].id] = i;
        clear();
    }

    void add(const Record& record) {
        if (names_.empty() || names_.back()[1] != record.name || names_.back()[2] != record.index)
            names_.push_back({0, record.name, record.index});
        names_.back()[0] = names_.back()[0].get<std::size_t>() + 1;
        for (auto& column : columns_) column.push_back(nullptr);
        for (const auto& property : record.properties) {
            auto& cell = columns_[place_.at(property.id)].back();
            // A property that the record has twice is one cell with both values.
            cell = cell.is_null()
                       ? json_of(property.value)
                       : ordered_json(text_of(cell) + "\n" + text_of(json_of(property.value)));
        }
        ++count_;
    }

    std::size_t count() const { return count_; }

    ordered_json take() {
        ordered_json json{
            {"count", count_}, {"names", std::move(names_)}, {"columns", std::move(columns_)}};
        clear();
        return json;
    }

private:
    static std::string text_of(const ordered_json& cell) {
        return cell.is_string() ? cell.get<std::string>() : cell.dump();
    }

    void clear() {
        count_ = 0;
        names_ = ordered_json::array();
        columns_.assign(place_.size(), ordered_json::array());
    }

    std::map<std::string, std::size_t> place_;
    std::size_t count_ = 0;
    ordered_json names_;
    std::vector<ordered_json> columns_;
};

}  // namespace

ordered_json write_table(const Store& store, const ModuleInfo& module, const TableInfo& table,
                         const std::filesystem::path& data, const std::string& stem) {
    const auto columns = columns_of(store, table);
    auto files = ordered_json::array();
    Chunk chunk(columns);
    const auto write = [&] {
        const auto name = stem + "-" + std::to_string(files.size() + 1) + ".js";
        write_new_file(data / name, data_script("rows", chunk.take()));
        files.push_back("data/" + name);
    };
    store.each_record(table.id, [&](const Record& record) {
        chunk.add(record);
        if (chunk.count() == kRowsAFile) write();
    });
    if (chunk.count() > 0) write();

    auto heads = ordered_json::array();
    for (const auto& column : columns) {
        heads.push_back({{"id", column.id}, {"label", column.label}, {"width", column.width}});
    }
    const auto* sheet = std::get_if<ColumnLayout>(&table.layout);
    const bool rows = std::holds_alternative<RowLayout>(table.layout);
    return {{"id", table.id},
            {"module", module.name},
            {"kind", sheet  ? "columns"
                     : rows ? "rows"
                            : ""},
            {"columns", std::move(heads)},
            {"records", table.records},
            {"reason", table.reason},
            {"chunk_rows", kRowsAFile},
            {"chunks", std::move(files)}};
}

}  // namespace qvhost::page
