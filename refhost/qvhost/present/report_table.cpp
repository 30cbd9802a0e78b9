#include "qvhost/present/report_table.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>
#include <variant>

#include "qvhost/base/nearest.h"
#include "report/json_text.h"
#include "show/headers.h"
#include "store/typed_table.h"
#include "text/case.h"

namespace qvhost {

namespace {

// "Memory-Modules", "memory_module" and "memory_modules" are one.
std::string singular(std::string_view name) {
    auto word = lowered(name);
    std::replace_if(
        word.begin(), word.end(), [](char c) { return c == '-' || c == ' '; }, '_');
    if (word.ends_with("ies")) return word.replace(word.size() - 3, 3, "y");
    if (word.ends_with('s')) word.pop_back();
    return word;
}

// Cells of what a row has; the texts of numbers are kept for as long as the row is shown.
class CellMaker {
public:
    void begin(std::size_t columns) {
        cells_.assign(columns, {});
        texts_.assign(columns, {});
    }
    void text(std::size_t column, std::string_view text) {
        cells_[column] = {Cell::Kind::text, text};
    }
    void integer(std::size_t column, std::int64_t number) {
        texts_[column] = std::to_string(number);
        cells_[column] = {Cell::Kind::integer, texts_[column]};
    }
    void real(std::size_t column, double number) {
        texts_[column] = json_line(number);
        cells_[column] = {Cell::Kind::real, texts_[column], number};
    }
    void boolean(std::size_t column, bool is_so) {
        cells_[column] = {Cell::Kind::boolean, is_so ? "1" : "0"};
    }
    const std::vector<Cell>& cells() const { return cells_; }

private:
    std::vector<Cell> cells_;
    std::vector<std::string> texts_;
};

using TakeRow = std::function<void(const std::vector<Cell>&)>;

void each_filed_row(const Store& store, const std::string& id, const TakeRow& take) {
    const auto modules = store.modules();
    const auto headers = headers_of(store, *find_filed(modules, id).table);
    CellMaker row;
    store.each_record(id, [&](const Record& record) {
        row.begin(headers.size());
        for (std::size_t i = 0; i < headers.size(); ++i) {
            const auto found = std::find_if(record.properties.begin(), record.properties.end(),
                                            [&](const auto& p) { return p.id == headers[i].id; });
            if (found == record.properties.end()) continue;
            if (const auto* text = std::get_if<std::string>(&found->value)) {
                row.text(i, *text);
            } else {
                row.integer(i, std::get<int>(found->value));
            }
        }
        take(row.cells());
    });
}

void each_read_row(const Store& store, const std::string& id, const TakeRow& take) {
    const auto columns = stored_columns(store, id);
    CellMaker row;
    each_stored_row(store, id, [&](const std::vector<TypedValue>& values) {
        row.begin(columns.size());
        for (std::size_t i = 0; i < columns.size() && i < values.size(); ++i) {
            if (const auto* number = std::get_if<std::int64_t>(&values[i])) {
                if (columns[i].type == ColumnType::boolean) {
                    row.boolean(i, *number != 0);
                } else {
                    row.integer(i, *number);
                }
            } else if (const auto* real = std::get_if<double>(&values[i])) {
                row.real(i, *real);
            } else if (const auto* text = std::get_if<std::string>(&values[i])) {
                row.text(i, *text);
            }
        }
        take(row.cells());
    });
}

}  // namespace

std::int64_t ReportTable::rows(const Store& store) const {
    if (kind_ == Kind::read) return count_stored_rows(store, id_);
    const auto modules = store.modules();
    const auto* table = find_filed(modules, id_).table;
    return table ? table->records : 0;
}

std::vector<std::string> ReportTable::columns(const Store& store) const {
    std::vector<std::string> names;
    if (kind_ == Kind::read) {
        for (const auto& column : stored_columns(store, id_)) names.push_back(column.name);
        return names;
    }
    const auto modules = store.modules();
    for (const auto& header : headers_of(store, *find_filed(modules, id_).table))
        names.push_back(header.id);
    return names;
}

void ReportTable::each_row(const Store& store, const TakeRow& take) const {
    if (kind_ == Kind::read) return each_read_row(store, id_, take);
    each_filed_row(store, id_, take);
}

std::vector<ReportTable> tables_of(const Store& store) {
    std::vector<ReportTable> tables;
    for (const auto name : kTypedTables) {
        if (!stored_columns(store, std::string(name)).empty())
            tables.emplace_back(ReportTable::Kind::read, std::string(name));
    }
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables)
            tables.emplace_back(ReportTable::Kind::filed, table.id);
    }
    return tables;
}

FiledTable find_filed(const std::vector<ModuleInfo>& modules, const std::string& id) {
    for (const auto& module : modules) {
        for (const auto& table : module.tables) {
            if (table.id == id) return {&module, &table};
        }
    }
    return {};
}

std::vector<ReportTable> tables_named(const Store& store, const std::string& name,
                                      const std::string& report) {
    const auto tables = tables_of(store);
    std::vector<ReportTable> found;
    std::vector<std::string> names;
    for (const auto& table : tables) {
        if (table.id() == name) return {table};
        const bool is_meant = table.kind() == ReportTable::Kind::read
                                  ? singular(table.id()) == singular(name)
                                  : same_word(table.id(), name);
        if (is_meant) found.push_back(table);
        names.push_back(table.id());
    }
    if (found.empty()) {
        const auto meant = did_you_mean(name, names);
        throw std::runtime_error(report + ": there is no table " + name + meant +
                                 (meant.empty() ? ";" : "") + " \"qvhost show REPORT\" lists them");
    }
    return found;
}

void write_rows(std::ostream& out, const Store& store, const std::vector<ReportTable>& tables,
                const RowStyle& style) {
    if (!is_json(style.format)) {
        const auto& table = tables.front();
        const auto printer = row_printer(out, style, table.columns(store));
        table.each_row(store, [&](const std::vector<Cell>& cells) { printer->row(cells); });
        printer->end();
        return;
    }
    ObjectWriter objects(out, style.format == "jsonl");
    for (const auto& table : tables) {
        auto columns = table.columns(store);
        columns.insert(columns.begin(), "qv_table");
        objects.columns(columns);
        std::vector<Cell> whole;
        table.each_row(store, [&](const std::vector<Cell>& cells) {
            whole.assign(1, {Cell::Kind::text, table.id()});
            whole.insert(whole.end(), cells.begin(), cells.end());
            objects.row(whole);
        });
    }
    objects.end();
}

}  // namespace qvhost
