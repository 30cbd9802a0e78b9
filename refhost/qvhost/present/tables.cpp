#include "qvhost/present/tables.h"

#include <unistd.h>

#include <boost/algorithm/string/join.hpp>
#include <iostream>

#include "qvhost/base/ambient.h"
#include "qvhost/base/plugin.h"
#include "repository/sink.h"
#include "show/terminal.h"
#include "show/text_table.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using marlox::repository::RInstancesWrapper;

std::string layout_text(const Layout& layout) {
    if (const auto* columns = std::get_if<ColumnLayout>(&layout))
        return "header column: " + boost::join(columns->headers, " ");
    if (const auto* rows = std::get_if<RowLayout>(&layout))
        return "header row: " + boost::join(rows->headers, " ");
    return "no layout";
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
    print_table(std::cout, {"Module", "Table", "Layout"}, rows, terminal_style(STDOUT_FILENO));
}

}  // namespace qvhost
