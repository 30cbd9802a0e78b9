// The engine of rows: whole lines against fgets(), lines without their ends against strtok().
#include "file/rows.h"

#include <cstdio>
#include <cstring>

#include "check.h"
#include "notes.h"
#include "scratch.h"

using namespace marlox::repository::capture;

namespace {

constexpr Column kColumns[] = {
    {"Line", "Line", "a line"}
};
constexpr Table kTable = {.id = "T",
                          .title = "n",
                          .row = "A row is a line.",
                          .layout = header_row(1),
                          .columns = kColumns};
static_assert(well_formed(kTable));

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const auto text = fuzz::text_of(data, size);
    fuzz::Row row("T \"n\"");
    const auto add = [&](const char* value, std::string& notes) {
        row.set("Line", value);
        row.add(notes);
    };

    const std::string file = scratch / "capture";
    fuzz::write_file(file, text);
    std::string whole;
    char line[512];
    std::FILE* in = std::fopen(file.c_str(), "r");
    while (std::fgets(line, sizeof line, in)) add(line, whole);
    std::fclose(in);
    Lines lines(text);
    read_lines(lines, kColumns[0], {fakehost::repository(), kTable});
    fuzz::expect_same(fuzz::noted_records(), whole, "a row is a line of fgets()");

    std::string split;
    std::size_t seen = 0;
    std::string bytes(c_text(text));
    for (char* f = std::strtok(bytes.data(), "\n\r"); f; f = std::strtok(nullptr, "\n\r")) {
        add(f, split);
        seen += std::strlen(f);
    }
    read_split_lines(Tokens(c_text(text), kLineEnds), kColumns[0], fakehost::repository(), kTable,
                     [&](std::string_view row_text) { seen -= row_text.size(); });
    fuzz::expect_same(fuzz::noted_records(), split, "a row is what strtok() cuts");
    fuzz::expect(seen == 0, "each line is told before it is filed");
    return 0;
}
