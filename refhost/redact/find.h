// Finds what is to be replaced in the text of a capture: what its labels say, and what looks like an address, a
// number of a device, a name or a key.
#pragma once

#include <functional>
#include <string_view>

#include "redact/values.h"

namespace qvhost::redact {

using TakeFound = std::function<void(const Found&)>;

// The text is whole lines. What is found may overlap.
void find_all(std::string_view text, const TakeFound& take);

}  // namespace qvhost::redact
