// Options of a collection: from the command line through the settings of the collecting child, each
// arrives there as it was given.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "qvhost/base/collect_options.h"
#include "qvhost/base/limits.h"
#include "qvhost/cli/command_line.h"
#include "text/size.h"

namespace qvhost {

namespace {

CollectOptions parsed(std::vector<std::string> arguments) {
    ParsedArguments result;
    const auto app = command_line(result);
    if (arguments.empty() || arguments.front() != "--log-dir")
        arguments.insert(arguments.begin(), {"--log-dir", "/log"});
    arguments.insert(arguments.begin(), "collect");
    std::reverse(arguments.begin(), arguments.end());
    app->parse(arguments);
    return result.collect;
}

// Values that are not the defaults, by what the help calls them.
const std::map<std::string, std::string> kValues = {
    {"", ""},
    {"DIR", "/other \xff place"},
    {"N", "4"},
    {"NAME", "BMC_Info"},
    {"ID", "SENSORINFO=1"},
    {"SECONDS", "77"},
    {"TOOL=SECONDS", "ipmitool=900"},
    {"pmc|fru0|bios", "fru0,bios"},
    {"FILE", "a\nplug-in --table=x"},
    {"full|health", "health"},
    {"SIZE", "78M"},
};

struct Seconds {
    unsigned run, module, archive, tool, silence;
};

Limits with_usual_sizes(const Seconds& seconds) {
    auto limits = kUsualLimits;
    limits.run_seconds = seconds.run;
    limits.module_seconds = seconds.module;
    limits.archive_seconds = seconds.archive;
    limits.tool_seconds = seconds.tool;
    limits.silence_seconds = seconds.silence;
    return limits;
}

// The option as words of a command line.
std::vector<std::string> words_for(const CLI::Option& option) {
    const auto name = "--" + option.get_lnames().front();
    const auto value = kValues.find(option.get_type_name());
    if (value == kValues.end()) {
        ADD_FAILURE() << "no value for " << option.get_type_name();
    } else if (!value->second.empty()) {
        return {name, value->second};
    }
    return {name};
}

TEST(Options, EachArrivesInTheCollectingChild) {
    ParsedArguments unused;
    const auto app = command_line(unused);
    std::size_t count = 0;
    for (const auto* option : options_of(*app->get_subcommand("collect"))) {
        if (option->get_lnames().front() == "help") continue;
        SCOPED_TRACE(option->get_lnames().front());
        const auto options = parsed(words_for(*option));
        EXPECT_NE(options, parsed({})) << "the option goes nowhere";
        EXPECT_EQ(options_from(settings_of(options)), options) << "it is lost on its way";
        ++count;
    }
    const auto internal = std::count_if(
        collect_options().begin(), collect_options().end(),
        [](const CollectOption& row) { return row.use == CollectOption::Use::internal; });
    EXPECT_EQ(count + static_cast<std::size_t>(internal), collect_options().size());
}

TEST(Options, AllArriveTogether) {
    auto options = parsed({"--log-level",      "0",          "--module",          "a",
                           "--module",         "b",          "--table",           "c",
                           "--tool-timeout",   "5",          "--silence-timeout", "4",
                           "--module-timeout", "6",          "--run-timeout",     "7",
                           "--also",           "pmc,bios",   "--plugin",          "/p",
                           "--rules",          "/r",         "--plug-in-only",    "--dry-run",
                           "--quiet",          "--no-compat"});
    options.search_path = "/a:/b c";
    options.replayed = true;
    options.recorded = {"storcli\t/c0 show", "cat"};
    EXPECT_EQ(options_from(settings_of(options)), options);
    EXPECT_EQ(options.modules, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(options.also, (std::vector<std::string>{"pmc", "bios"}));
    EXPECT_EQ(options.rules, "/r");
    EXPECT_EQ(limits_for(options), with_usual_sizes({7, 6, 6, 5, 4}));
    EXPECT_EQ(options_from(settings_of({})), CollectOptions{});
}

// The bytes that the option gets; none: it is refused, and the message is kept.
struct ParsedSize {
    std::optional<std::uint64_t> bytes;
    std::string message;
};

ParsedSize parsed_size(const std::string& option, const std::string& text) {
    try {
        const auto options = parsed({option + "=" + text});
        return {option == "--keep-size" ? options.keep_bytes : options.capture_bytes, ""};
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, error.what()};
    }
}

TEST(Options, SizesHaveUnits) {
    constexpr std::uint64_t kOne = 1;
    const struct {
        const char* text;
        std::uint64_t bytes;
    } sizes[] = {
        {"1M", kOne << 20},          {"1MiB", kOne << 20},     {"1024K", kOne << 20},
        {"1536K", 3 * (kOne << 19)}, {"64MiB", kOne << 26},    {"0064M", kOne << 26},
        {"1G", kOne << 30},          {"1GiB", kOne << 30},     {"1T", kOne << 40},
        {"1TiB", kOne << 40},        {"1048576M", kOne << 40}, {"1073741824K", kOne << 40},
    };
    for (const auto& [text, bytes] : sizes) {
        SCOPED_TRACE(text);
        EXPECT_EQ(parsed_size("--capture-size", text).bytes, bytes);
        EXPECT_EQ(parsed_size("--keep-size", text).bytes, bytes);
        EXPECT_EQ(parsed_size("--keep-size", exact_size_text(bytes)).bytes, bytes);
    }
    EXPECT_EQ(parsed_size("--capture-size", "1").bytes, kOne << 20);
    EXPECT_EQ(parsed_size("--capture-size", "1048576").bytes, kOne << 40);
    EXPECT_EQ(parsed_size("--keep-size", "1").bytes, 1);
    EXPECT_EQ(parsed_size("--keep-size", "16777215T").bytes, 16777215 * (kOne << 40));
    EXPECT_EQ(parsed({"--free-space=0"}).free_bytes, 0);
    EXPECT_EQ(parsed({"--free-space=512K"}).free_bytes, 512 * 1024);
}

TEST(Options, OtherSizesAreRefusedByName) {
    for (const std::string text : {"-1",        "-1M",
                                   "+1M",       "1.5G",
                                   "1,5G",      "M",
                                   "MiB",       "1m",
                                   "1MB",       "1Mi",
                                   "1MiBs",     "1MM",
                                   "1 M",       "1M ",
                                   " 1M",       "0x10",
                                   "1e3",       "1B",
                                   "1P",        "99999999T",
                                   "16777216T", "18446744073709551616",
                                   "much"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(parsed_size("--capture-size", text).message,
                  "--capture-size: " + text +
                      " is no size from 1MiB to 1TiB: a whole number with K, M, G or T (by 1024), "
                      "such as 20M or 20MiB; without one it counts MiB");
        EXPECT_EQ(parsed_size("--keep-size", text).message,
                  "--keep-size: " + text +
                      " is no size: a whole number with K, M, G or T (by 1024), such as 20M or "
                      "20MiB; without one it counts bytes");
    }
    for (const auto* text : {"0", "0M", "1023K", "1025G", "1048577", "2T"})
        EXPECT_NE(parsed_size("--capture-size", text).message, "") << text;
    for (const auto* text : {"0", "0K", ""})
        EXPECT_NE(parsed_size("--keep-size", text).message, "") << text;
}

TEST(Options, DefaultsAreTheOnesThatTheHelpShows) {
    const CollectOptions none;
    const auto limits = limits_for(none);
    EXPECT_EQ(limits, kUsualLimits);
    const std::map<std::string, std::string> used = {
        {"keep", none.keep ? std::to_string(*none.keep) : "all"},
        {"keep-size", none.keep_bytes ? exact_size_text(*none.keep_bytes) : "all"},
        {"log-level", std::to_string(none.log_level)},
        {"tool-timeout", std::to_string(limits.tool_seconds)},
        {"silence-timeout", std::to_string(limits.silence_seconds)},
        {"module-timeout", std::to_string(limits.module_seconds)},
        {"run-timeout", std::to_string(limits.run_seconds)},
        {"capture-size", exact_size_text(limits.capture_bytes)},
        {"table-size", exact_size_text(limits.table_bytes)},
        {"archive-size", exact_size_text(limits.archive_bytes)},
        {"run-size", exact_size_text(limits.run_bytes)},
        {"free-space", exact_size_text(kMostFreeBytes)},
        {"tool-processes", std::to_string(limits.processes)},
        {"profile", none.profile},
    };
    ParsedArguments unused;
    const auto app = command_line(unused);
    std::map<std::string, std::string> shown;
    for (const auto* option : options_of(*app->get_subcommand("collect"))) {
        if (const auto text = option->get_default_str(); !text.empty())
            shown[option->get_lnames().front()] = text;
    }
    EXPECT_EQ(shown, used);
}

TEST(Options, TheQuickProfileFitsIntoFiveMinutes) {
    EXPECT_EQ(limits_for(parsed({"--profile", "health"})), kHealthLimits);
    EXPECT_EQ(limits_for(parsed({"--profile", "health", "--tool-timeout", "5"})),
              with_usual_sizes({240, 240, 30, 5, 5}));
    EXPECT_EQ(limits_for(parsed({"--profile", "health", "--tool-timeout", "400"})),
              with_usual_sizes({400, 400, 400, 400, 60}));
    EXPECT_EQ(limits_for(parsed({"--profile", "health", "--run-timeout", "20"})),
              with_usual_sizes({20, 20, 20, 20, 20}));
    for (const auto& [option, value] :
         {std::pair{"--module", "BMC_Info"}, {"--table", "SENSORINFO"}, {"--also", "pmc"}}) {
        EXPECT_THROW(parsed({"--profile", "health", option, value}), CLI::ValidationError)
            << option;
    }
    EXPECT_THROW(parsed({"--profile", "health", "--plug-in-only"}), CLI::ValidationError);
    EXPECT_THROW(parsed({"--profile", "quick"}), CLI::ValidationError);
}

TEST(Options, SettingsThatNobodyWroteAreRefused) {
    using namespace std::string_literals;
    for (const auto& settings : {"log-dir=/log"s, "log-dir\0"s, "unknown=1\0"s, "log-level=\0"s,
                                 "log-level=3x\0"s, "tool-timeout=-1\0"s, "\0"s, "=\0"s}) {
        SCOPED_TRACE(settings);
        EXPECT_THROW(options_from(settings), std::runtime_error);
    }
}

}  // namespace

}  // namespace qvhost
