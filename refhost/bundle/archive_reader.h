// The files of an archive that somebody else made: nothing but files, with plain names below one directory.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace qvhost::bundle {

// How large what is in an archive may be.
struct Limits {
    std::uint64_t files = 100'000;
    std::uint64_t bytes = std::uint64_t{64} << 30;
    // More than `free_bytes` only if it is at most so many times the archive's size.
    std::uint64_t ratio = 1000;
    std::uint64_t free_bytes = std::uint64_t{1} << 30;
};

struct ArchivedFile {
    std::string directory;  // the one that all files are in
    std::string name;       // below it: "report/report.sqlite"
};

// Takes the bytes of a file, part by part.
using TakeBytes = std::function<void(std::string_view bytes)>;

// Whether a name may stand in a bundle: relative, no part of it empty, "." or "..", printable ASCII without a
// backslash, at most 16 parts of 255 bytes.
bool is_plain_path(std::string_view name);

// Whether the file begins as an archive does that each_file() reads.
bool is_archive(const std::filesystem::path& file);

// Hands on each file in the archive's order: `begin` returns what takes its bytes. Throws std::runtime_error naming
// the archive if it is damaged, larger than the limits, has anything but files and directories in it, or has two
// files of one name.
void each_file(const std::filesystem::path& archive, const Limits& limits,
               const std::function<TakeBytes(const ArchivedFile& file)>& begin);

}  // namespace qvhost::bundle
