#include "redact/values.h"

#include <algorithm>

#include "redact/common.h"
#include "redact/letters.h"

namespace qvhost::redact {

namespace {

constexpr std::size_t kMostSpellings = 8;
constexpr std::size_t kLongest = 4096;

// An IPv6 address with some of its zeros left out; a short number with its digits divided.
bool has_other_spellings(const Value& value) {
    constexpr std::size_t kShortestHexRun = 10;
    return value.form == Form::ipv6 ||
           (value.form == Form::hex && value.canonical.size() < kShortestHexRun);
}

}  // namespace

bool Values::is_common(const Value& value) const {
    return is_common_value(value.form, value.canonical) || words_.count(value.canonical) > 0;
}

std::optional<Value> Values::value_of(std::string_view text, Form form, bool in_own_field) const {
    text = trimmed(text);
    if (text.empty() || text.size() > kLongest) return std::nullopt;
    const auto known = canonical(form, text);
    if (!known || says_nothing(form, *known)) return std::nullopt;
    Value value{form, *known};
    if (!in_own_field && is_common(value)) return std::nullopt;
    return value;
}

std::optional<Value> Values::add(std::string_view text, Class which, Form form, bool in_own_field) {
    text = trimmed(text);
    auto value = value_of(text, form, in_own_field);
    if (!value) return value;
    auto& use = values_[*value];
    use.classes.add(which);
    ++use.times;
    use.is_searched = value->canonical.size() >= kShortestSearched && !is_common(*value);
    if (!use.is_searched || has_other_spellings(*value)) ++told_by_fields_;
    if (use.spelled.size() < kMostSpellings) use.spelled.emplace(text);
    if (form == Form::host) add_parts(value->canonical, which, in_own_field);
    return value;
}

void Values::add(const Values& others) {
    for (const auto& [value, other] : others.values_) {
        auto& use = values_[value];
        use.classes.add(other.classes);
        use.times += other.times;
        use.is_searched = other.is_searched;
        for (const auto& text : other.spelled) {
            if (use.spelled.size() < kMostSpellings) use.spelled.insert(text);
        }
    }
    told_by_fields_ += others.told_by_fields_;
}

// Of "web17.corp.example.org" also "web17", "corp.example.org" and "example.org": they stand alone elsewhere.
void Values::add_parts(std::string_view host, Class which, bool in_own_field) {
    const auto dot = host.find('.');
    if (dot == std::string_view::npos || dot + 1 == host.size()) return;
    const auto first = host.substr(0, dot), rest = host.substr(dot + 1);
    const bool has_digit = std::any_of(first.begin(), first.end(), is_digit);
    if (first.size() >= kShortestSearched && (has_digit || in_own_field))
        add(first, which, Form::host, false);
    // "co.uk" is nobody's.
    constexpr std::size_t kShortestDomain = 4;
    const auto next = rest.find('.');
    if (next != std::string_view::npos && next >= kShortestDomain)
        add(rest, which, Form::host, false);
}

}  // namespace qvhost::redact
