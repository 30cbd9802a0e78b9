#include "inventory/forms.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "text/case.h"

namespace qvhost::inventory {

namespace {

// The literal text at the form's beginning.
std::string_view literal(std::string_view form) {
    return form.substr(0, std::min(form.find('*'), form.find("{}")));
}

// How many characters of the text are one word.
std::size_t word_length(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const char c = text[length];
        if (c == ' ' || c == ',' || c == ';' || c == '(' || c == ')' || c == '[' || c == ']') break;
        if (c == ':' && (length + 1 == text.size() || text[length + 1] == ' ')) break;
        ++length;
    }
    return length;
}

std::string_view longest_literal(std::string_view form) {
    std::string_view longest;
    while (!form.empty()) {
        const auto part = literal(form);
        if (part.size() > longest.size()) longest = part;
        form.remove_prefix(part.size());
        if (form.starts_with("{}")) form.remove_prefix(2);
        if (form.starts_with('*')) form.remove_prefix(1);
    }
    return longest;
}

std::uint32_t four_at(const char* text) {
    std::uint32_t four = 0;
    std::memcpy(&four, text, sizeof four);
    return four;
}

std::size_t filter_bit(std::uint32_t four) { return (four * 2654435761U) >> 20; }

}  // namespace

std::optional<FormMatch> match(std::string_view text, std::string_view form) {
    FormMatch found;
    bool anywhere = false;
    while (!form.empty()) {
        if (form.front() == '*') {
            anywhere = true;
            form.remove_prefix(1);
            continue;
        }
        if (form.starts_with("{}")) {
            const auto length = word_length(text);
            if (length == 0) return std::nullopt;
            found.subject = text.substr(0, length);
            text.remove_prefix(length);
            form.remove_prefix(2);
            anywhere = false;
            continue;
        }
        const auto part = literal(form);
        const auto at = anywhere ? text.find(part) : text.starts_with(part) ? 0 : text.npos;
        if (at == std::string_view::npos) return std::nullopt;
        text.remove_prefix(at + part.size());
        form.remove_prefix(part.size());
        anywhere = false;
    }
    return found;
}

bool is_like(std::string_view text, std::string_view form) {
    const auto first = form.substr(0, form.find('*'));
    if (!text.starts_with(first)) return false;
    text.remove_prefix(first.size());
    form.remove_prefix(first.size());
    while (!form.empty()) {
        form.remove_prefix(1);  // '*'
        const auto part = form.substr(0, form.find('*'));
        form.remove_prefix(part.size());
        if (form.empty()) return text.ends_with(part);
        const auto at = text.find(part);
        if (at == std::string_view::npos) return false;
        text.remove_prefix(at + part.size());
    }
    return text.empty();
}

bool is_like_any(std::string_view text, std::span<const std::string_view> forms) {
    return std::any_of(forms.begin(), forms.end(),
                       [&](std::string_view form) { return is_like(text, form); });
}

Forms::Forms(std::span<const std::string_view> forms) : forms_(forms) {
    for (std::size_t row = 0; row < forms.size(); ++row) {
        const auto anchor = longest_literal(forms[row]);
        if (anchor.size() < 4)
            throw std::logic_error("a form without four characters in a row: " +
                                   std::string(forms[row]));
        const auto four = four_at(anchor.data());
        anchors_.push_back({four, static_cast<std::uint32_t>(row)});
        filter_.set(filter_bit(four));
    }
    std::sort(anchors_.begin(), anchors_.end(),
              [](const Anchor& a, const Anchor& b) { return a.four < b.four; });
}

std::optional<Forms::Found> Forms::find(std::string_view text) const {
    std::optional<Found> best;
    for (std::size_t i = 0; i + 4 <= text.size(); ++i) {
        const auto four = four_at(text.data() + i);
        if (!filter_.test(filter_bit(four))) continue;
        auto anchor =
            std::lower_bound(anchors_.begin(), anchors_.end(), four,
                             [](const Anchor& a, std::uint32_t key) { return a.four < key; });
        for (; anchor != anchors_.end() && anchor->four == four; ++anchor) {
            if (best && best->row <= anchor->row) continue;
            if (const auto found = match(text, forms_[anchor->row]))
                best = Found{anchor->row, found->subject};
        }
    }
    return best;
}

}  // namespace qvhost::inventory
