#include "qvhost/finish/commands.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "files/read_beginning.h"
#include "qvhost/finish/lane_files.h"
#include "runner/shell_words.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

std::string unescaped(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            out += text[++i] == 'n' ? '\n' : text[i];
        } else {
            out += text[i];
        }
    }
    return out;
}

struct Word {
    std::string_view in_log;
    std::string_view stopped_by;
    std::string_view remark;
};

constexpr auto kStops = std::to_array<Word>({
    {"time",       "time",    ""                                         },
    {"silence",    "silence", ""                                         },
    {"deadline",   "run",     ""                                         },
    {"size",       "size",    "a file of it had reached the size limit"  },
    {"run-size",   "size",    "the collection had reached its size limit"},
    {"room",       "size",    "the disk was nearly full"                 },
    {"processes",  "size",    "it had too many processes"                },
    {"unanswered", "time",    ""                                         },
});

void set_stop(CommandInfo& command, std::string_view word) {
    command.stopped_by.clear();
    command.remark.clear();
    for (const auto& stop : kStops) {
        if (stop.in_log != word) continue;
        command.stopped_by = stop.stopped_by;
        command.remark = stop.remark;
    }
}

// "2026-11-21T01:20:40.123Z"
bool is_time(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00.000Z";
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char c, char form) {
        return form == '0' ? c >= '0' && c <= '9' : c == form;
    });
}

std::string tool_of(const std::string& command) {
    const auto path = runner::shell_word(command);
    return path.substr(path.find_last_of('/') + 1);
}

class LogReader {
public:
    explicit LogReader(const fs::path& log_dir) : log_dir_(log_dir) {}

    void take(const std::string& line) {
        if (line.size() < 2 || line[1] != ' ') return;
        const auto rest = std::string_view(line).substr(2);
        switch (line.front()) {
            case '=': section_ = unescaped(rest); break;
            case '>':
            case '?': begin(line); break;
            case '-': refuse(rest); break;
            case '!': set_unread(line); break;
            default:
                if (!log_.commands.empty()) take_of_command(line.front(), rest);
        }
    }

    CommandLog finish() {
        for (auto& command : log_.commands) add_redirections(command);
        return std::move(log_);
    }

private:
    void begin(const std::string& line) {
        auto command = *command_that_begins(line);
        command.origin = line.front() == '?' || section_ == kHostMark ? "host" : "plug-in";
        add(std::move(command));
    }

    // "deadline ipmitool sensor"
    void refuse(std::string_view rest) {
        const auto end = std::min(rest.find(' '), rest.size());
        CommandInfo command;
        command.text = unescaped(rest.substr(std::min(end + 1, rest.size())));
        set_stop(command, rest.substr(0, end));
        command.origin = section_ == kHostMark ? "host" : "plug-in";
        add(std::move(command));
    }

    void add(CommandInfo command) {
        command.tool = tool_of(command.text);
        log_.commands.push_back(std::move(command));
        log_.sections.push_back(section_);
    }

    void take_of_command(char mark, std::string_view rest) {
        auto& command = log_.commands.back();
        if (mark == '+') {
            if (auto name = unescaped(rest); !LogDir::is_own(name))
                command.captures.push_back(std::move(name));
        } else if (mark == '2') {
            command.standard_error = unescaped(rest);
        } else if (mark == '<') {
            set_end(command, std::string(rest));
        }
    }

    // "0.112 0", "2.013 9 silence", "7.027 9 time 4711 4712"
    static void set_end(CommandInfo& command, const std::string& rest) {
        std::istringstream words(rest);
        double seconds = 0;
        int status = 0;
        if (!(words >> seconds >> status)) return;
        command.seconds = seconds;
        command.exit.reset();
        command.signal.reset();
        if (status == -1) {
            command.started.reset();
        } else if (WIFEXITED(status) && (status == 0 || WEXITSTATUS(status) != 0)) {
            command.exit = WEXITSTATUS(status);
        } else {
            command.signal = WTERMSIG(status);
        }
        std::string reason;
        words >> reason;
        set_stop(command, reason);
        for (int pid = 0; words >> pid;)
            command.remark += (command.remark.empty() ? "" : "; ") + std::string("process ") +
                              std::to_string(pid) + " could not be ended and was left";
    }

    // "! 5 /log/raidevents.txt": what the command wrote could not be read to its end.
    void set_unread(const std::string& line) {
        int error = 0;
        int path_at = 0;
        if (std::sscanf(line.c_str(), "! %d %n", &error, &path_at) != 1 || path_at == 0) return;
        const auto path = unescaped(line.substr(static_cast<std::size_t>(path_at)));
        const auto writer =
            std::find_if(log_.commands.rbegin(), log_.commands.rend(), [&](const CommandInfo& c) {
                const auto files = runner::redirections(c.text);
                return std::find(files.begin(), files.end(), path) != files.end();
            });
        if (writer == log_.commands.rend()) return;
        writer->remark =
            "what it wrote could not be read to its end: " + std::generic_category().message(error);
    }

    // The shell's own files, where the runner did not see a change: a file may be written again with the
    // same bytes within one tick of the clock.
    void add_redirections(CommandInfo& command) const {
        if (!command.started) return;
        for (auto& name : captures_of(command.text, log_dir_)) {
            std::error_code ignored;
            auto& captures = command.captures;
            if (fs::is_regular_file(fs::symlink_status(log_dir_ / name, ignored)) &&
                std::find(captures.begin(), captures.end(), name) == captures.end())
                captures.push_back(std::move(name));
        }
        std::sort(command.captures.begin(), command.captures.end());
    }

    fs::path log_dir_;
    std::string section_;
    CommandLog log_;
};

// How surely a command has written a file that changed while it ran.
enum class Claim { none, ran, put_there, names, writes };

Claim claim_of(const CommandInfo& command, const std::string& file, const fs::path& log_dir) {
    const auto named = runner::named_in_directory(command.text, log_dir);
    if (std::find(named.files.begin(), named.files.end(), file) != named.files.end())
        return Claim::writes;
    if (names(command, file)) return Claim::names;
    const auto& seen = command.captures;
    if (std::find(seen.begin(), seen.end(), file) == seen.end()) return Claim::none;
    return named.itself ? Claim::put_there : Claim::ran;
}

// While a command runs, files of other lanes change too. A file is of the lane with the surest claim on it: where
// the shell writes it, else where a command names it, else where one puts files into the directory; of a file that
// nobody names, nobody can tell, and it goes to the first lane.
void leave_captures_to_their_lanes(std::vector<CommandInfo>& commands, const fs::path& log_dir) {
    std::map<std::string, std::set<int>> lanes_of;
    for (const auto& command : commands) {
        for (const auto& file : command.captures) lanes_of[file].insert(command.lane);
    }
    for (const auto& [file, lanes] : lanes_of) {
        if (lanes.size() < 2) continue;
        auto surest = Claim::none;
        int owner = 0;
        for (const auto& command : commands) {
            const auto claim = claim_of(command, file, log_dir);
            if (claim <= surest) continue;
            surest = claim;
            owner = command.lane;
        }
        for (auto& command : commands) {
            if (command.lane != owner) std::erase(command.captures, file);
        }
    }
}

}  // namespace

CommandLog read_commands(const fs::path& log, const fs::path& log_dir,
                         const std::string& stopped_by) {
    LogReader reader(log_dir);
    std::istringstream lines(read_beginning(log, kMostLogBytes));
    for (std::string line; std::getline(lines, line);) reader.take(line);
    auto read = reader.finish();
    if (!read.commands.empty()) {
        auto& last = read.commands.back();
        if (last.started && !last.seconds && last.stopped_by.empty()) last.stopped_by = stopped_by;
    }
    return read;
}

CommandLog read_commands(const LogDir& dir, const std::vector<std::string>& stopped_by) {
    CommandLog all;
    CommandLog questions;  // of the host's own, which come when all lanes have ended
    for (const unsigned lane : lanes_in(dir)) {
        auto part = read_commands(dir.commands(lane), dir.path(),
                                  lane <= stopped_by.size() ? stopped_by[lane - 1] : "");
        for (std::size_t i = 0; i < part.commands.size(); ++i) {
            auto& log = part.sections[i] == kHostMark ? questions : all;
            part.commands[i].lane = static_cast<int>(lane);
            log.commands.push_back(std::move(part.commands[i]));
            log.sections.push_back(std::move(part.sections[i]));
        }
    }
    leave_captures_to_their_lanes(all.commands, dir.path());
    std::move(questions.commands.begin(), questions.commands.end(),
              std::back_inserter(all.commands));
    std::move(questions.sections.begin(), questions.sections.end(),
              std::back_inserter(all.sections));
    return all;
}

// "> 2026-11-21T01:20:40.123Z ipmitool sensor"
std::optional<CommandInfo> command_that_begins(const std::string& line) {
    if (!line.starts_with("> ") && !line.starts_with("? ")) return std::nullopt;
    auto rest = std::string_view(line).substr(2);
    CommandInfo command;
    command.started = "";
    constexpr std::size_t kTimeSize = 24;
    if (rest.size() > kTimeSize && is_time(rest.substr(0, kTimeSize)) && rest[kTimeSize] == ' ') {
        command.started = rest.substr(0, kTimeSize);
        rest.remove_prefix(kTimeSize + 1);
    }
    command.text = unescaped(rest);
    command.tool = tool_of(command.text);
    return command;
}

std::string short_text(const CommandInfo& command) {
    const auto text = runner::without_redirections(command.text);
    return command.tool + std::string(runner::behind_first_word(text));
}

std::string running_command(const fs::path& log) {
    const auto commands = read_commands(log, log.parent_path()).commands;
    if (commands.empty() || !commands.back().started || commands.back().seconds) return "";
    return short_text(commands.back());
}

std::vector<std::string> captures_of(const std::string& command, const fs::path& log_dir) {
    return runner::named_in_directory(command, log_dir).files;  // tools run in the log directory
}

}  // namespace qvhost
