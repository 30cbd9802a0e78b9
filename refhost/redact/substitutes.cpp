#include "redact/substitutes.h"

#include <openssl/rand.h>

#include <stdexcept>
#include <utility>

namespace qvhost::redact {

namespace {

std::string new_key() {
    constexpr std::size_t kBytes = 32;
    std::string key(kBytes, '\0');
    if (::RAND_bytes(reinterpret_cast<unsigned char*>(key.data()), static_cast<int>(key.size())) !=
        1)
        throw std::runtime_error("the system gives no random numbers");
    return key;
}

// How long the low number is that is looked for; 0: there is none, or a smaller one, which is nobody's.
std::size_t low_number_size(const Value& value) {
    const auto number = low_number(value.form, value.canonical);
    return number && number->size() >= kShortestSearched ? number->size() : 0;
}

// A small number stays small: few of all numbers are as short.
void keep_zeros_before_low_number(std::string_view canonical, std::string& made) {
    for (auto at = kMakerDigits; at < canonical.size() && canonical[at] == '0'; ++at)
        made[at] = '0';
}

}  // namespace

Substitutes::Substitutes() : key_(new_key()) {}

Substitutes::Substitutes(std::string key, std::map<Value, std::string> known)
    : key_(std::move(key)), known_(std::move(known)) {
    for (const auto& [value, replacement] : known_) taken_.insert({value.form, replacement});
}

bool Substitutes::is_free(const Value& value, const std::string& candidate) const {
    if (candidate == value.canonical || taken_.count({value.form, candidate}) > 0 ||
        originals_.count(candidate) > 0)
        return false;
    if (const auto size = low_number_size(value);
        size > 0 && low_number_size({value.form, candidate}) != size)
        return false;
    if (value.form == Form::ipv6 &&
        short_ipv6(candidate).size() != short_ipv6(value.canonical).size())
        return false;
    bool has_original = false;
    in_originals_.each(candidate, [&](std::size_t, std::size_t, std::uint32_t) {
        has_original = true;
        return true;
    });
    return !has_original;
}

std::string Substitutes::assigned(const Value& value) {
    if (const auto found = known_.find(value); found != known_.end()) return found->second;
    if (value.form == Form::host) return assigned_host(value);
    // Of a short value few others may be possible, or none.
    constexpr int kTries = 2000, kStrictTries = 400;
    Noise noise(key_, std::string(name_of(value.form)) + ' ' + value.canonical);
    std::string made;
    for (int i = 0; i < kTries; ++i) {
        made = disguised(value.form, value.canonical, noise, i >= kStrictTries);
        if (low_number_size(value) > 0) keep_zeros_before_low_number(value.canonical, made);
        if (is_free(value, made)) break;
    }
    taken_.insert({value.form, made});
    known_[value] = made;
    return made;
}

// Label by label, so that a host is in the same domain as its neighbours. The last label of several stays, unless a
// value would be left with it.
std::string Substitutes::assigned_host(const Value& value) {
    std::string made;
    for (const bool keeps_last : {true, false}) {
        made = with_labels_assigned(value.canonical, keeps_last);
        if (is_free(value, made)) break;
    }
    taken_.insert({value.form, made});
    known_[value] = made;
    return made;
}

std::string Substitutes::with_labels_assigned(std::string_view host, bool keeps_last) {
    std::string made;
    for (;;) {
        const auto dot = host.find('.');
        const bool is_last = dot == std::string_view::npos;
        const std::string label(host.substr(0, dot));
        const bool is_kept = label.empty() || (is_last && keeps_last && !made.empty());
        made += is_kept ? label : assigned({Form::text, label});
        if (is_last) return made;
        made += '.';
        host.remove_prefix(dot + 1);
    }
}

void Substitutes::assign(const Values& values) {
    for (const auto& [value, use] : values.all()) {
        if (is_replacement(value)) continue;
        originals_.insert(value.canonical);
        if (use.is_searched && value.canonical.size() >= kShortestSearched)
            in_originals_.add(value.canonical, 0);
    }
    for (const auto& [value, use] : values.all()) {
        if (!is_replacement(value)) assigned(value);
    }
}

}  // namespace qvhost::redact
