#include "csv.h"

#include <stdexcept>

namespace test {

namespace {

// What stands between the quotes; `at` is behind the first and goes behind the last.
std::string quoted_field(const std::string& text, std::size_t& at) {
    std::string field;
    for (;;) {
        const auto quote = text.find('"', at);
        if (quote == std::string::npos) throw std::runtime_error("a quote is not closed");
        field += text.substr(at, quote - at);
        at = quote + 1;
        if (at >= text.size() || text[at] != '"') return field;
        field += text[at++];
    }
}

std::string plain_field(const std::string& text, std::size_t& at) {
    const auto begin = at;
    at = std::min(text.size(), text.find_first_of(",\"\r\n", at));
    return text.substr(begin, at - begin);
}

}  // namespace

std::vector<std::vector<std::string>> read_csv(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    for (std::size_t at = 0; at < text.size();) {
        auto& row = rows.emplace_back();
        for (bool more = true; more;) {
            const bool quoted = at < text.size() && text[at] == '"';
            if (quoted) ++at;
            row.push_back(quoted ? quoted_field(text, at) : plain_field(text, at));
            more = at < text.size() && text[at] == ',';
            if (more) ++at;
        }
        if (text.compare(at, 2, "\r\n") != 0)
            throw std::runtime_error("a row does not end with CR LF");
        at += 2;
    }
    return rows;
}

}  // namespace test
