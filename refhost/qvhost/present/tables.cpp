#include "qvhost/present/tables.h"

#include <unistd.h>

#include <iostream>

#include "qvhost/base/declared_tables.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/plugin.h"
#include "repository/sink.h"
#include "show/terminal.h"
#include "show/text_table.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using marlox::repository::RInstancesWrapper;

// How many headers there are, and which way they run.
std::string layout_text(const Layout& layout) {
    if (const auto* columns = std::get_if<ColumnLayout>(&layout))
        return std::to_string(columns->headers.size()) + " down";
    if (const auto* rows = std::get_if<RowLayout>(&layout))
        return std::to_string(rows->headers.size()) + " across";
    return "none";
}

std::string title_of(const DeclaredTables& declared, const std::string& id) {
    for (const auto& table : declared.tables) {
        if (table.id == id) return table.title;
    }
    return "";
}

}  // namespace

void list_tables(const fs::path& plugin) {
    const auto file = plugin.empty() ? installed_plugin() : plugin;
    const Plugin loaded(file);
    const auto declared = tables_declared_by(file);
    if (!declared.problem.empty())
        std::cerr << "qvhost: the tables have no titles: " << one_line(declared.problem) << '\n';
    std::vector<std::vector<std::string>> rows;
    for (const auto& module : loaded.modules()) {
        module->InitCallbacks();
        auto title = module->GetName();
        for (const auto& [table, callbacks] : module->callbacks) {
            RInstancesWrapper::Impl layout;
            RInstancesWrapper wrapper(layout);
            callbacks.wrap(wrapper);
            rows.push_back({title, table, title_of(declared, table), layout_text(layout.layout)});
            title.clear();
        }
    }
    print_table(std::cout, {"Module", "Table", "Title", "Headers"}, rows,
                terminal_style(STDOUT_FILENO));
}

}  // namespace qvhost
