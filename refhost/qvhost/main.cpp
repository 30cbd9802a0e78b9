// The program: from the command line to what it asks for.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <ios>
#include <iostream>
#include <string>
#include <vector>

#include "qvhost/cli/command_line.h"
#include "qvhost/collect/child.h"
#include "qvhost/collect/collect.h"
#include "qvhost/present/export.h"
#include "qvhost/present/query.h"
#include "qvhost/present/show.h"
#include "qvhost/present/tables.h"
#include "qvhost/replay/replay.h"
#include "show/visible.h"

namespace {

using qvhost::Asked;

constexpr int kCouldNot = 1;
constexpr int kUsage = 2;

using SignalHandler = void (*)(int);

// Of a standard stream that is closed, a file of ours would get the number, and what is meant for
// the stream. In its place there is one that cannot be written; errors alone are dropped.
void hold_standard_streams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY);
    }
}

// Commands that collect: a reader of their output that goes away is an error of writing, not the end
// of the collection.
constexpr struct {
    const char* name;
    int (*run)(const Asked& asked);
} kCollecting[] = {
    {"collect",             [](const Asked& asked) { return qvhost::collect_here(asked.collect); }         },
    {"replay",              [](const Asked& asked) { return qvhost::replay(asked.machine, asked.collect); }},
    {qvhost::kChildCommand,
     [](const Asked& asked) {
         return qvhost::run_child(asked.collect, asked.stage, asked.lifeline);
     }                                                                                                     },
};

// Commands that print and leave no more behind than that: they end with their reader.
constexpr struct {
    const char* name;
    void (*run)(const Asked& asked);
} kPrinting[] = {
    {"tables", [](const Asked& asked) { qvhost::list_tables(asked.collect.plugin); }},
    {"show",   [](const Asked& asked) { qvhost::show_report(asked.show); }          },
    {"query",  [](const Asked& asked) { qvhost::query_report(asked.query); }        },
    {"export", [](const Asked& asked) { qvhost::export_report(asked.exporting); }   },
};

// For the build and for shells, not for people.
bool answers_hidden(const CLI::App& app, const std::vector<std::string>& arguments) {
    const std::string name = arguments.empty() ? "" : arguments[0];
    if (name == "manual") {
        qvhost::write_manual(std::cout, app);
    } else if (name == "complete") {
        qvhost::write_completions(std::cout, app, {arguments.begin() + 1, arguments.end()});
    } else {
        return false;
    }
    return true;
}

int run(int argc, char** argv, SignalHandler on_broken_pipe) {
    Asked asked;
    const auto app = qvhost::command_line(asked);
    if (answers_hidden(*app, {argv + 1, argv + argc})) return 0;
    try {
        app->parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        app->exit(wanted);
        return 0;
    } catch (const CLI::ParseError& error) {
        app->exit(error);
        return kUsage;
    }
    for (const auto& command : kCollecting) {
        if (app->got_subcommand(command.name)) return command.run(asked);
    }
    std::signal(SIGPIPE, on_broken_pipe);
    std::cout.exceptions(std::ios::badbit);
    for (const auto& command : kPrinting) {
        if (app->got_subcommand(command.name)) command.run(asked);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const SignalHandler on_broken_pipe = std::signal(SIGPIPE, SIG_IGN);
    // A limit on the size of files (ulimit -f) is an error to tell. Tools do not inherit a handler.
    std::signal(SIGXFSZ, [](int) {});
    hold_standard_streams();
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
    } catch (const std::exception& error) {
        std::cout.exceptions(std::ios::goodbit);
        std::cerr << "qvhost: " << qvhost::one_line(error.what()) << '\n';
    }
    return kCouldNot;
}
