#include "redact/read_back.h"

namespace qvhost::redact {

namespace {

constexpr std::size_t kBlock = 1U << 20;
// So much of a block is looked at again with the next.
constexpr std::size_t kOverlap = 16U << 10;

}  // namespace

void ReadBack::look_at(std::string_view text) {
    if (!found_in_.empty()) return;
    search_.each(text, [&](const SpellingSearch::Match&) { found_in_ = name_; });
}

void ReadBack::begin(std::string_view name) {
    end();
    name_ = name;
    look_at(name);
}

void ReadBack::add(std::string_view bytes) {
    pending_ += bytes;
    if (pending_.size() < kBlock) return;
    look_at(pending_);
    pending_.erase(0, pending_.size() - kOverlap);
}

void ReadBack::end() {
    if (!pending_.empty()) look_at(pending_);
    pending_.clear();
}

}  // namespace qvhost::redact
