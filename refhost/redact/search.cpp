#include "redact/search.h"

#include <functional>

namespace qvhost::redact {

namespace {

std::size_t stride_of(std::size_t beginning) {
    constexpr std::size_t kLong = 8, kMiddle = 5;
    return beginning >= kLong ? 4 : beginning >= kMiddle ? 2 : 1;
}

}  // namespace

Search::Search(std::size_t beginning)
    : beginning_(beginning),
      stride_(stride_of(beginning)),
      sample_(beginning - stride_of(beginning) + 1) {}

void Search::add(std::string_view text, std::uint32_t id) {
    if (text.size() < beginning_) return;
    if (const auto found = by_text_.find(text); found != by_text_.end()) {
        auto& ids = found->second;
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
        return;
    }
    texts_.push_back(std::make_unique<const std::string>(text));
    by_text_[*texts_.back()] = {id};
    const auto word = word_at(text, 0, beginning_);
    note(beginnings_, word);
    for (std::size_t at = 0; at < stride_; ++at) note(samples_, word_at(text, at, sample_));
    auto& lengths = lengths_[word];
    const auto place =
        std::lower_bound(lengths.begin(), lengths.end(), text.size(), std::greater<>());
    if (place == lengths.end() || *place != text.size()) lengths.insert(place, text.size());
}

}  // namespace qvhost::redact
