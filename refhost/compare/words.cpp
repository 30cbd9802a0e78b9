#include "compare/words.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

#include "text/size.h"

namespace qvhost::compare {

namespace {

// Ends of fields' names that say their unit.
constexpr auto kUnits = std::to_array<std::string_view>({
    "_bytes",
    "_celsius",
    "_mts",
    "_percent",
    "_watts",
});

// "media_errors" is "media errors", "capacity_bytes" is "capacity".
std::string label_of(std::string_view field) {
    for (const auto unit : kUnits) {
        if (field.ends_with(unit)) field.remove_suffix(unit.size());
    }
    std::string label(field);
    std::replace(label.begin(), label.end(), '_', ' ');
    return label;
}

// "931.5 GiB -> 1.8 TiB" of bytes, unless both are the same so.
std::optional<std::string> sizes_of(const FieldChange& change) {
    const auto* const from = std::get_if<std::int64_t>(&change.from);
    const auto* const to = std::get_if<std::int64_t>(&change.to);
    if (change.unit != "bytes" || !from || !to || *from < 0 || *to < 0) return std::nullopt;
    const auto size = size_text(static_cast<std::uint64_t>(*from));
    const auto other = size_text(static_cast<std::uint64_t>(*to));
    if (size == other) return std::nullopt;
    return size + " -> " + other;
}

const KindRow* kind_of(const std::string& name) {
    const auto all = kinds();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const KindRow& one) { return name == one.kind; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace

const char* word(Machines machines) {
    switch (machines) {
        case Machines::same: return "same";
        case Machines::two: return "two";
        case Machines::unsure: return "unsure";
    }
    return "";
}

const char* word(Trend trend) {
    switch (trend) {
        case Trend::none: return "none";
        case Trend::worse: return "worse";
        case Trend::better: return "better";
    }
    return "";
}

std::string words_of(const FieldChange& change) {
    auto text = label_of(change.field) + " ";
    if (const auto sizes = sizes_of(change)) return text + *sizes;
    text += text_of(change.from) + " -> " + text_of(change.to);
    if (!change.unit.empty()) text += " " + change.unit;
    if (is_known(change.by)) {
        const auto by = text_of(change.by);
        text += (by.starts_with('-') ? " (" : " (+") + by + ")";
    }
    return text;
}

std::string words_of(const Change& change) {
    std::string text;
    for (const auto& field : change.fields) text += (text.empty() ? ": " : "; ") + words_of(field);
    return change.what + text;
}

std::string words_of(const Unread& unread) {
    constexpr std::size_t kMost = 3;
    const auto* kind = kind_of(unread.kind);
    const auto count = unread.subjects.size();
    std::string text = unread.field.empty() ? "" : label_of(unread.field) + " of ";
    text += std::to_string(count) + " " + (kind && count == 1 ? kind->one : label_of(unread.kind));
    for (std::size_t i = 0; i < std::min(count, kMost); ++i)
        text += (i == 0 ? ": " : ", ") + unread.subjects[i];
    return count > kMost ? text + ", ..." : text;
}

std::string title_of(const std::string& name) {
    const auto* kind = kind_of(name);
    return kind ? kind->title : name;
}

}  // namespace qvhost::compare
