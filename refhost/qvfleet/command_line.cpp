#include <algorithm>

#include "fleet/schema.h"
#include "qvfleet/options.h"
#include "rows/row_printer.h"

namespace qvhost::fleet {

namespace {

// The views that answer questions, a line each.
std::string named_views() {
    std::string words = "Views that answer a question:\n";
    for (const auto& view : views()) {
        if (view.is_answer) words += "  " + view.name + ": " + view.meaning + "\n";
    }
    words += "Tables: hosts, runs, and what reports have, by host and run:\n ";
    for (const auto& history : histories()) words += " " + history.name;
    return words +
           "\nFor each of these: current_NAME, as each host's last run has it, and NAME_by_run, as "
           "each run has it.";
}

void add_format(CLI::App& command, Options& options) {
    const auto formats = row_formats();
    options.printing.format = formats.front();
    command.add_option("--format", options.printing.format, "How rows are written")
        ->check(CLI::IsMember(formats))
        ->capture_default_str();
    command.add_flag("--raw", options.printing.raw,
                     "In csv: values as they are, also those that a spreadsheet would take for "
                     "formulas");
}

void add_import_options(CLI::App& command, Options& options) {
    command
        .add_option("--jobs", options.import.jobs,
                    "How many bundles are read at the same time; 0: one a processor")
        ->capture_default_str();
    command
        .add_option_function<unsigned>(
            "--reconnect-timeout",
            [&options](unsigned seconds) {
                options.import.reconnect_timeout = std::chrono::seconds(seconds);
            },
            "For how many seconds a server that is gone is tried anew")
        ->default_str("60");
}

void add_import(CLI::App& app, Options& options) {
    auto& command = *app.add_subcommand(
        "import",
        "Store what bundles say. A directory stands for the .tar.zst and .zip files in it. A run "
        "that is there already is not stored again; a bundle that cannot be read is named and "
        "skipped, and the exit status is then 3.");
    command.add_option("BUNDLE", options.import.bundles, "Bundles, or directories of them")
        ->required();
    add_import_options(command, options);
}

void add_status(CLI::App& app, Options& options) {
    auto& command = *app.add_subcommand(
        "status", "Say how the hosts are: the worst first, a line each, with the age of its run.");
    command
        .add_option("--silent-after", options.silent_after,
                    "A host without a run for so long is silent: 90min, 36h, 8d, 2w")
        ->capture_default_str();
    command.add_option("--as-of", options.as_of,
                       "Ages as at this time, \"2026-11-22T12:00:00Z\", rather than now");
    add_format(command, options);
}

void add_query(CLI::App& app, Options& options) {
    auto& command = *app.add_subcommand("query", "Ask with SQL, which can read and nothing else.");
    command.add_option("SQL", options.sql, "One statement")->required();
    command.footer(named_views());
    add_format(command, options);
}

void add_export(CLI::App& app, Options& options) {
    auto& command = *app.add_subcommand("export", "Write a table or a view.");
    command.add_option("NAME", options.relation, "Its name")->required();
    command.footer(named_views());
    add_format(command, options);
}

void add_forget(CLI::App& app, Options& options) {
    auto& command = *app.add_subcommand(
        "forget", "Remove hosts with all that is known of them, or the runs before a day.");
    auto* hosts = command.add_option(
        "HOST", options.forgotten,
        "A host's name, serial number, machine id or key; a name that several have is refused");
    command
        .add_option("--before", options.before,
                    "Remove the runs before this day, \"2026-01-01\", but each host's last one")
        ->excludes(hosts);
}

void add_demo(CLI::App& app, Options& options) {
    auto& command = *app.add_subcommand(
        "demo",
        "Collect from recorded servers, import them, and show the status and every answer. "
        "Without --db the database is a temporary one.");
    command.add_option("SAMPLES", options.samples, "The directory of recorded servers")
        ->capture_default_str();
    add_import_options(command, options);
}

}  // namespace

std::unique_ptr<CLI::App> command_line(Options& options) {
    auto app = std::make_unique<CLI::App>(
        "Keeps what the reports of many servers say in one place, and answers questions about all "
        "of them.",
        "qvfleet");
    app->set_version_flag("--version", "qvfleet " QV_VERSION, "Print the version");
    app->require_subcommand(1);
    app->fallthrough();
    app->add_option("--db", options.place,
                    "The database: a SQLite file, or postgresql://HOST/NAME; a password belongs "
                    "into ~/.pgpass")
        ->envname("QVFLEET_DB")
        ->capture_default_str();
    for (const auto add : {add_import, add_status, add_query, add_export, add_forget, add_demo})
        add(*app, options);
    return app;
}

}  // namespace qvhost::fleet
