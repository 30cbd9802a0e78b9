// The engine of fields against strtok(): each line is a row of one record that is refilled.
#include "file/fields.h"

#include <cstring>
#include <vector>

#include "check.h"
#include "notes.h"
#include "read/lines.h"

using namespace marlox::repository::capture;

namespace {

constexpr auto kFields = std::to_array<Field>({
    {{1},    {"One", "One", "the first field"}                   },
    {{2, 3}, {"Pair", "Pair", "the second and the third"}        },
    {{4},    {"Four", "Four", "the fourth field"}                },
    {{5, 6}, {"Last", "Last", "the fifth and the sixth, the end"}},
});
static_assert(well_formed(kFields));

constexpr auto kColumns = columns_of(kFields);
constexpr Table kTable = {.id = "T",
                          .title = "n",
                          .row = "A row is a line of fields.",
                          .layout = header_row(1),
                          .columns = kColumns};
static_assert(well_formed(kTable));

void naive(std::string line, fuzz::Row& row, std::string& notes) {
    std::vector<std::string> fields{""};
    for (char* f = std::strtok(line.data(), " "); f; f = std::strtok(nullptr, " "))
        fields.emplace_back(f);
    if (fields.size() > 1) row.set("One", fields[1]);
    if (fields.size() > 3) row.set("Pair", fields[2] + " " + fields[3]);
    if (fields.size() > 4) row.set("Four", fields[4]);
    if (fields.size() <= 6) return;
    row.set("Last", fields[5] + " " + fields[6]);
    row.add(notes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Record record(fakehost::repository(), kTable);
    fuzz::Row row("T \"n\"");
    std::string wanted;
    Lines lines(fuzz::text_of(data, size));
    while (const auto line = lines.next()) {
        read_fields(*line, kFields, record);
        naive(std::string(*line), row, wanted);
    }
    fuzz::expect_same(fuzz::noted_records(), wanted, "the fields are those of strtok()");
    return 0;
}
