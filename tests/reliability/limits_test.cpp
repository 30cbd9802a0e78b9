// One tree of limits: run >= module >= archive >= tool >= silence.
#include "server.h"

namespace test {

namespace {

class CollectionLimits : public ServerTest {
protected:
    // The limits that --dry-run tells, in the order of its lines.
    std::vector<int> planned(const std::vector<std::string>& options) {
        std::vector<std::string> arguments{"collect", "--dry-run", "--log-dir", log_dir()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        std::vector<int> found;
        for (const auto& line : lines_of(outcome.out)) {
            const auto at = line.find("at most ");
            if (at != std::string::npos && line.ends_with(" s"))
                found.push_back(std::atoi(line.c_str() + at + 8));
        }
        EXPECT_FALSE(std::filesystem::exists(log_dir()));
        return found;
    }
};

using Numbers = std::vector<int>;

TEST_F(CollectionLimits, WhatIsNotAskedForFitsAroundWhatIs) {
    EXPECT_EQ(planned({}), (Numbers{7200, 3600, 300, 1800, 120}));
    EXPECT_EQ(planned({"--tool-timeout", "5"}), (Numbers{7200, 3600, 5, 30, 5}));
    EXPECT_EQ(planned({"--tool-timeout", "2000"}), (Numbers{12000, 12000, 2000, 12000, 120}));
    EXPECT_EQ(planned({"--run-timeout", "60"}), (Numbers{60, 60, 60, 60, 60}));
    EXPECT_EQ(planned({"--module-timeout", "200"}), (Numbers{7200, 200, 200, 200, 120}));
    EXPECT_EQ(planned({"--silence-timeout", "900"}), (Numbers{7200, 5400, 900, 5400, 900}));
    EXPECT_EQ(planned({"--tool-timeout", "86400"}), (Numbers{86400, 86400, 86400, 86400, 120}));
}

TEST_F(CollectionLimits, WhatContradictsItselfIsAnErrorOfUsage) {
    const std::vector<std::vector<std::string>> cases{
        {"--run-timeout", "10", "--module-timeout", "11"},
        {"--run-timeout", "10", "--tool-timeout", "11"},
        {"--module-timeout", "10", "--tool-timeout", "11"},
        {"--tool-timeout", "10", "--silence-timeout", "11"},
        {"--run-timeout", "0"},
        {"--silence-timeout", "86401"},
        {"--module-timeout", "x"},
    };
    for (const auto& options : cases) {
        std::vector<std::string> arguments{"collect", "--log-dir", log_dir()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 2) << options[0];
        EXPECT_NE(outcome.err.find(options[0]), std::string::npos) << outcome.err;
        EXPECT_FALSE(std::filesystem::exists(log_dir()));
    }
}

TEST_F(CollectionLimits, AModulesTimeEndsWhatRunsAndWhatFollows) {
    // The second time it is asked, it has less left of the module's time than a tool may take: a deadline
    // is a whole second, up to one later.
    events_do(
        "cat \"$recorded/c0_events.txt\"\ncase $(readlink /proc/$$/fd/1) in\n"
        "*/c0_raidevents.txt) sleep 2;;\n*) while :; do echo; sleep 0.2; done;;\nesac");
    const auto outcome = collect_storage({"--module-timeout", "10"});
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    EXPECT_EQ(this->outcome(log_dir(), "show events > "), "stopped when the time was used up");
    EXPECT_EQ(reason(log_dir(), "EVENTLOG1"), "storcli: stopped when the time was used up");
    EXPECT_GT(counts(store_in(log_dir())).at("EVENTLOG1"), 2000);
    EXPECT_EQ(reason(log_dir(), "PDLIST"), "not asked: the time was used up");
    EXPECT_EQ(counts(store_in(log_dir())).at("RAIDINFO"), 1) << "the module before had its own";
    EXPECT_EQ(family(), std::vector<pid_t>());
}

TEST_F(CollectionLimits, WhatIsPartialIsCalledSoEverywhere) {
    events_do("cat \"$recorded/c0_events.txt\"; sleep 60");
    const auto outcome = collect_storage({"--tool-timeout", "5"});
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    EXPECT_TRUE(without_build(outcome.out)
                    .starts_with("The collection is incomplete: storcli /c0 show events was "
                                 "stopped at its time limit, 2 times\n"))
        << outcome.out;
    const std::string why = "storcli: stopped at its time limit";
    EXPECT_EQ(reason(log_dir(), "EVENTLOG1"), why);
    EXPECT_NE(outcome.out.find("partial: " + why.substr(0, 12)), std::string::npos) << outcome.out;
    const auto shown = run({"show", log_dir(), "EVENTLOG2"});
    EXPECT_NE(shown.out.find("partial: " + why.substr(0, 12)), std::string::npos);
    std::string partial;
    const auto report = report_json(log_dir());
    for (const auto& module : report["modules"]) {
        for (const auto& table : module["tables"]) {
            if (table.contains("partial")) partial += table["id"].get<std::string>() + " ";
        }
    }
    EXPECT_EQ(partial, "EVENTLOG1 EVENTLOG2 ");
    const auto page = read_file(log_dir() / "report" / "data" / "overview.js");
    EXPECT_NE(page.find("\"reason\":\"" + why + "\""), std::string::npos);
    EXPECT_EQ(meta(store_in(log_dir()), "limits"),
              "run 7200 s, module 3600 s, archive 30 s, tool 5 s, silence 5 s; all files 8GiB, "
              "an archive 4GiB, a capture 256MiB, a table 256MiB; 512 processes of a tool");
}

TEST_F(CollectionLimits, AModuleThatHangsItselfIsEnded) {
    const auto outcome = run(Invocation{.arguments = collect("faults", {"--module-timeout", "1"}),
                                        .environment = {{"QV_TEST_FAULT", "hang"}}});
    EXPECT_EQ(outcome.exit, 3);
    EXPECT_NE(outcome.err.find("took longer than 1 s while it collected M_FAULT"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(counts(store_in(log_dir())).at("A_BEFORE"), 1000);
    EXPECT_EQ(family(), std::vector<pid_t>());
}

}  // namespace

}  // namespace test
