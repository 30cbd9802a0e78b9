// The program: from the command line to what it asks for.

#include <sys/stat.h>

#include <csignal>
#include <ios>
#include <iostream>

#include "files/failure.h"
#include "qvfleet/commands.h"
#include "show/visible.h"

namespace {

using namespace qvhost::fleet;

// clang-format off
constexpr struct {
    const char* name;
    int (*run)(const Options& options);
} kCommands[] = {
    {"import", import_command},
    {"status", status_command},
    {"query",  query_command},
    {"export", export_command},
    {"forget", forget_command},
};
// clang-format on

int complain(const std::string& words, int status) {
    std::cout.exceptions(std::ios::goodbit);  // std::cerr flushes it
    std::cerr << "qvfleet: " << qvhost::one_line(words) << '\n';
    return status;
}

int run(int argc, char** argv) {
    Options options;
    const auto app = command_line(options);
    try {
        app->parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        app->exit(wanted);
        return kDone;
    } catch (const CLI::ParseError& error) {
        return complain(std::string(error.what()) + " (qvfleet --help tells more)", kWrongUse);
    }
    if (app->got_subcommand("demo")) return demo_command(options, app->count("--db") > 0);
    for (const auto& [name, command] : kCommands) {
        if (app->got_subcommand(name)) return command(options);
    }
    return kWrongUse;
}

}  // namespace

int main(int argc, char** argv) {
    // What is stored is private: serial numbers, addresses, logs.
    ::umask(077);
    std::cout.exceptions(std::ios::badbit);
    try {
        const int status = run(argc, argv);
        std::cout.flush();
        return status;
    } catch (const std::ios_base::failure&) {
        return complain("cannot write to standard output", kCouldNot);
    } catch (const WrongUse& error) {
        return complain(error.what(), kWrongUse);
    } catch (const std::exception& error) {
        return complain(qvhost::words_of(error), kCouldNot);
    }
}
