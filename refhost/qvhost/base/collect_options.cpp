#include "qvhost/base/collect_options.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "qvhost/base/limits.h"
#include "qvhost/base/plugin.h"
#include "text/size.h"

namespace qvhost {

namespace {

using Options = CollectOptions;
using enum CollectOption::Use;

std::string range_text(const CollectOption::Range& range) {
    return std::to_string(range.least) + " to " + std::to_string(range.most);
}

// "pmc|fru0"
std::string operation_names() {
    std::string names;
    for (const auto& operation : kOperations)
        names += (names.empty() ? "" : "|") + std::string(operation.name);
    return names;
}

// "pmc (Adaptec controller), fru0 (first FRU device)"
std::string operation_meanings() {
    std::string text;
    for (const auto& [name, meaning, symbol, takes_repository] : kOperations)
        text += (text.empty() ? "" : ", ") + std::string(name) + " (" + meaning + ")";
    return text;
}

std::string profile_names() { return std::string(kFullProfile) + "|" + kHealthProfile; }

constexpr CollectOption::Range limit(unsigned usual_seconds) {
    return {usual_seconds, 1, kMaxSeconds};
}

constexpr CollectOption::Range size(std::uint64_t usual_bytes) {
    return {usual_bytes, kMib, kMaxBytes, kMib};
}

constexpr CollectOption::Range kNoRange{};
constexpr CollectOption::Range kLogLevels{kUsualLogLevel, 0, 4};
constexpr CollectOption::Range kKept{100'001, 0, 100'000};
constexpr auto kTool = limit(kUsualLimits.tool_seconds);
constexpr auto kSilence = limit(kUsualLimits.silence_seconds);
constexpr auto kModule = limit(kUsualLimits.module_seconds);
constexpr auto kRun = limit(kUsualLimits.run_seconds);
constexpr auto kCaptureSize = size(kUsualLimits.capture_bytes);
constexpr auto kTableSize = size(kUsualLimits.table_bytes);
constexpr auto kArchiveSize = size(kUsualLimits.archive_bytes);
constexpr auto kRunSize = size(kUsualLimits.run_bytes);
constexpr CollectOption::Range kFreeSpace{kMostFreeBytes, 0, kMaxBytes, kMib};
constexpr CollectOption::Range kProcesses{kUsualLimits.processes, 1, kMaxProcesses};

// A row for each member of CollectOptions, in the order in which the help tells them.
std::vector<CollectOption> all_rows() {
    const std::string times = std::to_string(kArchiveTimes);
    // clang-format off
    return {
        {"log-dir",         &Options::log_dir,         required, "DIR",             kNoRange,     "Where captures, log and report go"},
        {"keep",            &Options::keep,            optional, "N",               kKept,        "How many earlier collections of the log directory stay, the newest ones, below DIR/runs; without it all"},
        {"keep-size",       &Options::keep_bytes,      optional, "SIZE",            kAnySize,     "How much room these may take together: the oldest go first"},
        {"log-level",       &Options::log_level,       optional, "N",               kLogLevels,   "How much is logged, " + range_text(kLogLevels) + ": 2 silences the modules, 4 tells details"},
        {"module",          &Options::modules,         optional, "NAME",            kNoRange,     "Only this module, by its name or title, in any case (more than one: repeat). The program's own questions are left out, so that much of the health is unknown"},
        {"table",           &Options::tables,          optional, "ID",              kNoRange,     "Only this table, by its id or title, in any case (more than one: repeat). A module collects all its tables at once: it takes as long as --module with the table's module, and what the other tables got stays in the report"},
        {"tool-timeout",    &Options::tool_seconds,    optional, "SECONDS",         kTool,        "Stop a tool after so many seconds, " + range_text(kTool) + "; " + times + " times as many if it packs the logs of the whole system"},
        {"limit",           &Options::tool_limits,     optional, "TOOL=SECONDS",    kNoRange,     "The limit of one tool (ipmitool=900) instead of the general one; more than one: repeat"},
        {"silence-timeout", &Options::silence_seconds, optional, "SECONDS",         kSilence,     "Stop a tool that has neither printed nor written nor worked (used a processor) for so many seconds"},
        {"module-timeout",  &Options::module_seconds,  optional, "SECONDS",         kModule,      "Stop what runs when a module has taken so many seconds"},
        {"run-timeout",     &Options::run_seconds,     optional, "SECONDS",         kRun,         "Stop what runs when the whole collection has taken so many seconds"},
        {"capture-size",    &Options::capture_bytes,   optional, "SIZE",            kCaptureSize, "Stop a tool that writes more than this into a file; what is there is read"},
        {"table-size",      &Options::table_bytes,     optional, "SIZE",            kTableSize,   "File at most this much of records for a table"},
        {"archive-size",    &Options::archive_bytes,   optional, "SIZE",            kArchiveSize, "Instead of --capture-size for tools that pack the logs of the whole system"},
        {"run-size",        &Options::run_bytes,       optional, "SIZE",            kRunSize,     "Stop what runs, and begin nothing more, when the collection has written this much"},
        {"free-space",      &Options::free_bytes,      optional, "SIZE",            kFreeSpace,   "The same when the disk has less than this left; unless set, less than " + std::to_string(kFreePercent) + " % of a disk where that is less"},
        {"tool-processes",  &Options::processes,       optional, "N",               kProcesses,   "Stop a tool that has more than so many processes"},
        {"also",            &Options::also,            optional, operation_names(), kNoRange,     "Also call what no module calls: " + operation_meanings() + "; more than one: with commas"},
        {"rules",           &Options::rules,           optional, "FILE",            kNoRange,     "Severities, thresholds and acknowledged findings of this site (docs/findings.md)"},
        {"plugin",          &Options::plugin,          optional, "FILE",            kNoRange,     "Another plug-in than the installed one"},
        {"profile",         &Options::profile,         optional, profile_names(),   kNoRange,     "What is collected: full is everything; health is what verdicts need, without the plug-in"},
        {"plug-in-only",    &Options::plug_in_only,    optional, "",                kNoRange,     "No questions of the program's own: the plug-in's commands alone"},
        {"dry-run",         &Options::dry_run,         optional, "",                kNoRange,     "Tell what would be collected, where to and with which limits, and do nothing"},
        {"no-compat",       &Options::no_compat,       optional, "",                kNoRange,     "The bare system: no stand-ins for tools that have other names or answers here (a replay has none)"},
        {"machine-lock",    &Options::machine_lock,    optional, "",                kNoRange,     "One run at a time on this machine: while another one that was given this option runs, say which and end with status 75"},
        {"serial",          &Options::serial,          optional, "",                kNoRange,     "All modules one after another. Without it those that share no hardware are asked side by side; the report's records are the same"},
        {"quiet",           &Options::quiet,           optional, "",                kNoRange,     "No progress"},
        {"search-path",     &Options::search_path,     internal, "",                kNoRange,     ""},
        {"lane",            &Options::lane,            internal, "",                kNoRange,     ""},
        {"lane-modules",    &Options::lane_modules,    internal, "",                kNoRange,     ""},
        {"replayed",        &Options::replayed,        internal, "",                kNoRange,     ""},
        {"recorded",        &Options::recorded,        internal, "",                kNoRange,     ""},
    };
    // clang-format on
}

// Does not compile when CollectOptions has got a member: give it a row above, and a name here.
[[maybe_unused]] void expect_all_members(const CollectOptions& options) {
    [[maybe_unused]] const auto& [log_dir, keep, keep_bytes, log_level, modules, tables,
                                  tool_seconds, tool_limits, silence_seconds, module_seconds,
                                  run_seconds, capture_bytes, table_bytes, archive_bytes, run_bytes,
                                  free_bytes, processes, also, rules, plugin, profile, plug_in_only,
                                  dry_run, machine_lock, serial, quiet, no_compat, search_path,
                                  lane, lane_modules, replayed, recorded] = options;
}

// A value as texts: one for each entry of a list, none for what is not set.
std::vector<std::string> texts_of(bool value) {
    return value ? std::vector<std::string>{""} : std::vector<std::string>{};
}
std::vector<std::string> texts_of(unsigned value) { return {std::to_string(value)}; }
std::vector<std::string> texts_of(const std::optional<unsigned>& value) {
    return value ? texts_of(*value) : std::vector<std::string>{};
}
std::vector<std::string> texts_of(const std::optional<std::uint64_t>& value) {
    return value ? std::vector<std::string>{std::to_string(*value)} : std::vector<std::string>{};
}
std::vector<std::string> texts_of(const std::string& value) { return {value}; }
std::vector<std::string> texts_of(const std::filesystem::path& value) { return {value.string()}; }
std::vector<std::string> texts_of(const std::vector<std::string>& value) { return value; }

template <class Number = unsigned>
Number number_in(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        throw std::runtime_error("\"" + std::string(text) + "\" is not a number");
    return number;
}

void set(bool& value, std::string_view) { value = true; }
void set(unsigned& value, std::string_view text) { value = number_in(text); }
void set(std::optional<unsigned>& value, std::string_view text) { value = number_in(text); }
void set(std::optional<std::uint64_t>& value, std::string_view text) {
    value = number_in<std::uint64_t>(text);
}
void set(std::string& value, std::string_view text) { value = text; }
void set(std::filesystem::path& value, std::string_view text) { value = text; }
void set(std::vector<std::string>& value, std::string_view text) { value.emplace_back(text); }

}  // namespace

const std::vector<CollectOption>& collect_options() {
    static const auto rows = all_rows();
    return rows;
}

bool is_size(const CollectOption& row) {
    return std::holds_alternative<std::optional<std::uint64_t> Options::*>(row.place);
}

std::string usual_text(const CollectOption& row) {
    const auto usual = row.range.usual;
    if (usual > row.range.most) return "all";
    return is_size(row) ? exact_size_text(usual) : std::to_string(usual);
}

std::string settings_of(const CollectOptions& options) {
    std::string settings;
    for (const auto& row : collect_options()) {
        const auto texts =
            std::visit([&](auto member) { return texts_of(options.*member); }, row.place);
        for (const auto& text : texts) settings += std::string(row.name) + "=" + text + '\0';
    }
    return settings;
}

CollectOptions options_from(std::string_view settings) {
    CollectOptions options;
    while (!settings.empty()) {
        const auto end = settings.find('\0');
        const auto text = settings.substr(0, end);
        const auto name = text.substr(0, text.find('='));
        const auto& rows = collect_options();
        const auto row = std::find_if(rows.begin(), rows.end(),
                                      [&](const CollectOption& one) { return one.name == name; });
        if (row == rows.end() || name.size() == text.size() || end == std::string_view::npos)
            throw std::runtime_error("settings that are cut off or unknown: " + std::string(text));
        const auto value = text.substr(name.size() + 1);
        std::visit([&](auto member) { set(options.*member, value); }, row->place);
        settings.remove_prefix(end + 1);
    }
    return options;
}

}  // namespace qvhost
