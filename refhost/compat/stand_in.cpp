#include "compat/stand_in.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "compat/layer.h"

namespace qvhost::compat {

namespace {

constexpr int kUsage = 2;
constexpr int kNotFound = 127;

constexpr struct {
    std::string_view name;
    int (*run)(const StandInArguments& given);
} kPrograms[] = {
    {"ipmitool", ipmitool_stand_in},
    {"mv",       mv_stand_in      },
    {"note",     note_stand_in    },
    {"pack",     pack_stand_in    },
    {"record",   record_stand_in  },
};

}  // namespace

int run_stand_in(int argc, char** argv) {
    constexpr int kOwn = 3;  // NAME LOG LEVEL
    StandInArguments given;
    if (argc < kOwn) return kUsage;
    // A lane of a collection has a log of its own.
    const char* const log = std::getenv(kLogVariable);
    given.log = log ? log : argv[1];
    const std::string_view level = argv[2];
    std::from_chars(level.data(), level.data() + level.size(), given.log_level);
    given.arguments.assign(argv + kOwn, argv + argc);
    for (const auto& [name, run] : kPrograms) {
        if (name != argv[0]) continue;
        try {
            return run(given);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "qvhost: %s\n", error.what());
            return 1;
        }
    }
    return kUsage;
}

int start_instead(const std::vector<std::string>& command) {
    std::vector<std::string> texts{"sh", "-c", "\"$@\"", "sh"};
    texts.insert(texts.end(), command.begin(), command.end());
    std::vector<char*> arguments;
    for (auto& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    ::execv("/bin/sh", arguments.data());
    return kNotFound;
}

int end_as(int wait_status) {
    if (WIFEXITED(wait_status)) return WEXITSTATUS(wait_status);
    const int signal = WTERMSIG(wait_status);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
    return 128 + signal;
}

}  // namespace qvhost::compat
