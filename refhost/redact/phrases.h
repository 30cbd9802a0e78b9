// Values that follow certain words: in log lines, on command lines, in files of keys.
#pragma once

#include <string_view>

#include "redact/find.h"

namespace qvhost::redact {

void find_phrases(std::string_view text, const TakeFound& take);

}  // namespace qvhost::redact
