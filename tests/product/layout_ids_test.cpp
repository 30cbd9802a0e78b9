// The ids that records have and the ids that their tables lay out agree, both ways, over all recorded
// servers. The reports are the accepted ones, which sample_test.cpp holds against real collections.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Ids = std::set<std::string>;

struct Tables {
    std::map<std::string, Ids> laid_out;
    std::map<std::string, Ids> filed;
};

// Takes the JSON text in quotes that `line` begins with off it.
std::string take_text(std::string_view& line) {
    std::size_t end = 1;
    while (line.at(end) != '"') end += line.at(end) == '\\' ? 2u : 1u;
    const auto text = nlohmann::json::parse(line.substr(0, end + 1)).get<std::string>();
    line.remove_prefix(end + 1);
    return text;
}

// What condensed() writes:
//     "BMC_Info" "BMC information"
//         {"id":"SELFINFO","layout":{"kind":"columns","headers":["self1"],"width":30,"count":1}}
//
//     SELFINFO "QVM Selftest" -1: "self1"="Selftest"
//     [" passed"]
void read(const std::string& report, Tables& tables) {
    for (const auto& text : lines_of(report)) {
        std::string_view line = text;
        if (line.starts_with("status: ")) return;  // behind the records
        if (line.starts_with("    {")) {
            const auto table = nlohmann::json::parse(line);
            const auto headers = table.at("layout").at("headers").get<std::vector<std::string>>();
            tables.laid_out[table.at("id")].insert(headers.begin(), headers.end());
        } else if (!line.empty() && line.front() != '"' && line.front() != '[') {
            const auto blank = line.find(' ');
            auto& ids = tables.filed[std::string(line.substr(0, blank))];
            line.remove_prefix(blank + 1);
            take_text(line);
            line.remove_prefix(line.find(':') + 1);
            while (!line.empty()) {
                line.remove_prefix(1);
                ids.insert(take_text(line));
                line.remove_prefix(1);
                take_text(line);
            }
        }
    }
}

using Differences = std::map<std::string, std::vector<std::string>>;

Differences left_over(const std::map<std::string, Ids>& from,
                      const std::map<std::string, Ids>& of) {
    Differences found;
    for (const auto& [table, ids] : from) {
        const auto others = of.find(table);
        for (const auto& id : ids) {
            if (others == of.end() || !others->second.contains(id)) found[table].push_back(id);
        }
    }
    return found;
}

using LayoutIds = ProductTest;

TEST_F(LayoutIds, AgreeWithTheRecordsOfAllRecordedServers) {
    Tables tables;
    int servers = 0;
    for (const auto& entry : fs::directory_iterator(QV_EXPECTED)) {
        read(read_file(entry.path()), tables);
        ++servers;
    }
    EXPECT_GE(servers, 15);
    // No module calls the reader of these tables; the plug-in exports it.
    const auto outcome = run({"replay", fs::path(QV_SAMPLES) / "x86_64-kn100-adaptec", "--log-dir",
                              log_dir(), "--module", "sampleModule1", "--also", "pmc", "--quiet"});
    ASSERT_EQ(outcome.exit, 0) << outcome.err;
    read(condensed(read_file(log_dir() / "report" / "report.json")), tables);

    // The views of labels and values show fewer rows than an answer can have, on purpose: nine of twelve
    // for the controller, one of two for the self-test, six of twelve for the LAN.
    EXPECT_EQ(left_over(tables.filed, tables.laid_out), (Differences{
                                                            {"LANINFO", {"LAN7", "LAN8"}},
                                                            {"MCINFO", {"MC10"}},
                                                            {"SELFINFO", {"self2"}},
                                                        }));

    // These tables are laid out, and nothing in the plug-in fills them.
    auto never_filed = left_over(tables.laid_out, tables.filed);
    for (const char* table : {"AMTLOG", "ARPINFO", "ARRAY", "CONTROLLER", "ENDDEVICEINFO",
                              "NETSTATINFO", "PELADDTABLE", "VOLUME"}) {
        EXPECT_FALSE(tables.filed.contains(table)) << table;
        EXPECT_EQ(never_filed.erase(table), 1u) << table;
    }
    // No recorded controller has so many events.
    for (const char* table : {"EVENTLOG3", "EVENTLOG4", "EVENTLOG5"}) {
        EXPECT_FALSE(tables.filed.contains(table)) << table;
        EXPECT_EQ(never_filed.erase(table), 1u) << table;
        EXPECT_EQ(tables.laid_out[table], tables.filed["EVENTLOG1"]) << table;
    }
    EXPECT_EQ(never_filed, Differences());
}

}  // namespace

}  // namespace test
