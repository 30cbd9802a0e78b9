// Runs each line of $QV_TEST_COMMANDS in the shell, as modules run their tools, and files what came
// of it. In them "{TOOLS}" is qv_tools beside the program and "{LOG}" the log directory.
#include <sys/wait.h>

#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

#include "test_module.h"

namespace {

using namespace test;

std::string in_quotes(const std::string& path) {
    std::string text = "'";
    for (const char c : path) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

void replace(std::string& text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    if (at != std::string::npos) text.replace(at, from.size(), to);
}

void ask(RRepository& repository, std::string command) {
    char log_dir[256];
    XModule::GetLogDir(log_dir, sizeof log_dir);
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    replace(command, "{TOOLS}", in_quotes((program.parent_path() / "qv_tools").string()));
    replace(command, "{LOG}", in_quotes(log_dir));

    std::string output;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return;
    char block[4096];
    for (std::size_t n = 0; (n = std::fread(block, 1, sizeof block, pipe)) > 0;)
        output.append(block, n);
    const int status = ::pclose(pipe);

    RInstance record("ANSWERS", "", -1);
    record.AddProperty("output", "", output);
    record.AddProperty("exit", "", WIFEXITED(status) ? WEXITSTATUS(status) : -1);
    record.AddProperty("signal", "", WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    record.AddToRepository(repository);
}

void ask_all(RRepository& repository) {
    std::istringstream commands(std::getenv("QV_TEST_COMMANDS"));
    for (std::string line; std::getline(commands, line);) ask(repository, line);
}

}  // namespace

int AddModules(Modules& modules) {
    modules.push_back(boost::make_shared<TestModule>(
        "asks", std::vector<std::pair<std::string, TestModule::Enumerate>>{{"ANSWERS", ask_all}}));
    return 0;
}
