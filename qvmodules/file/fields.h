// Parsers of the kind "a row splits at blanks and its fields map by position":
//     252:0     8 Onln   0 930.390 GB SATA HDD N   N  512B ST1000NM0033-9ZM173 U
// Blanks in a row count as one; a tab does not separate; the line end stays with the last field.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "file/record.h"
#include "read/text.h"

namespace marlox::repository::capture {

// The columns of one property, counted from 1. Two columns are one value, joined by a blank: a
// number and its unit.
struct Columns {
    std::size_t first;
    std::size_t last;

    consteval Columns(std::size_t only) : first(only), last(only) {}
    consteval Columns(std::size_t number, std::size_t unit) : first(number), last(unit) {}
};

struct Field {
    Columns columns;
    std::string_view id;
    std::string_view display;
};

// Sets the properties of one row and adds the record when the table's last field is there. A row
// that ends before adds nothing; what it did set stays on the record.
inline void read_fields(std::string_view row, std::span<const Field> fields, Record& record) {
    Tokens tokens(row, " ");
    std::string_view before;
    std::string pair;
    std::size_t column = 0;
    for (const Field& field : fields) {
        std::string_view value;
        while (column < field.columns.last) {
            const auto token = tokens.next();
            if (!token) return;
            before = value;
            value = *token;
            ++column;
        }
        if (field.columns.first != field.columns.last) {
            pair.assign(before).append(" ").append(value);
            value = pair;
        }
        record.set(field.id, field.display, value);
    }
    record.add();
}

// Whether a table names every column once, from 1 on, without a gap, and ids without blanks.
consteval bool well_formed(std::span<const Field> fields) {
    std::size_t column = 0;
    for (const Field& field : fields) {
        if (field.columns.first != column + 1 || field.columns.last < field.columns.first ||
            field.columns.last > field.columns.first + 1)
            return false;
        column = field.columns.last;
        if (field.id.empty() || field.id.find(' ') != std::string_view::npos) return false;
    }
    return column > 0;
}

}  // namespace marlox::repository::capture
