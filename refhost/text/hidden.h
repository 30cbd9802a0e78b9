// Characters that hide or disguise a text: those that a terminal acts on, that turn the direction of writing, or
// that are not seen.
#pragma once

#include <algorithm>
#include <iterator>

namespace qvhost {

struct CharacterRange {
    char32_t first;
    char32_t last;
};

// Unicode's control characters, line and paragraph separators, and what its property
// Default_Ignorable_Code_Point lists.
inline constexpr CharacterRange kHidden[] = {
    {0x0000,  0x001f },
    {0x007f,  0x009f },
    {0x00ad,  0x00ad }, // soft hyphen
    {0x034f,  0x034f },
    {0x061c,  0x061c }, // Arabic letter mark
    {0x115f,  0x1160 },
    {0x17b4,  0x17b5 },
    {0x180b,  0x180f },
    {0x200b,  0x200f }, // zero width, left-to-right and right-to-left marks
    {0x2028,  0x202e }, // separators, embeddings and overrides
    {0x2060,  0x206f }, // word joiner, isolates
    {0x3164,  0x3164 },
    {0xfe00,  0xfe0f }, // variation selectors
    {0xfeff,  0xfeff }, // byte order mark
    {0xffa0,  0xffa0 },
    {0xfff0,  0xfffb },
    {0x1bca0, 0x1bca3},
    {0x1d173, 0x1d17a},
    {0xe0000, 0xe0fff}, // tags
};

constexpr bool is_hidden(char32_t character) {
    return std::any_of(std::begin(kHidden), std::end(kHidden), [&](const CharacterRange& range) {
        return character >= range.first && character <= range.last;
    });
}

}  // namespace qvhost
