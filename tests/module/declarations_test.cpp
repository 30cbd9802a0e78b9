// What the compiler refuses in the declaration of a table and in the rows of a parser.
#include <gtest/gtest.h>

#include "file/fields.h"
#include "file/keys.h"
#include "file/table.h"

using namespace marlox::repository::capture;

namespace {

constexpr Column kGood[] = {
    {"A", "a", "the first"},
    {"B", "b", "the second"},
};

constexpr Table kTable = {
    .id = "T",
    .title = "t",
    .row = "A row is a line.",
    .source = {.tool = "tool", .command = "tool >'{L}t.txt' 2>&1", .capture = "t.txt"},
    .layout = header_row(5),
    .columns = kGood,
};
static_assert(well_formed(kTable));

// The same table with one mistake.
template <class Change>
consteval bool refused(Change change) {
    Table table = kTable;
    change(table);
    return !well_formed(table);
}

constexpr Column kTwice[] = {
    {"A", "a", "the first"},
    {"A", "b", "the second"},
};
constexpr Column kBlank[] = {{"A 1", "a", "the first"}};
constexpr Column kNoMeaning[] = {{"A", "a", ""}};
static_assert(refused([](Table& table) { table.id = ""; }));
static_assert(refused([](Table& table) { table.id = "T 1"; }));
static_assert(refused([](Table& table) { table.title = ""; }));
static_assert(refused([](Table& table) { table.row = "no sentence"; }));
static_assert(refused([](Table& table) { table.layout.width = 0; }));
static_assert(refused([](Table& table) { table.layout.count = 0; }));
static_assert(refused([](Table& table) { table.columns = {}; }));
static_assert(refused([](Table& table) { table.columns = kTwice; }));
static_assert(refused([](Table& table) { table.columns = kBlank; }));
static_assert(refused([](Table& table) { table.columns = kNoMeaning; }));
static_assert(refused([](Table& table) { table.filled = Filled::never; }));
static_assert(refused([](Table& table) { table.source.tool = "other"; }));
static_assert(refused([](Table& table) { table.source.tool = ""; }));
static_assert(refused([](Table& table) { table.source.capture = "other.txt"; }));
static_assert(refused([](Table& table) { table.source.capture = ""; }));
static_assert(refused([](Table& table) { table.source.command = "tool >t.txt"; }));

// Keys.
constexpr Column kA{"A", "a", "the first"};
constexpr Column kB{"B", "b", "the second"};

constexpr When kWithPlus{"+", {}};

constexpr Key kFound[] = {
    {"b:", kA, kWithPlus},
    {"b:", kB},
};
constexpr Key kNeverFound[] = {
    {"b:", kA},
    {"bb:", kB},
};
constexpr Key kDoubled[] = {
    {"a::", kA},
};
constexpr Key kNoKey[] = {
    {"", kA},
};
static_assert(well_formed(kFound));
static_assert(!well_formed(kNeverFound));
static_assert(!well_formed(kDoubled));
static_assert(!well_formed(kNoKey));

// Fields.
constexpr Field kEveryPosition[] = {
    {{1}, kA},
    {{2, 3}, kB},
};
constexpr Field kGap[] = {
    {{1}, kA},
    {{3}, kB},
};
constexpr Field kThreePositions[] = {
    {{1, 3}, kA},
};
static_assert(well_formed(kEveryPosition));
static_assert(!well_formed(kGap));
static_assert(!well_formed(kThreePositions));

// A key with a `before` is looked for before that one and stays where it is in the layout.
TEST(Declarations, KeysInTheOrderOfSearch) {
    constexpr auto listed = std::to_array<Key>({
        {"a", {"First", "first", "the first"}},
        {"b:", {"Second", "second", "the second"}},
        {"c", {"Third", "third", "the third"}},
        {"b:", {"Fourth", "fourth", "the fourth"}, kWithPlus, Before{"Second"}},
        {"d", {"Fifth", "fifth", "the fifth"}},
    });
    std::string order;
    for (const Key& key : in_order_of_search(listed)) order += std::string(key.column.id) + ' ';
    EXPECT_EQ(order, "First Fourth Second Third Fifth ");
    order.clear();
    for (const Column& column : columns_of(listed)) order += std::string(column.id) + ' ';
    EXPECT_EQ(order, "First Second Third Fourth Fifth ");
}

}  // namespace
