// Bounds of what commands may write and start, from the environment (numbers; unset or not positive: none):
//     QV_CAPTURE_BYTES  the size of a file that a command writes
//     QV_ARCHIVE_BYTES  the same, where set, for tools that pack a whole system's logs
//     QV_RUN_BYTES      the size of all files in the current directory and in its directory "report"
//     QV_FREE_BYTES     what the file system of the current directory keeps free
//     QV_PROCESSES      how many processes a command may have at a time
// and of what parsers make of it:
//     QV_VALUE_BYTES    the size of a single value that is read from a capture
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace runner {

class CommandProcesses;
class WrittenFiles;

// Why a command was stopped or not started, in the words of the command log.
inline constexpr const char* kFileTooLarge = "size";
inline constexpr const char* kRunTooLarge = "run-size";
inline constexpr const char* kNoRoom = "room";
inline constexpr const char* kTooManyProcesses = "processes";

// The bounds of one command.
class Bounds {
public:
    explicit Bounds(bool packs_archive);

    bool any() const { return file_ || run_ || free_ || processes_; }

    // What a file of a command may have that starts now; nothing: any size. The disk counts: a tool may fill it
    // faster than anybody looks.
    std::optional<std::uint64_t> file_bytes();

    // Why the command must be stopped or not be started; null if it may go on. Both are null before the start.
    // Looks as often as it takes little time.
    const char* exceeded(const CommandProcesses* processes, const WrittenFiles* files);

    // The same of a command that has ended by itself.
    const char* exceeded_at_end(const WrittenFiles& files) const;

private:
    using Clock = std::chrono::steady_clock;

    const char* exceeded_now(const CommandProcesses* processes, const WrittenFiles* files) const;

    std::optional<std::uint64_t> file_;
    const char* file_reason_ = kFileTooLarge;  // why it has this bound
    std::optional<std::uint64_t> run_;
    std::optional<std::uint64_t> free_;
    std::optional<std::uint64_t> processes_;
    Clock::time_point next_look_ = Clock::now();
};

// Of a single value that is read from a capture.
std::size_t most_value_bytes();

// While it lives, files that this process and what it starts write end one byte behind the bound: a file of
// just that size is whole, and one that is larger shows it. A process that writes on gets SIGXFSZ.
class ScopedFileSize {
public:
    explicit ScopedFileSize(std::optional<std::uint64_t> bytes);
    ~ScopedFileSize();
    ScopedFileSize(const ScopedFileSize&) = delete;
    ScopedFileSize& operator=(const ScopedFileSize&) = delete;

private:
    std::optional<std::uint64_t> before_;
};

}  // namespace runner
