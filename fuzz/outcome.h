// What the host does with an input that it cannot use: it says so, by a std::runtime_error with a
// message. Anything else that is thrown is a bug, and passes through to the fuzzer.
#pragma once

#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "check.h"

namespace fuzz {

// Does the work; returns the message if it could not be done, empty if it could.
template <class Work>
std::string told(Work work) {
    try {
        work();
    } catch (const std::runtime_error& error) {
        expect(*error.what() != '\0', "a failure says what it is");
        return error.what();
    }
    return "";
}

// What is printed on the standard streams while this lives.
class Printed {
public:
    Printed() : out_(std::cout.rdbuf(text_.rdbuf())), err_(std::cerr.rdbuf(text_.rdbuf())) {}
    ~Printed() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(err_);
    }
    Printed(const Printed&) = delete;
    Printed& operator=(const Printed&) = delete;

    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* out_;
    std::streambuf* err_;
};

// That nothing of the text can move a terminal's cursor, colour it or turn its direction.
inline void expect_harmless(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = [&](std::size_t n) {
            return i + n < text.size() ? static_cast<unsigned char>(text[i + n]) : 0u;
        };
        expect((byte >= 0x20 && byte != 0x7f) || byte == '\n', "no control byte is shown");
        expect(byte != 0xc2 || next(1) >= 0xa0, "no control character is shown");
        expect(byte != 0xe2 || next(1) != 0x80 || next(2) < 0xaa || next(2) > 0xae,
               "no character that turns the direction is shown");
    }
}

}  // namespace fuzz
