#include "report.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <boost/algorithm/string/replace.hpp>

#include "expressions.h"
#include "program.h"
#include "store/store.h"

namespace test {

namespace fs = std::filesystem;

nlohmann::ordered_json report_json(const fs::path& log_dir) {
    return nlohmann::ordered_json::parse(read_file(log_dir / "report" / "report.json"));
}

nlohmann::ordered_json collected(const fs::path& log_dir) {
    const auto text = read_file(log_dir / "report" / "report.json");
    const auto report =
        nlohmann::ordered_json::parse(replaced(text, "qvhost-run-[A-Za-z0-9]{6}", "qvhost-run"));
    return {{"modules", report["modules"]}, {"records", report["records"]}};
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
    // "2026-11-21T01:20:40.123Z 3 qvmodules/rbmcinfo:123 [repo] Enter EnumBMCInstances"
    const std::string place = "^[^ ]* [0-9] [^ ]* (\\[repo\\] )?";
    for (const auto& line : lines_of(read_file(log_dir / "qvhost.log")))
        texts.push_back(replaced(line, place, ""));
    return texts;
}

std::vector<std::string> told_by(const fs::path& log_dir) {
    std::vector<std::string> lines;
    const auto add = [&](std::string line) {
        boost::replace_all(line, log_dir.string(), "LOG");
        lines.push_back(replaced(line, "[^ '\"]*/qvhost-(replay|run|test)-\\w{6}/", "PLACE/"));
    };
    for (const auto& one : qvhost::Store(store_in(log_dir), qvhost::Store::Mode::read).commands()) {
        nlohmann::ordered_json line = {{"origin", one.origin},
                                       {"text", one.text},
                                       {"tool", one.tool},
                                       {"exit", one.exit.value_or(-1)},
                                       {"signal", one.signal.value_or(-1)},
                                       {"stopped_by", one.stopped_by},
                                       {"captures", one.captures},
                                       {"stderr", one.standard_error},
                                       {"remark", one.remark},
                                       {"is_started", one.started.has_value()}};
        add(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    }
    auto report = report_json(log_dir);
    for (const char* part : {"modules", "records", "findings", "health"}) {
        for (const auto& one : report[part]) add(std::string(part) + " " + one.dump());
    }
    for (const auto& [kind, entities] : report["inventory"].items()) {
        for (const auto& one : entities) add(kind + " " + one.dump());
    }
    for (const char* time : {"started", "finished", "seconds"}) report["collection"].erase(time);
    add(report["collection"].dump());
    return lines;
}

std::string difference(const std::vector<std::string>& one, const std::vector<std::string>& other) {
    const auto [at, there] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    if (at == one.end() && there == other.end()) return "";
    return (at == one.end() ? "nothing" : *at) + "\n" + (there == other.end() ? "nothing" : *there);
}

std::string condensed(const std::string& report_json) {
    const auto report = nlohmann::ordered_json::parse(report_json);
    std::string text;
    for (const auto& module : report.at("modules")) {
        text += module.at("name").dump() + " " + module.at("display").dump() + "\n";
        for (const auto& table : module.at("tables")) text += "    " + table.dump() + "\n";
    }
    std::string heading;
    for (const auto& record : report.at("records")) {
        std::string of_this = "\n" + record.at("table").get<std::string>() + " " +
                              record.at("name").dump() + " " + record.at("index").dump() + ":";
        auto values = nlohmann::ordered_json::array();
        for (const auto& property : record.at("properties")) {
            of_this += " " + property.at("id").dump() + "=" + property.at("display").dump();
            values.push_back(property.at("value"));
        }
        if (of_this != heading) text += of_this + "\n";
        heading = of_this;
        text += values.dump() + "\n";
    }
    return text;
}

std::string verdict(const std::string& report_json) {
    const auto report = nlohmann::ordered_json::parse(report_json);
    std::string text =
        "\nstatus: " + report.at("collection").at("status").get<std::string>() + "\n\nhealth:\n";
    const auto str = [](const nlohmann::ordered_json& value) { return value.get<std::string>(); };
    for (const auto& one : report.at("health")) {
        text += str(one.at("subsystem")) + ": " + str(one.at("health"));
        std::string captures;
        for (const auto& capture : one.at("judged_by"))
            captures += (captures.empty() ? " (" : ", ") + str(capture);
        text += captures + (captures.empty() ? "\n" : ")\n");
        for (const auto& missing : one.at("missing"))
            text += "    missing: " + missing.dump() + "\n";
    }
    text += "\nfindings:\n";
    for (const auto& one : report.at("findings")) {
        text += str(one.at("severity")) + " " + one.at("id").dump() + " " +
                one.at("subject").dump() + " " + one.at("says").dump();
        if (!one.at("evidence").empty()) {
            const auto& place = one.at("evidence").front();
            text += " " + place.at("capture").dump() + " line " + place.at("line").dump();
        }
        text += "\n";
    }
    // Commands name directories that are others in each run.
    return replaced(text, "[^ '\"]*/qvhost-(replay|test)-\\w{6}/", "");
}

}  // namespace test
