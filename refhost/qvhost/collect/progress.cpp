#include "qvhost/collect/progress.h"

#include <unistd.h>

#include <boost/algorithm/string/join.hpp>
#include <cstdio>
#include <optional>
#include <utility>

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

// "0:12 of 5:00  ipmitool sdr elist", or the table; empty: neither is known.
std::string work_of(const std::optional<Begun>& command, const std::string& table) {
    if (!command) return one_line(table);
    auto text = minutes(std::chrono::steady_clock::now() - command->seen);
    if (command->limit) text += " of " + minutes(*command->limit);
    return text + "  " + one_line(command->text);
}

}  // namespace

Progress::Progress(const LogDir& dir, bool quiet, const std::vector<Lane>& lanes)
    : quiet_(quiet), terminal_(::isatty(STDERR_FILENO) == 1) {
    for (const auto& lane : lanes) {
        const auto number = static_cast<unsigned>(lanes_.size()) + 1;
        lanes_.push_back({.commands = CommandWatch(dir.commands(number)), .next = titles_.size()});
        for (const auto& module : lane) titles_.push_back(module.display);
        lanes_.back().end = titles_.size();
    }
}

Progress::~Progress() { clear(); }

void Progress::no_lanes_behind(std::size_t started) {
    clear();
    lanes_.erase(lanes_.begin() + static_cast<std::ptrdiff_t>(started), lanes_.end());
    lanes_.back().end = titles_.size();
}

// "2 of 3  BMC information"; how many commands and questions there will be, nobody knows before.
std::string Progress::words_of(const std::string& mark, Shown& lane) const {
    if (mark == kHostMark) return "the program's own questions";
    if (!mark.starts_with(kModuleMark)) return one_line(mark);
    if (lane.next >= lane.end) return one_line(mark.substr(kModuleMark.size()));
    const auto& title = titles_[lane.next++];
    return std::to_string(lane.next) + " of " + std::to_string(titles_.size()) + "  " +
           one_line(title);
}

void Progress::update(const std::vector<LaneProgress>& lanes) {
    if (quiet_) return;
    const auto time = minutes(Clock::now() - start_);
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        auto& lane = lanes_[i];
        const auto number = lanes_.size() > 1 ? "lane " + std::to_string(i + 1) + "  " : "";
        for (const auto& begun : lane.commands.read()) {
            if (!begun.is_command) lane.part = words_of(begun.text, lane);
            if (terminal_) continue;
            const auto limit = begun.limit ? "  (at most " + minutes(*begun.limit) + ")" : "";
            const auto line = begun.is_command ? "  " + one_line(begun.text) + limit : lane.part;
            std::fprintf(stderr, "%s  %s%s\n", time.c_str(), number.c_str(), line.c_str());
        }
    }
    if (terminal_) show_line(lanes);
}

// What changes comes first: a narrow terminal cuts the end. "1:23  2 of 3  BMC information  0:12 of 5:00
// ipmitool sdr elist", or with several lanes "1:23  1 of 3 lanes done  0:12 of 5:00  ipmitool sdr elist | 0:01 ..."
void Progress::show_line(const std::vector<LaneProgress>& lanes) {
    std::vector<std::string> works;
    std::size_t ended = 0;
    std::string part;
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        const auto& state = *lanes[i].state;
        const bool is_done = lanes[i].has_ended || (state.modules_ended && state.question.empty());
        ended += is_done ? 1 : 0;
        if (is_done && lanes_.size() > 1) continue;
        part = lanes_[i].part;
        if (auto work = work_of(lanes_[i].commands.running(), state.table); !work.empty())
            works.push_back(std::move(work));
    }
    const bool are_asked = lanes.front().state->question.empty();
    if (lanes_.size() > 1 && are_asked)
        part = std::to_string(ended) + " of " + std::to_string(lanes_.size()) + " lanes done";
    auto line = minutes(Clock::now() - start_) + "  " + part;
    if (!works.empty()) line += "  " + boost::join(works, " | ");
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
