#include "compare/multiset.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qvhost::compare {

namespace {

// More parts than this would not help: then so many items are equal.
constexpr std::size_t kMostParts = 64;

}  // namespace

MultisetDifference::MultisetDifference(Hashes from, Hashes to, std::size_t most_held)
    : from_(std::move(from)), to_(std::move(to)), most_held_(most_held) {
    while (!load(0, parts_ < kMostParts)) parts_ *= 2;
}

bool MultisetDifference::load(std::size_t part, bool must_fit) {
    const auto fill = [&](const Hashes& hashes, Sorted& list) {
        bool fits = true;
        hashes([&](std::uint64_t hash) {
            if (!fits || (hash & (parts_ - 1)) != part) return;
            fits = !must_fit || list.size() < most_held_;
            if (fits) list.push_back(hash);
        });
        return fits;
    };
    Sorted from, to;
    if (!fill(from_, from) || !fill(to_, to)) return false;
    std::sort(from.begin(), from.end());
    std::sort(to.begin(), to.end());
    new_.clear();
    gone_.clear();
    std::set_difference(to.begin(), to.end(), from.begin(), from.end(), std::back_inserter(new_));
    std::set_difference(from.begin(), from.end(), to.begin(), to.end(), std::back_inserter(gone_));
    loaded_ = part;
    return true;
}

void MultisetDifference::each(Sorted& extra, const Walk& walk) {
    for (std::size_t part = 0; part < parts_; ++part) {
        if (loaded_ != part) load(part, false);
        if (extra.empty()) continue;
        // Equal hashes stand beside each other; each is told as often as it stands there.
        Told::Left left;
        left.all = extra.size();
        for (const auto hash : extra) {
            if (left.hashes.empty() || left.hashes.back() != hash) {
                left.hashes.push_back(hash);
                left.counts.push_back(0);
            }
            ++left.counts.back();
        }
        walk(Told(left));
    }
}

bool MultisetDifference::Told::operator()(std::uint64_t hash) const {
    const auto& hashes = left_->hashes;
    const auto found = std::lower_bound(hashes.begin(), hashes.end(), hash);
    if (found == hashes.end() || *found != hash) return false;
    auto& count = left_->counts[static_cast<std::size_t>(found - hashes.begin())];
    if (count == 0) return false;
    --count;
    --left_->all;
    return true;
}

}  // namespace qvhost::compare
