#include "qvhost/tables.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "qvhost/ambient.h"
#include "qvhost/log_dir.h"
#include "qvhost/plugin.h"
#include "qvhost/recover.h"
#include "repository/sink.h"
#include "show/show_table.h"
#include "show/terminal.h"
#include "show/text_table.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using marlox::repository::RInstancesWrapper;

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const auto& text : texts) all += (all.empty() ? "" : " ") + text;
    return all;
}

std::string layout_text(const Layout& layout) {
    if (const auto* columns = std::get_if<ColumnLayout>(&layout))
        return "header column: " + joined(columns->headers);
    if (const auto* rows = std::get_if<RowLayout>(&layout))
        return "header row: " + joined(rows->headers);
    return "no layout";
}

// A directory whose collection was killed gets its store completed first, if nobody is at it.
fs::path store_of(const fs::path& report) {
    if (!fs::is_directory(report)) return report;
    const LogDir dir(report);
    if (fs::exists(dir.journal()) && !DirLock::is_held(report)) {
        const DirLock lock(report);
        std::cerr << "qvhost: found " << recover(dir) << '\n';
    }
    return dir.store();
}

}  // namespace

void list_tables(const fs::path& plugin) {
    const Plugin loaded(plugin.empty() ? installed_plugin() : plugin);
    std::vector<std::vector<std::string>> rows;
    for (const auto& module : loaded.modules()) {
        module->InitCallbacks();
        auto title = module->GetName();
        for (const auto& [table, callbacks] : module->callbacks) {
            RInstancesWrapper::Impl layout;
            RInstancesWrapper wrapper(layout);
            callbacks.wrap(wrapper);
            rows.push_back({title, table, layout_text(layout.layout)});
            title.clear();
        }
    }
    const auto style = terminal_style(STDOUT_FILENO);
    const TextTable text(columns_for({"Module", "Table", "Layout"}, rows, style), style);
    text.print_header(std::cout);
    for (const auto& row : rows) text.print_row(std::cout, row);
}

void show_report(const fs::path& report, const std::vector<std::string>& tables) {
    const Store store(store_of(report), Store::Mode::read);
    const auto style = terminal_style(STDOUT_FILENO);
    const auto modules = store.modules();

    for (const auto& name : tables) {
        const bool known = std::any_of(modules.begin(), modules.end(), [&](const auto& module) {
            return std::any_of(module.tables.begin(), module.tables.end(),
                               [&](const auto& table) { return table.id == name; });
        });
        if (!known) throw std::runtime_error(report.string() + ": there is no table " + name);
    }
    const auto status = store.meta("status");
    if (status.starts_with("incomplete"))
        std::cerr << "qvhost: this collection is " << status << '\n';

    const char* separator = "";
    const auto show = [&](const ModuleInfo& module, const TableInfo& table) {
        std::cout << separator;
        separator = "\n";
        show_table(std::cout, store, module, table, style);
    };
    for (const bool with_records : {true, false}) {
        for (const auto& module : modules) {
            for (const auto& table : module.tables) {
                if (tables.empty() && (table.records > 0) == with_records) show(module, table);
            }
        }
    }
    for (const auto& name : tables) {
        for (const auto& module : modules) {
            for (const auto& table : module.tables) {
                if (table.id == name) show(module, table);
            }
        }
    }
}

}  // namespace qvhost
