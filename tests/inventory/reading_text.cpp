#include "reading_text.h"

#include <fstream>
#include <iterator>

namespace qvhost::inventory::test {

void Read::add(std::string_view text, Reader reader, const std::string& capture) {
    how = read_into(found, events, reader, text, capture);
}

std::string Read::all() const {
    auto text = describe(found) + describe(events) + describe_gaps(how);
    if (how.not_understood > 0)
        text += "not understood: " + std::to_string(how.not_understood) + " from " +
                std::to_string(how.first_not_understood) + "\n";
    return text;
}

Read read(std::string_view text, Reader reader) {
    Read made;
    made.add(text, reader);
    return made;
}

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string with_crlf(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

}  // namespace qvhost::inventory::test
