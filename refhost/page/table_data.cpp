#include "page/table_data.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "files/new_file.h"
#include "page/data_file.h"
#include "report/json_text.h"

namespace qvhost::page {

using nlohmann::ordered_json;

namespace {

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

using Value = std::variant<std::string, int>;

std::string text_of(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text ? *text : std::to_string(std::get<int>(value));
}

// Rows column by column, as the page holds them: {"count": N, "names": [[ROWS, NAME, INDEX], ...],
// "columns": [[CELL, ...], ...]}, a cell being a text, a number or null.
class Chunk {
public:
    explicit Chunk(const std::vector<Column>& columns) : columns_(columns.size()) {
        for (std::size_t i = 0; i < columns.size(); ++i) place_[columns[i].id] = i;
    }

    void add(const Record& record) {
        if (rows_of_name_ > 0 && (record.name != name_ || record.index != index_)) put_name();
        if (rows_of_name_++ == 0) {
            name_ = record.name;
            index_ = record.index;
        }
        cells_.assign(columns_.size(), nullptr);
        for (const auto& property : record.properties) {
            auto& cell = cells_[place_.at(property.id)];
            if (cell) {
                // A property that the record has twice is one cell with both values.
                joined_.push_back(text_of(*cell) + "\n" + text_of(property.value));
                cell = &joined_.back();
            } else {
                cell = &property.value;
            }
        }
        bytes_ = 0;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            put_cell(cells_[i], columns_[i]);
            bytes_ += columns_[i].size();
        }
        joined_.clear();
        ++count_;
    }

    std::size_t count() const { return count_; }
    bool is_full() const { return count_ == kRowsAFile || bytes_ >= kBytesAFile; }

    // The rows so far as JSON. The next chunk begins empty.
    std::string take() {
        put_name();
        auto json =
            R"({"count":)" + std::to_string(count_) + R"(,"names":[)" + names_ + R"(],"columns":[)";
        const char* separator = "";
        for (auto& column : columns_) {
            json.append(separator).append("[").append(column).append("]");
            column.clear();
            separator = ",";
        }
        names_.clear();
        count_ = 0;
        return json + "]}";
    }

private:
    static void put_cell(const Value* cell, std::string& column) {
        if (!column.empty()) column += ',';
        if (!cell) {
            column += "null";
        } else if (const auto* text = std::get_if<std::string>(cell)) {
            put_json_text(*text, column);
        } else {
            column += std::to_string(std::get<int>(*cell));
        }
    }

    void put_name() {
        if (!names_.empty()) names_ += ',';
        names_ += "[" + std::to_string(std::exchange(rows_of_name_, 0)) + ",";
        put_json_text(name_, names_);
        names_ += "," + std::to_string(index_) + "]";
    }

    std::unordered_map<std::string, std::size_t> place_;
    std::size_t count_ = 0;
    std::size_t bytes_ = 0;  // of all columns
    std::string names_;
    std::vector<std::string> columns_;

    // The name that the last rows share.
    std::string name_;
    int index_ = 0;
    std::size_t rows_of_name_ = 0;

    // The record that is being added.
    std::vector<const Value*> cells_;
    std::deque<Value> joined_;
};

}  // namespace

ordered_json write_table(const Store& store, const ModuleInfo& module, const TableInfo& table,
                         const std::string& capture, const std::filesystem::path& data,
                         const std::string& stem) {
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
        if (chunk.is_full()) write();
    });
    if (chunk.count() > 0) write();

    auto heads = ordered_json::array();
    for (const auto& column : columns) {
        heads.push_back({{"id", column.id}, {"label", column.label}, {"width", column.width}});
    }
    const auto* sheet = std::get_if<ColumnLayout>(&table.layout);
    const bool rows = std::holds_alternative<RowLayout>(table.layout);
    return {{"id", table.id},
            {"title", table.title},
            {"module", module.name},
            {"kind", sheet  ? "columns"
                     : rows ? "rows"
                            : ""},
            {"columns", std::move(heads)},
            {"records", table.records},
            {"capture", capture},
            {"reason", table.reason},
            {"chunk_rows", kRowsAFile},
            {"chunks", std::move(files)}};
}

}  // namespace qvhost::page
