// A collection that goes well, from the plug-in's callbacks to the report.
#include <sys/stat.h>
#include <sys/utsname.h>

#include <algorithm>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

using Collect = ProductTest;

TEST_F(Collect, EveryRecordIsInTheReportAsItWasAdded) {
    const auto outcome = run(collect("calm", {"--table", "VALUES", "--table", "EMPTY"}));
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    const auto expected = ordered_json::parse(R"({
        "modules": [
            {"name": "zeta", "display": "Module zeta", "tables": [
                {"id": "VALUES", "layout":
                    {"kind": "rows", "headers": ["value"], "widths": [100], "flag": false}}]},
            {"name": "alpha", "display": "Module alpha", "tables": [
                {"id": "EMPTY", "layout":
                    {"kind": "rows", "headers": ["value"], "widths": [100], "flag": false},
                 "reason": "unknown"}]}],
        "records": [
            {"table": "VALUES", "name": "first", "index": -1, "properties": [
                {"id": "text", "display": "Text", "value": " with blanks and an end\n"},
                {"id": "number", "display": "Number", "value": -7}]},
            {"table": "VALUES", "name": "first", "index": -1, "properties": [
                {"id": "text", "display": "Another label", "value": "a\u0000b"},
                {"id": "number", "display": "Number", "value": -7},
                {"id": "bytes", "display": "Bytes", "value": "\uFFFD\u001b[31m<b>'"}]},
            {"table": "VALUES", "name": "empty", "index": 3, "properties": []}]})");
    EXPECT_EQ(collected(log_dir()), expected);
}

TEST_F(Collect, TheReportTellsItsFormatAndWhatItIsFrom) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto report = report_json(log_dir());
    EXPECT_EQ(report["format"], 1);
    const auto& collection = report["collection"];
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    EXPECT_EQ(collection["host"], names.nodename);
    EXPECT_EQ(collection["kernel"], names.release);
    EXPECT_GT(collection["uptime_seconds"], 0);
    EXPECT_EQ(collection["status"], "complete");
    EXPECT_EQ(collection["version"], QV_VERSION);
    EXPECT_EQ(collection["started"], meta(store_in(log_dir()), "started"));
    EXPECT_EQ(collection["finished"], meta(store_in(log_dir()), "finished"));
    std::vector<std::string> keys;
    for (const auto& [key, value] : collection.items()) keys.push_back(key);
    EXPECT_EQ(keys,
              (std::vector<std::string>{"host", "machine_id", "os", "kernel", "uptime_seconds",
                                        "run_as", "started", "finished", "status", "version"}));
}

TEST_F(Collect, CallbacksAreCalledInOrder) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const std::vector<std::string> expected{
        "init zeta",
        "init alpha",  // as AddModules gave them
        "enumerate SURROUNDINGS",
        "wrap SURROUNDINGS",  // tables as their map is
        "enumerate VALUES",
        "wrap VALUES",
        "enumerate ANOTHER",
        "wrap ANOTHER",
        "enumerate EMPTY",
        "wrap EMPTY",
    };
    EXPECT_EQ(log_texts(log_dir()), expected);
}

struct Filter {
    std::vector<std::string> options;
    std::vector<std::string> enumerated;
};

TEST_F(Collect, FiltersChooseWhatIsAsked) {
    const std::vector<Filter> filters = {
        {{"--module", "alpha"}, {"ANOTHER", "EMPTY"}},
        {{"--module", "alpha", "--module", "zeta"}, {"SURROUNDINGS", "VALUES", "ANOTHER", "EMPTY"}},
        {{"--table", "VALUES"}, {"VALUES"}},
        {{"--table", "EMPTY", "--table", "VALUES"}, {"VALUES", "EMPTY"}},
        {{"--table", "EMPTY", "--table", "VALUES", "--module", "zeta"}, {"VALUES"}},
    };
    for (const auto& [options, expected] : filters) {
        fs::remove_all(log_dir());
        ASSERT_EQ(run(collect("calm", options)).exit, 0);
        std::vector<std::string> enumerated;
        for (const auto& text : log_texts(log_dir())) {
            if (text.starts_with("enumerate ")) enumerated.push_back(text.substr(10));
        }
        EXPECT_EQ(enumerated, expected);
    }
}

TEST_F(Collect, WrongNamesAreRefusedAndTheRunBeforeStaysWhereItIs) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto before = read_file(log_dir() / "report" / "report.json");
    const struct {
        std::vector<std::string> options;
        int exit;
        const char* says;
    } cases[] = {
        {{"--module", "gamma"}, 2, "there is no module \"gamma\"; there are: zeta alpha"},
        {{"--module", "zita"}, 2, "there is no module \"zita\"; did you mean zeta?"},
        {{"--table", "VALUES", "--table", "valeus"},
         2,
         "there is no table \"valeus\"; did you mean VALUES?"},
        {{"--table", "sensors", "--dry-run"},
         2,
         "there is no table \"sensors\"; there are: SURROUNDINGS VALUES ANOTHER EMPTY"},
        {{"--module", "zeta", "--table", "EMPTY"}, 2, "no table EMPTY is in the module zeta"},
        {{"--plugin", plugin("none")}, 1, "AddModules"},
        {{"--plugin", plugin("missing")}, 1, "missing.so"},
    };
    for (const auto& [options, exit, says] : cases) {
        SCOPED_TRACE(says);
        auto arguments = collect("calm", options);
        if (options[0] == "--plugin") {
            arguments = {"collect", "--log-dir", log_dir(), "--plug-in-only"};
            arguments.insert(arguments.end(), options.begin(), options.end());
        }
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, exit);
        EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_FALSE(fs::exists(log_dir() / "runs"));
        EXPECT_EQ(read_file(log_dir() / "report" / "report.json"), before);
    }
}

TEST_F(Collect, ThePlanNamesEachQuestionThatWouldBeAsked) {
    const std::string verdict = "\nstorcli /c{n} show all ";
    const std::string detail = "\nstorcli /c{n} show events ";
    const struct {
        std::vector<std::string> options;
        bool has_verdict;
        bool has_detail;
    } cases[] = {
        {{}, true, true},
        {{"--profile", "health"}, true, false},
        {{"--plug-in-only"}, false, false},
        {{"--module", "zeta"}, false, false},
    };
    for (const auto& [options, has_verdict, has_detail] : cases) {
        std::vector<std::string> arguments{"collect", "--dry-run", "--log-dir",
                                           log_dir(), "--plugin",  plugin("calm")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto plan = run(arguments);
        ASSERT_EQ(plan.exit, 0) << plan.err;
        EXPECT_EQ(plan.out.find(verdict) != std::string::npos, has_verdict) << plan.out;
        EXPECT_EQ(plan.out.find(detail) != std::string::npos, has_detail) << plan.out;
    }
}

TEST_F(Collect, NamesAreTakenAsAnyOutputShowsThem) {
    for (const auto& options : std::vector<std::vector<std::string>>{
             {"--module", "Module ALPHA"}, {"--table", "another", "--table", "Empty"}}) {
        fs::remove_all(log_dir());
        const auto outcome = run(collect("calm", options));
        ASSERT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_EQ(counts(store_in(log_dir())),
                  (std::map<std::string, int>{{"ANOTHER", 1}, {"EMPTY", 0}}));
    }
}

TEST_F(Collect, ToolsFindAKnownEnvironment) {
    const Invocation invocation{
        .arguments = collect(
            "calm", {"--table", "SURROUNDINGS", "--tool-timeout", "7", "--silence-timeout", "5"}),
        .environment = {{"PATH", "/opt/tools:/usr/bin"},
                        {"LANG", "tr_TR.UTF-8"},
                        {"LANGUAGE", "tr"},
                        {"QV_TOOL_TIMEOUT", "1"},
                        {"QV_TEST_OWN", "kept"}}};
    ASSERT_EQ(run(invocation).exit, 0);
    const auto report = report_json(log_dir());
    std::map<std::string, ordered_json> found;
    for (const auto& property : report["records"][0]["properties"])
        found[property["id"]] = property["value"];

    const auto path = found["PATH"].get<std::string>();
    const auto users = path.find(":/opt/tools:/usr/bin:");
    ASSERT_NE(users, std::string::npos) << path;
    const fs::path layer = path.substr(0, users);  // the compatibility layer, and no more
    EXPECT_EQ(layer.filename(), "path");
    EXPECT_TRUE(layer.parent_path().filename().string().starts_with("qvhost-run-")) << layer;
    EXPECT_FALSE(fs::exists(layer.parent_path())) << "it goes with the collection";
    for (const char* directory : {"/usr/sbin", "/sbin", "/usr/bin", "/bin"})
        EXPECT_NE((":" + path + ":").find(":" + std::string(directory) + ":"), std::string::npos);
    found.erase("PATH");

    const std::map<std::string, ordered_json> expected = {
        {"LC_ALL", "C.UTF-8"},
        {"LANG", "(unset)"},
        {"LANGUAGE", "(unset)"},
        {"LC_TIME", "(unset)"},
        {"QV_TOOL_TIMEOUT", "7"},
        {"QV_ARCHIVE_TIMEOUT", "42"},
        {"QV_SILENCE_TIMEOUT", "5"},
        {"QV_TEST_OWN", "kept"},
        {"log_dir", log_dir().string() + "/"},
        {"directory", log_dir().string()},
        {"program_dir", (layer.parent_path() / "bin").string()},
        {"umask", 077},
        {"input", -1},
    };
    EXPECT_EQ(found, expected);
}

TEST_F(Collect, WhatToolsSayPastTheirCapturesIsInAFile) {
    const auto outcome = run(collect("calm"));
    EXPECT_EQ(read_file(log_dir() / "console.txt"),
              "a word on standard output\na tool's complaint\n");
    EXPECT_EQ(outcome.out.find("a word"), std::string::npos);

    fs::remove_all(log_dir());
    ASSERT_EQ(run(collect("calm", {"--table", "EMPTY"})).exit, 0);
    EXPECT_FALSE(fs::exists(log_dir() / "console.txt")) << "nothing was said";
}

TEST_F(Collect, TheReportIsPrivateWhateverTheUmask) {
    for (const mode_t mask : {0u, 022u, 077u, 0777u}) {
        fs::remove_all(log_dir());
        Invocation invocation{.arguments = collect("calm")};
        invocation.mask = mask;
        ASSERT_EQ(run(invocation).exit, 0);
        std::map<std::string, mode_t> modes;
        const auto note = [&](const fs::path& path) {
            struct stat info {};
            ASSERT_EQ(::stat(path.c_str(), &info), 0);
            modes[path.lexically_relative(dir())] = info.st_mode & 07777;
        };
        note(log_dir());
        for (const auto& entry : fs::recursive_directory_iterator(log_dir())) note(entry.path());
        const std::map<std::string, mode_t> expected = {
            {"log", 0700},
            {"log/capture.txt", 0600},
            {"log/console.txt", 0600},
            {"log/qvhost.log", 0600},
            {"log/report", 0700},
            {"log/report/assets", 0700},
            {"log/report/assets/page.css", 0600},
            {"log/report/assets/page.js", 0600},
            {"log/report/data", 0700},
            {"log/report/data/1-SURROUNDINGS-1.js", 0600},
            {"log/report/data/2-VALUES-1.js", 0600},
            {"log/report/data/3-ANOTHER-1.js", 0600},
            {"log/report/data/capture-2-console_txt.js", 0600},
            {"log/report/data/capture-3-qvhost_log.js", 0600},
            {"log/report/data/overview.js", 0600},
            {"log/report/index.html", 0600},
            {"log/report/report.json", 0600},
            {"log/report/report.sqlite", 0600},
        };
        EXPECT_EQ(modes, expected) << "umask " << mask;
    }
}

TEST_F(Collect, TheLogLevelChangesTheLogAndNothingElse) {
    ordered_json reports[3];
    std::size_t lines[3];
    for (const unsigned level : {2u, 3u, 4u}) {
        fs::remove_all(log_dir());
        ASSERT_EQ(run(collect("calm", {"--log-level", std::to_string(level)})).exit, 0);
        reports[level - 2] = collected(log_dir());
        lines[level - 2] = lines_of(read_file(log_dir() / "qvhost.log")).size();
    }
    EXPECT_EQ(lines[0], 0u);
    EXPECT_EQ(lines[1], 10u);
    EXPECT_EQ(lines[2], 10u);
    EXPECT_EQ(reports[0], reports[1]);
    EXPECT_EQ(reports[1], reports[2]);
}

// Which capture belongs to which module is told only as exactly as the program looks.
// The lines of progress in a pipe, without their times.
std::vector<std::string> told(const Outcome& outcome) {
    std::vector<std::string> texts;
    for (const auto& line : lines_of(outcome.err))
        texts.push_back(line.substr(line.find("  ") + 2));
    return texts;
}

TEST_F(Collect, ProgressInAPipeIsALineForEachModuleAndCommand) {
    EXPECT_EQ(told(run(collect("calm"))),
              (std::vector<std::string>{"1 of 2  Module zeta", "2 of 2  Module alpha"}));
    const auto machine = fs::path(QV_SAMPLES) / "x86_64-kp220-megaraid";
    fs::remove_all(log_dir());
    const auto texts =
        told(run({"replay", machine, "--log-dir", log_dir(), "--tool-timeout", "70", "--limit",
                  "ipmitool=100", "--module", "sampleModule2", "--module", "BMC_Info"}));
    ASSERT_GT(texts.size(), 7u);
    EXPECT_EQ(texts[0], "1 of 2  Sample Module 2");
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "  uname -i  (at most 1:10)"), 2);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "2 of 2  BMC information"), 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "  ipmitool sensor  (at most 1:40)"), 1);
}

TEST_F(Collect, ProgressOnATerminalFitsAndIsCleared) {
    const auto outcome = run(Invocation{.arguments = collect("calm"), .terminal = true});
    EXPECT_EQ(outcome.exit, 0);
    // Each time: to the line's start, its text, clear the rest. At the end the text is gone.
    std::vector<std::string> shown;
    std::string_view rest = outcome.err;
    constexpr std::string_view clear = "\033[K";
    while (rest.starts_with('\r') && rest.find(clear) != std::string_view::npos) {
        shown.emplace_back(rest.substr(1, rest.find(clear) - 1));
        rest.remove_prefix(rest.find(clear) + clear.size());
    }
    EXPECT_EQ(rest, "") << "nothing else is shown";
    ASSERT_GE(shown.size(), 2u);
    EXPECT_NE(shown.front(), "");
    EXPECT_EQ(shown.back(), "");
    for (const auto& text : shown) EXPECT_LT(text.size(), 20u) << text;
}

TEST_F(Collect, QuietMeansNothingButErrors) {
    const auto quiet = run(collect("calm", {"--quiet"}));
    EXPECT_EQ(quiet.exit, 0);
    EXPECT_EQ(quiet.err, "");
    EXPECT_NE(quiet.out, "");
    EXPECT_NE(run(collect("calm", {"--quiet", "--table", "X"})).err, "");
}

TEST_F(Collect, TheSummaryCountsEveryTableAndNamesTheReport) {
    const auto outcome = run(collect("calm"));
    const std::string expected =
        "Findings: none\n\n"
        "Module        Table         Records  Note\n"
        "------------  ------------  -------  -------\n"
        "Module zeta   SURROUNDINGS  1\n"
        "              VALUES        3\n"
        "Module alpha  ANOTHER       1\n"
        "              EMPTY         0        unknown\n"
        "\nReport: " +
        (log_dir() / "report" / "index.html").string() + "\n";
    EXPECT_TRUE(outcome.out.starts_with("Health\n")) << outcome.out;
    EXPECT_TRUE(outcome.out.ends_with(expected)) << outcome.out;
    EXPECT_EQ(outcome.out.find('\033'), std::string::npos);
}

TEST_F(Collect, PluginsThatAreNoneAreRefused) {
    const auto missing = run(collect("missing"));
    EXPECT_EQ(missing.exit, 1);
    EXPECT_NE(missing.err.find("missing.so"), std::string::npos) << missing.err;
    const auto none = run(collect("none"));
    EXPECT_EQ(none.exit, 1);
    EXPECT_NE(none.err.find("AddModules"), std::string::npos) << none.err;
}

TEST_F(Collect, APluginIsFoundFromWhereTheUserStands) {
    Invocation invocation{.arguments = {"collect", "--log-dir", "log", "--plugin", "./calm.so"},
                          .directory = dir()};
    fs::copy_file(plugin("calm"), dir() / "calm.so");
    const auto outcome = run(invocation);
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_TRUE(fs::exists(log_dir() / "report" / "report.json"));
}

// A shell or a service manager may start it so. Otherwise the system would keep no process's end.
TEST_F(Collect, WithSigchldIgnoredItLearnsHowToolsEnd) {
    std::vector<std::string> arguments = {"--ignore-signal=CHLD", QV_PROGRAM};
    const auto collecting = collect("asks");
    arguments.insert(arguments.end(), collecting.begin(), collecting.end());
    const auto outcome = run(Invocation{.arguments = arguments,
                                        .environment = {{"QV_TEST_COMMANDS", "exit 3\nexit 0\n"}},
                                        .program = {"/usr/bin/env"}});
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    std::vector<int> ends;
    const auto report = report_json(log_dir());
    for (const auto& record : report["records"]) ends.push_back(record["properties"][1]["value"]);
    EXPECT_EQ(ends, (std::vector<int>{3, 0}));
}

}  // namespace

}  // namespace test
