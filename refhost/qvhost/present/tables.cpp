#include "qvhost/present/tables.h"

#include <unistd.h>

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

}  // namespace qvhost
