// Modules that share no hardware are asked side by side, and the report is that of a serial run.
#include "lanes.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using Lanes = LanesTest;

TEST_F(Lanes, EveryRecordedServerTellsTheSameAsInASerialRun) {
    for (const auto& machine : some_of(samples())) {
        SCOPED_TRACE(machine.filename());
        become(machine);
        const auto limits = std::vector<std::string>{"--tool-timeout", "5"};
        fs::remove_all(log_dir());
        auto serial = limits;
        serial.push_back("--serial");
        const auto serial_exit = run(collecting(serial)).exit;
        const auto expected = told();
        for (const auto& command : commands()) EXPECT_EQ(command.lane, 1) << command.text;

        fs::remove_all(log_dir());
        EXPECT_EQ(run(collecting(limits)).exit, serial_exit);
        const auto found = told();
        EXPECT_EQ(found.collected, expected.collected);
        EXPECT_EQ(found.log, expected.log);
        EXPECT_EQ(found.console, expected.console);
        EXPECT_EQ(found.commands, expected.commands);
        EXPECT_EQ(found.status, expected.status);
        EXPECT_EQ(found.reasons, expected.reasons);
        EXPECT_EQ(lanes(), (std::set<int>{1, 2}));
        expect_one_report();
    }
}

// Each waits for the other one to have begun: one after another they would wait for ever.
TEST_F(Lanes, AreAskedAtTheSameTime) {
    become(sample("x86_64-kp220-healthy"));
    const auto meets = [&](const std::string& mine, const std::string& other) {
        return ": >'" + (dir() / mine).string() + "'; while [ ! -e '" + (dir() / other).string() +
               "' ]; do /bin/sleep 0.01; done\n{OLD}";
    };
    storcli_is(meets("storcli", "ipmitool"));
    is("path/ipmitool", meets("ipmitool", "storcli"));
    EXPECT_EQ(run(collecting()).exit, 0);
}

TEST_F(Lanes, ThePlanTellsThem) {
    become(sample("x86_64-kp220-healthy"));
    const auto lanes = [&](const std::vector<std::string>& more) {
        auto options = more;
        options.emplace_back("--dry-run");
        std::map<std::string, std::string> found;
        for (const auto& line : lines_of(run(collecting(options)).out)) {
            for (const std::string name :
                 {"Sample Module 1", "Sample Module 2", "BMC information"}) {
                if (!line.starts_with(name)) continue;
                found[name] = line.substr(line.find_first_not_of(' ', name.size()), 1);
            }
        }
        return found;
    };
    using Found = std::map<std::string, std::string>;
    EXPECT_EQ(
        lanes({}),
        (Found{{"Sample Module 1", "1"}, {"Sample Module 2", "1"}, {"BMC information", "2"}}));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--serial"}, {"--also", "fru0"}})
        EXPECT_EQ(
            lanes(options),
            (Found{{"Sample Module 1", "1"}, {"Sample Module 2", "1"}, {"BMC information", "1"}}));
    EXPECT_EQ(lanes({"--module", "BMC_Info"}), (Found{{"BMC information", "1"}}));
}

TEST_F(Lanes, ProgressTellsEachCommandWithItsLane) {
    become(sample("x86_64-kp220-healthy"));
    auto invocation = collecting();
    std::erase(invocation.arguments, "--quiet");
    const auto lines = lines_of(run(invocation).err);
    const auto count = [&](const std::string& end) {
        return std::count_if(lines.begin(), lines.end(),
                             [&](const std::string& line) { return line.ends_with(end); });
    };
    EXPECT_EQ(count("  lane 1  2 of 5  Sample Module 2"), 1);
    EXPECT_EQ(count("  lane 2  3 of 5  BMC information"), 1);
    EXPECT_EQ(count("  lane 2    ipmitool sensor  (at most 5:00)"), 1);
    EXPECT_EQ(count("  lane 1    storcli_x64 show ctrlcount  (at most 5:00)"), 2);
}

}  // namespace

}  // namespace test
