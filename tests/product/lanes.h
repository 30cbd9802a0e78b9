// A recorded server from which qvhost collects for real, in two lanes: its tools are scripts beside the program and at
// the head of the search path. The controllers' modules are lane 1, that of the BMC lane 2.
#pragma once

#include <set>

#include "program.h"
#include "report.h"
#include "store/command_info.h"

namespace test {

std::filesystem::path sample(const std::string& name);
std::vector<std::filesystem::path> samples();

// The tables of the module that talks to the BMC, and those of the others, in x86_64-kp220-healthy.
inline const std::set<std::string> kOfBmc{"MCINFO", "SENSORINFO", "FRUINFO", "SELINFO"};
inline const std::set<std::string> kOfControllers{"RAIDINFO", "EVENTLOG1", "PDLIST", "LSILINK"};

class LanesTest : public ProductTest {
protected:
    void become(const std::filesystem::path& machine);

    // Puts a script in a tool's place. {OLD} in it is what stood there.
    void is(const std::string& tool, std::string script);
    void storcli_is(const std::string& script);

    Invocation collecting(const std::vector<std::string>& more = {}) const;

    std::vector<qvhost::CommandInfo> commands() const;

    // In which lanes commands were started.
    std::set<int> lanes() const;

    // What must not depend on the lanes.
    struct Told {
        nlohmann::ordered_json collected;
        std::vector<std::string> log;
        std::string console;
        std::vector<std::string> commands;  // with how they ended and the files that they wrote
        std::string status;
        std::map<std::string, std::string> reasons;
        bool operator==(const Told&) const = default;
    };
    Told told() const;

    // The collecting process of a lane; 0: there is none.
    pid_t lane(unsigned number) const;

    // Whether a tool with this name runs.
    bool runs(const std::string& name) const;

    // A script that says that it is there, and waits to be let on.
    std::string stops_at(const std::string& name) const;
    void wait_for(const std::string& name) const;
    void let_go(const std::string& name) const;

    // Both lanes stop in the middle: the controller has told its summary, the BMC its identity.
    void both_stop();
    pid_t start_and_stop();

    // Of each table there is the beginning of what a whole collection has; of those in `all` everything.
    void expect_part_of(const nlohmann::ordered_json& whole,
                        const std::set<std::string>& all) const;

    // Nothing of what lanes have each for itself is left.
    void expect_one_report() const;

    std::filesystem::path server() const { return dir() / "server"; }
    std::filesystem::path tools() const { return server() / "bin" / "qv_tools"; }
    std::filesystem::path path() const { return server() / "path"; }
};

}  // namespace test
