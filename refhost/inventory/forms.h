// Forms of lines as a tool or a kernel writes them: texts with places for what varies. A table of
// forms is searched in one pass over a line, however many forms it has.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace qvhost::inventory {

// What "{}" stood for; empty if the form has none.
struct FormMatch {
    std::string_view subject;
};

// Whether the text begins as the form says. '*' stands for any characters and "{}" for a word: it ends
// before a blank, ',', ';', a bracket, or ':' and a blank. Letters are taken as they are.
//     match("blk_update_request: I/O error, dev sda, sector 8", "*I/O error, dev {}, sector") is "sda"
std::optional<FormMatch> match(std::string_view text, std::string_view form);

// Whether the whole text is of the form, where only '*' stands for something else.
bool is_like(std::string_view text, std::string_view form);
bool is_like_any(std::string_view text, std::span<const std::string_view> forms);

// A table of forms. Each needs four characters in a row that do not vary.
class Forms {
public:
    explicit Forms(std::span<const std::string_view> forms);

    struct Found {
        std::size_t row;
        std::string_view subject;
    };
    // The first row that the text matches.
    std::optional<Found> find(std::string_view text) const;

private:
    struct Anchor {
        std::uint32_t four;  // characters
        std::uint32_t row;
    };
    std::span<const std::string_view> forms_;
    std::vector<Anchor> anchors_;
    std::bitset<4096> filter_;
};

}  // namespace qvhost::inventory
