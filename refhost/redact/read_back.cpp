#include "redact/read_back.h"

#include <algorithm>
#include <utility>

namespace qvhost::redact {

namespace {

constexpr std::size_t kBlock = 1U << 20;
// So much of a block is looked at again with the next.
constexpr std::size_t kOverlap = 16U << 10;

}  // namespace

bool ReadBack::has_value(std::string_view text) const {
    bool found = false;
    search_.each(text, [&](const SpellingSearch::Match&) { found = true; });
    return found;
}

void ReadBack::wait() {
    if (found_.valid() && found_.get() && found_in_.empty()) found_in_ = name_;
}

void ReadBack::look_at_pending() {
    wait();
    looked_at_.swap(pending_);
    const auto overlap = std::min(looked_at_.size(), kOverlap);
    pending_.assign(looked_at_, looked_at_.size() - overlap);
    found_ = std::async(std::launch::async, [this] { return has_value(looked_at_); });
}

void ReadBack::begin(std::string_view name, std::optional<JsonNumbers> json) {
    end();
    name_ = name;
    json_ = json;
    if (found_in_.empty() && has_value(name)) found_in_ = name;
}

void ReadBack::add(std::string_view bytes) {
    if (json_)
        json_->append(bytes, pending_);
    else
        pending_ += bytes;
    if (pending_.size() >= kBlock) look_at_pending();
}

void ReadBack::end() {
    wait();
    if (found_in_.empty() && has_value(pending_)) found_in_ = name_;
    pending_.clear();
}

}  // namespace qvhost::redact
