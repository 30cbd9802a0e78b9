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
struct Place {
    std::size_t first;
    std::size_t last;

    consteval Place(std::size_t only) : first(only), last(only) {}
    consteval Place(std::size_t number, std::size_t unit) : first(number), last(unit) {}
};

struct Field {
    Place place;
    Column column;
};

// Sets the properties of one row and adds the record when the table's last field is there. A row
// that ends before adds nothing; what it did set stays on the record.
inline void read_fields(std::string_view row, std::span<const Field> fields, Record& record) {
    Tokens tokens(row, " ");
    std::string_view before;
    std::string pair;
    std::size_t place = 0;
    for (const Field& field : fields) {
        std::string_view value;
        while (place < field.place.last) {
            const auto token = tokens.next();
            if (!token) return;
            before = value;
            value = *token;
            ++place;
        }
        if (field.place.first != field.place.last) {
            pair.assign(before).append(" ").append(value);
            value = pair;
        }
        record.set(field.column, value);
    }
    record.add();
}

// Whether a table takes every place once, from 1 on, without a gap.
consteval bool well_formed(std::span<const Field> fields) {
    std::size_t place = 0;
    for (const Field& field : fields) {
        if (field.place.first != place + 1 || field.place.last < field.place.first ||
            field.place.last > field.place.first + 1)
            return false;
        place = field.place.last;
    }
    return place > 0;
}

}  // namespace marlox::repository::capture
