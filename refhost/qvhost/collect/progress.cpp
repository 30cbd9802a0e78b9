#include "qvhost/collect/progress.h"

#include <unistd.h>

#include <cstdio>

#include "qvhost/finish/commands.h"
#include "show/terminal.h"
#include "show/visible.h"

namespace qvhost {

namespace {

// "1:05"
std::string minutes(std::chrono::steady_clock::duration duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration).count();
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld", static_cast<long long>(seconds / 60),
                  static_cast<long long>(seconds % 60));
    return text;
}

}  // namespace

Progress::Progress(const LogDir& dir, bool quiet)
    : quiet_(quiet), terminal_(::isatty(STDERR_FILENO) == 1), commands_(dir.commands()) {}

Progress::~Progress() { clear(); }

// "2 of 3  BMC information"; how many commands and questions there will be, nobody knows before.
std::string Progress::words_of(const std::string& mark, const CollectionState& state) {
    if (mark == kHostMark) return "the program's own questions";
    if (!mark.starts_with(kModuleMark)) return one_line(mark);
    const auto& all = state.all_modules;
    if (++modules_ > all.size()) return one_line(mark.substr(kModuleMark.size()));
    return std::to_string(modules_) + " of " + std::to_string(all.size()) + "  " +
           one_line(all[modules_ - 1]);
}

void Progress::update(const CollectionState& state) {
    if (quiet_) return;
    const auto time = minutes(Clock::now() - start_);
    for (const auto& begun : commands_.read()) {
        if (!begun.is_command) part_ = words_of(begun.text, state);
        if (terminal_) continue;
        const auto limit = begun.limit ? "  (at most " + minutes(*begun.limit) + ")" : "";
        const auto line = begun.is_command ? "  " + one_line(begun.text) + limit : part_;
        std::fprintf(stderr, "%s  %s\n", time.c_str(), line.c_str());
    }
    if (terminal_) show_line(state.table);
}

// What changes comes first: a narrow terminal cuts the end. "1:23  2 of 3  BMC information  0:12 of 5:00
// ipmitool sdr elist"
void Progress::show_line(const std::string& table) {
    const auto now = Clock::now();
    auto line = minutes(now - start_) + "  " + part_;
    if (const auto& command = commands_.running()) {
        line += "  " + minutes(now - command->seen);
        if (command->limit) line += " of " + minutes(*command->limit);
        line += "  " + one_line(command->text);
    } else if (!table.empty()) {
        line += "  " + one_line(table);
    }
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
