// Reading a capture as one text, in blocks: the memory that is used does not depend on the capture's size.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace marlox::repository::capture {

// The text of a capture, which ends at its first NUL.
class TextFile {
public:
    // Nothing if it cannot be opened.
    static std::optional<TextFile> open(const std::string& path);

    TextFile(TextFile&& other) noexcept;
    TextFile& operator=(TextFile&&) = delete;
    ~TextFile();

    // The next bytes; empty at the end. The view holds until the next call.
    std::string_view next();
    void rewind();

    // Whether one of the words stands in the text. Starts again at its beginning, before and after.
    bool contains(std::initializer_list<std::string_view> words);

    // If the file has two line ends, NULs behind or between, the first one is read as a blank from here on,
    // unless it is the file's first byte. Starts again at its beginning.
    void join_two_lines();

    int fd() const { return fd_; }

private:
    explicit TextFile(int fd);
    std::string_view next_bytes();  // also behind a NUL

    int fd_;
    std::vector<char> buffer_;
    std::size_t offset_ = 0;  // of what is read next
    bool at_end_ = false;
    std::optional<std::size_t> blank_at_;
};

// How a text begins, for the log: at most a megabyte.
struct LoggedText {
    TextFile& text;
};
std::ostream& operator<<(std::ostream& out, const LoggedText& logged);

// Cuts a text as Tokens does (read/text.h). Of a token that is longer than the host allows (QV_VALUE_BYTES) the
// beginning is given, and the command log tells that the capture was not read whole.
class FileTokens {
public:
    // Starts again at the text's beginning.
    FileTokens(TextFile& text, std::string_view delimiters);

    // The view holds until the next call.
    std::optional<std::string_view> next();

private:
    bool delimits(char c) const { return delimits_[static_cast<unsigned char>(c)]; }
    void append(std::string_view piece);

    TextFile& text_;
    std::array<bool, 256> delimits_ = {};
    std::string_view block_;  // what is not cut yet
    std::string token_;       // one that several blocks hold
    std::size_t longest_;
    bool is_cut_ = false;
};

}  // namespace marlox::repository::capture
