// Fields that say what they hold: "Serial Number: X", "user=X", {"wwn": "X"}.
#pragma once

#include <cstddef>
#include <string_view>

#include "redact/find.h"

namespace qvhost::redact {

struct Span {
    std::size_t at = 0, size = 0;
};

// What stands behind the separator (":", "=" or " - ") at `at`, if the words before it are a label of secrets.
void find_labelled(std::string_view text, std::size_t at, const TakeFound& take);

// The value at `span`, if the label is one of secrets and the value may be one.
void find_value_of(std::string_view label, std::string_view text, Span span, const TakeFound& take);

// What a value can be by itself: an address, a number, a name.
Form form_of_address(std::string_view text, Form otherwise);

}  // namespace qvhost::redact
