#include "read/text_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "read/file.h"
#include "read/text.h"
#include "runner/bounds.h"
#include "runner/command_log.h"

namespace marlox::repository::capture {

namespace {

constexpr std::size_t kBlock = 65536;
constexpr std::size_t kLogged = 1 << 20;

}  // namespace

std::optional<TextFile> TextFile::open(const std::string& path) {
    const int fd = open_for_reading(path);
    if (fd < 0) return std::nullopt;
    return TextFile(fd);
}

TextFile::TextFile(int fd) : fd_(fd), buffer_(kBlock) {}

TextFile::TextFile(TextFile&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)),
      buffer_(std::move(other.buffer_)),
      offset_(other.offset_),
      at_end_(other.at_end_),
      blank_at_(other.blank_at_) {}

TextFile::~TextFile() {
    if (fd_ >= 0) ::close(fd_);
}

std::string_view TextFile::next_bytes() {
    const auto size = read_some(fd_, buffer_.data(), buffer_.size());
    if (blank_at_ && *blank_at_ >= offset_ && *blank_at_ < offset_ + size)
        buffer_[*blank_at_ - offset_] = ' ';
    offset_ += size;
    return {buffer_.data(), size};
}

std::string_view TextFile::next() {
    if (at_end_) return {};
    const auto bytes = next_bytes();
    const auto text = c_text(bytes);
    at_end_ = text.size() < bytes.size() || bytes.empty();
    return text;
}

void TextFile::rewind() {
    offset_ = 0;
    at_end_ = ::lseek(fd_, 0, SEEK_SET) != 0;
}

bool TextFile::contains(std::initializer_list<std::string_view> words) {
    std::size_t longest = 0;
    for (const auto word : words) longest = std::max(longest, word.size());
    rewind();
    std::string text;  // a block, with the end of the one before it
    bool found = false;
    for (auto block = next(); !block.empty() && !found; block = next()) {
        text.erase(0, text.size() - std::min(text.size(), longest));
        text += block;
        found = std::any_of(words.begin(), words.end(), [&](std::string_view word) {
            return text.find(word) != std::string::npos;
        });
    }
    rewind();
    return found;
}

void TextFile::join_two_lines() {
    rewind();
    std::size_t newlines = 0;
    std::size_t first = 0;
    for (auto bytes = next_bytes(); !bytes.empty(); bytes = next_bytes()) {
        const auto start = offset_ - bytes.size();
        for (auto at = bytes.find('\n'); at != std::string_view::npos;
             at = bytes.find('\n', at + 1)) {
            ++newlines;
            if (first == 0) first = start + at;
        }
    }
    if (newlines == 2) blank_at_ = first;
    rewind();
}

std::ostream& operator<<(std::ostream& out, const LoggedText& logged) {
    auto& text = logged.text;
    text.rewind();
    std::size_t room = kLogged;
    for (auto block = text.next(); !block.empty() && room > 0; block = text.next()) {
        const auto shown = block.substr(0, room);
        out << shown;
        room -= shown.size();
    }
    text.rewind();
    return out;
}

FileTokens::FileTokens(TextFile& text, std::string_view delimiters)
    : text_(text), longest_(runner::most_value_bytes()) {
    for (const char c : delimiters) delimits_[static_cast<unsigned char>(c)] = true;
    text_.rewind();
}

void FileTokens::append(std::string_view piece) {
    const auto fits = std::min(piece.size(), longest_ - token_.size());
    token_.append(piece.substr(0, fits));
    if (fits == piece.size() || is_cut_) return;
    is_cut_ = true;
    runner::log_unread(text_.fd(), EMSGSIZE);
}

std::optional<std::string_view> FileTokens::next() {
    token_.clear();
    bool has_begun = false;
    for (;;) {
        if (block_.empty()) block_ = text_.next();
        if (block_.empty())
            return has_begun ? std::optional<std::string_view>(token_) : std::nullopt;
        if (!has_begun) {
            const auto* const begin =
                std::find_if_not(block_.begin(), block_.end(), [&](char c) { return delimits(c); });
            block_.remove_prefix(static_cast<std::size_t>(begin - block_.begin()));
            if (block_.empty()) continue;
            has_begun = true;
        }
        const auto* const end =
            std::find_if(block_.begin(), block_.end(), [&](char c) { return delimits(c); });
        const auto piece = block_.substr(0, static_cast<std::size_t>(end - block_.begin()));
        const bool has_ended = piece.size() < block_.size();
        block_.remove_prefix(piece.size());
        if (has_ended && token_.empty()) return piece;
        append(piece);
        if (has_ended) return token_;
    }
}

}  // namespace marlox::repository::capture
