// Which command runs, while the log of the commands grows.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qvhost {

// What has begun: a part of the collection, as the host has marked it in the log, or a command.
struct Begun {
    bool is_command = false;
    std::string text;  // the mark, or the command for people
    std::optional<std::chrono::seconds> limit =
        {};  // how long a command may take, if that is known
    std::chrono::steady_clock::time_point seen = std::chrono::steady_clock::now();
};

class CommandWatch {
public:
    explicit CommandWatch(std::filesystem::path log) : log_(std::move(log)) {}

    // Reads what is new in the log. Returns what has begun since, in order.
    std::vector<Begun> read();

    // The command that runs; nothing: none does.
    const std::optional<Begun>& running() const { return running_; }

private:
    std::filesystem::path log_;
    std::streamoff next_ = 0;  // where to read on
    std::string pending_;      // the beginning of a line
    std::optional<Begun> running_;
};

}  // namespace qvhost
