// The program: from the command line to what it asks for.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <ios>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "compat/layer.h"
#include "files/failure.h"
#include "qvhost/base/machine_lock.h"
#include "qvhost/base/misuse.h"
#include "qvhost/check_here.h"
#include "qvhost/cli/command_line.h"
#include "qvhost/cli/settings_file.h"
#include "qvhost/cli/usage_error.h"
#include "qvhost/collect/child.h"
#include "qvhost/collect/collect_here.h"
#include "qvhost/doctor/doctor.h"
#include "qvhost/present/bundle.h"
#include "qvhost/present/check.h"
#include "qvhost/present/diff.h"
#include "qvhost/present/explain.h"
#include "qvhost/present/export.h"
#include "qvhost/present/list_runs.h"
#include "qvhost/present/open_page.h"
#include "qvhost/present/query.h"
#include "qvhost/present/show.h"
#include "qvhost/present/tables.h"
#include "qvhost/replay/record.h"
#include "qvhost/replay/replay.h"
#include "show/visible.h"

namespace {

using qvhost::ParsedArguments;

constexpr int kCouldNot = 1;
constexpr int kUsage = 2;

using SignalHandler = void (*)(int);

// If a standard stream is closed, open() would reuse its number, and what is meant for the stream would
// go into that file. So a closed stream gets a file that cannot be written; standard error gets one
// that drops what is written.
void open_closed_standard_streams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY);
    }
}

// clang-format off
// Commands that collect. If the reader of their output goes away, that is an error of writing and not
// the end of the collection.
constexpr struct {
    const char* name;
    int (*run)(const ParsedArguments& parsed);
} kCollecting[] = {
    {"collect",             [](const ParsedArguments& parsed) { return qvhost::collect_here(parsed.collect); }},
    {"record",              [](const ParsedArguments& parsed) { return qvhost::record(parsed.record, parsed.collect); }},
    {"replay",              [](const ParsedArguments& parsed) { return qvhost::replay(parsed.machine, parsed.collect); }},
    {qvhost::kChildCommand, [](const ParsedArguments& parsed) { return qvhost::run_child(parsed.child.settings, parsed.child.lifeline); }},
};

// Commands that only print: they end when their reader does.
constexpr struct {
    const char* name;
    int (*run)(const ParsedArguments& parsed);
} kPrinting[] = {
    {"config",  [](const ParsedArguments&) { qvhost::print_settings(); return 0; }},
    {"tables",  [](const ParsedArguments& parsed) { qvhost::list_tables(parsed.collect.plugin); return 0; }},
    {"show",    [](const ParsedArguments& parsed) { qvhost::show_report(parsed.show); return 0; }},
    {"list",    [](const ParsedArguments& parsed) { qvhost::list_runs(parsed.list); return 0; }},
    {"open",    [](const ParsedArguments& parsed) { qvhost::open_page(parsed.open); return 0; }},
    {"bundle",  [](const ParsedArguments& parsed) { qvhost::make_bundle(parsed.bundle); return 0; }},
    {"verify",  [](const ParsedArguments& parsed) { qvhost::verify_file(parsed.verify); return 0; }},
    {"query",   [](const ParsedArguments& parsed) { qvhost::query_report(parsed.query); return 0; }},
    {"export",  [](const ParsedArguments& parsed) { qvhost::export_report(parsed.exporting); return 0; }},
    {"check",   [](const ParsedArguments& parsed) { return parsed.check.report.empty() ? qvhost::check_here(parsed.check, parsed.collect) : qvhost::check_report(parsed.check); }},
    {"diff",    [](const ParsedArguments& parsed) { return qvhost::diff_reports(parsed.diff); }},
    {"explain", [](const ParsedArguments& parsed) { qvhost::explain_finding(parsed.explain); return 0; }},
    {"doctor",  [](const ParsedArguments& parsed) { return qvhost::doctor(parsed.doctor); }},
};
// clang-format on

// Commands for the build and for shells, which the help does not show.
bool answers_hidden(const CLI::App& app, const std::vector<std::string>& arguments) {
    const std::string name = arguments.empty() ? "" : arguments[0];
    if (name == "manual") {
        qvhost::write_manual(std::cout, app);
    } else if (name == "complete" || name == "complete-explained") {
        qvhost::write_completions(std::cout, app, {arguments.begin() + 1, arguments.end()},
                                  name != "complete");
    } else {
        return false;
    }
    return true;
}

int run(int argc, char** argv, SignalHandler on_broken_pipe) {
    ParsedArguments parsed;
    const auto app = qvhost::command_line(parsed);
    if (answers_hidden(*app, {argv + 1, argv + argc})) return 0;
    try {
        auto arguments = qvhost::with_settings({argv + 1, argv + argc});
        std::reverse(arguments.begin(), arguments.end());
        app->parse(arguments);
    } catch (const CLI::Success& wanted) {
        app->exit(wanted);
        return 0;
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> typed{argv + 1, argv + argc};
        const auto wrong = qvhost::usage_error(*app, typed, error);
        // What runs as a monitoring plug-in says so in its own words.
        if (argc > 1 && (typed[0] == "check" || typed[0] == "doctor"))
            return qvhost::tell_usage_error(wrong);
        std::cerr << "qvhost: " << qvhost::one_line(wrong) << "\n(" << qvhost::help_for(*app, typed)
                  << " tells more)\n";
        return kUsage;
    } catch (const std::runtime_error& error) {
        std::cerr << "qvhost: " << qvhost::one_line(error.what()) << '\n';
        return kUsage;
    }
    for (const auto& command : kCollecting) {
        if (app->got_subcommand(command.name)) return command.run(parsed);
    }
    std::signal(SIGPIPE, on_broken_pipe);
    std::cout.exceptions(std::ios::badbit);
    for (const auto& command : kPrinting) {
        if (app->got_subcommand(command.name)) return command.run(parsed);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // It takes a tool's place, and has the signals and streams that the tool would have.
    if (argc > 1 && argv[1] == std::string_view(qvhost::compat::kStandInCommand))
        return qvhost::compat::run_stand_in(argc - 2, argv + 2);
    const SignalHandler on_broken_pipe = std::signal(SIGPIPE, SIG_IGN);
    // With this handler a limit on the size of files (ulimit -f) is an error and not the end. Tools do not
    // inherit handlers.
    std::signal(SIGXFSZ, [](int) {});
    // If it is ignored, nobody learns how a process ended.
    std::signal(SIGCHLD, SIG_DFL);
    open_closed_standard_streams();
    // All that is written is private: captures hold serial numbers, addresses and logs.
    ::umask(077);
    try {
        const int status = run(argc, argv, on_broken_pipe);
        std::cout.flush();
        if (!std::cout) throw std::ios_base::failure("");
        return status;
    } catch (const std::ios_base::failure&) {
        std::cout.exceptions(std::ios::goodbit);  // std::cerr flushes it
        std::cerr << "qvhost: cannot write to standard output\n";
    } catch (const qvhost::Misuse& error) {
        std::cerr << "qvhost: " << qvhost::one_line(error.what()) << '\n';
        return kUsage;
    } catch (const qvhost::MachineBusy& error) {
        std::cerr << "qvhost: " << qvhost::one_line(error.what()) << '\n';
        return qvhost::kMachineBusy;
    } catch (const std::exception& error) {
        std::cout.exceptions(std::ios::goodbit);
        std::cerr << "qvhost: " << qvhost::one_line(qvhost::words_of(error)) << '\n';
    }
    return argc > 1 && argv[1] == std::string_view("diff") ? qvhost::kDiffTrouble : kCouldNot;
}
