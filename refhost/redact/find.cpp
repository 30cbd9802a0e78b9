#include "redact/find.h"

#include <array>

#include "redact/addresses.h"
#include "redact/labels.h"
#include "redact/letters.h"
#include "redact/phrases.h"

namespace qvhost::redact {

namespace {

// The characters at which something may stand.
constexpr auto kIsMark = [] {
    std::array<bool, 256> marks{};
    for (const char c : std::string_view(":=.-@xX$5")) marks[static_cast<unsigned char>(c)] = true;
    return marks;
}();

}  // namespace

void find_all(std::string_view text, const TakeFound& take) {
    AddressFinder addresses(text, take);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (!kIsMark[static_cast<unsigned char>(c)]) continue;
        if (c == ':' || c == '=' || c == '-') find_labelled(text, i, take);
        addresses.look_at(i);
    }
    find_phrases(text, take);
}

}  // namespace qvhost::redact
