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

std::string ReadBack::found_in(const std::vector<Part>& parts) const {
    const auto found = std::find_if(parts.begin(), parts.end(), [this](const Part& part) {
        return has_value(part.name) || has_value(part.text);
    });
    return found == parts.end() ? "" : found->name;
}

void ReadBack::wait() {
    if (!found_.valid()) return;
    auto found = found_.get();
    if (found_in_.empty()) found_in_ = std::move(found);
}

void ReadBack::look_at_pending() {
    wait();
    looked_at_.swap(pending_);
    const auto& [name, text] = looked_at_.back();
    const auto overlap = std::min(text.size(), kOverlap);
    pending_.assign(1, {name, text.substr(text.size() - overlap)});
    pending_bytes_ = overlap;
    found_ = std::async(std::launch::async, [this] { return found_in(looked_at_); });
}

void ReadBack::begin(std::string_view name, std::optional<JsonNumbers> json) {
    json_ = json;
    pending_.push_back({std::string(name), ""});
}

void ReadBack::add(std::string_view bytes) {
    auto& text = pending_.back().text;
    const auto before = text.size();
    if (json_)
        json_->append(bytes, text);
    else
        text += bytes;
    pending_bytes_ += text.size() - before;
    if (pending_bytes_ >= kBlock) look_at_pending();
}

void ReadBack::end() {
    wait();
    if (found_in_.empty()) found_in_ = found_in(pending_);
    pending_.clear();
    pending_bytes_ = 0;
}

}  // namespace qvhost::redact
