#include "redact/search.h"

#include <algorithm>
#include <cstring>

namespace qvhost::redact {

std::uint32_t Search::beginning(const char* text) {
    std::uint32_t four = 0;
    std::memcpy(&four, text, sizeof four);
    return four;
}

std::uint32_t Search::slot(std::uint32_t beginning) {
    return (beginning * 0x9e3779b1U) >> (32 - kFilterBits);
}

void Search::add(std::string_view text, std::uint32_t id) {
    if (text.size() < kShortest) return;
    if (const auto found = by_text_.find(text); found != by_text_.end()) {
        auto& ids = found->second;
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
        return;
    }
    texts_.push_back(std::make_unique<const std::string>(text));
    by_text_[*texts_.back()] = {id};
    const auto four = beginning(text.data());
    filter_[slot(four) / 64] |= std::uint64_t{1} << (slot(four) % 64);
    auto& lengths = lengths_[four];
    const auto place =
        std::lower_bound(lengths.begin(), lengths.end(), text.size(), std::greater<>());
    if (place == lengths.end() || *place != text.size()) lengths.insert(place, text.size());
}

void Search::each(std::string_view text, const Take& take) const {
    if (empty()) return;
    for (std::size_t at = 0; at + kShortest <= text.size(); ++at) {
        const auto four = beginning(text.data() + at);
        const auto bit = slot(four);
        if ((filter_[bit / 64] >> (bit % 64) & 1U) == 0) continue;
        const auto lengths = lengths_.find(four);
        if (lengths == lengths_.end()) continue;
        std::size_t taken = 0;
        for (const auto size : lengths->second) {
            if (size > text.size() - at) continue;
            const auto found = by_text_.find(text.substr(at, size));
            if (found == by_text_.end()) continue;
            for (const auto id : found->second) {
                if (take(at, size, id)) {
                    taken = size;
                    break;
                }
            }
            if (taken > 0) break;
        }
        if (taken > 0) at += taken - 1;
    }
}

}  // namespace qvhost::redact
