#include "lanes.h"

#include <algorithm>

#include "qvhost/base/declared_tables.h"
#include "qvhost/replay/machine.h"
#include "qvhost/replay/stand_ins.h"
#include "store/store.h"

namespace test {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using qvhost::CommandInfo;
using qvhost::Store;

namespace {

constexpr const char* kPlugin = "librepository_qvmodule.so";

std::set<std::string> all_tools() {
    std::set<std::string> names{"sosreport", "supportconfig", "modprobe"};
    for (const auto& machine : samples()) {
        for (const auto& command : qvhost::read_machine(machine).commands)
            names.insert(command.tool);
    }
    return names;
}

}  // namespace

fs::path sample(const std::string& name) { return fs::path(QV_SAMPLES) / name; }

std::vector<fs::path> samples() {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(QV_SAMPLES)) {
        if (fs::exists(entry.path() / "machine.json")) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

void LanesTest::become(const fs::path& machine) {
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

void LanesTest::is(const std::string& tool, std::string script) {
    const auto file = tool.starts_with("path/") ? server() / tool : tools() / tool;
    const auto old = file.string() + ".old";
    if (fs::exists(file)) fs::rename(file, old);
    for (auto at = script.find("{OLD}"); at != std::string::npos; at = script.find("{OLD}"))
        script.replace(at, 5, "'" + old + "' \"$@\"");
    write_file(file, "#!/bin/sh\n" + script + "\n");
    fs::permissions(file, fs::perms::owner_all);
}

void LanesTest::storcli_is(const std::string& script) {
    for (const char* build : {"storcli_x32", "storcli_x64"}) is(build, script);
}

Invocation LanesTest::collecting(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments{"collect", "--log-dir",      log_dir(),
                                       "--quiet", "--plug-in-only", "--no-compat"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return {.arguments = arguments,
            .environment = {{"PATH", path().string()}},
            .program = {server() / "bin" / "qvhost"}};
}

std::vector<CommandInfo> LanesTest::commands() const {
    return Store(store_in(log_dir()), Store::Mode::read).commands();
}

std::set<int> LanesTest::lanes() const {
    std::set<int> lanes;
    for (const auto& command : commands()) lanes.insert(command.lane);
    return lanes;
}

LanesTest::Told LanesTest::told() const {
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

pid_t LanesTest::lane(unsigned number) const {
    const auto journal = number == 1 ? std::string("/collection.journal")
                                     : "/collection-" + std::to_string(number) + ".journal";
    for (const pid_t pid : family()) {
        const auto proc = "/proc/" + std::to_string(pid);
        if (read_file(proc + "/cmdline").find("collecting-child") == std::string::npos) continue;
        std::error_code error;
        for (fs::directory_iterator fd(proc + "/fd", error), end; !error && fd != end;
             fd.increment(error)) {
            std::error_code gone;
            if (fs::read_symlink(fd->path(), gone).string().ends_with(journal)) return pid;
        }
    }
    return 0;
}

bool LanesTest::runs(const std::string& name) const {
    const auto all = family();
    return std::any_of(all.begin(), all.end(), [&](pid_t pid) {
        return read_file("/proc/" + std::to_string(pid) + "/cmdline").find(name) !=
               std::string::npos;
    });
}

std::string LanesTest::stops_at(const std::string& name) const {
    return ": >'" + (dir() / (name + "_is_there")).string() + "'; while [ ! -e '" +
           (dir() / (name + "_may_go")).string() + "' ]; do /bin/sleep 0.01; done\n";
}

void LanesTest::wait_for(const std::string& name) const {
    wait_until(name, [&] { return fs::exists(dir() / (name + "_is_there")); });
}

void LanesTest::let_go(const std::string& name) const {
    write_file(dir() / (name + "_may_go"), "");
}

void LanesTest::both_stop() {
    become(sample("x86_64-kp220-healthy"));
    storcli_is("[ \"$*\" != '/c0 show events' ] || { " + stops_at("storcli") + "}\n{OLD}");
    is("path/ipmitool", "[ \"$1\" != sensor ] || { " + stops_at("ipmitool") + "}\n{OLD}");
}

pid_t LanesTest::start_and_stop() {
    for (const char* name : {"storcli_is_there", "ipmitool_is_there"}) fs::remove(dir() / name);
    const pid_t program = start(collecting());
    wait_for("storcli");
    wait_for("ipmitool");
    return program;
}

void LanesTest::expect_part_of(const ordered_json& whole, const std::set<std::string>& all) const {
    std::map<std::string, ordered_json> found;
    std::map<std::string, ordered_json> expected;
    const auto told = collected(log_dir());
    for (const auto& record : told["records"]) found[record["table"]].push_back(record);
    for (const auto& record : whole["records"]) expected[record["table"]].push_back(record);
    for (const auto& [table, records] : found) {
        ASSERT_LE(records.size(), expected[table].size()) << table;
        for (std::size_t i = 0; i < records.size(); ++i)
            ASSERT_EQ(records[i], expected[table][i]) << table << " " << i;
    }
    for (const auto& table : all) EXPECT_EQ(found[table], expected[table]) << table;
}

void LanesTest::expect_one_report() const {
    counts(store_in(log_dir()));  // passes SQLite's own check
    for (const char* left : {"collection.journal", "collection-2.journal", "commands.log",
                             "commands-2.log", "qvhost-2.log", "console-2.txt"})
        EXPECT_FALSE(fs::exists(log_dir() / "report" / left)) << left;
}

}  // namespace test
