// The declaration of a table: what the parser, the host and people have to know of it, told once.
// Registration, layouts and the names in records are read from it, and the build writes it into
// share/qvhost/tables.json and docs/tables.md.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace marlox::repository::capture {

// A property that the table's records have.
struct Column {
    std::string_view id;
    std::string_view label;          // for people; empty: the tool prints the label itself
    std::string_view means;          // one phrase
    unsigned width = 0;              // in the layout; 0: the table's width
    std::string_view unlisted = {};  // why the layout leaves it out; empty: it does not
};

// How a record is shown.
struct Layout {
    enum class Kind {
        header_column,  // one below the other: the labels are a column, all of one width
        header_row,     // one line a record: the labels are a row, each with a width of its own
    };
    Kind kind;
    unsigned width;      // of every column that has none of its own
    unsigned count = 1;  // how many records stand side by side below a header column
};

consteval Layout header_column(unsigned width, unsigned count = 1) {
    return {Layout::Kind::header_column, width, count};
}

consteval Layout header_row(unsigned width) { return {Layout::Kind::header_row, width}; }

// Where the rows come from: a command and the capture that it leaves.
struct Source {
    std::string_view tool = {};     // without its directory and build; empty: rows that never vary
    std::string_view command = {};  // with the places of run/command.h
    std::string_view capture = {};  // in the log directory
    const char* log_label = "";  // what check_system_call() calls it in the log; empty: not judged
    std::string_view not_asked = {};  // why some servers are not asked, where there is one reason
    // The commands, in order, whose answers decide whether this one is run.
    std::span<const std::string_view> gates = {};

    constexpr bool in_qv_tools() const {  // false: the tool is on the search path
        return command.find("{P}qv_tools/") != std::string_view::npos;
    }
};

// Which collections fill the table.
enum class Filled {
    always,
    never,
    not_on_linux,
    pmc,  // none by itself: only a host that calls pmc_info()
};

struct Table {
    std::string_view id;
    std::string_view title;  // for people; also the name of the table's records
    std::string_view row;    // one sentence on what a row is
    Source source = {};
    Filled filled = Filled::always;
    Layout layout;
    std::span<const Column> columns;  // in the layout's order
};

// What a module tells of itself.
struct Module {
    std::string_view name;
    std::string_view display;
    std::span<const Table* const> tables;
    // The commands, in order, whose answers decide whether the tables' own are run. Of one that ends with
    // ">" it is enough that it has left its capture, whatever that says.
    std::span<const std::string_view> gates = {};
};

// Whether `text` can be an id: not empty and without blanks.
constexpr bool is_id(std::string_view text) {
    return !text.empty() && text.find(' ') == std::string_view::npos;
}

// Whether columns have ids that differ, and say what they mean.
consteval bool well_formed(std::span<const Column> columns) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!is_id(columns[i].id) || columns[i].means.empty()) return false;
        for (std::size_t j = 0; j < i; ++j) {
            if (columns[j].id == columns[i].id) return false;
        }
    }
    return !columns.empty();
}

// Whether the command names its tool and, where the rows come from it alone, writes the capture.
consteval bool well_formed(const Source& source, Filled filled) {
    if (source.tool.empty()) return source.command.empty() && source.capture.empty();
    constexpr auto none = std::string_view::npos;
    if (source.command.find(source.tool) == none || source.capture.empty()) return false;
    if (filled == Filled::pmc) return true;  // the capture is copied from where the tool leaves it
    constexpr std::string_view directory = "'{L}";
    const auto at = source.command.rfind(directory);
    return at != none && source.command.substr(at + directory.size()).starts_with(source.capture);
}

consteval bool well_formed(const Table& table) {
    const bool is_collected = table.filled == Filled::always || table.filled == Filled::pmc;
    return is_id(table.id) && !table.title.empty() && table.row.ends_with('.') &&
           (is_collected || table.source.tool.empty()) && table.layout.width > 0 &&
           table.layout.count > 0 && well_formed(table.source, table.filled) &&
           well_formed(table.columns);
}

}  // namespace marlox::repository::capture
