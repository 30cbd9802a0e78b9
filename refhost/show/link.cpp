#include "show/link.h"

namespace qvhost {

namespace {

bool take(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

}  // namespace

std::optional<std::string> linked_capture(std::string_view text) {
    constexpr std::string_view kBetween = "' target='_blank'>../";
    constexpr std::string_view kEnd = "</a>\n<pre>\n";
    if (!take(text, "\n<pre>\n<a href='../") || !text.ends_with(kEnd)) return std::nullopt;
    text.remove_suffix(kEnd.size());
    const auto between = text.find(kBetween);
    if (between == std::string_view::npos) return std::nullopt;
    auto name = text.substr(0, between);
    if (name != text.substr(between + kBetween.size())) return std::nullopt;
    // The quote that closed the name in the command line is no part of it.
    if (name.ends_with('\'')) name.remove_suffix(1);
    if (name.empty() || name.find_first_of("/<>\n") != std::string_view::npos) return std::nullopt;
    return std::string(name);
}

}  // namespace qvhost
