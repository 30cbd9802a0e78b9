#include "qvhost/present/list_runs.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "findings/finding.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/finish/runs.h"
#include "show/terminal.h"
#include "show/text_table.h"
#include "store/store.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using findings::Severity;

std::string count_of(const std::vector<findings::Finding>& findings, Severity severity) {
    return std::to_string(std::count_if(findings.begin(), findings.end(),
                                        [&](const auto& one) { return one.severity == severity; }));
}

std::int64_t records_in(const Store& store) {
    std::int64_t records = 0;
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) records += table.records;
    }
    return records;
}

// `name` is the place, seen from the log directory.
std::vector<std::string> row_of(const fs::path& place, const std::string& name) {
    const LogDir dir(place);
    const auto told = [&](std::string status) {
        return std::vector<std::string>{"", std::move(status), "", "", "", name};
    };
    try {
        const Store store(dir.store(), Store::Mode::read);
        if (fs::exists(dir.journal())) {
            auto row = told(DirLock::is_held(place) ? "running" : "broken off");
            row.front() = store.meta("started");
            return row;
        }
        const auto found = read_verdict(store).findings;
        return {store.meta("started"),
                store.meta("status"),
                std::to_string(records_in(store)),
                count_of(found, Severity::critical),
                count_of(found, Severity::warning),
                name};
    } catch (const std::runtime_error& error) {
        return told(error.what());
    }
}

}  // namespace

void list_runs(const fs::path& log_dir) {
    std::vector<std::vector<std::string>> rows;
    if (fs::is_directory(LogDir(log_dir).report())) rows.push_back(row_of(log_dir, "."));
    for (const auto& run : earlier_runs(log_dir))
        rows.push_back(row_of(run, run.lexically_relative(log_dir).string()));
    if (rows.empty()) throw std::runtime_error(log_dir.string() + ": there is no collection");
    print_table(std::cout, {"Started", "Status", "Records", "Critical", "Warning", "Report"}, rows,
                terminal_style(STDOUT_FILENO));
}

}  // namespace qvhost
