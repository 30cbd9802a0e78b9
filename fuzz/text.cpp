// The cutters of text against the C functions that they behave like.
#include "read/text.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "check.h"

using namespace marlox::repository::capture;

namespace {

void expect_tokens(std::string_view text, std::string_view delimiters) {
    std::string bytes(c_text(text));
    const std::string marks(c_text(delimiters));
    Tokens tokens(c_text(text), marks);
    for (char* wanted = std::strtok(bytes.data(), marks.c_str()); wanted;
         wanted = std::strtok(nullptr, marks.c_str())) {
        const auto token = tokens.next();
        fuzz::expect(token.has_value(), "there is a token wherever strtok() finds one");
        fuzz::expect_same(*token, wanted, "a token is what strtok() cuts");
    }
    fuzz::expect(!tokens.next() && !tokens.next(), "the tokens end where strtok() ends");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Pieces input(fuzz::text_of(data, size));
    const std::size_t most = input.byte();
    const auto delimiters = input.until('\0');
    const auto text = input.rest();
    const std::string bytes(text);

    expect_tokens(text, delimiters);
    expect_tokens(text, " ");
    expect_tokens(text, ":\n\r");
    fuzz::expect_same(c_text(text), bytes.c_str(), "a text ends at its first NUL");
    fuzz::expect_same(rest(text, most),
                      most < size ? bytes.substr(std::min(most, bytes.size())) : "",
                      "the rest is what stands behind");

    auto line = bytes.substr(0, std::min(bytes.find('\n'), bytes.size() - 1) + 1).substr(0, most);
    fuzz::expect_same(first_line(text, most), line.c_str(), "a first line is cut as fgets() does");

    const long number = std::strtol(bytes.c_str(), nullptr, 10);
    fuzz::expect(leading_int(c_text(text)) == std::clamp<long>(number, INT_MIN, INT_MAX),
                 "a number is what strtol() reads, or the nearest int");
    return 0;
}
