#include "qvhost/present/report.h"

#include <unistd.h>

#include <iostream>
#include <ostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "qvhost/collect/log_dir.h"
#include "qvhost/complete/recover.h"
#include "qvhost/present/pager.h"
#include "show/show_table.h"
#include "show/terminal.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

fs::path store_of(const fs::path& report) {
    if (!fs::is_directory(report)) return report;
    const LogDir dir(report);
    if (fs::exists(dir.journal()) && !DirLock::is_held(report)) {
        if (const auto reason = why_not_ours(dir); !reason.empty())
            throw std::runtime_error(report.string() +
                                     ": a collection was broken off here, and its report cannot be "
                                     "completed: " +
                                     reason);
        const DirLock lock(report);
        std::cerr << "qvhost: found " << one_line(recover(dir)) << '\n';
    }
    return dir.store();
}

using Shown = std::pair<const ModuleInfo*, const TableInfo*>;

std::vector<Shown> all_tables(const std::vector<ModuleInfo>& modules) {
    std::vector<Shown> chosen;
    for (const bool with_records : {true, false}) {
        for (const auto& module : modules) {
            for (const auto& table : module.tables) {
                if ((table.records > 0) == with_records) chosen.emplace_back(&module, &table);
            }
        }
    }
    return chosen;
}

Shown find_table(const std::vector<ModuleInfo>& modules, const std::string& name) {
    for (const auto& module : modules) {
        for (const auto& table : module.tables) {
            if (table.id == name) return {&module, &table};
        }
    }
    return {};
}

}  // namespace

Report open_report(const fs::path& report) {
    const auto file = store_of(report);
    Report opened{file, Store(file, Store::Mode::read)};
    const auto status = opened.store.meta("status");
    if (status.starts_with("incomplete"))
        std::cerr << "qvhost: this collection is " << one_line(status) << '\n';
    return opened;
}

void show_report(const ShowOptions& options) {
    const auto report = open_report(options.report);
    const auto modules = report.store.modules();
    std::vector<Shown> chosen;
    for (const auto& name : options.tables) {
        chosen.push_back(find_table(modules, name));
        if (!chosen.back().second)
            throw std::runtime_error(options.report.string() + ": there is no table " + name);
    }
    if (options.tables.empty()) chosen = all_tables(modules);

    const auto style = terminal_style(STDOUT_FILENO);
    page(!options.no_pager, [&](std::ostream& out) {
        const char* separator = "";
        for (const auto& [module, table] : chosen) {
            out << separator;
            separator = "\n";
            show_table(out, report.store, *module, *table, style);
        }
    });
}

}  // namespace qvhost
