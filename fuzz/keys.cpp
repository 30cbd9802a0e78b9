// The engine of keys against a chain of strstr(), on a table of short keys that has one of each kind.
#include "file/keys.h"

#include <cstring>

#include "check.h"
#include "notes.h"

using namespace marlox::repository::capture;

namespace {

constexpr When kWithPlus{"+", {}};
constexpr When kWithoutStars{
    "", {"*", "**", "#"}
};

// clang-format off
constexpr auto kListed = std::to_array<Key>({
    {"a:",  {"A",    "A",    "after a"}},
    {"b:",  {"B",    "B",    "after b"}},
    {"c",   {"C",    "C",    "after c"}, kWithoutStars},
    {"b:",  {"Plus", "Plus", "after b, with +"}, kWithPlus, Before{"B"}},
    {"dd:", {"D",    "D",    "after d"}, Skip{2}},
    {"end", {"End",  "End",  "after end"}},
});
// clang-format on
constexpr auto kKeys = in_order_of_search(kListed);
static_assert(well_formed(kKeys));

constexpr auto kColumns = columns_of(kListed);
constexpr Table kTable = {.id = "T",
                          .title = "n",
                          .row = "A row is a block of keys.",
                          .layout = header_row(1),
                          .columns = kColumns};
static_assert(well_formed(kTable));

std::string naive(const std::string& text) {
    std::string notes;
    fuzz::Row row("T \"n\"");
    Lines lines(text);
    while (const auto view = lines.next()) {
        const std::string line(*view);
        const auto took = [&](const char* key, const char* id, std::size_t skip = 0) {
            const char* at = std::strstr(line.c_str(), key);
            if (!at) return false;
            at += std::strlen(key);
            row.set(id, std::strlen(at) < skip ? "" : at + skip);
            return true;
        };
        if (took("a:", "A")) continue;
        if (std::strchr(line.c_str(), '+') && took("b:", "Plus")) continue;
        if (took("b:", "B")) continue;
        if (!std::strpbrk(line.c_str(), "*#") && took("c", "C")) continue;
        if (took("dd:", "D", 2)) continue;
        if (took("end", "End")) row.add(notes);
    }
    return notes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzz::text_of(data, size);
    Lines lines(text);
    read_keys(lines, kKeys, {fakehost::repository(), kTable});
    fuzz::expect_same(fuzz::noted_records(), naive(std::string(text)),
                      "the keys are those of a chain of strstr()");
    return 0;
}
