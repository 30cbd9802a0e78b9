#include "redact/redactor.h"

#include <algorithm>
#include <array>
#include <optional>

#include "redact/find.h"
#include "redact/labels.h"
#include "redact/letters.h"
#include "text/case.h"

namespace qvhost::redact {

namespace {

// The replacement of a number, divided as the text is.
std::string with_digits_of(std::string_view text, std::string_view replacement) {
    std::string made(text);
    std::size_t used = 0;
    for (char& c : made) {
        if (is_hex(c) && used < replacement.size()) c = replacement[used++];
    }
    return in_case_of(text, made);
}

// The replacement of an IPv6 address, with its groups written as long as the text has them.
std::string with_groups_of(std::string_view text, std::string_view replacement) {
    const auto gap = text.find("::");
    const auto groups_in = [](std::string_view part) {
        return part.empty()
                   ? 0
                   : static_cast<std::size_t>(std::count(part.begin(), part.end(), ':')) + 1;
    };
    std::size_t group = 0;
    std::string made(text);
    for (std::size_t at = 0; at < text.size();) {
        if (at == gap) {
            group = 8 - groups_in(text.substr(gap + 2));
            at += 2;
            continue;
        }
        if (text[at] == ':') {
            ++at;
            ++group;
            continue;
        }
        const auto end = std::min(text.find(':', at), text.size());
        const auto digits = replacement.substr(std::min<std::size_t>(4 * group, 28), 4);
        for (std::size_t i = at; i < end && end - i <= 4; ++i) made[i] = digits[4 - (end - i)];
        at = end;
    }
    return in_case_of(text, made);
}

std::string written_as(std::string_view text, Form form, const std::string& replacement) {
    switch (form) {
        case Form::hex: return with_digits_of(text, replacement);
        case Form::ipv6: return with_groups_of(text, replacement);
        case Form::text:
        case Form::ipv4:
        case Form::host: break;
    }
    return in_case_of(text, replacement);
}

}  // namespace

Form form_in_field(Class which, std::string_view value) {
    constexpr std::size_t kLongNumber = 12;
    if (which == Class::network) return form_of_address(value, Form::host);
    if (which != Class::serials) return Form::text;
    const auto digits = canonical(Form::hex, value);
    return digits && digits->size() >= kLongNumber ? Form::hex : Form::text;
}

std::string labelled(std::string_view label, std::string_view value) {
    return std::string(label) + ": " + std::string(value);
}

void SpellingSearch::add(const Value& value, const std::string& replacement,
                         const std::set<std::string>& spelled) {
    for (auto& spelling : spellings(value, replacement, spelled)) {
        const auto id = static_cast<std::uint32_t>(spellings_.size());
        (spelling.in_hex_runs ? hex_ : joined_).add(lowered(spelling.from), id);
        spellings_.push_back(std::move(spelling));
    }
}

// Most texts of a store are short and hold nothing: that is seen without joining any lines.
bool SpellingSearch::is_short_without_joined(std::string_view text) const {
    std::array<char, kShort> lowered;
    if (text.size() > lowered.size() || text.find('\n') != std::string_view::npos) return false;
    std::transform(text.begin(), text.end(), lowered.begin(), lower);
    return !joined_.may_hold({lowered.data(), text.size()});
}

void SpellingSearch::each_joined(std::string_view text, const TakeMatch& take) const {
    if (joined_.empty() || text.size() < kShortestSearched || is_short_without_joined(text)) return;
    const Joined joined(text);
    Match match{};
    joined_.each(joined.text(), [&](std::size_t at, std::size_t size, std::uint32_t id) {
        const auto& spelling = spellings_[id];
        const auto begin = joined.place(at), last = joined.place(at + size - 1);
        const bool is_in_line = last - begin + 1 == size;
        if (!is_in_line && !spelling.over_lines) return false;
        if (!stands_alone(text, begin, last + 1, spelling.beside)) return false;
        match.places.clear();
        for (std::size_t i = 0; i < size; ++i)
            match.places.push_back(is_in_line ? begin + i : joined.place(at + i));
        if (spelling.is_exact) {
            for (std::size_t i = 0; i < size; ++i) {
                if (text[match.places[i]] != spelling.from[i]) return false;
            }
        }
        match.spelling = &spelling;
        match.at = begin;
        take(match);
        return true;
    });
}

void SpellingSearch::each_hex(std::string_view text, const TakeMatch& take) const {
    if (hex_.empty()) return;
    Match match{};
    each_hex_run(text, [&](const HexRun& run) {
        hex_.each(run.digits, [&](std::size_t at, std::size_t size, std::uint32_t id) {
            match.spelling = &spellings_[id];
            match.places = run.places(at, size);
            match.at = match.places.front();
            take(match);
            return true;
        });
    });
}

Redactor::Redactor(ClassSet classes, const Values& values, const Substitutes& substitutes)
    : classes_(classes), values_(values), substitutes_(substitutes) {
    for (const auto& [value, use] : values.all()) {
        if (!use.is_searched || !substitutes.has(value)) continue;
        const auto& classes_of_value = use.classes;
        const bool is_meant = std::any_of(kClasses.begin(), kClasses.end(), [&](const auto& row) {
            return classes_of_value.has(row.which) && classes.has(row.which);
        });
        if (is_meant) search_.add(value, substitutes.of(value), use.spelled);
    }
}

void Redactor::overwrite(std::string& made, std::string_view text, std::size_t at, std::size_t size,
                         Form form, bool in_own_field) const {
    const auto part = trimmed(text.substr(at, size));
    const auto value = values_.value_of(part, form, in_own_field);
    if (!value || !substitutes_.has(*value)) return;
    const auto replacement = written_as(part, form, substitutes_.of(*value));
    if (replacement.size() != part.size()) return;
    made.replace(static_cast<std::size_t>(part.data() - text.data()), part.size(), replacement);
}

std::string Redactor::text(std::string_view text, Look look, std::vector<Lines>* over_lines) const {
    std::string made(text);
    if (look == Look::fields_too) {
        find_all(text, [&](const Found& found) {
            if (classes_.has(found.which))
                overwrite(made, text, found.at, found.size, found.form, found.in_own_field);
        });
    }
    // The next round finds a value of which a part was replaced with another, and one that a replacement and what
    // stands beside it spell by accident.
    constexpr int kMostRounds = 8;
    replace_found(text, made, over_lines);
    if (made == text) return made;
    std::string before;
    for (int round = 1; made != before && round < kMostRounds; ++round) {
        before = made;
        replace_found(before, made, over_lines);
    }
    return made;
}

void Redactor::replace_found(std::string_view text, std::string& made,
                             std::vector<Lines>* over_lines) const {
    std::string from;
    search_.each(text, [&](const SpellingSearch::Match& match) {
        auto to = match.spelling->to;
        if (!match.spelling->is_exact) {
            from.clear();
            for (const auto place : match.places) from += text[place];
            to = in_case_of(from, to);
        }
        for (std::size_t i = 0; i < to.size(); ++i) made[match.places[i]] = to[i];
        if (over_lines != nullptr && match.places.back() - match.places.front() + 1 > to.size())
            over_lines->push_back({match.places.front(), match.places.back() + 1});
    });
}

std::string Redactor::field(std::string_view label, std::string_view value, Look look) const {
    if (look == Look::spellings_alone) return text(value, look);
    const auto line = labelled(label, value);
    return text(line).substr(line.size() - value.size());
}

std::string Redactor::declared(std::string_view label, std::string_view value, Class which,
                               Look look) const {
    auto made = field(label, value, look);
    if (classes_.has(which) && made == value)
        overwrite(made, value, 0, value.size(), form_in_field(which, value), true);
    return made;
}

}  // namespace qvhost::redact
