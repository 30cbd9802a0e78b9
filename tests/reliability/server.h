// A server with a RAID controller whose storcli is a script of the test's: qvhost in a directory of its
// own, as it is installed, collects from it for real.
#pragma once

#include "program.h"
#include "report.h"

namespace test {

class ServerTest : public ProductTest {
protected:
    void SetUp() override;

    // What storcli does when it is asked for the events, as a shell script; otherwise it answers as the
    // recorded server did.
    void events_do(const std::string& script);

    // Collects the storage tables into log_dir().
    Invocation collecting(const std::vector<std::string>& more = {}) const;
    Outcome collect_storage(const std::vector<std::string>& more = {});

    // The records of all tables but the event log, as report.json has them.
    static nlohmann::ordered_json others(const std::filesystem::path& log_dir);

    // Why a table is empty or partial.
    static std::string reason(const std::filesystem::path& log_dir, const std::string& table);

    // The text without the build of a tool, which is the system's: "storcli" of "storcli_x64".
    static std::string without_build(const std::string& text);

    // Why commands with these words did not end well, of the last one.
    static std::string outcome(const std::filesystem::path& log_dir, const std::string& words);

    std::filesystem::path tools() const { return dir() / "server" / "bin" / "qv_tools"; }

    // storcli for either word size: which is asked for is this machine's affair.
    std::vector<std::filesystem::path> builds() const {
        return {tools() / "storcli_x32", tools() / "storcli_x64"};
    }
};

}  // namespace test
