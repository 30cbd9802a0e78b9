#include "qvhost/cli/command_line.h"

#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <variant>

#include "qvhost/base/collect_options.h"
#include "qvhost/base/limits.h"
#include "qvhost/cli/help.h"
#include "qvhost/cli/values.h"
#include "qvhost/collect/child.h"
#include "qvhost/present/bundle.h"
#include "qvhost/present/check.h"
#include "qvhost/present/diff.h"
#include "qvhost/present/export.h"
#include "qvhost/present/show.h"
#include "rows/row_printer.h"

namespace qvhost {

namespace {

// clang-format off
constexpr const char* kSizes = "A SIZE is a whole number with a unit, by 1024: 512K, 64M, 1G or 512KiB, 64MiB, 1GiB. Without one it counts MiB; that of --keep-size counts bytes.";

const std::vector<CommandText> kTexts = {
    {"qvhost", "Gathers what a Linux server knows about itself into one report",
     {"It runs the tools that know something (of the BMC, of RAID controllers, of the system), keeps what each of them printed in a log directory, and files it as records in named tables, which can be read in a terminal, queried with SQL, or handed to other programs."},
     {{"qvhost collect --log-dir /var/tmp/collection",   "Collect this machine, as root."},
      {"qvhost show /var/tmp/collection SENSORINFO",     "Read a table of it."}}},

    {"collect", "Collect from this machine",
     {"The log directory is made for its owner alone: captures hold serial numbers, addresses and logs. What an earlier collection has left there moves as a whole to DIR/runs/TIME, where it is a report to every command; other files stay. With --keep and --keep-size only so many of these stay, and no more than fit.",
      kSizes},
     {{"qvhost collect --log-dir /var/tmp/collection",                      "Everything."},
      {"qvhost collect --log-dir bmc --module BMC_Info --quiet",            "One module, without progress. \"qvhost tables\" lists them."},
      {"qvhost collect --log-dir adaptec --also pmc --tool-timeout 60",     "With the Adaptec controller; no tool may take more than a minute."}}},

    {"replay", "Collect from a recorded server",
     {"A recorded server is a directory with a file machine.json, which tells what each tool printed. No tool of this machine is asked.",
      kSizes},
     {{"qvhost replay samples/x86_64-kp220-megaraid --log-dir out",         "Collect as if this machine were the recorded one."}}},

    {"record", "Make a recorded server of this machine or of a report",
     {"A recorded server answers as the machine did: replay collects from it on any other machine, and gives the same commands, records, inventory and findings. It holds what the tools printed on standard output and standard error, how each ended, how long it took and the files that it wrote, as they answered behind the compatibility layer, which a replay has not.",
      "Without --from this machine is collected while each tool is watched, and what was recorded is replayed: what differs is told, and the exit status is 3. With --from the server is made of what a report keeps; what it does not tell is printed, a line each, and stands in machine.json as not_known. Nothing is replayed then: replay it, and compare the two reports with diff.",
      "A command that was stopped, or was running when the collection was, is recorded as one that does not end: its stand-in prints what it had printed and sleeps, so that a replay stops it after its --silence-timeout. The reason is the same if that is what stopped it before; a collection that the user ended goes on in a replay.",
      "A recorded server holds what the report holds: serial numbers, addresses, logs. With --redact, values of the classes serials, network, users and secrets are replaced as bundle replaces them, and with its --map by the same ones; archives and binaries are left out, and there is no recorded server if a value is still in it."},
     {{"qvhost record --output samples/x86_64-kp220",                        "This machine, as root."},
      {"qvhost record --from /var/tmp/collection --output samples/x86_64-kp220", "Make one of a collection."},
      {"qvhost replay samples/x86_64-kp220 --log-dir out",                   "Collect from it."}}},

    {"tables", "List modules, tables and layouts",
     {},
     {{"qvhost tables",                                                     "What can be collected, and the properties that each table shows."}}},

    {"show", "Show a report in the terminal",
     {"Without a TABLE: the health of each subsystem, the findings with the captures and lines that say so, and what tables there are. A TABLE is one of the plug-in's, or one of the host's own reading, such as drives, sensors or events (docs/inventory.md), in capitals or not, in the singular or the plural.",
      "On a terminal a record is a row where rows fit, else a block of lines, and the output goes through the pager in $PAGER, or less. Through a pipe a record is one line, however long; where a table has its titles on the left, a property is."},
     {{"qvhost show /var/tmp/collection",                                   "What matters, and what there is."},
      {"qvhost show /var/tmp/collection drives",                            "The drives of all controllers."},
      {"qvhost show /var/tmp/collection SENSORINFO PDLIST",                 "Two tables of the plug-in's."},
      {"qvhost show DIR events | grep -i temperature",                      "A line for each event."},
      {"qvhost show DIR drives --format jsonl | jq -r 'select(.media_errors > 0).serial'", "For a program, a row at a time."},
      {"qvhost show report.sqlite --all",                                   "Every table, then the empty ones with their reasons. The store alone is a report as well."}}},

    {"list", "List the collections of a log directory",
     {"The latest lies in the directory itself, the earlier ones below DIR/runs, each with its captures, log and report: DIR and what stands in the last column is a report to every command. A collection never touches the files of another."},
     {{"qvhost list /var/tmp/collection",                                   "When each was, how it ended, and how many findings it has."},
      {"qvhost show DIR/runs/20261121T012040Z SENSORINFO",                  "A table of an earlier one."}}},

    {"open", "Make the page of a report, or the report of a bundle",
     {"The page is made from the report's store, in a directory of its own, and its place is printed. If the variable BROWSER is set, the page is shown with that command.",
      "Use it for every report that somebody else made: the page in a log directory is a program, and runs whatever its sender put into it. Of a bundle the whole log directory is made, named as the bundle says or as --output does, with such a page of its own; every command takes that directory.", "A bundle is checked as verify does, and nothing of it stays if something in it is wrong."},
     {{"qvhost open DIR",                                                   "Make the page in a temporary directory and say where."},
      {"BROWSER=firefox qvhost open DIR",                                   "Show it as well."},
      {"qvhost open report.sqlite --output page",                           "Make it in a directory of that name, from the store alone."},
      {"qvhost show \"$(qvhost open web1.tar.zst)\"",                         "Unpack a bundle and read it."}}},

    {"query", "Ask a report with SQL",
     {"The host's own reading of the captures is in the tables systems, processors, memory_modules, bmcs, sensors, power_supplies, frus, controllers, batteries, enclosures, volumes, drives, events, findings and health, with typed columns without padding (docs/inventory.md). Each table of the plug-in is an SQL table as well, with one column for each property, as its tool printed it, and qv_seq, the record's place in the collection; the tables qv_* hold modules, layouts and record names. The statement can read the report and do nothing else."},
     {{"qvhost query DIR \"SELECT slot, model, serial, media_errors FROM drives WHERE state <> 'Onln'\"", "The drives that do not work as they should."},
      {"qvhost query DIR \"SELECT name, reading, unit FROM sensors WHERE status NOT IN ('ok', 'na', 'ns')\"", "The sensors that are not well."},
      {"qvhost query DIR \"SELECT source, severity, count(*) FROM events GROUP BY 1, 2\" --format csv", "The events of each source, for a spreadsheet."},
      {"qvhost query DIR \"SELECT time, text FROM events WHERE source = 'bmc'\" --format jsonl",     "For a program, a row at a time."},
      {"qvhost query DIR \"SELECT id, reason FROM qv_table WHERE reason <> ''\" --format json",      "Why tables are empty."},
      {"qvhost query DIR \"PRAGMA table_info(drives)\"",                                            "The columns of a table."}}},

    {"check", "Say how a server is, as a monitoring plug-in",
     {"The verdict of a report: one line with what matters most and performance data, then the health of each subsystem and the findings. \"unknown\" is said of what could not be read. The exit status is that of monitoring plug-ins: 0 ok, 1 warning, 2 critical, 3 unknown.",
      "Without a report this machine is asked for what verdicts need, as with \"qvhost collect --profile health\": in four minutes at most. Captures and report go into --log-dir, in place of those of the check before, or into a directory of their own that goes again."},
     {{"qvhost check",                                                      "This machine, now, as root."},
      {"qvhost check /var/tmp/collection",                                  "The whole server."},
      {"qvhost check DIR --subsystem storage --max-age 2h",                 "Storage alone, of a report that is not older than two hours."},
      {"qvhost check DIR --rules /etc/qvhost.rules",                        "By the severities and acknowledgements of this site."},
      {"qvhost check DIR --format json | jq -r '.findings[].id'",           "The ids of the findings, for a program."}}},

    {"bundle", "Make one file of a report, to hand on",
     {"Captures, log, report and page go into a .tar.zst, or into a .zip, which every desktop opens. SUMMARY.txt in it can be pasted into a mail: machine, health, findings, serial and part numbers, firmware, what is missing. manifest.json names each file with its size, its SHA-256 and the command that wrote it, and what was left out: always earlier runs and files of no run, and the largest captures where it may not be larger. The same report gives the same bytes.",
      "A bundle holds what the report holds: serial numbers, addresses, logs. Its mode is 0600.",
      "With --redact, values of the classes serials, network, users and secrets are replaced by others of the same form and length: the same ones everywhere in the bundle, and with the same --map in further bundles, so that two of them can be compared. Archives, binaries and earlier runs are left out. The finished bundle is read back, and there is none if a value is still in it. docs/privacy.md tells what is replaced and what cannot be; look at --review first."},
     {{"qvhost bundle DIR --output web1.tar.zst",                           "The whole report, for a colleague."},
      {"qvhost bundle DIR --output web1.zip --max-size 20M",                "One that a mail takes."},
      {"qvhost bundle DIR --redact all --review",                           "What would be replaced."},
      {"qvhost bundle DIR --output web1.zip --redact network,users,secrets --map ~/web1.map", "For a warranty case, which needs the serial numbers."}}},

    {"verify", "Check a bundle",
     {"Reads all of it: each file is as the manifest says, and nothing else is in it. Links, devices, names that lead elsewhere, two files of one name and what unpacks to far more than a report are refused with words. It is not said who made it: a bundle has no signature."},
     {{"qvhost verify web1.tar.zst",                                        "Is it whole?"}}},

    {"diff", "Say what changed between two reports",
     {"Things are matched by what they are and not by their place: a drive by its serial number, else by its slot; so are volumes, sensors, memory modules and the rest. It says what was replaced, failed, recovered, moved, added and removed, which firmware and counters changed and by how much, which sensors crossed a threshold, which findings and events are new or gone, and what one of the reports could not read. Readings that move all the time are left out. Reports of two machines are told to be so first.",
      "The exit status is that of diff: 0 nothing changed, 1 something did, 2 it could not be told."},
     {{"qvhost diff monday friday",                                         "What happened in between."},
      {"qvhost diff DIR",                                                   "What changed in a log directory since the run before its latest."},
      {"qvhost diff monday friday --format html > week.html",               "The same as a page to send or print; it needs no script and no network."},
      {"qvhost diff monday friday --format json | jq '.changes[]'",         "For a program; all new events are in it."},
      {"qvhost diff monday friday --raw",                                   "The rows of the plug-in's tables as well."}}},

    {"explain", "Say all that is known of a finding",
     {"A finding is named by its id, which stays the same from run to run. Printed are its rule, the lines of the captures that it rests on with three more around each, since when it is there by the events and the earlier runs of the directory, and what people do about it. Each piece of advice names who gives it; where nobody does there is none. Without a FINDING the findings are listed with their ids."},
     {{"qvhost explain DIR",                                                "The findings and their ids."},
      {"qvhost explain DIR drive_media_errors:ZA1B2C3D",                    "Why it is said, and what to do."}}},

    {"doctor", "Say what a collection will find here",
     {"Rights, the vendors' tools and which file answers for which name, controllers without their tool, the IPMI driver, the product, the directory, the search path: a line each, and below it the command that mends it. Nothing is changed. The exit status is that of monitoring plug-ins: 0 ok, 1 warning, 2 critical, 3 unknown."},
     {{"qvhost doctor",                                                     "As root, before the first collection."},
      {"qvhost doctor --format json | jq -r '.lines[].mend | strings'",     "The commands that mend what is missing."}}},

    {"config", "Show which options are in force, and where they are set",
     {"The file /etc/qvhost.conf (or $QVHOST_CONF) holds options for every collection on this machine: NAME = VALUE lines with the names of the options of collect, and comments behind #. What the command line gives counts more. The file belongs to root or to the user, and others cannot write to it."},
     {{"echo 'limit = ipmitool=900' >> /etc/qvhost.conf",                   "ipmitool may take 15 minutes here."},
      {"qvhost config",                                                     "See that it is in force."}}},

    {"export", "Write a report in another format",
     {"json is report.json: all modules, layouts and records, values without loss but for bytes that are not UTF-8. jsonl is the rows of all tables, those of the inventory included, an object a line with the table's name as qv_table; it is written and can be read a row at a time. csv is a file a table, as RFC 4180 has it, with the property ids in the first row; line ends at a value's end are left out. html is the page of the report, index.html, without the captures. prometheus is metrics for the textfile collector of node_exporter; the file may be read by everybody and replaces an earlier one.",
      "With --table only that table is written: in json and jsonl its rows as objects, in html of the plug-in's tables only it, in prometheus its metrics.",
      "A spreadsheet takes a text for a formula if it begins with =, +, -, @ (also in full width, behind blanks or behind a delimiter) or a control character; in csv such a text gets an apostrophe before it, unless --raw is given.",
      "On a terminal, characters that it would act on or not show are printed as escapes; in a file or a pipe csv has them as they are."},
     {{"qvhost export DIR --format json | jq '.records | length'",          "All records, for a program."},
      {"qvhost export DIR --format csv --output tables",                    "Every table as tables/ID.csv."},
      {"qvhost export DIR --format csv --table drives > drives.csv",        "One table, of the inventory or the plug-in."},
      {"qvhost export DIR --format jsonl | jq -c 'select(.qv_table == \"events\")'", "A stream of rows."},
      {"qvhost export DIR --format html --output page",                     "The page, as page/index.html."},
      {"qvhost export DIR --format prometheus --output qvhost.prom",        "Metrics of sensors, drives, health and findings."}}},
};
// clang-format on

CLI::App& add_command(CLI::App& app, const char* name) {
    auto& command = *app.add_subcommand(name);
    command.description(text_of(command).summary);
    return command;
}

// Adds the option of a row; its value goes to the last parameter.
CLI::Option& add_option(CLI::App& command, const CollectOption& row, bool& flag) {
    return *command.add_flag("--" + std::string(row.name), flag, row.meaning);
}

template <class Number>
CLI::Option& add_number(CLI::App& command, const CollectOption& row, Number& number) {
    return *command.add_option("--" + std::string(row.name), number, row.meaning)
                ->check(range(row.range.least, row.range.most))
                ->default_str(usual_text(row));
}
CLI::Option& add_option(CLI::App& command, const CollectOption& row, unsigned& number) {
    return add_number(command, row, number);
}
CLI::Option& add_option(CLI::App& command, const CollectOption& row,
                        std::optional<unsigned>& number) {
    return add_number(command, row, number);
}
CLI::Option& add_option(CLI::App& command, const CollectOption& row,
                        std::optional<std::uint64_t>& bytes) {
    return *command.add_option("--" + std::string(row.name), bytes, row.meaning)
                ->transform(bytes_of_size(row.range))
                ->default_str(usual_text(row));
}

template <class Text>
CLI::Option& add_option(CLI::App& command, const CollectOption& row, Text& text) {
    return *command.add_option("--" + std::string(row.name), text, row.meaning)->check(not_empty);
}

// If a row lists words, these alone are allowed.
CLI::Option& add_option(CLI::App& command, const CollectOption& row, std::string& text) {
    auto& option = *command.add_option("--" + std::string(row.name), text, row.meaning);
    std::vector<std::string> choices;
    boost::split(choices, row.value, boost::is_any_of("|"));
    return *option.check(one_of(choices))->capture_default_str();
}

CLI::Option& add_option(CLI::App& command, const CollectOption& row,
                        std::vector<std::string>& texts) {
    auto& option = *command.add_option("--" + std::string(row.name), texts, row.meaning);
    std::vector<std::string> choices;
    boost::split(choices, row.value, boost::is_any_of("|"));
    if (choices.size() > 1) return *option.delimiter(',')->check(one_of(choices));
    return *option.allow_extra_args(false)->check(not_empty);
}

// The profile "health" asks no module.
void expect_fits_profile(const CollectOptions& options) {
    if (options.profile != kHealthProfile) return;
    const auto refuse = [](const char* option) {
        throw std::invalid_argument(std::string("--profile health does not go with ") + option);
    };
    if (!options.modules.empty()) refuse("--module");
    if (!options.tables.empty()) refuse("--table");
    if (!options.also.empty()) refuse("--also");
    if (options.plug_in_only) refuse("--plug-in-only");
}

CLI::Option& add_row(CLI::App& command, const CollectOption& row, CollectOptions& options) {
    auto& option = std::visit(
        [&](auto member) -> CLI::Option& { return add_option(command, row, options.*member); },
        row.place);
    option.required(row.use == CollectOption::Use::required);
    if (!row.value.empty()) option.type_name(row.value);
    return option;
}

void add_collect_options(CLI::App& command, CollectOptions& options) {
    for (const auto& row : collect_options()) {
        if (row.use != CollectOption::Use::internal) add_row(command, row, options);
    }
    // The outer limits are no less than the inner ones.
    command.final_callback([&options] {
        try {
            limits_for(options);
            expect_fits_profile(options);
        } catch (const std::invalid_argument& error) {
            throw CLI::ValidationError(error.what());
        }
    });
}

void add_plugin_option(CLI::App& command, CollectOptions& options) {
    for (const auto& row : collect_options()) {
        if (std::string_view(row.name) == "plugin") add_row(command, row, options);
    }
}

void add_report_argument(CLI::App& command, std::filesystem::path& report) {
    command.add_option("REPORT", report, "A log directory or a store file")->required();
}

void add_raw_flag(CLI::App& command, bool& raw) {
    command.add_flag(
        "--raw", raw,
        "In csv, values as they were filed: with the line ends at their end, and without apostrophes");
}

void add_row_format(CLI::App& command, std::string& format) {
    command.add_option("--format", format, "How the rows are printed")
        ->check(one_of(row_formats()))
        ->type_name(boost::join(row_formats(), "|"))
        ->capture_default_str();
}

void add_show(CLI::App& show, ShowOptions& options) {
    add_report_argument(show, options.report);
    show.add_option(
        "TABLE", options.tables,
        "Tables to show, in capitals or not; none: health, findings, and what there is");
    show.add_flag("--all", options.all,
                  "All tables of the plug-in, then the empty ones with their reasons");
    add_row_format(show, options.format);
    add_raw_flag(show, options.raw);
    show.add_flag("--no-pager", options.no_pager, "No pager, also on a terminal");
    show.final_callback([&options] {
        const auto misuse = show_misuse(options);
        if (!misuse.empty()) throw CLI::ValidationError(misuse);
    });
}

void add_query(CLI::App& app, QueryOptions& options) {
    auto& query = add_command(app, "query");
    add_report_argument(query, options.report);
    query.add_option("SQL", options.sql, "One statement that reads, mostly a SELECT")->required();
    add_row_format(query, options.format);
    add_raw_flag(query, options.raw);
    query.final_callback([&options] {
        if (options.raw && options.format != "csv")
            throw CLI::ValidationError("--raw goes with --format csv alone");
    });
}

void add_export(CLI::App& app, ExportOptions& options) {
    auto& exporting = add_command(app, "export");
    add_report_argument(exporting, options.report);
    exporting.add_option("--format", options.format, "What to write")
        ->required()
        ->check(one_of(export_formats()))
        ->type_name(boost::join(export_formats(), "|"));
    exporting
        .add_option(
            "--output", options.output,
            "Where to write instead of standard output: for json and jsonl a file that does not exist, "
            "for csv a directory that is new or empty, for prometheus a file")
        ->type_name("PATH")
        ->check(not_empty);
    exporting
        .add_option("--table", options.tables,
                    "Only this table; may be given again, but not with csv")
        ->type_name("ID")
        ->allow_extra_args(false)
        ->check(not_empty);
    add_raw_flag(exporting, options.raw);
    exporting.final_callback([&options] {
        const auto misuse = export_misuse(options);
        if (!misuse.empty()) throw CLI::ValidationError(misuse);
    });
}

void add_check(CLI::App& app, CheckOptions& options, CollectOptions& collecting) {
    auto& check = add_command(app, "check");
    auto& report =
        *check.add_option("REPORT", options.report,
                          "A log directory or a store file; without it this machine is asked");
    const struct {
        std::string_view name;
        const char* meaning;
        std::string usual;
    } quick[] = {
        {"log-dir",      "Where captures and report of this machine go",                ""},
        {"machine-lock", "",                                                            ""},
        {"tool-timeout", "Stop a tool after so many seconds",
         std::to_string(kHealthLimits.tool_seconds)                                       },
        {"run-timeout",  "Stop what runs when all tools together took so many seconds",
         std::to_string(kHealthLimits.run_seconds)                                        },
    };
    for (const auto& row : collect_options()) {
        for (const auto& [name, meaning, usual] : quick) {
            if (name != row.name) continue;
            auto& option = add_row(check, row, collecting);
            option.required(false)->excludes(&report);
            if (*meaning) option.description(meaning);
            option.default_str(usual);
        }
    }
    check.add_option("--subsystem", options.subsystems, "Only this subsystem; may be given again")
        ->delimiter(',')
        ->check(one_of(subsystem_words()))
        ->type_name(boost::join(subsystem_words(), "|"));
    check.add_option("--format", options.format, "How the verdict is printed")
        ->check(one_of(check_formats()))
        ->type_name(boost::join(check_formats(), "|"))
        ->capture_default_str();
    check
        .add_option("--max-age", options.max_age_seconds,
                    "An older report is UNKNOWN: 90s, 30m, 2h, 1d")
        ->transform(seconds_of_time())
        ->type_name("TIME");
    check
        .add_option("--rules", options.rules,
                    "Severities, thresholds and known findings of this site (docs/findings.md)")
        ->type_name("FILE")
        ->check(not_empty);
    check.add_option("--unknown-as", options.unknown_as, "What is said where something is unknown")
        ->check(one_of(check_unknown_words()))
        ->type_name(boost::join(check_unknown_words(), "|"))
        ->capture_default_str();
    check.add_option("--perfdata", options.perfdata, "Which performance data is printed")
        ->check(one_of(check_perfdata()))
        ->type_name(boost::join(check_perfdata(), "|"))
        ->capture_default_str();
}

void add_bundle(CLI::App& app, BundleOptions& options) {
    auto& bundle = add_command(app, "bundle");
    bundle.add_option("REPORT", options.report, "A log directory")->required();
    bundle.add_option("--output", options.output, "The new file: .tar.zst, or .zip")
        ->type_name("FILE")
        ->check(not_empty);
    bundle
        .add_option(
            "--max-size", options.most_bytes,
            "Leave out the largest captures until it has at most this size: 512K, 20M, 20MiB; without a unit it counts bytes")
        ->transform(bytes_of_size(kAnySize))
        ->type_name("SIZE");
    bundle
        .add_option("--redact", options.redact,
                    "Replace values of these classes, joined by commas: serials, network, users, "
                    "secrets; or all (docs/privacy.md)")
        ->type_name("CLASS,...")
        ->check(not_empty);
    bundle
        .add_option(
            "--map", options.map,
            "With --redact: keep in this file which replacement stands for what, and use those "
            "that stand there")
        ->type_name("FILE")
        ->check(not_empty);
    bundle.add_flag("--review", options.review,
                    "With --redact: print what would be replaced, and make no bundle");
    bundle.callback([&options] {
        const auto misuse = bundle_misuse(options);
        if (!misuse.empty()) throw CLI::ValidationError(misuse);
    });
}

void add_record(CLI::App& record, RecordOptions& options, CollectOptions& collecting) {
    auto& from = *record
                      .add_option("--from", options.from,
                                  "A report: a log directory. Without it this machine is collected")
                      ->type_name("REPORT")
                      ->check(not_empty);
    record.add_option("--output", options.output, "The recorded server: a new or empty directory")
        ->required()
        ->type_name("DIR")
        ->check(not_empty);
    record
        .add_option("--redact", options.redact,
                    "Replace values of these classes, joined by commas: serials, network, users, "
                    "secrets; or all (docs/privacy.md)")
        ->type_name("CLASS,...")
        ->check(not_empty);
    record
        .add_option(
            "--map", options.map,
            "With --redact: keep in this file which replacement stands for what, and use those "
            "that stand there, of bundles too")
        ->type_name("FILE")
        ->check(not_empty);
    constexpr std::string_view kOfCollection[] = {"log-dir", "module", "tool-timeout",
                                                  "limit",   "also",   "machine-lock",
                                                  "plugin",  "serial", "quiet"};
    for (const auto& row : collect_options()) {
        if (std::find(std::begin(kOfCollection), std::end(kOfCollection), row.name) !=
            std::end(kOfCollection))
            add_row(record, row, collecting).required(false)->excludes(&from);
    }
    record.get_option("--log-dir")
        ->description("Where the report goes that is made for it; without it, it goes again");
}

void add_diff(CLI::App& app, DiffOptions& options) {
    auto& diff = add_command(app, "diff");
    diff.add_option("OLD", options.from, "The earlier report: a log directory or a store file")
        ->required();
    diff.add_option("NEW", options.to,
                    "The later one; without it, the latest run in OLD against the one before");
    diff.add_option("--format", options.format, "How it is printed")
        ->check(one_of(diff_formats()))
        ->type_name(boost::join(diff_formats(), "|"))
        ->capture_default_str();
    diff.add_flag("--raw", options.raw, "Rows of the plug-in's tables as well");
}

void add_explain(CLI::App& app, ExplainOptions& options) {
    auto& explain = add_command(app, "explain");
    add_report_argument(explain, options.report);
    explain.add_option("FINDING", options.finding,
                       "The id of a finding; without it they are listed");
}

void add_doctor(CLI::App& app, DoctorOptions& options) {
    auto& doctor = add_command(app, "doctor");
    doctor.add_option("--log-dir", options.log_dir, "The directory that is meant to be used")
        ->check(not_empty)
        ->type_name("DIR")
        ->capture_default_str();
    doctor.add_option("--format", options.format, "How it is printed")
        ->check(one_of({"text", "json"}))
        ->type_name("text|json")
        ->capture_default_str();
}

std::vector<const CLI::Option*> options_where(const CLI::App& command, bool positional) {
    std::vector<const CLI::Option*> found;
    for (const auto* option : command.get_options()) {
        if (option->get_positional() == positional && !option->get_group().empty())
            found.push_back(option);
    }
    // --help is the first of the options, but people look for the others: it comes last.
    const auto* help = command.get_help_ptr();
    std::stable_partition(found.begin(), found.end(), [&](const auto* o) { return o != help; });
    return found;
}

}  // namespace

std::unique_ptr<CLI::App> command_line(ParsedArguments& parsed) {
    auto app = std::make_unique<CLI::App>("", "qvhost");
    app->formatter(std::make_shared<HelpText>());
    app->set_help_flag("-h,--help", "Show this help");
    app->set_version_flag("--version", std::string("qvhost ") + QV_VERSION, "Show the version");
    app->require_subcommand(1);

    add_collect_options(add_command(*app, "collect"), parsed.collect);

    auto& replay = add_command(*app, "replay");
    replay.add_option("MACHINE", parsed.machine, "Its directory, with machine.json")->required();
    add_collect_options(replay, parsed.collect);

    add_record(add_command(*app, "record"), parsed.record, parsed.collect);

    add_plugin_option(add_command(*app, "tables"), parsed.collect);

    add_show(add_command(*app, "show"), parsed.show);

    add_command(*app, "list").add_option("DIR", parsed.list, "A log directory")->required();

    auto& open = add_command(*app, "open");
    open.add_option("REPORT", parsed.open.report, "A log directory, a store file or a bundle")
        ->required();
    open.add_option("--output", parsed.open.output,
                    "A directory that is new or empty, for the page or the report")
        ->type_name("DIR")
        ->check(not_empty);

    add_bundle(*app, parsed.bundle);
    add_command(*app, "verify").add_option("FILE", parsed.verify, "A bundle")->required();

    add_query(*app, parsed.query);
    add_check(*app, parsed.check, parsed.collect);
    add_diff(*app, parsed.diff);
    add_explain(*app, parsed.explain);
    add_doctor(*app, parsed.doctor);
    add_command(*app, "config");
    add_export(*app, parsed.exporting);

    auto& child = *app->add_subcommand(kChildCommand)->group("");
    child.add_option("SETTINGS", parsed.child.settings)->required();
    child.add_option("LIFELINE", parsed.child.lifeline)->required();
    return app;
}

const CommandText& text_of(const CLI::App& command) {
    static const CommandText none{};
    const auto found = std::find_if(kTexts.begin(), kTexts.end(), [&](const CommandText& text) {
        return command.get_name() == text.name;
    });
    return found == kTexts.end() ? none : *found;
}

std::vector<const CLI::App*> commands_of(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* one) { return !one->get_group().empty(); });
}

std::vector<const CLI::Option*> options_of(const CLI::App& command) {
    return options_where(command, false);
}

std::vector<const CLI::Option*> arguments_of(const CLI::App& command) {
    return options_where(command, true);
}

bool is_required_option(const CLI::Option& option) {
    return option.get_required() && !option.get_positional();
}

std::string usage_of(const CLI::App& command) {
    if (!command.get_parent()) return "qvhost COMMAND [OPTION]... [ARGUMENT]...";
    std::string usage = "qvhost " + command.get_name() + " [OPTION]...";
    for (const auto* argument : arguments_of(command)) {
        const auto name = argument->get_name(true);
        const auto* const more = argument->get_expected_max() > 1 ? "..." : "";
        usage += argument->get_required() ? " " + name : " [" + name + "]" + more;
    }
    return usage;
}

}  // namespace qvhost
