#include "qvhost/present/show.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qvhost/present/open_report.h"
#include "qvhost/present/overview.h"
#include "qvhost/present/pager.h"
#include "qvhost/present/report_table.h"
#include "show/show_table.h"
#include "show/terminal.h"
#include "show/visible.h"
#include "text/size.h"

namespace qvhost {

namespace {

// The plug-in's tables, those with records first.
void show_all(std::ostream& out, const Store& store, const std::vector<ModuleInfo>& modules,
              const TerminalStyle& style, TableForm form) {
    const char* separator = "";
    for (const bool with_records : {true, false}) {
        for (const auto& module : modules) {
            for (const auto& table : module.tables) {
                if ((table.records > 0) != with_records) continue;
                out << std::exchange(separator, "\n");
                show_table(out, store, module, table, style, form);
            }
        }
    }
}

// Which columns of the host's own tables a terminal shows, so that a row is a line. Without a row here: all.
// clang-format off
const struct {
    std::string_view table;
    std::vector<std::string> columns;
} kBrief[] = {
    {"processors",     {"socket", "model", "cores", "threads", "state"}},
    {"memory_modules", {"slot", "capacity_bytes", "type", "speed_mts", "manufacturer", "serial", "part"}},
    {"sensors",        {"name", "kind", "reading", "unit", "status", "states"}},
    {"power_supplies", {"slot", "present", "state", "input_state", "input_watts", "model", "serial"}},
    {"frus",           {"device", "manufacturer", "product", "part", "serial"}},
    {"controllers",    {"number", "model", "serial", "firmware", "status"}},
    {"batteries",      {"controller", "model", "state", "charge_percent", "temperature_celsius"}},
    {"enclosures",     {"controller", "number", "slots", "state", "model", "serial"}},
    {"volumes",        {"controller", "number", "raid", "state", "name", "capacity_bytes", "device", "operation", "progress_percent"}},
    {"drives",         {"controller", "enclosure", "slot", "state", "capacity_bytes", "model", "serial", "media_errors", "device"}},
    {"volume_members", {"controller", "drive_group", "volume", "volume_name", "position", "state", "enclosure", "slot", "device", "serial"}},
    {"events",         {"time", "source", "severity", "text"}},
    {"findings",       {"severity", "subject", "says", "time", "count"}},
};
// clang-format on

// Their places among all columns.
std::vector<std::size_t> shown_places(const std::string& table,
                                      const std::vector<std::string>& columns, bool brief) {
    std::vector<std::size_t> places;
    const auto* row = std::find_if(std::begin(kBrief), std::end(kBrief),
                                   [&](const auto& one) { return one.table == table; });
    if (brief && row != std::end(kBrief)) {
        for (const auto& name : row->columns) {
            const auto found = std::find(columns.begin(), columns.end(), name);
            if (found != columns.end())
                places.push_back(static_cast<std::size_t>(found - columns.begin()));
        }
    }
    if (places.empty()) {
        places.resize(columns.size());
        std::iota(places.begin(), places.end(), std::size_t{0});
    }
    return places;
}

void show_read_table(std::ostream& out, const Store& store, const ReportTable& table,
                     const RowStyle& style) {
    const auto rows = table.rows(store);
    print_title(out,
                table.id() + ", " +
                    (rows == 0 ? "none" : std::to_string(rows) + (rows == 1 ? " row" : " rows")),
                style.terminal);
    if (rows == 0) return;
    const auto columns = table.columns(store);
    const bool brief = style.terminal.width > 0 && style.format == "table";
    const auto places = shown_places(table.id(), columns, brief);
    const std::string kCapacity = "capacity_bytes";
    std::vector<std::string> titles;
    for (const auto place : places) {
        auto title = columns[place] == kCapacity && brief ? "capacity" : columns[place];
        if (brief) std::replace(title.begin(), title.end(), '_', ' ');
        titles.push_back(std::move(title));
    }
    const auto printer = row_printer(out, style, titles);
    std::vector<Cell> shown;
    table.each_row(store, [&](const std::vector<Cell>& cells) {
        std::string size;
        shown.clear();
        for (const auto place : places) {
            auto cell = cells[place];
            if (brief && columns[place] == kCapacity && cell.kind == Cell::Kind::integer) {
                size = size_text(std::strtoull(std::string(cell.text).c_str(), nullptr, 10));
                cell = {Cell::Kind::text, size};
            }
            shown.push_back(cell);
        }
        printer->row(shown);
    });
    printer->end();
    if (places.size() < columns.size())
        out << "\n" << columns.size() - places.size() << " more columns with --format blocks.\n";
}

}  // namespace

void show_report(const ShowOptions& options) {
    const auto report = open_report(options.report);
    const auto& store = report.store;
    std::vector<ReportTable> chosen;
    for (const auto& name : options.tables) {
        const auto found = tables_named(store, name, options.report.string());
        chosen.insert(chosen.end(), found.begin(), found.end());
    }
    const RowStyle style{options.format, options.raw, terminal_style(STDOUT_FILENO)};
    const auto form = options.format == "blocks" ? TableForm::blocks : TableForm::fitting;
    print_paged(!options.no_pager, [&](std::ostream& out) {
        if (is_json(options.format) || options.format == "csv")
            return write_rows(out, store, chosen, style);
        const auto modules = store.modules();
        if (options.all) return show_all(out, store, modules, style.terminal, form);
        if (chosen.empty()) return show_overview(out, store, style.terminal);
        const char* separator = "";
        for (const auto& table : chosen) {
            out << std::exchange(separator, "\n");
            if (table.kind() == ReportTable::Kind::read) {
                show_read_table(out, store, table, style);
            } else {
                const auto [module, info] = find_filed(modules, table.id());
                show_table(out, store, *module, *info, style.terminal, form);
            }
        }
    });
}

std::string show_misuse(const ShowOptions& options) {
    const bool rows = is_json(options.format) || options.format == "csv";
    if (options.all && !options.tables.empty()) return "--all takes no TABLE";
    if (rows && (options.all || options.tables.empty()))
        return "--format " + options.format +
               " takes a TABLE; \"qvhost export\" writes a whole report";
    if (options.format == "csv" && options.tables.size() > 1)
        return "--format csv takes one TABLE, since tables differ in their columns";
    if (options.raw && options.format != "csv") return "--raw goes with --format csv alone";
    return "";
}

}  // namespace qvhost
