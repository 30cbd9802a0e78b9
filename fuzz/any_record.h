// Records, layouts and their texts, made from the pieces of an input.
#pragma once

#include <iterator>
#include <string>
#include <vector>

#include "check.h"
#include "repository/record.h"

namespace fuzz {

// Texts come from a small stock as well, so that names meet.
inline std::string text(Pieces& input) {
    static const char* const kStock[] = {"T", "t", "a", "A", "a_2", "qv_seq", "qv_meta", "id_", ""};
    const auto kind = input.byte();
    if (kind < std::size(kStock)) return kStock[kind];
    return std::string(input.take(kind % 32));
}

inline std::vector<std::string> texts(Pieces& input) {
    std::vector<std::string> all;
    for (auto n = input.byte() % 8; n > 0; --n) all.push_back(text(input));
    return all;
}

inline qvhost::Layout layout(Pieces& input) {
    switch (input.byte() % 3) {
        case 0: return {};
        case 1: return qvhost::ColumnLayout{texts(input), input.number(), input.number()};
        default:
            return qvhost::RowLayout{
                texts(input), {input.number(), input.number()},
                 input.byte() > 0
            };
    }
}

inline qvhost::Record record(Pieces& input) {
    qvhost::Record record{text(input), text(input), static_cast<int>(input.number()), {}};
    for (auto n = input.byte() % 8; n > 0; --n) {
        qvhost::Property property{text(input), text(input), static_cast<int>(input.byte())};
        if (input.byte() % 2 > 0) property.value = text(input);
        record.properties.push_back(property);
    }
    return record;
}

}  // namespace fuzz
