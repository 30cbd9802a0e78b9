#include "report_under_test.h"

#include <algorithm>

#include "store/store.h"

namespace test {

namespace fs = std::filesystem;

fs::path ReportTest::store_with(const std::vector<qvhost::Record>& records) const {
    const auto file = dir() / "store.sqlite";
    qvhost::Store store(file, qvhost::Store::Mode::create);
    store.add_module("M", "Module");
    for (const char* table : {"T", "EMPTY"}) {
        store.add_table("M", table);
        store.set_layout(table, qvhost::RowLayout{{"a", "b"}, {50, 50}, false});
    }
    store.set_reason("EMPTY", "nothing to report");
    for (const auto& one : records) store.add(one);
    store.set_meta("status", "complete");
    store.commit();
    return file;
}

fs::path ReportTest::replayed(const std::string& machine) {
    const auto log = dir() / machine;
    // Some recorded tools hang.
    const auto outcome = run({"replay", fs::path(QV_SAMPLES) / machine, "--log-dir", log,
                              "--tool-timeout", "5", "--quiet"});
    EXPECT_EQ(outcome.exit, is_incomplete(machine) ? 3 : 0) << outcome.err;
    return log;
}

// Tools that hang, and a module of which every tool fails.
bool is_incomplete(const std::string& machine) {
    return machine == "x86_64-kp110-storage-faults" || machine == "x86_64-kp120-tools-killed";
}

qvhost::Record record(std::vector<qvhost::Property> properties) {
    return {"T", "name", -1, std::move(properties)};
}

std::vector<std::string> recorded_servers() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(QV_SAMPLES)) {
        if (fs::exists(entry.path() / "machine.json")) names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace test
