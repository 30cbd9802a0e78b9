#include "qvhost/present/show.h"

#include <unistd.h>

#include <ostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "qvhost/present/open_report.h"
#include "qvhost/present/pager.h"
#include "show/show_table.h"
#include "show/terminal.h"

namespace qvhost {

namespace {

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
    print_paged(!options.no_pager, [&](std::ostream& out) {
        const char* separator = "";
        for (const auto& [module, table] : chosen) {
            out << separator;
            separator = "\n";
            show_table(out, report.store, *module, *table, style);
        }
    });
}

}  // namespace qvhost
