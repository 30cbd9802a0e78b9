// "qvhost record": a recorded server of a report gives the same report again.
#include <sys/resource.h>
#include <sys/stat.h>

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <csignal>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class Record : public ProductTest {
protected:
    fs::path recorded() const { return dir() / "recorded"; }
    fs::path again() const { return dir() / "again"; }

    Outcome replay(const fs::path& machine, const fs::path& log_dir,
                   const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"replay",         machine, "--log-dir", log_dir,
                                           "--tool-timeout", "5",     "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    }
    Outcome record() { return run({"record", "--from", log_dir(), "--output", recorded()}); }
    json machine() const { return json::parse(read_file(recorded() / "machine.json")); }

    void round_trip(const std::string& sample, const std::vector<std::string>& more = {}) {
        const auto first = replay(fs::path(QV_SAMPLES) / sample, log_dir(), more);
        const auto made = record();
        ASSERT_EQ(made.exit, 0) << made.err;
        const auto second = replay(recorded(), again(), more);
        EXPECT_EQ(second.exit, first.exit) << second.err;
        EXPECT_EQ(difference(told_by(log_dir()), told_by(again())), "");
        EXPECT_FALSE(told_by(log_dir()).empty());
    }

    // Changes what the store says of the commands.
    void damage(const std::string& sql) {
        SQLite::Database db(store_in(log_dir()).string(), SQLite::OPEN_READWRITE);
        ASSERT_GT(db.exec(sql), 0) << sql;
    }

    // All that lies in the recorded server, as one text; only files of the owner's do.
    std::string all_of(const fs::path& directory) {
        std::string all;
        for (const auto& entry : fs::recursive_directory_iterator(directory)) {
            EXPECT_TRUE(entry.symlink_status().type() == fs::file_type::regular) << entry.path();
            struct stat info {};
            EXPECT_EQ(::lstat(entry.path().c_str(), &info), 0);
            EXPECT_EQ(info.st_mode & 07777, 0600u) << entry.path();
            all += entry.path().filename().string() + "\n" + read_file(entry.path());
        }
        return all;
    }
};

std::vector<std::string> samples() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(QV_SAMPLES)) {
        if (fs::exists(entry.path() / "machine.json")) names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class RecordSample : public Record, public testing::WithParamInterface<std::string> {};

TEST_P(RecordSample, GivesTheSameReport) { round_trip(GetParam()); }

std::string test_name(const testing::TestParamInfo<std::string>& info) {
    auto name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Recorded, RecordSample, testing::ValuesIn(samples()), test_name);

TEST_F(Record, FilesBelowADirectoryAreRecorded) {
    round_trip("x86_64-kn100-adaptec", {"--also", "pmc"});
    EXPECT_EQ(read_file(again() / "Firmware" / "Controller 1 Config.txt"),
              read_file(log_dir() / "Firmware" / "Controller 1 Config.txt"));
}

TEST_F(Record, HoldsHowEachCommandEnded) {
    write_file(dir() / "machine" / "half.txt", "half a l");
    const json commands = {
        {{"tool", "dmidecode"}, {"args", ""}, {"stdout", "half.txt"}, {"signal", 11}},
        {{"tool", "dmesg"},
         {"args", ""},
         {"stdout", "half.txt"},
         {"stderr", "dmesg: no\n"},
         {"exit", 3}},
        {{"tool", "cat"}, {"args", "/proc/cpuinfo"}, {"stdout", "half.txt"}, {"seconds", 1}},
        {{"tool", "mv"}, {"files", {{"nts_linux_x.txz", "half.txt"}}}, {"exit", 1}},
        {{"tool", "lspci"}, {"args", ""}, {"stderr", "pcilib: \xc3\xa4"}},
    };
    write_file(dir() / "machine" / "machine.json",
               json{{"uname", "x86_64"},
                    {"host", "kp220"},
                    {"recorded", "2026-11-20T07:30:05"},
                    {"uptime_seconds", 77},
                    {"lacks", {{{"subsystem", "storage"}, {"words", "smartctl is not installed"}}}},
                    {"commands", commands}}
                   .dump());
    ASSERT_EQ(replay(dir() / "machine", log_dir()).exit, 0);
    ASSERT_EQ(record().exit, 0);
    const auto made = machine();
    EXPECT_EQ(made["host"], "kp220");
    EXPECT_EQ(made["recorded"], "2026-11-20T07:30:05");
    EXPECT_EQ(made["uptime_seconds"], 77);
    EXPECT_EQ(made["lacks"][0]["words"], "smartctl is not installed");
    const auto entry = [&](const std::string& tool) {
        for (const auto& one : made["commands"]) {
            if (one["tool"] == tool && one.value("args", "") != "-t system") return one;
        }
        return json();
    };
    EXPECT_EQ(entry("dmidecode")["signal"], 11);
    EXPECT_EQ(read_file(recorded() / entry("dmidecode")["stdout"]), "half a l");
    EXPECT_EQ(entry("dmesg")["stderr"], "dmesg: no\n");
    EXPECT_EQ(entry("dmesg")["exit"], 3);
    EXPECT_EQ(entry("cat")["seconds"], 1);
    EXPECT_EQ(entry("cat")["args"], "/proc/cpuinfo");
    EXPECT_EQ(read_file(recorded() / entry("lspci")["stderr"]), "pcilib: \xc3\xa4")
        << "a text that could be a file's name is in a file";
    EXPECT_EQ(read_file(recorded() / entry("mv")["files"]["nts_linux_x.txz"]), "half a l");
    EXPECT_EQ(entry("mv")["exit"], 1);
    EXPECT_EQ(entry("ipmitool"), json()) << "what is not installed is not recorded";
    ASSERT_EQ(replay(recorded(), again()).exit, 0);
    EXPECT_EQ(difference(told_by(log_dir()), told_by(again())), "");
    const auto told = told_by(again());
    EXPECT_TRUE(std::any_of(told.begin(), told.end(), [](const std::string& line) {
        return line.starts_with("health ") &&
               line.find("smartctl is not installed") != std::string::npos;
    })) << "what could not be asked there is missing in the replay, too";
}

TEST_F(Record, SaysWhatTheReportDoesNotTell) {
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-kw120-debian12", log_dir()).exit, 0);
    fs::remove(log_dir() / "dmidecode.log");
    fs::remove(log_dir() / "qvhost.log");  // has a line on the product
    const auto made = record();
    ASSERT_EQ(made.exit, 0) << made.err;
    EXPECT_NE(
        made.out.find("not known: dmidecode -t system: what it printed went to other commands"),
        std::string::npos)
        << made.out;
    EXPECT_NE(made.out.find("not known: dmidecode: \"dmidecode.log\" is no file of the report"),
              std::string::npos)
        << made.out;
    EXPECT_EQ(lines_of(made.out).size(), machine()["not_known"].size() + 1);
}

TEST_F(Record, NothingIsWrittenIntoWhatIsThere) {
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-virtual-machine", log_dir()).exit, 0);
    write_file(recorded() / "mine", "mine");
    EXPECT_EQ(record().exit, 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(recorded()), {}), 1);
    fs::remove_all(recorded());
    fs::create_directory_symlink(dir(), recorded());
    EXPECT_EQ(record().exit, 1);
    fs::remove(recorded());
    fs::create_directory(recorded());
    EXPECT_EQ(record().exit, 0) << "an empty directory is as good as none";
    EXPECT_EQ(fs::status(recorded()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(run({"record", "--from", store_in(log_dir()), "--output", again()}).exit, 1)
        << "a store alone has no captures";
}

TEST_F(Record, WithoutItsSecretsItReplaysTheSameShape) {
    const std::string sample = "x86_64-kp220-healthy";
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / sample, log_dir()).exit, 0);
    const auto made =
        run({"record", "--from", log_dir(), "--output", recorded(), "--redact", "serials,network"});
    ASSERT_EQ(made.exit, 0) << made.err;
    const auto all = all_of(recorded());
    const auto report = report_json(log_dir());
    int values = 0;
    for (const auto& drive : report["inventory"]["drives"]) {
        EXPECT_NE(read_file(log_dir() / "pdlist.txt").find(drive["serial"]), std::string::npos);
        EXPECT_EQ(all.find(drive["serial"]), std::string::npos) << drive["serial"];
        ++values;
    }
    EXPECT_GT(values, 1);
    for (const std::string key : {"host", "machine_id"}) {
        const std::string value = report["collection"][key];
        EXPECT_EQ(all.find(value), std::string::npos) << value;
        EXPECT_EQ(machine()[key].get<std::string>().size(), value.size());
    }
    EXPECT_EQ(machine()["redacted"], "serials,network");
    ASSERT_EQ(replay(recorded(), again()).exit, 0);
    const auto second = report_json(again());
    EXPECT_EQ(second["health"], report["health"]);
    EXPECT_EQ(second["records"].size(), report["records"].size());
    for (const auto& [kind, entities] : report["inventory"].items())
        EXPECT_EQ(second["inventory"][kind].size(), entities.size()) << kind;
    EXPECT_EQ(
        run({"record", "--from", log_dir(), "--output", dir() / "x", "--redact", "names"}).exit, 2);
    EXPECT_FALSE(fs::exists(dir() / "x"));
}

// The replacement of each value, by the map.
std::map<std::string, std::string> replacements_of(const fs::path& map) {
    std::map<std::string, std::string> made;
    const auto values = json::parse(read_file(map)).at("values");
    for (const auto& one : values)
        made[one.at("form").get<std::string>() + " " + one.at("value").get<std::string>()] =
            one.at("replacement");
    return made;
}

TEST_F(Record, WithAMapADriveIsTheSameInBundlesAndRecordedServers) {
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-kp220-healthy", log_dir()).exit, 0);
    const auto map = dir() / "map", bundle = dir() / "b.tar.zst";
    const auto redact = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--redact", "all", "--map", map});
        const auto made = run(arguments);
        EXPECT_EQ(made.exit, 0) << made.err;
        struct stat info {};
        EXPECT_EQ(::stat(map.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, 0600u);
        return replacements_of(map);
    };
    const auto first = redact({"record", "--from", log_dir(), "--output", recorded()});
    const auto of_bundle = redact({"bundle", log_dir(), "--output", bundle});
    redact({"record", "--from", log_dir(), "--output", dir() / "third"});
    for (const auto& [value, replacement] : first)
        EXPECT_EQ(of_bundle.at(value), replacement) << value;
    EXPECT_EQ(all_of(recorded()), all_of(dir() / "third"));
    EXPECT_EQ(all_of(recorded()).find("\"key\""), std::string::npos) << "the map is not in it";
    ASSERT_EQ(run({"open", bundle, "--output", dir() / "opened"}).exit, 0);
    ASSERT_EQ(replay(recorded(), again()).exit, 0);
    const auto serials = [&](const fs::path& log) {
        std::vector<std::string> all;
        const auto report = report_json(log);
        for (const auto& drive : report["inventory"]["drives"]) all.push_back(drive["serial"]);
        return all;
    };
    EXPECT_GT(serials(again()).size(), 1u);
    EXPECT_EQ(serials(again()), serials(dir() / "opened"));
    EXPECT_NE(serials(again()), serials(log_dir()));
}

TEST_F(Record, AMapThatCannotBeUsedIsRefused) {
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-virtual-machine", log_dir()).exit, 0);
    write_file(dir() / "open", "{}");
    fs::permissions(dir() / "open", fs::perms(0644));
    const struct {
        std::vector<std::string> more;
        int exit;
        const char* said;
    } kCases[] = {
        {{"--map", dir() / "m"}, 2, "--map belongs to --redact"},
        {{"--redact", "all", "--map", dir() / "open"}, 1, "a map is its owner's alone"},
        {{"--redact", "all", "--map", recorded() / "m"},
         1,
         "a map does not belong into the recorded server"},
        {{"--redact", "all", "--map", log_dir() / "m"}, 1, "a map does not belong into the report"},
    };
    for (const auto& [more, exit, said] : kCases) {
        std::vector<std::string> arguments{"record", "--from", log_dir(), "--output", recorded()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto told = run(arguments);
        EXPECT_EQ(told.exit, exit);
        EXPECT_NE(told.err.find(said), std::string::npos) << told.err;
        EXPECT_FALSE(fs::exists(recorded()));
    }
}

// Tools name files after the server; an archive, which nobody looks into, is left out with its name.
TEST_F(Record, WithoutItsSecretsEachFileStillHasACommandThatWroteIt) {
    write_file(dir() / "machine" / "packed.txt", "packed on tower-of-jane\n");
    const json files{{"logs-of-tower-of-jane.txt", "packed.txt"},
                     {"tower-of-jane.txz", "packed.txt"}};
    write_file(dir() / "machine" / "machine.json",
               json{{"uname", "x86_64"},
                    {"host", "tower-of-jane"},
                    {"commands", json::array({{{"tool", "mv"}, {"files", files}}})}}
                   .dump());
    ASSERT_EQ(replay(dir() / "machine", log_dir()).exit, 0);
    const auto made =
        run({"record", "--from", log_dir(), "--output", recorded(), "--redact", "network"});
    ASSERT_EQ(made.exit, 0) << made.err;
    const auto told = machine();
    json written;
    for (const auto& command : told["commands"]) {
        if (command["tool"] == "mv") written = command["files"];
    }
    ASSERT_EQ(written.size(), 1u) << told;
    const std::string name = written.begin().key();
    const std::string host = told["host"];
    EXPECT_EQ(host.size(), std::string("tower-of-jane").size());
    EXPECT_EQ(name, "logs-of-" + host + ".txt");
    EXPECT_EQ(read_file(recorded() / written[name]), "packed on " + host + "\n");
    EXPECT_NE(told["not_known"].dump().find("it is an archive, which is not redacted"),
              std::string::npos);
    EXPECT_EQ(all_of(recorded()).find("tower-of-jane"), std::string::npos);
}

// A report may come from anybody.
TEST_F(Record, NothingOfThisMachineGetsIntoIt) {
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-kw120-debian12", log_dir()).exit, 0);
    write_file(dir() / "secret.txt", "of this machine");
    fs::remove(log_dir() / "dmesg.log");
    fs::create_symlink(dir() / "secret.txt", log_dir() / "dmesg.log");
    fs::create_directory_symlink(dir(), log_dir() / "way");
    fs::remove(log_dir() / "cpuinfo.log");
    ASSERT_EQ(::mkfifo((log_dir() / "cpuinfo.log").c_str(), 0600), 0);
    const auto log = log_dir().string();
    damage("UPDATE qv_command SET command = 'cat /proc/cmdline >''" + log +
           "/../secret.txt''' "
           "WHERE command LIKE 'cat /proc/cmdline%'");
    damage("UPDATE qv_command SET command = 'cat /proc/interrupts >''" + log +
           "/way/secret.txt''' "
           "WHERE command LIKE 'cat /proc/interrupts%'");
    for (const std::string name : {"../secret.txt", "way", "..", "."})
        damage("UPDATE qv_command SET captures = '" + name + "' WHERE command LIKE 'dmidecode >%'");
    damage("UPDATE qv_command SET captures = 'way' WHERE command LIKE 'dmesg%'");
    damage(
        "UPDATE qv_command SET exit = 4711, seconds = 1e300 WHERE command LIKE 'ipmitool sensor%'");
    damage(
        "UPDATE qv_command SET exit = NULL, signal = -9, seconds = -5 WHERE command LIKE 'ipmitool fru%'");
    damage("UPDATE qv_command SET command = '../../tool x >''" + log +
           "/a.txt''' "
           "WHERE command LIKE 'chmod%'");
    damage("UPDATE qv_command SET command = char(255) || ' ''unfinished $(touch " +
           (dir() / "touched").string() + ")' WHERE command LIKE 'dmidecode -t%'");
    const auto made = record();
    ASSERT_EQ(made.exit, 0) << made.err;
    EXPECT_EQ(all_of(recorded()).find("of this machine"), std::string::npos);
    EXPECT_FALSE(fs::exists(dir() / "touched"));
    const auto told = machine();
    for (const auto& one : told["commands"]) {
        EXPECT_LE(one.value("exit", 0), 255);
        EXPECT_GE(one.value("signal", 0), 0);
        EXPECT_LE(one.value("seconds", 0), 86400);
    }
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir()))
        names.insert(entry.path().filename().string());
    EXPECT_EQ(names.count("recorded"), 1u);
    EXPECT_EQ(std::count_if(names.begin(), names.end(),
                            [](const auto& name) { return name.starts_with("recorded."); }),
              0);
}

TEST_F(Record, AKillLeavesNoHalfServer) {
    ASSERT_EQ(replay(fs::path(QV_SAMPLES) / "x86_64-virtual-machine", log_dir()).exit, 0);
    write_file(log_dir() / "dmesg.log", std::string(std::size_t{64} << 20, 'x'));
    const auto is_begun = [&] {
        for (const auto& entry : fs::directory_iterator(dir())) {
            if (entry.path().filename().string().starts_with("recorded.")) return true;
        }
        return fs::exists(recorded());
    };
    const pid_t pid = start(Invocation{{"record", "--from", log_dir(), "--output", recorded()}});
    wait_until("it writes", is_begun);
    ::kill(pid, SIGKILL);
    finish(pid);
    if (fs::exists(recorded())) {
        EXPECT_EQ(replay(recorded(), again()).exit, 0) << "it was quicker";
    }
    fs::remove_all(recorded());

    // The disk is full, or a limit is reached.
    const auto limited = run(Invocation{
        .arguments = {"-c", "ulimit -f 1000; exec '" QV_PROGRAM "' record --from '" +
                                log_dir().string() + "' --output '" + recorded().string() + "'"},
        .program = {"/bin/bash"}});
    EXPECT_EQ(limited.exit, 1);
    EXPECT_NE(limited.err.find("File too large"), std::string::npos) << limited.err;
    EXPECT_FALSE(fs::exists(recorded()));
}

// A machine of scripts, at the head of the search path.
class RecordHere : public Record {
protected:
    void SetUp() override {
        Record::SetUp();
        script("dmidecode", "echo '\tProduct Name: KP220 Rack Server'; echo 'half' >&2");
        script("lsmod", "echo ipmi_devintf; exit 3");
        script("lspci", "echo '01:00.0 RAID bus controller: SAS2308'; kill -SEGV $$");
        script(
            "ipmitool",
            "case \"$*\" in\n"
            "sensor) echo 'A | 1 | degrees C | ok | na | na | na | na | na | na';"
            " echo nothing >&2; echo 'B | na | discrete | 0x0100 | na | na | na | na | na | na';;\n"
            "fru) echo half; exit 1;;\n"
            "*) echo \"no $*\"; exit 4;;\nesac");
        script("storcli64", "echo \"storcli $*\"");
        script(
            "sas2ircu",
            "case \"$*\" in *upload) echo 'on the console'; echo uploaded >logir.log; sleep 1.1;; esac");
        script("service", "exit 0");
        script("supportconfig", "exit 1");
        script("hostname", "echo recorded");
        for (const std::string name : {"dmesg", "smartctl", "lsblk", "modprobe"})
            script(name, "echo");
    }
    void script(const std::string& name, const std::string& text) const {
        const auto file = dir() / "path" / name;
        write_file(file, "#!/bin/sh\n" + text + "\n");
        fs::permissions(file.parent_path(), fs::perms::owner_all);
        fs::permissions(file, fs::perms::owner_all);
    }
    Outcome here(std::vector<std::string> arguments) {
        fs::create_directories(dir() / "temporary");
        Invocation invocation{.arguments = std::move(arguments)};
        invocation.environment = {{"PATH", (dir() / "path").string() + ":" + std::getenv("PATH")},
                                  {"TMPDIR", (dir() / "temporary").string()}};
        const auto outcome = run(invocation);
        EXPECT_TRUE(fs::is_empty(dir() / "temporary")) << "nothing is left behind";
        EXPECT_EQ(family(), std::vector<pid_t>());
        return outcome;
    }
    Outcome record_here(const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"record",    "--output", recorded(),
                                           "--log-dir", log_dir(),  "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return here(arguments);
    }
    json entry(const std::string& tool, const std::string& arguments) const {
        const auto made = machine();
        for (const auto& one : made["commands"]) {
            if (one["tool"] == tool && one.value("args", "any") == arguments) return one;
        }
        ADD_FAILURE() << tool << " " << arguments << " is not recorded";
        return json::object();
    }
    std::string file(const json& name) const { return read_file(recorded() / name); }
};

// Times and the machine's own words change from run to run.
std::vector<std::string> lasting(const std::vector<std::string>& told) {
    std::vector<std::string> lines;
    for (const auto& line : told) {
        if (line.find("uptime") == std::string::npos) lines.push_back(line);
    }
    return lines;
}

TEST_F(RecordHere, ThisMachineGivesTheSameReportElsewhere) {
    const auto made = record_here();
    EXPECT_EQ(made.exit, 0) << made.err;
    EXPECT_NE(made.out.find("replayed: the same commands, records, inventory and findings\n"),
              std::string::npos)
        << made.out;
    EXPECT_EQ(made.out.find("not known"), std::string::npos) << made.out;
    const auto second = replay(recorded(), again());
    EXPECT_EQ(difference(told_by(log_dir()), told_by(again())), "") << second.err;

    // What pipes and the console took, and how tools ended in a pipe.
    EXPECT_EQ(entry("lspci", "")["signal"], 11);
    EXPECT_EQ(entry("lsmod", "")["exit"], 3);
    EXPECT_EQ(file(entry("dmidecode", "-t system")["stdout"]),
              "\tProduct Name: KP220 Rack Server\nhalf\n");
    EXPECT_EQ(entry("dmidecode", "")["stderr"], "half\n");
    EXPECT_EQ(file(entry("sas2ircu", "0 logir upload")["stdout"]), "on the console\n");
    EXPECT_EQ(entry("sas2ircu", "0 logir upload")["seconds"], 1);
    EXPECT_EQ(file(entry("sas2ircu", "0 logir upload")["files"]["logir.log"]), "uploaded\n");
    EXPECT_EQ(entry("ipmitool", "fru")["exit"], 1);
    EXPECT_EQ(file(entry("storcli", "/c0 show")["stdout"]), "storcli /c0 show\n");
    EXPECT_EQ(entry("service", "ipmi start"), json({{"tool", "service"}, {"args", "ipmi start"}}));

    // Whoever is watched says what it says otherwise.
    const auto unwatched = dir() / "unwatched";
    here({"collect", "--log-dir", unwatched, "--quiet"});
    EXPECT_EQ(difference(lasting(told_by(unwatched)), lasting(told_by(log_dir()))), "");
}

TEST_F(RecordHere, WhatDoesNotReplayTheSameIsTold) {
    // Two modules ask it, and each gets another answer.
    const auto asked = dir().string() + "/asked";
    script("storcli64", "echo >>'" + asked +
                            "'; sed \"s/^Serial Number = .*/Serial Number = $(wc -l <'" + asked +
                            "')/\" '" QV_SAMPLES "/x86_64-kp220-healthy/c0_show.txt'");
    const auto map = dir() / "map";
    const auto made = record_here({"--redact", "all", "--map", map});
    EXPECT_EQ(made.exit, 3) << made.out;
    EXPECT_NE(made.err.find("qvhost: it does not replay the same: "), std::string::npos)
        << made.err;
    EXPECT_TRUE(fs::exists(recorded() / "machine.json"));
    EXPECT_EQ(all_of(recorded()).find("500605b000002230"), std::string::npos);
    EXPECT_NE(replacements_of(map).at("hex 500605b000002230"), "500605b000002230");
}

TEST_F(RecordHere, AMapThatCannotBeUsedIsToldBeforeAnythingIsAsked) {
    const auto map = dir() / "map";
    write_file(map, "{}");
    fs::permissions(map, fs::perms(0600));
    const auto made = record_here({"--redact", "all", "--map", map});
    EXPECT_EQ(made.exit, 1);
    EXPECT_NE(made.err.find("it is no map of a redaction"), std::string::npos) << made.err;
    EXPECT_FALSE(fs::exists(log_dir()));
}

TEST_F(RecordHere, AToolThatNeverEndsDoesNotEndInAReplay) {
    script("dmesg", "echo half a line; sleep 1000");
    const auto made = record_here({"--tool-timeout", "3"});
    EXPECT_EQ(made.exit, 0) << made.err;
    EXPECT_EQ(entry("dmesg", "")["seconds"], 86400);
    EXPECT_EQ(file(entry("dmesg", "")["stdout"]), "half a line\n");
}

TEST_F(RecordHere, AnOutputThatCannotBeMadeIsToldAtOnce) {
    const auto made = here({"record", "--output", dir() / "none" / "recorded", "--quiet"});
    EXPECT_EQ(made.exit, 1);
    EXPECT_NE(made.err.find("cannot make a directory beside it"), std::string::npos) << made.err;
    EXPECT_EQ(here({"record", "--output", recorded(), "--from", log_dir(), "--also", "pmc"}).exit,
              2)
        << "a report is collected already";
}

}  // namespace

}  // namespace test
