#include "qvhost/replay/record_report.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <charconv>
#include <csignal>
#include <cstring>
#include <ctime>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "qvhost/finish/commands.h"
#include "qvhost/replay/shell_line.h"
#include "runner/command_log.h"
#include "text/utc.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostToRead = std::size_t{64} << 20;

// The tool by the name that machine.json has for it: "storcli" of "/P/qv_tools/storcli_x64".
std::string tool_of(const fs::path& file, const std::vector<VendorTool>& vendors) {
    auto name = file.filename().string();
    if (file.parent_path().filename() != "qv_tools") return name;
    for (const auto& vendor : vendors) {
        if (std::find(vendor.files.begin(), vendor.files.end(), name) != vendor.files.end())
            return vendor.name;
    }
    for (const std::string_view build : {"_x64", "_x32"}) {
        if (name.ends_with(build)) return name.substr(0, name.size() - build.size());
    }
    return name;
}

// What `dmidecode -t system` says, of what `dmidecode` does: these types, dmidecode(8).
std::string system_part(const std::string& dmidecode) {
    constexpr std::string_view kTypes[] = {"DMI type 1,", "DMI type 12,", "DMI type 15,",
                                           "DMI type 23,", "DMI type 32,"};
    std::string part;
    bool is_wanted = true;  // what stands before the first block
    std::istringstream lines(dmidecode);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("Handle ")) {
            is_wanted = std::any_of(std::begin(kTypes), std::end(kTypes), [&](auto type) {
                return line.find(type) != std::string::npos;
            });
        }
        if (is_wanted) part += line + "\n";
    }
    return part;
}

// "Segmentation fault": the line that a shell writes on standard error when a signal has ended its tool; some signals
// it passes over.
std::string words_of_shell(int signal) {
    return signal == SIGINT || signal == SIGPIPE ? "" : std::string(::strsignal(signal));
}

// A shell ends with 128 and the number of that signal. 0: the command ended otherwise.
int signal_told_by_shell(const CommandInfo& info) {
    constexpr int kBase = 128;
    const int signal = info.exit.value_or(0) - kBase;
    if (signal <= 0 || signal >= SIGRTMIN) return 0;
    const auto words = words_of_shell(signal);
    return words.empty() || info.standard_error.ends_with(words + "\n") ||
                   info.standard_error.ends_with(words + " (core dumped)\n")
               ? signal
               : 0;
}

// What the tool itself has said on standard error.
std::string said_by_tool(const CommandInfo& info) {
    auto said = info.standard_error;
    const int signal = signal_told_by_shell(info);
    if (signal == 0 || words_of_shell(signal).empty()) return said;
    const auto end = said.rfind(words_of_shell(signal));
    const auto line = said.rfind('\n', end);
    said.resize(line == std::string::npos || end == 0 ? 0 : line + 1);
    return said;
}

class ReportRecorder {
public:
    ReportRecorder(const Store& store, const LogDir& dir, const std::vector<VendorTool>& vendors,
                   const std::vector<compat::ToolNote>& notes)
        : store_(store),
          dir_(dir),
          vendors_(vendors),
          tool_notes_(notes),
          commands_(store.commands()) {
        log_dir_ = store.meta("log_dir");
        if (log_dir_.empty()) log_dir_ = fs::absolute(dir.path()).string();
        if (!log_dir_.ends_with('/')) log_dir_ += '/';
    }

    Recording record() {
        take_machine();
        for (const auto& command : commands_) {
            const auto stages = stages_of(command.text);
            if (!command.started || !stages) continue;
            const auto capture = capture_of(stages->back().out);
            if (!capture.empty()) writers_[capture] = stages->front().words;
        }
        for (const auto& command : commands_) take(command);
        take_notes();
        for (const auto& entry : entries_) {
            for (const auto& line : entry.notes) recording_.not_known.push_back(line);
        }
        // A command without arguments answers for all: those that say more come first.
        std::stable_partition(entries_.begin(), entries_.end(), [](const Entry& entry) {
            return entry.command.arguments.has_value();
        });
        for (auto& entry : entries_) recording_.commands.push_back(std::move(entry.command));
        return std::move(recording_);
    }

private:
    // What is known of what a command printed.
    enum class Known { nothing, nobody_listened, a_part, all };

    struct Entry {
        RecordingCommand command;
        Known output = Known::all;
        std::vector<std::string> notes = {};  // on what is not known, for people
    };

    void take_machine() {
        const auto text = [&](const char* key) {
            auto value = store_.meta(key);
            return value.empty() ? std::nullopt : std::optional(std::move(value));
        };
        recording_.recorded = store_.meta("recorded");
        if (recording_.recorded.empty())
            recording_.recorded = local_time_of_utc(store_.meta("finished"));
        recording_.identity = {.host = text("host"),
                               .machine_id = text("machine_id"),
                               .os = text("os"),
                               .kernel = text("kernel"),
                               .uptime_seconds = std::nullopt};
        const auto uptime = store_.meta("uptime_seconds");
        int seconds = 0;
        const auto [end, error] =
            std::from_chars(uptime.data(), uptime.data() + uptime.size(), seconds);
        if (!uptime.empty() && error == std::errc() && seconds >= 0)
            recording_.identity.uptime_seconds = seconds;
        recording_.description = "Recorded from a report of " +
                                 recording_.identity.host.value_or("a server without a name") +
                                 (recording_.recorded.empty() ? "" : " of " + recording_.recorded) +
                                 ".";
        std::istringstream lines(store_.meta("recorded_lacks") + store_.meta("lacks"));
        for (std::string line; std::getline(lines, line);) {
            if (const auto tab = line.find('\t'); tab != std::string::npos)
                recording_.lacks.emplace_back(line.substr(0, tab), line.substr(tab + 1));
        }
        recording_.uname = is_32_bit() ? "i686" : "x86_64";
    }

    // The word size chooses among a vendor's builds.
    bool is_32_bit() const {
        return std::any_of(commands_.begin(), commands_.end(), [&](const CommandInfo& command) {
            return command.tool.find("32") != std::string::npos &&
                   std::any_of(vendors_.begin(), vendors_.end(), [&](const VendorTool& vendor) {
                       return std::find(vendor.files.begin(), vendor.files.end(), command.tool) !=
                              vendor.files.end();
                   });
        });
    }

    void take(const CommandInfo& info) {
        const auto stages = stages_of(info.text);
        if (stages && info.origin == "host" && !stages->front().has_pattern)
            recording_.asked.emplace_back(tool_of(stages->front().words.front(), vendors_),
                                          arguments_of(stages->front().words));
        if (!info.started) return;
        if (!stages) {
            recording_.not_known.push_back(info.text +
                                           ": the line needs more of a shell than a replay has");
            return;
        }
        const auto& first = stages->front();
        Entry entry;
        entry.command.tool = tool_of(first.words.front(), vendors_);
        if (!first.has_pattern) entry.command.arguments = arguments_of(first.words);
        if (stages->size() > 1) {
            if (shell_found_none(info)) return;
            if (!info.standard_error.empty() && first.err.to == Stream::To::caller)
                entry.command.err = Content{.name = entry.command.tool + "_stderr.txt",
                                            .bytes = info.standard_error};
            // How its first stage ended nobody knows.
            derive(entry, *stages);
        } else if (is_not_installed(info)) {
            return;
        } else {
            set_end(entry, info);
            set_output(entry, info, first);
        }
        add(std::move(entry));
    }

    // "sh: 1: lsmod: not found", in a pipeline, whose exit status is that of its end.
    static bool shell_found_none(const CommandInfo& info) {
        std::istringstream lines(info.standard_error);
        for (std::string line; std::getline(lines, line);) {
            if (line.ends_with(": " + info.tool + ": not found")) return true;
        }
        return false;
    }

    // As the shell says it itself, in a replay as well.
    static bool is_not_installed(const CommandInfo& info) {
        return info.exit == 127 && outcome(info).ends_with("not installed") &&
               (info.standard_error.empty() || info.standard_error.ends_with(": not found\n"));
    }

    std::string arguments_of(const std::vector<std::string>& words) const {
        auto text = boost::join(std::vector<std::string>(words.begin() + 1, words.end()), " ");
        boost::replace_all(text, log_dir_, "{LOG}");
        return text;
    }

    static void set_end(Entry& entry, const CommandInfo& info) {
        auto& command = entry.command;
        if (info.stopped_by == "size") {
            tell(entry, "it was stopped at a limit of size; only the beginning is here");
        } else if (!info.stopped_by.empty() || !info.seconds) {
            command.seconds = kNeverEnds;
            tell(entry, info.seconds
                            ? "it was stopped after " + std::to_string(whole_seconds(info)) +
                                  " s, and is recorded as one that does not end"
                            : "it ran when the collection ended, and is recorded as one that does "
                              "not end");
        } else {
            command.seconds = whole_seconds(info);
            if (info.exit) command.exit = std::clamp(*info.exit, 0, 255);
            if (info.signal) command.signal = std::clamp(*info.signal, 0, 64);
            if (const int signal = signal_told_by_shell(info)) {
                command.exit = 0;
                command.signal = signal;
            }
        }
    }

    static unsigned whole_seconds(const CommandInfo& info) {
        const double seconds = info.seconds.value_or(0);
        if (!(seconds >= 1)) return 0;  // a damaged store may hold anything
        return static_cast<unsigned>(std::min<double>(seconds, kNeverEnds));
    }

    // The file's name in the log directory; empty: it lies elsewhere.
    std::string capture_of(const Stream& stream) const {
        if (stream.to != Stream::To::file) return "";
        const auto file = fs::path(stream.file).lexically_normal().string();
        if (file.starts_with(log_dir_)) return file.substr(log_dir_.size());
        return file.find('/') == std::string::npos ? file : "";
    }

    std::optional<Content> content_of(const std::string& capture) const {
        if (capture.empty()) return std::nullopt;
        return Content{.name = capture, .root = dir_.path()};
    }

    void set_output(Entry& entry, const CommandInfo& info, const ShellStage& stage) {
        auto& command = entry.command;
        const auto out = capture_of(stage.out);
        const auto err = stage.is_merged ? "" : capture_of(stage.err);
        if (out.empty()) {
            entry.output = Known::nobody_listened;
        } else if (writers_.at(out) != stage.words) {
            entry.output = Known::nothing;
            tell(entry, "a later command has written over what it printed");
        } else {
            command.out = content_of(out);
        }
        if (command.tool == "uname" && command.arguments == "-i") {
            command.out = Content{.name = "uname.txt", .bytes = recording_.uname + "\n"};
            entry.output = Known::a_part;
        }
        if (!err.empty() && err != out) command.err = content_of(err);
        if (auto said = said_by_tool(info); !said.empty()) {
            command.err = Content{.name = command.tool + "_stderr.txt", .bytes = std::move(said)};
            if (info.standard_error.size() >= runner::kLoggedErrorBytes)
                tell(entry, "only the first 4 KiB of its standard error are kept");
        }
        for (const auto& capture : info.captures) {
            if (capture == out || capture == err) continue;
            for (auto& file : files_below(dir_.path(), capture))
                command.files[file] = {.name = file, .root = dir_.path()};
        }
    }

    // What the first stage of a pipeline printed is not kept. What its reader made of it often is, or what the same
    // tool said elsewhere.
    void derive(Entry& entry, const std::vector<ShellStage>& stages) const {
        auto& command = entry.command;
        entry.output = Known::nothing;
        entry.notes = {named(command) +
                       "what it printed went to other commands and is not in the report"};
        const auto derived = [&](std::string bytes, const std::string& from) {
            entry.output = Known::a_part;
            command.out = Content{.name = command.tool + ".txt", .bytes = std::move(bytes)};
            entry.notes = {named(command) + "what it printed is made " + from};
        };
        if (command.tool == "dmidecode" && command.arguments == "-t system") {
            const auto part = system_part(capture_of_command("dmidecode").value_or(""));
            const auto name =
                part.find("Product Name") == std::string::npos ? logged_product() : "";
            if (!name.empty()) {
                derived(part + "\tProduct Name:" + name + "\n", "of what the plug-in logged of it");
            } else if (!part.empty()) {
                derived(part, "from what dmidecode printed as a whole");
            }
            return;
        }
        const bool counts = stages.size() == 3 && stages[1].words.front() == "grep" &&
                            stages[1].words.size() == 2 && stages[2].words.front() == "wc";
        if (!counts) return;
        const auto& word = stages[1].words[1];
        std::optional<int> count;
        if (const auto capture = capture_of(stages.back().out); !capture.empty()) {
            const auto text = read(capture).value_or("");
            int number = 0;
            if (std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc())
                count = number;
        } else if (command.tool == "lsmod") {
            const bool was_loaded_then =
                std::any_of(commands_.begin(), commands_.end(), [&](const CommandInfo& other) {
                    return other.text.starts_with("modprobe " + word);
                });
            count = was_loaded_then ? 0 : 1;
        }
        if (!count) return;
        constexpr int kMostLines = 10'000;
        std::string lines;
        for (int n = 0; n < std::min(*count, kMostLines); ++n) lines += word + "\n";
        derived(lines, "of what was counted in it: lines with " + word);
    }

    std::optional<std::string> read(const std::string& capture) const {
        const auto file = open_below(dir_.path(), capture);
        if (!file) return std::nullopt;
        return read_bytes(file.get(), kMostToRead);
    }

    // The plug-in's line on the product, as far as it has read the name. Empty: it was not logged.
    std::string logged_product() const {
        const auto log = read(dir_.log().filename()).value_or("");
        constexpr std::string_view kWords = "Product name(20bytes):";
        const auto at = log.find(kWords);
        if (at == std::string::npos) return "";
        const auto begin = at + kWords.size();
        return log.substr(begin, log.find('\n', begin) - begin);
    }

    // What the tool printed when it was asked without arguments.
    std::optional<std::string> capture_of_command(const std::string& tool) const {
        for (const auto& command : commands_) {
            const auto stages = stages_of(command.text);
            if (!command.started || !stages || stages->size() != 1) continue;
            const auto& stage = stages->front();
            if (stage.words.size() != 1 || tool_of(stage.words.front(), vendors_) != tool) continue;
            if (auto text = read(capture_of(stage.out)); text && !text->empty()) return text;
        }
        return std::nullopt;
    }

    // The first answer counts in a replay. One of which less is known gives way to one of which more is.
    void add(Entry entry) {
        const auto [place, is_new] = places_.emplace(
            std::pair(entry.command.tool, entry.command.arguments), entries_.size());
        if (is_new) {
            entries_.push_back(std::move(entry));
            return;
        }
        auto& known = entries_[place->second];
        if (entry.output > known.output) {
            entry.command.files.merge(known.command.files);
            known = std::move(entry);
            return;
        }
        known.command.files.merge(entry.command.files);
        if (entry.output == Known::all && differs(known.command, entry.command))
            tell(known,
                 "it was asked more than once and did not say the same; what it said first is "
                 "recorded");
    }

    // A tool that was watched tells more than the shell that ran it.
    void take_notes() {
        std::set<std::size_t> is_noted;
        for (const auto& note : tool_notes_) {
            RecordingCommand seen;
            seen.tool = tool_of(note.tool, vendors_);
            auto words = note.arguments;
            words.insert(words.begin(), seen.tool);
            seen.arguments = arguments_of(words);
            auto known = places_.find({seen.tool, seen.arguments});
            if (known == places_.end()) known = places_.find({seen.tool, std::nullopt});
            if (known == places_.end()) {
                add(Entry{.command = std::move(seen)});
                known =
                    places_.find({entries_.back().command.tool, entries_.back().command.arguments});
            }
            if (is_noted.insert(known->second).second) take_note(entries_[known->second], note);
        }
    }

    static void take_note(Entry& entry, const compat::ToolNote& note) {
        auto& command = entry.command;
        command.exit = note.exit;
        command.signal = note.signal;
        command.seconds = note.seconds >= 1
                              ? static_cast<unsigned>(std::min<double>(note.seconds, kNeverEnds))
                              : 0;
        const auto noted = [&](const char* file) {
            const auto from = open_below(note.directory, file);
            return from ? read_bytes(from.get(), kMostToRead) : "";
        };
        if (note.has_errors) {
            command.err = Content{.name = command.tool + "_stderr.txt", .bytes = noted("stderr")};
            if (command.err->bytes.empty()) command.err.reset();
        }
        if (entry.output != Known::all && note.has_output) {
            command.out = Content{.name = command.tool + ".txt", .bytes = noted("stdout")};
            entry.output = Known::all;
        }
        if (entry.output == Known::all) entry.notes.clear();
    }

    bool differs(const RecordingCommand& one, const RecordingCommand& other) const {
        if (one.exit != other.exit || one.signal != other.signal) return true;
        if (!one.out || !other.out) return one.out.has_value() != other.out.has_value();
        return one.out->name != other.out->name && read(one.out->name) != read(other.out->name);
    }

    static std::string named(const RecordingCommand& command) {
        const auto arguments = command.arguments.value_or("");
        return command.tool + (arguments.empty() ? "" : " ") + arguments + ": ";
    }

    static void tell(Entry& entry, const std::string& what) {
        auto line = named(entry.command) + what;
        if (std::find(entry.notes.begin(), entry.notes.end(), line) == entry.notes.end())
            entry.notes.push_back(std::move(line));
    }

    const Store& store_;
    const LogDir& dir_;
    const std::vector<VendorTool>& vendors_;
    const std::vector<compat::ToolNote>& tool_notes_;
    std::vector<CommandInfo> commands_;
    std::string log_dir_;
    std::vector<Entry> entries_;
    std::map<std::pair<std::string, std::optional<std::string>>, std::size_t>
        places_;                                               // in entries_
    std::map<std::string, std::vector<std::string>> writers_;  // of each capture the last one
    Recording recording_;
};

}  // namespace

Recording record_report(const Store& store, const LogDir& dir,
                        const std::vector<VendorTool>& vendors,
                        const std::vector<compat::ToolNote>& notes) {
    return ReportRecorder(store, dir, vendors, notes).record();
}

}  // namespace qvhost
