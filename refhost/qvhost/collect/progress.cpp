#include "qvhost/collect/progress.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "show/terminal.h"
#include "show/visible.h"

namespace qvhost {

namespace {

std::string elapsed(std::chrono::steady_clock::duration duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration).count();
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld", static_cast<long long>(seconds / 60),
                  static_cast<long long>(seconds % 60));
    return text;
}

bool is_ours(const std::string& name) {
    return name == "qvhost.log" || name == "console.txt" || name == "report";
}

}  // namespace

Progress::Progress(const std::filesystem::path& log_dir, bool quiet)
    : quiet_(quiet), terminal_(::isatty(STDERR_FILENO) == 1) {
    if (quiet_) return;
    watch_ = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    // If there is no watch (the user has too many), the line shows the table alone.
    if (watch_) ::inotify_add_watch(watch_.get(), log_dir.c_str(), IN_CREATE | IN_MODIFY);
}

Progress::~Progress() { clear(); }

// In the order in which they were written to. A capture that is written to several times in a row is
// there once.
std::vector<std::string> Progress::new_captures() {
    std::vector<std::string> captures{capture_};
    alignas(inotify_event) char buffer[4096];
    ssize_t size = 0;
    while (watch_ && (size = ::read(watch_.get(), buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, buffer + at, sizeof event);
            const std::string name = event.len > 0 ? buffer + at + sizeof event : "";
            if (!name.empty() && !is_ours(name) && name != captures.back())
                captures.push_back(name);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    captures.erase(captures.begin());
    return captures;
}

void Progress::update(const CollectionState& state) {
    if (quiet_) return;
    const auto captures = new_captures();
    const auto& modules = state.modules;
    if (!terminal_) {
        const auto time = elapsed(Clock::now() - start_);
        for (auto i = modules_; i < modules.size(); ++i)
            std::fprintf(stderr, "%s  %s\n", time.c_str(), one_line(modules[i]).c_str());
        for (const auto& capture : captures)
            std::fprintf(stderr, "%s    %s\n", time.c_str(), one_line(capture).c_str());
    }

    const bool module_changed = modules.size() != modules_;
    if (module_changed) module_ = modules.back();
    modules_ = modules.size();
    table_ = state.table;
    if (module_changed) capture_.clear();
    if (!captures.empty()) capture_ = captures.back();
    if (module_changed || !captures.empty()) capture_start_ = Clock::now();
    if (terminal_) show_line();
}

void Progress::show_line() {
    const auto now = Clock::now();
    auto line = elapsed(now - start_) + "  " + one_line(module_);
    const auto& doing = capture_.empty() ? table_ : capture_;
    if (!doing.empty()) line += "  " + one_line(doing) + "  " + elapsed(now - capture_start_);
    const auto style = terminal_style(STDERR_FILENO);
    const auto width = style.width > 1 ? style.width - 1 : 1;
    std::fprintf(stderr, "\r%s\033[K", shortened(line, width).c_str());
    std::fflush(stderr);
    shown_ = true;
}

void Progress::clear() {
    if (shown_) std::fputs("\r\033[K", stderr);
    shown_ = false;
}

}  // namespace qvhost
