// Lines against fgets() with a buffer of 512 bytes, from a text and from a file, and a file's text, tokens and
// words against those of the text in memory. The first byte tells how often the rest stands in the file, so
// that it grows beyond the reader's block.
#include "read/lines.h"

#include <cstdio>

#include "check.h"
#include "read/text_file.h"
#include "scratch.h"

using namespace marlox::repository::capture;

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

void expect_text(const std::string& bytes, const std::string& file) {
    const auto text = c_text(bytes);
    auto in_file = TextFile::open(file);
    std::string read;
    for (auto block = in_file->next(); !block.empty(); block = in_file->next()) read += block;
    fuzz::expect_same(read, text, "a file's text is read up to its first NUL");
    for (const std::string_view delimiters : {"|\n\r", ":\n\r", "\n\r"}) {
        Tokens wanted(text, delimiters);
        FileTokens tokens(*in_file, delimiters);
        while (const auto token = wanted.next()) {
            const auto found = tokens.next();
            fuzz::expect(found.has_value(), "a file has the tokens of its text");
            fuzz::expect_same(*found, *token, "a file's tokens are those of its text");
        }
        fuzz::expect(!tokens.next(), "a file has no more tokens than its text");
    }
    for (const std::string_view word : {"Error", "x\ny", "Bad response"})
        fuzz::expect(in_file->contains({word}) == contains(text, word),
                     "a word is found where it stands");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    fuzz::Pieces input(fuzz::text_of(data, size));
    std::string text;
    for (auto times = input.byte() + 1; times > 0; --times) text += input.rest();
    const std::string file = scratch / "capture";
    fuzz::write_file(file, text);

    expect_text(text, file);
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
