// Tables that tools print for people: a heading line that names the columns, rows below it. Columns are
// found by name, and a cell is what stands below its name.
//
//     DG/VD TYPE  State Access Consist Cache Cac sCC       Size Name
//     ---------------------------------------------------------------
//     3/0   RAID0 Optl  RW     Yes     NRWTD -   OFF 371.597 GB VD 02
//
// A word below a name belongs to that column. A word between two names belongs to the right one if that
// is aligned right ("371.597"), else to the left one ("02"). Where a row does not keep to the heading
// (a model longer than its column, bytes that are no columns), its words are taken from both ends
// towards the one column of free text, as long as every word is of its column's shape.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace qvhost::inventory {

enum class Align { left, right };

// What a cell can be. "-" is of every shape, and so is an empty cell of a column that is not required.
enum class Shape {
    word,    // one word that is no number: "Onln"
    number,  // "12"
    code,    // one word of any kind: "512B", "252:1"
    size,    // a number and its unit, in one word or two: "371.597 GB", "4 KB", "512B"
    text,    // any number of words
};

struct Column {
    std::string_view name;  // may hold single blanks
    Shape shape = Shape::code;
    Align align = Align::left;
    bool required = false;  // without it the line is no heading, and without its cell no row
};

// The cells of one row, by the names of the columns; valid as long as the row's line.
class Row {
public:
    // The trimmed cell; empty if it is, or if the table has no such column.
    std::string_view operator[](std::string_view column) const;
    bool has(std::string_view column) const;

private:
    friend class Heading;
    struct Cell {
        std::string_view column, text;
    };
    std::vector<Cell> cells_;
};

class Heading {
public:
    // Nothing if the line does not name every required column, in any order.
    static std::optional<Heading> find(std::string_view line, std::span<const Column> known);

    // Nothing if the row does not fit the columns.
    std::optional<Row> cut(std::string_view row) const;

    bool has(std::string_view column) const;

    // Columns that stand in the heading and in no table of ours.
    std::size_t unknown_columns() const { return unknown_; }

private:
    struct Place {
        Column column;
        std::size_t begin, end;
    };

    std::optional<Row> cut_by_position(std::string_view row) const;
    std::optional<Row> cut_from_both_ends(std::string_view row) const;
    std::size_t column_between(std::size_t right) const;

    std::vector<Place> places_;
    std::size_t unknown_ = 0;
};

// "-----------" or "=========", with blanks between the columns of some tools.
bool is_ruler(std::string_view line);

}  // namespace qvhost::inventory
