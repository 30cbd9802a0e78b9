// What readers make of texts, as a text that a test compares whole: entities (describe.h), events, and what was
// not understood.
#pragma once

#include <string>
#include <string_view>

#include "describe.h"

namespace qvhost::inventory::test {

// What came of one or several captures.
struct Read : ReadText {
    void add(std::string_view text, Reader reader, const std::string& capture = "capture.txt");
    std::string entities() const { return describe(found); }
    std::string all() const;
};

Read read(std::string_view text, Reader reader);

std::string content(const std::string& path);
std::string with_crlf(std::string_view text);

}  // namespace qvhost::inventory::test
