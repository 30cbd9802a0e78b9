// The command line of qvhost.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>

#include "qvhost/child.h"
#include "qvhost/collect.h"
#include "qvhost/options.h"
#include "qvhost/replay.h"
#include "qvhost/tables.h"
#include "show/visible.h"

namespace {

using qvhost::CollectOptions;

constexpr int kCouldNot = 1;
constexpr int kUsage = 2;

std::string not_empty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

void add_plugin_option(CLI::App& command, CollectOptions& options) {
    command.add_option("--plugin", options.plugin, "Another plug-in than the installed one")
        ->type_name("FILE")
        ->check(not_empty);
}

void add_collect_options(CLI::App& command, CollectOptions& options) {
    command.add_option("--log-dir", options.log_dir, "Where captures, log and report go")
        ->required()
        ->type_name("DIR")
        ->check(not_empty);
    command.add_option("--log-level", options.log_level, "2 silences the modules, 4 tells details")
        ->check(CLI::Range(0u, 4u))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--module", options.modules, "Only this module (more than one: repeat)")
        ->type_name("NAME")
        ->allow_extra_args(false);
    command.add_option("--table", options.tables, "Only this table (more than one: repeat)")
        ->type_name("ID")
        ->allow_extra_args(false);
    command.add_option("--tool-timeout", options.tool_timeout, "Kill a tool after so many seconds")
        ->check(CLI::Range(1u, 86400u))
        ->type_name("SECONDS")
        ->capture_default_str();
    command
        .add_option("--also", options.also,
                    "Also call what no module calls: pmc (Adaptec controller), fru0 (first FRU "
                    "device), bios (BIOS settings)")
        ->delimiter(',')
        ->check(CLI::IsMember({"pmc", "fru0", "bios"}))
        ->type_name("NAME,...");
    add_plugin_option(command, options);
    command.add_flag("--quiet", options.quiet, "No progress");
}

// Of a standard stream that is closed, a file of ours would get the number, and what is meant for
// the stream. In its place there is one that cannot be written; errors alone are dropped.
void hold_standard_streams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY);
    }
}

int run(int argc, char** argv) {
    CLI::App app("Gathers what a Linux server knows about itself into one report.", "qvhost");
    app.set_version_flag("--version", std::string("qvhost ") + QV_VERSION);
    app.require_subcommand(1);

    CollectOptions options;
    auto* collect = app.add_subcommand("collect", "Collect from this machine");
    add_collect_options(*collect, options);

    std::filesystem::path machine;
    auto* replay = app.add_subcommand("replay", "Collect from a recorded server");
    replay->add_option("MACHINE", machine, "Its directory, with machine.json")->required();
    add_collect_options(*replay, options);

    auto* tables = app.add_subcommand("tables", "List modules, tables and layouts");
    add_plugin_option(*tables, options);

    std::filesystem::path report;
    std::vector<std::string> ids;
    auto* show = app.add_subcommand("show", "Show tables of a report");
    show->add_option("REPORT", report, "A log directory or a store file")->required();
    show->add_option("TABLE", ids, "Tables to show; none: all");

    qvhost::Stage stage;
    int lifeline = -1;
    auto* child = app.add_subcommand(qvhost::kChildCommand)->group("");
    add_collect_options(*child, options);
    child->add_option("--search-path", stage.search_path);
    child->add_option("--lifeline", lifeline)->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        app.exit(wanted);
        return 0;
    } catch (const CLI::ParseError& error) {
        app.exit(error);
        return kUsage;
    }

    if (*child) return qvhost::run_child(options, stage, lifeline);
    if (*collect) return qvhost::collect_here(options);
    if (*replay) return qvhost::replay(machine, options);
    if (*tables) {
        qvhost::list_tables(options.plugin);
    } else if (*show) {
        qvhost::show_report(report, ids);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that goes away is an error of writing, not the end of a collection.
    std::signal(SIGPIPE, SIG_IGN);
    hold_standard_streams();
    // All that is written is private: captures hold serial numbers, addresses and logs.
    ::umask(077);
    try {
        const int status = run(argc, argv);
        std::cout.flush();
        if (!std::cout) throw std::runtime_error("cannot write to standard output");
        return status;
    } catch (const std::exception& error) {
        std::cerr << "qvhost: " << qvhost::one_line(error.what()) << '\n';
        return kCouldNot;
    }
}
