// Modules that share no hardware are asked side by side: the report is that of a serial run, and whatever
// ends one lane or all of them, nothing that was filed is lost.
#include <algorithm>
#include <csignal>
#include <set>

#include "program.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/replay/machine.h"
#include "qvhost/replay/stand_ins.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using qvhost::CommandInfo;
using qvhost::Store;

fs::path sample(const std::string& name) { return fs::path(QV_SAMPLES) / name; }

std::vector<fs::path> samples() {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(QV_SAMPLES)) {
        if (fs::exists(entry.path() / "machine.json")) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

// A recorded server from which qvhost collects for real: its tools are scripts beside the program and at the head
// of the search path.
class Lanes : public ProductTest {
protected:
    void become(const fs::path& machine) {
        fs::remove_all(server());
        fs::create_directories(tools());
        fs::create_directories(path());
        const fs::path program = QV_PROGRAM;
        fs::copy_file(program, server() / "bin" / "qvhost");
        fs::create_directory_symlink(program.parent_path().parent_path() / "lib", server() / "lib");
        qvhost::write_stand_ins(qvhost::read_machine(machine), tools(), path(), log_dir() / "",
                                qvhost::vendor_tools_of(server() / "lib" / kPlugin));
        // What the server did not record must not be found on this machine.
        for (const auto& tool : all_tools()) {
            if (!fs::exists(path() / tool))
                is("path/" + tool, "printf 'sh: 1: " + tool + ": not found\\n' >&2; exit 127");
        }
    }

    // Puts a script in a tool's place. {OLD} in it is what stood there.
    void is(const std::string& tool, std::string script) {
        const auto file = tool.starts_with("path/") ? server() / tool : tools() / tool;
        const auto old = file.string() + ".old";
        if (fs::exists(file)) fs::rename(file, old);
        for (auto at = script.find("{OLD}"); at != std::string::npos; at = script.find("{OLD}"))
            script.replace(at, 5, "'" + old + "' \"$@\"");
        write_file(file, "#!/bin/sh\n" + script + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    void storcli_is(const std::string& script) {
        for (const char* build : {"storcli_x32", "storcli_x64"}) is(build, script);
    }

    Invocation collecting(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"collect", "--log-dir",      log_dir(),
                                           "--quiet", "--plug-in-only", "--no-compat"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return {.arguments = arguments,
                .environment = {{"PATH", path().string()}},
                .program = {server() / "bin" / "qvhost"}};
    }

    std::vector<CommandInfo> commands() const {
        return Store(store_in(log_dir()), Store::Mode::read).commands();
    }

    // What must not depend on the lanes.
    struct Told {
        ordered_json collected;
        std::vector<std::string> log;
        std::string console;
        std::vector<std::string> commands;  // with how they ended and the files that they wrote
        std::string status;
        std::map<std::string, std::string> reasons;
        bool operator==(const Told&) const = default;
    };
    Told told() const {
        Told told{.collected = collected(log_dir()),
                  .log = log_texts(log_dir()),
                  .console = read_file(log_dir() / "console.txt"),
                  .commands = {},
                  .status = meta(store_in(log_dir()), "status") + ": " +
                            meta(store_in(log_dir()), "incomplete_because"),
                  .reasons = reasons(store_in(log_dir()))};
        for (const auto& command : commands()) {
            auto text = command.text + " " + qvhost::outcome(command) + ":";
            for (const auto& capture : command.captures) text += " " + capture;
            told.commands.push_back(text);
        }
        return told;
    }

    // The collecting process of a lane; 0: there is none.
    pid_t lane(unsigned number) const {
        const auto journal = number == 1 ? std::string("/collection.journal")
                                         : "/collection-" + std::to_string(number) + ".journal";
        for (const pid_t pid : family()) {
            const auto proc = "/proc/" + std::to_string(pid);
            if (read_file(proc + "/cmdline").find("collecting-child") == std::string::npos)
                continue;
            std::error_code error;
            for (fs::directory_iterator fd(proc + "/fd", error), end; !error && fd != end;
                 fd.increment(error)) {
                std::error_code gone;
                if (fs::read_symlink(fd->path(), gone).string().ends_with(journal)) return pid;
            }
        }
        return 0;
    }

    // Whether a tool with this name runs.
    bool runs(const std::string& name) const {
        const auto all = family();
        return std::any_of(all.begin(), all.end(), [&](pid_t pid) {
            return read_file("/proc/" + std::to_string(pid) + "/cmdline").find(name) !=
                   std::string::npos;
        });
    }

    // A script that says that it is there, and waits to be let on.
    std::string stops_at(const std::string& name) const {
        return ": >'" + (dir() / (name + "_is_there")).string() + "'; while [ ! -e '" +
               (dir() / (name + "_may_go")).string() + "' ]; do /bin/sleep 0.01; done\n";
    }
    void wait_for(const std::string& name) const {
        wait_until(name, [&] { return fs::exists(dir() / (name + "_is_there")); });
    }
    void let_go(const std::string& name) const { write_file(dir() / (name + "_may_go"), ""); }

    // Both lanes stop in the middle: the controller has told its summary, the BMC its identity.
    void both_stop() {
        become(sample("x86_64-kp220-healthy"));
        storcli_is("[ \"$*\" != '/c0 show events' ] || { " + stops_at("storcli") + "}\n{OLD}");
        is("path/ipmitool", "[ \"$1\" != sensor ] || { " + stops_at("ipmitool") + "}\n{OLD}");
    }
    pid_t start_and_stop() {
        for (const char* name : {"storcli_is_there", "ipmitool_is_there"}) fs::remove(dir() / name);
        const pid_t program = start(collecting());
        wait_for("storcli");
        wait_for("ipmitool");
        return program;
    }

    // Of each table either nothing or what a whole collection has; of those in `all` everything.
    void expect_part_of(const ordered_json& whole, const std::set<std::string>& all) const {
        std::map<std::string, ordered_json> found;
        std::map<std::string, ordered_json> expected;
        const auto told = collected(log_dir());
        for (const auto& record : told["records"]) found[record["table"]].push_back(record);
        for (const auto& record : whole["records"]) expected[record["table"]].push_back(record);
        for (const auto& [table, records] : found) EXPECT_EQ(records, expected[table]) << table;
        for (const auto& table : all) EXPECT_EQ(found[table], expected[table]) << table;
    }

    fs::path server() const { return dir() / "server"; }
    fs::path tools() const { return server() / "bin" / "qv_tools"; }
    fs::path path() const { return server() / "path"; }

private:
    static constexpr const char* kPlugin = "librepository_qvmodule.so";

    static std::set<std::string> all_tools() {
        std::set<std::string> names{"sosreport", "supportconfig", "modprobe"};
        for (const auto& machine : samples()) {
            for (const auto& command : qvhost::read_machine(machine).commands)
                names.insert(command.tool);
        }
        return names;
    }
};

// The tables of the module that talks to the BMC, and those of the others, in the recorded server of these tests.
const std::set<std::string> kOfBmc{"MCINFO", "SENSORINFO", "FRUINFO", "SELINFO"};
const std::set<std::string> kOfControllers{"RAIDINFO", "EVENTLOG1", "PDLIST", "LSILINK"};

TEST_F(Lanes, EveryRecordedServerTellsTheSameAsInASerialRun) {
    for (const auto& machine : samples()) {
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
        std::set<int> lanes;
        for (const auto& command : commands()) lanes.insert(command.lane);
        EXPECT_EQ(lanes, (std::set<int>{1, 2}));
        for (const char* left : {"collection.journal", "collection-2.journal", "commands-2.log",
                                 "qvhost-2.log", "console-2.txt"})
            EXPECT_FALSE(fs::exists(log_dir() / "report" / left)) << left;
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

TEST_F(Lanes, OneThatIsKilledLeavesTheOtherWhole) {
    both_stop();
    for (const char* name : {"storcli", "ipmitool"}) let_go(name);
    ASSERT_EQ(run(collecting()).exit, 0);
    const auto whole = collected(log_dir());
    const struct {
        unsigned lane;
        const char* runs;
        const char* other;
        std::set<std::string> whole;
        std::set<std::string> begun;
    } cases[] = {
        {1, "storcli", "ipmitool", kOfBmc, {"RAIDINFO"}},
        {2, "ipmitool", "storcli", kOfControllers, {"MCINFO"}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.lane);
        fs::remove_all(log_dir());
        for (const char* name : {"storcli", "ipmitool"})
            fs::remove(dir() / (std::string(name) + "_may_go"));
        const pid_t program = start_and_stop();
        const pid_t victim = lane(one.lane);
        ASSERT_NE(victim, 0);
        ::kill(victim, SIGKILL);
        wait_until("its tool has ended", [&] { return !runs(one.runs); });
        EXPECT_TRUE(runs(one.other)) << "the other one stays";
        EXPECT_NE(lane(3 - one.lane), 0);
        let_go(one.other);
        const auto outcome = finish(program);
        EXPECT_EQ(outcome.exit, 3) << outcome.err;
        EXPECT_NE(outcome.err.find("the collecting process was ended by Killed while it ran " +
                                   std::string(one.runs)),
                  std::string::npos)
            << outcome.err;
        auto all = one.whole;
        all.insert(one.begun.begin(), one.begun.end());
        expect_part_of(whole, all);
        EXPECT_EQ(family(), std::vector<pid_t>());
    }
}

TEST_F(Lanes, AnInterruptEndsAll) {
    both_stop();
    const pid_t program = start_and_stop();
    ::kill(program, SIGINT);
    const auto outcome = finish(program);
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    EXPECT_NE(outcome.err.find("ended by Interrupt while it ran storcli_x"), std::string::npos)
        << outcome.err;
    EXPECT_NE(outcome.err.find("/c0 show events and ran ipmitool sensor"), std::string::npos)
        << outcome.err;
    EXPECT_EQ(family(), std::vector<pid_t>());
    std::vector<std::string> stopped;
    for (const auto& command : commands()) {
        if (!command.stopped_by.empty())
            stopped.push_back(std::to_string(command.lane) + " " + command.stopped_by);
    }
    EXPECT_EQ(stopped, (std::vector<std::string>{"1 user", "2 user"}));
    const auto records = counts(store_in(log_dir()));
    EXPECT_EQ(records.at("RAIDINFO"), 1);
    EXPECT_EQ(records.at("MCINFO"), 1);
}

TEST_F(Lanes, OfACollectionThatWasKilledWithAllItRanEachIsThere) {
    both_stop();
    const pid_t program = start_and_stop();
    ::kill(program, SIGKILL);
    EXPECT_EQ(finish(program).signal, SIGKILL);
    wait_until("no process is left", [&] { return family().empty(); });
    const auto shown = run({"show", log_dir(), "RAIDINFO", "--no-pager"});
    EXPECT_EQ(shown.exit, 0) << shown.err;
    EXPECT_NE(shown.err.find("a collection that was broken off"), std::string::npos) << shown.err;
    const auto records = counts(store_in(log_dir()));
    EXPECT_EQ(records.at("RAIDINFO"), 1);
    EXPECT_EQ(records.at("MCINFO"), 1);
    EXPECT_EQ(records.at("SENSORINFO"), 0);
    const auto log = read_file(log_dir() / "qvhost.log");
    EXPECT_LT(log.find("EnumQV2Instances"), log.find("EnumBMCInstances"));
    EXPECT_NE(log.find("EnumBMCInstances"), std::string::npos);
    std::set<int> lanes;
    for (const auto& command : commands()) lanes.insert(command.lane);
    EXPECT_EQ(lanes, (std::set<int>{1, 2}));
    for (const char* left :
         {"collection.journal", "collection-2.journal", "commands.log", "commands-2.log"})
        EXPECT_FALSE(fs::exists(log_dir() / "report" / left)) << left;
}

TEST_F(Lanes, ALimitInOneIsNoneOfTheOthers) {
    both_stop();
    let_go("storcli");
    ASSERT_EQ(run(collecting({"--module", "sampleModule1", "--module", "sampleModule2"})).exit, 0);
    const auto expected = collected(log_dir())["records"];
    fs::remove_all(log_dir());
    const auto outcome = run(collecting({"--limit", "ipmitool=5"}));
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    auto found = ordered_json::array();
    const auto told = collected(log_dir());
    for (const auto& record : told["records"]) {
        if (!kOfBmc.contains(record["table"])) found.push_back(record);
    }
    EXPECT_GE(found.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(found[i], expected[i]);
    for (const auto& command : commands())
        EXPECT_TRUE(command.stopped_by.empty() || command.tool == "ipmitool") << command.text;
    EXPECT_GT(counts(store_in(log_dir())).at("FRUINFO"), 0) << "what follows in its lane is asked";
}

// They write into one directory: a capture of one lane that is too large stops no command of the other.
TEST_F(Lanes, ACaptureThatIsTooLargeStopsItsOwnCommandAlone) {
    become(sample("x86_64-kp220-healthy"));
    // It runs while the other capture becomes too large, and on until that command has ended.
    storcli_is("[ \"$*\" != '/c0 show events' ] || { " + stops_at("storcli") +
               "/bin/sleep 0.3; }\n{OLD}");
    is("path/ipmitool",
       "[ \"$1\" != sensor ] || { while [ ! -e '" + (dir() / "storcli_is_there").string() +
           "' ]; do /bin/sleep 0.01; done; trap '' XFSZ; while :; do /bin/cat /dev/zero; done; } 2>/dev/null\n"
           "[ \"$1\" != fru ] || : >'" +
           (dir() / "storcli_may_go").string() + "'\n{OLD}");
    const auto outcome = run(collecting({"--capture-size", "1"}));
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    std::vector<std::string> stopped;
    for (const auto& command : commands()) {
        if (!command.stopped_by.empty()) stopped.push_back(command.tool + " " + command.stopped_by);
    }
    EXPECT_EQ(stopped, std::vector<std::string>{"ipmitool size"});
    EXPECT_EQ(counts(store_in(log_dir())).at("RAIDINFO"), 1);
    EXPECT_GT(counts(store_in(log_dir())).at("EVENTLOG1"), 0);
}

}  // namespace

}  // namespace test
