// Lines against fgets() with a buffer of 512 bytes, from a text and from a file. The first byte tells
// how often the rest stands in the file, so that it grows beyond the reader's block.
#include "read/lines.h"

#include <cstdio>

#include "check.h"
#include "scratch.h"

using marlox::repository::capture::Lines;
using marlox::repository::capture::read_bytes;

namespace {

void expect_lines(Lines& lines, const std::string& file) {
    std::FILE* in = std::fopen(file.c_str(), "r");
    char wanted[512];
    while (std::fgets(wanted, sizeof wanted, in)) {
        const auto line = lines.next();
        fuzz::expect(line.has_value(), "there is a line wherever fgets() finds one");
        fuzz::expect_same(*line, wanted, "a line is what fgets() reads");
    }
    fuzz::expect(!lines.next() && !lines.next(), "the lines end where fgets() ends");
    std::fclose(in);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    fuzz::Pieces input(fuzz::text_of(data, size));
    std::string text;
    for (auto times = input.byte() + 1; times > 0; --times) text += input.rest();
    const std::string file = scratch / "capture";
    fuzz::write_file(file, text);

    fuzz::expect(read_bytes(file) == text, "a file is read whole");
    Lines in_memory(text);
    auto in_file = Lines::open(file);
    for (int pass = 0; pass < 2; ++pass) {
        expect_lines(in_memory, file);
        expect_lines(*in_file, file);
        in_memory.rewind();
        in_file->rewind();
    }
    return 0;
}
