#include "inventory/columns.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace qvhost::inventory {
namespace {

using enum Shape;

constexpr auto kDrives = std::to_array<Column>({
    {"EID:Slt", code, Align::left, true},
    {"DID", number, Align::right, false},
    {"State", word, Align::left, true},
    {"DG", code, Align::right, false},
    {"Size", size, Align::right, false},
    {"SeSz", size, Align::left, false},
    {"Model", text, Align::left, false},
    {"Sp", word, Align::left, false},
    {"Type", word, Align::left, false},
});

// The cells in the order of the columns above, with "|" between them; "no heading", "no row".
std::string cut(std::string_view heading, std::string_view row) {
    const auto columns = Heading::find(heading, kDrives);
    if (!columns) return "no heading";
    const auto cells = columns->cut(row);
    if (!cells) return "no row";
    std::string text;
    for (const auto& column : kDrives) {
        if (!text.empty()) text += '|';
        text += cells->has(column.name) ? (*cells)[column.name] : "~";
    }
    return text;
}

TEST(Columns, cut_cells_by_name) {
    struct Case {
        const char* heading;
        const char* row;
        const char* cells;  // "~": the table has no such column
        const char* why;
    };
    const Case cases[] = {
        {"EID:Slt DID State DG       Size SeSz Model            Sp",
         "252:0     4 Onln   0 930.390 GB 512B ST1000NM0045     U",
         "252:0|4|Onln|0|930.390 GB|512B|ST1000NM0045|U|~", "an old version"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp Type",
         "252:0     4 Onln   0 930.390 GB 4 KB INTEL SSDSC2CW2   U  -",
         "252:0|4|Onln|0|930.390 GB|4 KB|INTEL SSDSC2CW2|U|-", "blanks in sizes and models"},
        {"EID:Slt State Model             Size Sp",
         "252:0   Onln  A MODEL OF MANY WORDS 930.390 GB U",
         "252:0|~|Onln|~|930.390 GB|~|A MODEL OF MANY WORDS|U|~", "a size behind a long model"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp",
         " :5        4 UGood  - 930.390 GB 512B BD-RE  BH10LS30  -",
         ":5|4|UGood|-|930.390 GB|512B|BD-RE  BH10LS30|-|~", "no enclosure"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp",
         "252:7    15 UGood -        0 KB 512B                  D",
         "252:7|15|UGood|-|0 KB|512B||D|~", "an empty model"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp",
         "252:7       Onln   0 930.390 GB      ST1000NM0045     U",
         "252:7||Onln|0|930.390 GB||ST1000NM0045|U|~", "empty cells"},
        {"State EID:Slt   Size New Column Model        Sp DG",
         "Onln  252:1   3.6 TB what ever  ST10 00      U   7",
         "252:1|~|Onln|7|3.6 TB|~|ST10 00|U|~", "another order, a column that nobody knows"},
        {"EID:Slt DID State DG       Size SeSz Model  Sp Type",
         "252:0     4 Onln   0 930.390 GB 512B INTEL SSDSC2CW240A3 U  -",
         "252:0|4|Onln|0|930.390 GB|512B|INTEL SSDSC2CW240A3|U|-", "a model wider than its column"},
        {"EID:Slt DID State DG Size SeSz Model Sp", "252:0 4 Onln 0 930.390 GB 512B A B C U",
         "252:0|4|Onln|0|930.390 GB|512B|A B C|U|~", "squeezed blanks"},
        {"EID:Slt\tDID\tState\tDG\tSize\tSeSz\tModel\tSp", "252:0\t4\tOnln\t0\t9 GB\t512B\tA B\tU",
         "252:0|4|Onln|0|9 GB|512B|A B|U|~", "tabs"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp",
         "252:0 Onln   0 930.390 GB 512B ST1000NM0045     U", "no row", "a cell is gone"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp", "252:0     4 Onln   0 930.3",
         "no row", "cut off"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp", "EID=Enclosure Device ID|x",
         "no row", "no row of the table"},
        {"EID:Slt DID State DG       Size SeSz Model            Sp", "", "no row", "nothing"},
        {"EID:Slt DID  DG       Size", "252:0     4 ", "no heading",
         "a required column is missing"},
        {"EID:Slt DID StateX", "252:0     4 Onln", "no heading", "a name within another"},
    };
    for (const auto& c : cases) EXPECT_EQ(cut(c.heading, c.row), c.cells) << c.why;
}

TEST(Columns, count_those_that_nobody_knows) {
    EXPECT_EQ(Heading::find("EID:Slt DID State", kDrives)->unknown_columns(), 0U);
    EXPECT_EQ(Heading::find("EID:Slt New Name DID  Other State", kDrives)->unknown_columns(), 2U);
}

TEST(Columns, know_rulers) {
    for (const auto* line : {"-----", "  =====  ", "---- ---- ---"})
        EXPECT_TRUE(is_ruler(line)) << line;
    for (const auto* line : {"", "-", "--", "--a--", "-=-=-", "----- x"})
        EXPECT_FALSE(is_ruler(line)) << line;
}

}  // namespace
}  // namespace qvhost::inventory
