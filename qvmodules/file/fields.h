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

// Where a value stands in its row, counted from 1. Two places are one value, joined by a blank: a
// number and its unit.
struct Position {
    std::size_t first;
    std::size_t last;

    consteval Position(std::size_t only) : first(only), last(only) {}
    consteval Position(std::size_t number, std::size_t unit) : first(number), last(unit) {}
};

struct Field {
    Position position;
    Column column;
};

// Sets the properties of one row and adds the record when the table's last field is there. A row
// that ends earlier adds nothing, but the properties it has set keep their values.
inline void read_fields(std::string_view row, std::span<const Field> fields, Record& record) {
    Tokens tokens(row, " ");
    std::string_view before;
    std::string pair;
    std::size_t position = 0;
    for (const Field& field : fields) {
        std::string_view value;
        while (position < field.position.last) {
            const auto token = tokens.next();
            if (!token) return;
            before = value;
            value = *token;
            ++position;
        }
        if (field.position.first != field.position.last) {
            pair.assign(before).append(" ").append(value);
            value = pair;
        }
        record.set(field.column, value);
    }
    record.add();
}

// Whether a table takes every position once, from 1 on, without a gap.
consteval bool well_formed(std::span<const Field> fields) {
    std::size_t position = 0;
    for (const Field& field : fields) {
        if (field.position.first != position + 1 || field.position.last < field.position.first ||
            field.position.last > field.position.first + 1)
            return false;
        position = field.position.last;
    }
    return position > 0;
}

}  // namespace marlox::repository::capture
