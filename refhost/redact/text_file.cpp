#include "redact/text_file.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <memory>
#include <system_error>
#include <vector>

#include "files/descriptor.h"
#include "files/new_file.h"
#include "redact/find.h"
#include "redact/letters.h"
#include "text/case.h"

namespace qvhost::redact {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 1U << 20;
// So much stays for the next block, so that what is divided by its end is found.
constexpr std::size_t kOverlap = 64U << 10;

// clang-format off
constexpr auto kArchives = std::to_array<std::string_view>({
    ".tar", ".tgz", ".tbz", ".tbz2", ".txz", ".gz", ".bz2", ".xz", ".zst", ".lz4", ".lzma", ".zip", ".7z", ".rar", ".cpio",
    ".rpm", ".deb", ".jar", ".iso", ".cab",
});
constexpr auto kBeginnings = std::to_array<std::string_view>({
    "\x1f\x8b", "BZh", "\xfd" "7zXZ", "\x28\xb5\x2f\xfd", "PK\x03\x04", "7z\xbc\xaf", "Rar!", "070701", "\x7f" "ELF", "\x89PNG",
    "\xff\xd8\xff", "%PDF", "SQLite format 3", "GIF8", "\xed\xab\xee\xdb",
});
// clang-format on

Descriptor opened(const fs::path& file) {
    Descriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!fd) throw std::system_error(errno, std::generic_category(), file.string());
    return fd;
}

// Reads a file block by block.
class Blocks {
public:
    explicit Blocks(const fs::path& file) : file_(file), fd_(opened(file)) {}

    // The next one, as long as this object has no other; shorter than kBlock at the end of the file.
    std::string_view next() {
        errno = 0;
        const auto size = read_into(fd_.get(), {buffer_.get(), kBlock});
        if (size == 0 && errno != 0)
            throw std::system_error(errno, std::generic_category(), file_.string());
        return {buffer_.get(), size};
    }

private:
    const fs::path& file_;
    Descriptor fd_;
    // Of most files little of it is touched.
    std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(kBlock);
};

// Where the text may be divided so that about kOverlap stays: behind a line.
std::size_t cut_of(std::string_view text) {
    const auto most = text.size() - kOverlap;
    const auto line = text.rfind('\n', most);
    return line == std::string_view::npos ? most : line + 1;
}

// Hands on the file in pieces that end with a line, each with a part of what follows it; `cut` is where that
// begins. take() returns how much it has taken.
template <class Take>
void each_piece(const fs::path& file, Take take) {
    Blocks blocks(file);
    std::string text;
    for (;;) {
        const auto block = blocks.next();
        text += block;
        const bool is_last = block.size() < kBlock;
        const auto taken = take(std::string_view(text), is_last ? text.size() : cut_of(text));
        if (is_last) return;
        text.erase(0, taken);
    }
}

}  // namespace

std::string why_not_redacted(const fs::path& file) {
    const auto name = lowered(file.filename().string());
    if (std::any_of(kArchives.begin(), kArchives.end(),
                    [&](auto ending) { return name.ends_with(ending); }))
        return "it is an archive, which is not redacted";
    Blocks blocks(file);
    bool is_first = true;
    std::size_t bytes = 0, nuls = 0, controls = 0;
    for (;;) {
        const auto block = blocks.next();
        if (block.empty()) break;
        if (is_first && std::any_of(kBeginnings.begin(), kBeginnings.end(),
                                    [&](auto beginning) { return block.starts_with(beginning); }))
            return "it is no text, and not redacted";
        is_first = false;
        bytes += block.size();
        for (const char c : block) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte >= 0x20) continue;
            nuls += byte == 0 ? 1U : 0U;
            controls += byte != '\n' && byte != '\t' && byte != '\r' && byte != 0x1b ? 1U : 0U;
        }
    }
    // A tool's text may have some odd bytes.
    constexpr std::size_t kOneNulIn = 200, kOneControlIn = 20;
    if (nuls * kOneNulIn > bytes || controls * kOneControlIn > bytes)
        return "it is no text, and not redacted";
    return "";
}

namespace {

// A spelling that touches such a character may be a part of something else: the field alone tells that it is the value.
bool may_join(char c) { return is_alnum(c) || is_wide(c) || c == '.' || c == ':'; }

}  // namespace

void gather_found(std::string_view text, const Found& found, Values& values) {
    values.add(text.substr(found.at, found.size), found.which, found.form, found.in_own_field);
    if ((found.at > 0 && may_join(text[found.at - 1])) ||
        may_join(at_or_end(text, found.at + found.size)))
        values.note_told_by_field();
}

void gather_from_text(std::string_view text, Values& values) {
    find_all(text, [&](const Found& found) { gather_found(text, found, values); });
}

void gather_from_file(const fs::path& file, Values& values) {
    each_piece(file, [&](std::string_view text, std::size_t cut) {
        find_all(text, [&](const Found& found) {
            // The lines of a key may go on behind the cut; all else is found again.
            if (found.at < cut || found.which == Class::secrets) gather_found(text, found, values);
        });
        return cut;
    });
}

void redact_file(const fs::path& from, const fs::path& to, const Redactor& redactor, Look look) {
    NewFile out(to);
    each_piece(from, [&](std::string_view text, std::size_t cut) {
        std::vector<Redactor::Lines> over_lines;
        const auto made = redactor.text(text, look, &over_lines);
        if (cut < text.size()) {
            for (bool moved = true; moved;) {
                moved = false;
                for (const auto& lines : over_lines) {
                    if (lines.begin >= cut || lines.end <= cut) continue;
                    const auto line = text.rfind('\n', lines.begin);
                    cut = line == std::string_view::npos ? 0 : line + 1;
                    moved = true;
                }
            }
        }
        out.write(made.data(), static_cast<std::streamsize>(cut));
        return cut;
    });
    out.close();
}

}  // namespace qvhost::redact
