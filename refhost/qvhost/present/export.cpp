#include "qvhost/present/export.h"

#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <functional>
#include <iostream>
#include <set>
#include <stdexcept>

#include "files/new_file.h"
#include "page/write_page.h"
#include "qvhost/present/export_prometheus.h"
#include "qvhost/present/new_files.h"
#include "qvhost/present/open_report.h"
#include "qvhost/present/report_table.h"
#include "report/report_json.h"
#include "show/terminal.h"
#include "store/names.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using Tables = std::vector<ReportTable>;

// A table's id as the name of a file, whatever bytes it has.
std::string file_name(const std::string& id) {
    constexpr std::size_t kLongest = 200;
    std::string name = id.substr(0, kLongest);
    for (char& c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '_' || c == '-';
        if (!plain) c = '_';
    }
    return name;
}

RowStyle row_style(const ExportOptions& options, bool terminal) {
    return {options.format, options.raw,
            terminal ? terminal_style(STDOUT_FILENO) : TerminalStyle()};
}

void export_csv_files(const ExportOptions& options, const Store& store) {
    NewFiles files(options.output);
    store::NameSet names;
    for (const auto& table : tables_of(store)) {
        if (table.kind() != ReportTable::Kind::filed) continue;
        const auto name = names.claim(file_name(table.id())) + ".csv";
        NewFile out(files.path(name));
        files.adopt(name);
        write_rows(out, store, {table}, row_style(options, false));
        out.close();
    }
    files.keep();
}

void export_csv(const ExportOptions& options, const Store& store, const Tables& tables) {
    if (tables.empty()) return export_csv_files(options, store);
    write_rows(std::cout, store, tables, row_style(options, true));
}

// To standard output or to a new file.
void export_to(const fs::path& output, const std::function<void(std::ostream&)>& write) {
    if (output.empty()) return write(std::cout);
    std::error_code error;
    if (fs::exists(fs::symlink_status(output, error)))
        fail(output, "exists already; it is not replaced");
    replace_file(output, write);
}

void export_json(const ExportOptions& options, const Store& store, const Tables& tables) {
    export_to(options.output, [&](std::ostream& out) {
        if (tables.empty()) return write_report_json(store, out);
        write_rows(out, store, tables, row_style(options, false));
    });
}

void export_jsonl(const ExportOptions& options, const Store& store, const Tables& tables) {
    export_to(options.output, [&](std::ostream& out) {
        write_rows(out, store, tables.empty() ? tables_of(store) : tables,
                   row_style(options, false));
    });
}

std::set<std::string> ids_of(const Tables& tables) {
    std::set<std::string> ids;
    for (const auto& table : tables) ids.insert(table.id());
    return ids;
}

// The page alone: links from another place would not lead to the captures.
void export_html(const ExportOptions& options, const Store& store, const Tables& tables) {
    NewFiles files(options.output);
    for (const char* const name : {"assets", "data", "index.html"}) files.adopt(name);
    write_page(store, options.output, {}, ids_of(tables));
    files.keep();
}

// node_exporter may read the file at any moment, and as a user of its own.
void export_prometheus(const ExportOptions& options, const Store& store, const Tables& tables) {
    const auto known = tables_with_metrics();
    std::set<std::string> wanted;
    for (const auto& id : ids_of(tables)) {
        if (std::find(known.begin(), known.end(), id) != known.end()) wanted.insert(id);
    }
    if (wanted.empty() && !tables.empty())
        fail(options.report, "there are no metrics of " + tables.front().id() + "; there are of " +
                                 boost::join(known, ", "));
    const auto write = [&](std::ostream& out) { write_prometheus(store, out, wanted); };
    if (options.output.empty()) return write(std::cout);
    replace_file(options.output, write);
    std::error_code error;
    fs::permissions(options.output, fs::perms::group_read | fs::perms::others_read,
                    fs::perm_options::add, error);
    if (error) fail(options.output, error.message());
}

// Every format has its row here.
constexpr struct {
    const char* name;
    void (*run)(const ExportOptions& options, const Store& store, const Tables& tables);
} kFormats[] = {
    {"json",       export_json      },
    {"jsonl",      export_jsonl     },
    {"csv",        export_csv       },
    {"html",       export_html      },
    {"prometheus", export_prometheus},
};

}  // namespace

std::vector<std::string> export_formats() {
    std::vector<std::string> names;
    for (const auto& format : kFormats) names.emplace_back(format.name);
    return names;
}

std::string export_misuse(const ExportOptions& options) {
    const bool csv = options.format == "csv";
    if (csv && (options.output.empty() == options.tables.empty() || options.tables.size() > 1))
        return "--format csv takes either --output DIR or one --table ID";
    if (options.format == "html" && options.output.empty())
        return "--format html takes --output DIR";
    if (!csv && options.raw) return "--raw goes with --format csv alone";
    return "";
}

void export_report(const ExportOptions& options) {
    const auto report = open_report(options.report);
    Tables tables;
    for (const auto& name : options.tables) {
        const auto found = tables_named(report.store, name, options.report.string());
        tables.insert(tables.end(), found.begin(), found.end());
    }
    for (const auto& format : kFormats) {
        if (options.format == format.name) format.run(options, report.store, tables);
    }
}

}  // namespace qvhost
