// A recorded server whose BMC does not answer.
#include "program.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using qvhost::Store;

class UnansweredBmc : public ProductTest {
protected:
    fs::path machine() const { return dir() / "machine"; }

    // The recorded server; of the tools that ask its BMC none comes to an end within its limit.
    void SetUp() override {
        ProductTest::SetUp();
        fs::copy(fs::path(QV_SAMPLES) / "x86_64-kp220-healthy", machine());
        const auto file = machine() / "machine.json";
        auto recorded = nlohmann::ordered_json::parse(read_file(file));
        for (auto& command : recorded["commands"]) {
            if (command["tool"].get<std::string>().starts_with("ipmi")) command["seconds"] = 600;
        }
        recorded["commands"].push_back(
            {{"tool", "ipmitool"}, {"args", "mc info"}, {"seconds", 600}});
        write_file(file, recorded.dump());
    }

    Outcome replay(const fs::path& server, const fs::path& log) {
        return run(
            {"replay", server, "--log-dir", log, "--limit", "ipmitool=2", "--limit", "ipmiutil=2"});
    }

    // The records of the other modules.
    static nlohmann::ordered_json others(const fs::path& log) {
        const auto report = report_json(log);
        std::set<std::string> tables;
        for (const auto& module : report["modules"]) {
            if (module["name"] == "BMC_Info") continue;
            for (const auto& table : module["tables"]) tables.insert(table["id"]);
        }
        auto records = nlohmann::ordered_json::array();
        for (const auto& record : report["records"]) {
            if (tables.contains(record["table"])) records.push_back(record);
        }
        return records;
    }
};

TEST_F(UnansweredBmc, IsLeftAfterTwoStopsAndAQuestion) {
    const auto outcome = replay(machine(), log_dir());
    EXPECT_EQ(outcome.exit, 3) << outcome.err;

    std::vector<std::string> asked;  // and how it ended
    int not_started = 0;
    for (const auto& command : Store(store_in(log_dir()), Store::Mode::read).commands()) {
        if (!command.tool.starts_with("ipmi")) continue;
        if (command.started) {
            asked.push_back(command.origin + ": " + qvhost::outcome(command));
        } else {
            ++not_started;
            EXPECT_EQ(qvhost::outcome(command),
                      "not asked: what it asks did not answer twice before");
        }
    }
    EXPECT_EQ(asked, (std::vector<std::string>{"plug-in: stopped at its time limit",
                                               "plug-in: stopped at its time limit",
                                               "host: stopped at its time limit"}));
    EXPECT_GT(not_started, 7);
    EXPECT_TRUE(outcome.out.starts_with("The collection is incomplete: ")) << outcome.out;
    EXPECT_NE(outcome.out.find(" commands were not run (not asked: what it asks did not answer"),
              std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.err.find("the collection is incomplete: "), std::string::npos);

    std::map<std::string, int> why;
    for (const auto& [table, reason] : reasons(store_in(log_dir()))) ++why[reason];
    EXPECT_GT(why["not asked: what it asks did not answer twice before"], 5);

    const auto healthy = dir() / "healthy";
    EXPECT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-kp220-healthy", healthy).exit, 0);
    EXPECT_GT(others(healthy).size(), 50u);
    EXPECT_EQ(others(log_dir()), others(healthy));
}

// All that verdicts rest on was read; what the BMC did not answer is a detail.
TEST_F(UnansweredBmc, IsNotWellThoughItsSelfTestPassed) {
    const auto server = dir() / "almost";
    fs::copy(fs::path(QV_SAMPLES) / "x86_64-kp220-healthy", server);
    const auto file = server / "machine.json";
    auto recorded = nlohmann::ordered_json::parse(read_file(file));
    int changed = 0;
    for (auto& command : recorded["commands"]) {
        if (command["tool"] != "ipmitool" || command.value("args", "") != "fru") continue;
        command["seconds"] = 600;
        ++changed;
    }
    ASSERT_EQ(changed, 1);
    write_file(file, recorded.dump());
    EXPECT_EQ(replay(server, log_dir()).exit, 3);
    std::map<std::string, std::string> health;
    const auto report =
        nlohmann::ordered_json::parse(read_file(log_dir() / "report" / "report.json"));
    for (const auto& one : report["health"]) health[one["subsystem"]] = one["health"];
    EXPECT_EQ(health["temperature"], "ok");
    EXPECT_EQ(health["bmc"], "unknown");
}

// A tool that finds no BMC has failed where the firmware names one, and has not where it names none.
TEST_F(UnansweredBmc, HasNotFailedWhereThereIsNone) {
    const auto server = dir() / "without";
    fs::copy(fs::path(QV_SAMPLES) / "x86_64-kp220-healthy", server);
    auto recorded = nlohmann::ordered_json::parse(read_file(server / "machine.json"));
    for (auto& command : recorded["commands"]) {
        if (!command["tool"].get<std::string>().starts_with("ipmi")) continue;
        command["stdout"] = "no_bmc.txt";
        command["exit"] = 1;
    }
    write_file(server / "machine.json", recorded.dump());
    write_file(server / "no_bmc.txt",
               "Could not open device at /dev/ipmi0 or /dev/ipmi/0 or /dev/ipmidev/0: "
               "No such file or directory\n");
    const auto health_of = [&](const fs::path& log) {
        std::map<std::string, std::string> health;
        const auto report = report_json(log);
        for (const auto& one : report["health"]) health[one["subsystem"]] = one["health"];
        return health;
    };

    const auto named = dir() / "named";
    EXPECT_EQ(replay(server, named).exit, 3);
    EXPECT_EQ(report_json(named)["collection"]["status"], "incomplete");
    EXPECT_EQ(health_of(named)["temperature"], "unknown");
    EXPECT_EQ(health_of(named)["collection"], "unknown");

    auto firmware = read_file(server / "dmidecode.txt");
    const auto begin = firmware.find("Handle 0x0034, DMI type 38");
    ASSERT_NE(begin, std::string::npos);
    firmware.erase(begin, firmware.find("Handle 0x0040") - begin);
    write_file(server / "dmidecode.txt", firmware);
    const auto none = dir() / "none";
    const auto outcome = replay(server, none);
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_EQ(report_json(none)["collection"]["status"], "complete");
    for (const char* subsystem : {"temperature", "cooling", "power", "bmc"})
        EXPECT_EQ(health_of(none)[subsystem], "absent") << subsystem;
    EXPECT_EQ(health_of(none)["collection"], "ok");
}

}  // namespace

}  // namespace test
