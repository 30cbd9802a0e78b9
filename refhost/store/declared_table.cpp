#include "store/declared_table.h"

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>

#include "store/typed_table.h"
#include "store/typed_value.h"

namespace qvhost {

namespace {

// No table of records has a name that begins like this one.
constexpr const char* kName = "qv_declared";

constexpr auto kColumns = std::to_array<TypedColumn>({
    {"id",          ColumnType::text   },
    {"title",       ColumnType::text   },
    {"filled",      ColumnType::text   },
    {"tool",        ColumnType::text   },
    {"in_qv_tools", ColumnType::boolean},
    {"command",     ColumnType::text   },
    {"capture",     ColumnType::text   },
    {"log_label",   ColumnType::text   },
    {"not_asked",   ColumnType::text   },
    {"gates",       ColumnType::text   }, // a line each
});

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    if (!text.empty()) boost::split(lines, text, [](char c) { return c == '\n'; });
    return lines;
}

}  // namespace

void write_declared_tables(Store& store, std::span<const DeclaredTable> tables) {
    TypedTableWriter writer(store, kName, kColumns);
    for (const auto& table : tables) {
        writer.add({table.id, table.title, table.filled, table.tool,
                    std::int64_t{table.in_qv_tools}, table.command, table.capture, table.log_label,
                    table.not_asked, boost::join(table.gates, "\n")});
    }
}

std::vector<DeclaredTable> declared_tables(const Store& store) {
    std::vector<DeclaredTable> tables;
    each_typed_row(store, kName, kColumns, [&](const std::vector<TypedValue>& row) {
        tables.push_back({text_of(row[0]), text_of(row[1]), text_of(row[2]), text_of(row[3]),
                          integer_of(row[4]) != 0, text_of(row[5]), text_of(row[6]),
                          text_of(row[7]), text_of(row[8]), lines_of(text_of(row[9]))});
    });
    return tables;
}

}  // namespace qvhost
