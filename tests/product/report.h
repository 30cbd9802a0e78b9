// What a collection left, for comparison.
#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace test {

// report.json of a log directory, its keys in their order.
nlohmann::ordered_json report_json(const std::filesystem::path& log_dir);

// Record counts by table, as the store has them; a store that does not pass SQLite's own check
// fails the test.
std::map<std::string, int> counts(const std::filesystem::path& store);

// Why tables are empty, as the store has it.
std::map<std::string, std::string> reasons(const std::filesystem::path& store);

// The values of the property "value" of a table's records, in order.
std::vector<std::string> values(const std::filesystem::path& store, const std::string& table);

std::string meta(const std::filesystem::path& store, const std::string& key);

inline std::filesystem::path store_in(const std::filesystem::path& log_dir) {
    return log_dir / "report" / "report.sqlite";
}

// The texts of the log, without time, level and place.
std::vector<std::string> log_texts(const std::filesystem::path& log_dir);

// Of that what the modules collected, which is the same for each collection of a machine: the throw-away
// directory has one name.
nlohmann::ordered_json collected(const std::filesystem::path& log_dir);

// All that a collection says, a line each: its commands, modules, records, inventory, findings, health and the machine.
// Times are left out; the log directory and the throw-away one have one name.
std::vector<std::string> told_by(const std::filesystem::path& log_dir);

// The first lines that differ; empty: none.
std::string difference(const std::vector<std::string>& one, const std::vector<std::string>& other);

// A report.json as a person reads it: modules and layouts as they are, and records a line each, their
// values under one heading as long as table, name, ids and labels stay the same. Nothing is left out.
std::string condensed(const std::string& report_json);

// Its health and findings: "storage: ok (c0_showall.txt)" and what is missing below it; each finding a line
// with the place that tells it first.
std::string verdict(const std::string& report_json);

}  // namespace test
