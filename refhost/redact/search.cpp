#include "redact/search.h"

#include <functional>

namespace qvhost::redact {

Search::Search(std::size_t beginning) : beginning_(beginning) {
    std::memcpy(&mask_, std::string(beginning, '\xff').data(), beginning);
}

void Search::add(std::string_view text, std::uint32_t id) {
    if (text.size() < beginning_) return;
    if (const auto found = by_text_.find(text); found != by_text_.end()) {
        auto& ids = found->second;
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
        return;
    }
    texts_.push_back(std::make_unique<const std::string>(text));
    by_text_[*texts_.back()] = {id};
    const auto word = beginning_of(text);
    filter_[slot(word) / 64] |= std::uint64_t{1} << (slot(word) % 64);
    auto& lengths = lengths_[word];
    const auto place =
        std::lower_bound(lengths.begin(), lengths.end(), text.size(), std::greater<>());
    if (place == lengths.end() || *place != text.size()) lengths.insert(place, text.size());
}

}  // namespace qvhost::redact
