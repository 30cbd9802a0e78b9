#include "report.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include "program.h"
#include "store/store.h"

namespace test {

namespace fs = std::filesystem;

nlohmann::ordered_json report_json(const fs::path& log_dir) {
    return nlohmann::ordered_json::parse(read_file(log_dir / "report" / "report.json"));
}

std::map<std::string, int> counts(const fs::path& store) {
    SQLite::Database db(store.string());
    EXPECT_EQ(db.execAndGet("PRAGMA integrity_check").getString(), "ok");
    std::map<std::string, int> found;
    for (const auto& module : qvhost::Store(store, qvhost::Store::Mode::read).modules()) {
        for (const auto& table : module.tables) found[table.id] = static_cast<int>(table.records);
    }
    return found;
}

std::map<std::string, std::string> reasons(const fs::path& store) {
    std::map<std::string, std::string> found;
    for (const auto& module : qvhost::Store(store, qvhost::Store::Mode::read).modules()) {
        for (const auto& table : module.tables) {
            if (table.records == 0) found[table.id] = table.reason;
        }
    }
    return found;
}

std::vector<std::string> values(const fs::path& store, const std::string& table) {
    std::vector<std::string> found;
    qvhost::Store(store, qvhost::Store::Mode::read)
        .each_record(table, [&](const qvhost::Record& record) {
            for (const auto& property : record.properties) {
                if (property.id == "value") found.push_back(std::get<std::string>(property.value));
            }
        });
    return found;
}

std::string meta(const fs::path& store, const std::string& key) {
    return qvhost::Store(store, qvhost::Store::Mode::read).meta(key);
}

std::vector<std::string> log_texts(const fs::path& log_dir) {
    std::vector<std::string> texts;
    for (const auto& line : lines_of(read_file(log_dir / "qvhost.log")))
        texts.push_back(line.substr(line.find("[repo] ") + 7));
    return texts;
}

}  // namespace test
