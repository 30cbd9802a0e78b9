#include "qvhost/present/export.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "files/new_file.h"
#include "page/write_page.h"
#include "qvhost/present/export_csv.h"
#include "qvhost/present/export_prometheus.h"
#include "qvhost/present/new_files.h"
#include "qvhost/present/open_report.h"
#include "report/report_json.h"
#include "show/headers.h"
#include "show/terminal.h"
#include "store/names.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const fs::path& path, const std::string& reason) {
    throw std::runtime_error(path.string() + ": " + reason);
}

// The columns are named by the property ids, as those of the store's tables are.
void write_csv(std::ostream& out, const Store& store, const TableInfo& table, bool raw) {
    const auto headers = headers_of(store, table);
    const bool terminal = &out == &std::cout && terminal_style(STDOUT_FILENO).terminal;
    CsvWriter csv(out, raw, terminal);
    for (const auto& header : headers) csv.text(header.id);
    csv.end_row();
    store.each_record(table.id, [&](const Record& record) {
        for (const auto& header : headers) {
            const auto found = std::find_if(record.properties.begin(), record.properties.end(),
                                            [&](const auto& p) { return p.id == header.id; });
            if (found == record.properties.end()) {
                csv.nothing();
            } else if (const auto* text = std::get_if<std::string>(&found->value)) {
                csv.text(*text);
            } else {
                csv.number(std::to_string(std::get<int>(found->value)));
            }
        }
        csv.end_row();
    });
}

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

void export_tables(const ExportOptions& options, const Store& store) {
    NewFiles files(options.output);
    store::NameSet names;
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) {
            const auto name = names.claim(file_name(table.id)) + ".csv";
            NewFile out(files.path(name));
            files.adopt(name);
            write_csv(out, store, table, options.raw);
            out.close();
        }
    }
    files.keep();
}

void export_csv(const ExportOptions& options, const Store& store) {
    if (options.table.empty()) return export_tables(options, store);
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) {
            if (table.id == options.table) return write_csv(std::cout, store, table, options.raw);
        }
    }
    fail(options.report, "there is no table " + options.table);
}

void export_json(const ExportOptions& options, const Store& store) {
    if (options.output.empty()) return write_report_json(store, std::cout);
    if (fs::exists(fs::symlink_status(options.output)))
        fail(options.output, "exists already; it is not replaced");
    write_report_json(store, options.output.string());
}

// The page alone: links from another place would not lead to the captures.
void export_html(const ExportOptions& options, const Store& store) {
    NewFiles files(options.output);
    for (const char* const name : {"assets", "data", "index.html"}) files.adopt(name);
    write_page(store, options.output, {});
    files.keep();
}

// node_exporter may read the file at any moment, and as a user of its own.
void export_prometheus(const ExportOptions& options, const Store& store) {
    if (options.output.empty()) return write_prometheus(store, std::cout);
    replace_file(options.output, [&](std::ostream& out) { write_prometheus(store, out); });
    fs::permissions(options.output, fs::perms::group_read | fs::perms::others_read,
                    fs::perm_options::add);
}

// Every format has its row here.
constexpr struct {
    const char* name;
    void (*run)(const ExportOptions& options, const Store& store);
} kFormats[] = {
    {"json",       export_json      },
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
    if (csv && options.output.empty() == options.table.empty())
        return "--format csv takes either --output DIR or --table ID";
    if (options.format == "html" && options.output.empty())
        return "--format html takes --output DIR";
    if (!csv && !options.table.empty()) return "--table goes with --format csv alone";
    if (!csv && options.raw) return "--raw goes with --format csv alone";
    return "";
}

void export_report(const ExportOptions& options) {
    const auto report = open_report(options.report);
    for (const auto& format : kFormats) {
        if (options.format == format.name) format.run(options, report.store);
    }
}

}  // namespace qvhost
