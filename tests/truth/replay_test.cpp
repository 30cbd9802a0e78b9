// Random servers through the built program: recorded, replayed, and read from report.json.
#include <chrono>

#include <gtest/gtest.h>

#include "compare.h"
#include "program.h"
#include "report.h"
#include "setting.h"
#include "truth.h"

namespace truth {

namespace {

// The program judges the age of events by its own clock.
Seconds today() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

class Replay : public test::ProductTest {};

TEST_F(Replay, TellsTheTruthOfRandomServers) {
    const long first = test::setting("QV_TRUTH_FIRST", 1, 1);
    const long seeds = test::repetitions("QV_TRUTH_SEEDS", 10, 250);
    for (long seed = first; seed < first + seeds; ++seed) {
        Options options;
        options.seed = static_cast<std::uint64_t>(seed);
        options.now = today();
        options.is_recorded = true;
        const auto made = make(options);
        // Nobody asks sas2ircu for its display yet.
        if (made->server.storage_tool == StorageTool::sas2ircu) continue;
        const auto machine = dir() / "machine";
        const auto log = dir() / "log";
        std::filesystem::remove_all(machine);
        std::filesystem::remove_all(log);
        write_machine(*made, machine);
        std::vector<std::string> arguments = {"replay", machine.string(), "--log-dir", log.string(),
                                              "--quiet"};
        if (made->server.storage_tool == StorageTool::arcconf) {
            arguments.emplace_back("--also");
            arguments.emplace_back("pmc");
        }
        const auto outcome = run(arguments);
        ASSERT_EQ(outcome.exit, 0) << "seed " << seed << ": " << outcome.err;
        const auto report = Json::parse(test::read_file(log / "report" / "report.json"));
        for (const auto& difference : compare(made->truth, report))
            ADD_FAILURE() << "truth_server --machine --seed " << seed << " --now "
                          << iso(options.now) << ": " << difference;
    }
}

// What is recorded of a report gives that report again.
TEST_F(Replay, RecordsOfRandomServersReplayTheSame) {
    const long first = test::setting("QV_TRUTH_FIRST", 1, 1);
    const long seeds = test::repetitions("QV_TRUTH_SEEDS", 4, 80);
    for (long seed = first; seed < first + seeds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Options options;
        options.seed = static_cast<std::uint64_t>(seed);
        options.now = today();
        options.is_recorded = true;
        const auto made = make(options);
        for (const char* name : {"machine", "log", "recorded", "again"})
            std::filesystem::remove_all(dir() / name);
        write_machine(*made, dir() / "machine");
        const auto replay = [&](const char* machine, const char* log) {
            return run({"replay", dir() / machine, "--log-dir", dir() / log, "--quiet", "--also",
                        "pmc"})
                .exit;
        };
        const int exit = replay("machine", "log");
        const auto recorded =
            run({"record", "--from", dir() / "log", "--output", dir() / "recorded"});
        ASSERT_EQ(recorded.exit, 0) << recorded.err;
        EXPECT_EQ(replay("recorded", "again"), exit);
        EXPECT_EQ(test::difference(test::told_by(dir() / "log"), test::told_by(dir() / "again")),
                  "");
    }
}

}  // namespace

}  // namespace truth
