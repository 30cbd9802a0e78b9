#include "runner/limits.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "runner/group.h"

namespace runner {

namespace {

namespace fs = std::filesystem;

using std::chrono::milliseconds;
using std::chrono::seconds;

std::optional<seconds> seconds_in(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number <= 0)
        return std::nullopt;
    return seconds(number);
}

std::optional<seconds> seconds_from(const char* variable) {
    const char* value = std::getenv(variable);
    return value ? seconds_in(value) : std::nullopt;
}

// proc(5), io: "wchar: N" counts the bytes of all write() calls, also into pipes.
std::optional<std::uint64_t> written_by(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/io");
    for (std::string line; std::getline(file, line);) {
        unsigned long long bytes = 0;
        if (std::sscanf(line.c_str(), "wchar: %llu", &bytes) == 1) return bytes;
    }
    return std::nullopt;
}

// proc(5), task/TID/schedstat: "N ..." is the time that a thread has spent on a processor, in nanoseconds.
// A kernel that does not keep it says nothing, and only what is written counts.
std::uint64_t processor_ns_of(pid_t pid) {
    std::uint64_t sum = 0;
    std::error_code error;
    const auto tasks = "/proc/" + std::to_string(pid) + "/task";
    for (fs::directory_iterator task(tasks, error), end; !error && task != end;
         task.increment(error)) {
        std::uint64_t time = 0;
        std::ifstream(task->path() / "schedstat") >> time;
        sum += time;
    }
    return sum;
}

// "'/opt/qvhost/bin/qv_tools/storcli_x64' /c0 show": storcli_x64
std::string_view tool_of(std::string_view command) {
    const bool quoted = command.starts_with('\'');
    if (quoted) command.remove_prefix(1);
    auto word = command.substr(0, command.find(quoted ? '\'' : ' '));
    return word.substr(word.rfind('/') + 1);
}

std::optional<seconds> own_limit(std::string_view tool) {
    const char* value = std::getenv("QV_TOOL_LIMITS");
    std::string_view rest = value ? value : "";
    while (!rest.empty()) {
        const auto entry = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(rest.size(), entry.size() + 1));
        const auto equal = entry.find('=');
        if (equal == std::string_view::npos) continue;
        const auto name = entry.substr(0, equal);
        const bool is_meant = tool == name || (tool.starts_with(name) && tool[name.size()] == '_');
        if (is_meant) return seconds_in(entry.substr(equal + 1));
    }
    return std::nullopt;
}

}  // namespace

Limits::Limits(TimeoutKind kind, const std::string& command)
    : bounds_(kind == TimeoutKind::archive), silence_(seconds_from("QV_SILENCE_TIMEOUT")) {
    limit_ = seconds_from("QV_TOOL_TIMEOUT");
    if (kind == TimeoutKind::archive && seconds_from("QV_ARCHIVE_TIMEOUT"))
        limit_ = seconds_from("QV_ARCHIVE_TIMEOUT");
    if (const auto own = own_limit(tool_of(command))) limit_ = own;
    constexpr seconds kQuestion(15);
    if (kind == TimeoutKind::question) limit_ = std::min(limit_.value_or(kQuestion), kQuestion);
    if (limit_) time_ = Clock::now() + *limit_;
    if (const auto deadline = seconds_from("QV_DEADLINE")) deadline_ = Clock::time_point(*deadline);
}

const char* Limits::exceeded(const Running* running) {
    const auto now = Clock::now();
    if (deadline_ && now >= *deadline_) return kDeadline;
    if (time_ && now >= *time_) return kTimedOut;
    if (silence_ && running && is_silent(running->processes)) return kSilent;
    return bounds_.exceeded(running ? &running->processes : nullptr,
                            running ? &running->files : nullptr);
}

// Nothing if there are no processes or the system does not say what they have written.
std::optional<Limits::Activity> Limits::activity_of(const CommandProcesses& processes) {
    Activity sum;
    for (const pid_t pid : processes.members()) {
        const auto bytes = written_by(pid);
        if (!bytes) return std::nullopt;
        ++sum.processes;
        sum.bytes_written += *bytes;
        sum.processor_ns += processor_ns_of(pid);
    }
    return sum.processes > 0 ? std::optional(sum) : std::nullopt;
}

// A tool that asks a slow device needs little time, and one that hangs in a loop of waiting needs some: less
// than this within any silence that people set.
constexpr std::uint64_t kWorkNs = 1'000'000;

bool Limits::is_silent(const CommandProcesses& processes) {
    const auto now = Clock::now();
    const auto found = activity_of(processes);
    const bool lives = !found || found->processes != last_activity_.processes ||
                       found->bytes_written != last_activity_.bytes_written ||
                       found->processor_ns < last_activity_.processor_ns ||
                       found->processor_ns - last_activity_.processor_ns >= kWorkNs;
    if (lives) {
        last_activity_ = found.value_or(Activity{});
        last_sign_ = now;
    }
    return now - last_sign_ >= *silence_;
}

std::optional<seconds> Limits::longest() const {
    if (!deadline_) return limit_;
    const auto left = std::max(seconds(0), std::chrono::round<seconds>(*deadline_ - Clock::now()));
    return limit_ ? std::min(*limit_, left) : left;
}

int Limits::interval() const {
    constexpr milliseconds kNone = std::chrono::hours(24 * 10);
    auto left = kNone;
    const auto until = [&](Clock::time_point end) {
        left = std::min(left, std::chrono::ceil<milliseconds>(end - Clock::now()));
    };
    if (time_) until(*time_);
    if (deadline_) until(*deadline_);
    if (silence_)
        left = std::min(
            left, std::clamp(milliseconds(*silence_) / 10, milliseconds(100), milliseconds(5000)));
    constexpr milliseconds kLook(200);
    if (bounds_.any()) left = std::min(left, kLook);
    if (left == kNone) return -1;
    return static_cast<int>(std::max(left, milliseconds(0)).count());
}

}  // namespace runner
