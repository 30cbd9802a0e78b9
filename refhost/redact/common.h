// Words and addresses that are nobody's secret: docs/privacy.md lists them.
#pragma once

#include <span>
#include <string_view>

#include "redact/forms.h"

namespace qvhost::redact {

// What tools print where they know no value: "Not Specified", an address or a number of zeros. Never replaced.
bool says_nothing(Form form, std::string_view canonical);

// "root", "127.0.0.1": replaced in its own fields and not looked for elsewhere.
bool is_common_value(Form form, std::string_view canonical);

// Whether a name of the Internet belongs to a maker or project that tools name, or to nobody.
bool is_public_host(std::string_view host);

bool is_one_of(std::span<const std::string_view> list, std::string_view text);

std::span<const std::string_view> common_words();
std::span<const std::string_view> public_domains();

}  // namespace qvhost::redact
