// What the user asked for, command by command.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qvhost {

inline constexpr unsigned kUsualLogLevel = 3;

// What is collected: all modules of the plug-in and all questions of the host's own, or of those alone the
// ones that verdicts need.
inline constexpr const char* kFullProfile = "full";
inline constexpr const char* kHealthProfile = "health";

// What `collect` and `replay` are asked to do. Each member has its row in collect_options.cpp.
struct CollectOptions {
    std::filesystem::path log_dir;
    std::optional<unsigned> keep;  // how many earlier runs of the log directory stay; not set: all
    std::optional<std::uint64_t> keep_bytes;  // how much room these may take; not set: any
    unsigned log_level = kUsualLogLevel;
    std::vector<std::string> modules;  // none: all
    std::vector<std::string> tables;   // none: all
    // Limits; those that are not set are derived from those that are (limits.h).
    std::optional<unsigned> tool_seconds;
    std::optional<unsigned> silence_seconds;
    std::optional<unsigned> module_seconds;
    std::optional<unsigned> run_seconds;
    std::vector<std::string> tool_limits;  // "ipmitool=900": limits of single tools, in seconds
    std::optional<std::uint64_t> capture_bytes;
    std::optional<std::uint64_t> table_bytes;
    std::optional<std::uint64_t> archive_bytes;
    std::optional<std::uint64_t> run_bytes;
    std::optional<std::uint64_t> free_bytes;
    std::optional<unsigned> processes;
    std::vector<std::string> also;  // operations that no module calls, by their names (plugin.h)
    std::filesystem::path rules;    // the site's own (findings/rules_file.h); empty: none
    std::filesystem::path plugin;   // empty: the one that was installed with the program
    std::string profile = kFullProfile;
    bool plug_in_only = false;  // no questions of the host's own
    bool dry_run = false;       // tell what would be done, and do nothing
    bool machine_lock = false;  // one run at a time on this machine
    bool serial = false;        // all modules one after another
    bool quiet = false;
    bool no_compat = false;   // the bare system, without the compatibility layer
    std::string search_path;  // PATH of the tools; empty: the user's own and the system's
    // Of a collecting child: which lane it is, and the modules that it asks. None: it is the only lane.
    unsigned lane = 1;
    std::vector<std::string> lane_modules;
    // In a replay what the server has recorded, each "TOOL\tARGUMENTS", or "TOOL" for any arguments.
    bool replayed = false;
    std::vector<std::string> recorded;

    bool operator==(const CollectOptions&) const = default;
};

// What the user asked of `show`.
struct ShowOptions {
    std::filesystem::path report;     // a log directory or a store file; so with all that follow
    std::vector<std::string> tables;  // none: an overview
    bool all = false;                 // all tables of the plug-in
    std::string format = "table";
    bool raw = false;
    bool no_pager = false;
};

// What the user asked of `open`.
struct OpenOptions {
    std::filesystem::path report;  // or a bundle
    std::filesystem::path
        output;  // empty: a temporary directory; of a bundle one with its name, here
};

// What the user asked of `bundle`.
struct BundleOptions {
    std::filesystem::path report;
    std::filesystem::path output;  // its ending says the format
    std::uint64_t most_bytes = 0;  // 0: no limit
    std::string redact;            // classes, joined by commas; empty: nothing is replaced
    std::filesystem::path map;     // which replacement stands for what; empty: nobody knows
    bool review = false;           // say what would be replaced, and make no bundle
};

// What the user asked of `record`.
struct RecordOptions {
    std::filesystem::path from;    // a log directory
    std::filesystem::path output;  // the recorded server's directory, which is new or empty
    std::string redact;            // classes, joined by commas; empty: nothing is replaced
    std::filesystem::path map;     // which replacement stands for what; empty: nobody knows
};

// What the user asked of `query`.
struct QueryOptions {
    std::filesystem::path report;
    std::string sql;
    std::string format = "table";
    bool raw = false;
};

// What the user asked of `check`.
struct CheckOptions {
    std::filesystem::path report;
    std::vector<std::string> subsystems;  // none: all
    std::string format = "text";
    std::string unknown_as = "unknown";
    std::string perfdata = "usual";
    std::optional<unsigned> max_age_seconds;  // an older report is UNKNOWN
    std::filesystem::path rules;              // the site's own (findings/rules_file.h); empty: none
};

// What the user asked of `diff`.
struct DiffOptions {
    std::filesystem::path from;
    std::filesystem::path to;  // empty: the latest run in `from` against the one before
    std::string format = "text";
    bool raw = false;  // rows of the plug-in's tables as well
};

// What the user asked of `explain`.
struct ExplainOptions {
    std::filesystem::path report;
    std::string finding;  // its id; empty: which there are
};

// What the user asked of `doctor`.
struct DoctorOptions {
    std::string format = "text";
    std::filesystem::path log_dir = "/var/tmp/collection";  // one that is meant to be used
};

// What the user asked of `export`.
struct ExportOptions {
    std::filesystem::path report;
    std::string format;
    std::filesystem::path output;     // empty: standard output
    std::vector<std::string> tables;  // none: all
    bool raw = false;
};

}  // namespace qvhost
