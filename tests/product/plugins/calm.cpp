// Files known records, and what surrounds it.
#include <sys/stat.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "test_module.h"

namespace {

using namespace test;

void values(RRepository& repository) {
    RInstance record("VALUES", "first", -1);
    record.AddProperty("text", "Text", " with blanks and an end\n");
    record.AddProperty("number", "Number", -7);
    record.AddToRepository(repository);
    record.AddProperty("text", "Another label", std::string("a\0b", 3));
    record.AddProperty("bytes", "Bytes", "\xff\x1b[31m<b>'");
    record.AddToRepository(repository);
    RInstance("VALUES", "empty", 3).AddToRepository(repository);
}

const char* variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "(unset)";
}

void surroundings(RRepository& repository) {
    RInstance record("SURROUNDINGS", "", -1);
    for (const char* name : {"PATH", "LC_ALL", "LANG", "LANGUAGE", "LC_TIME", "QV_TOOL_TIMEOUT",
                             "QV_ARCHIVE_TIMEOUT", "QV_SILENCE_TIMEOUT", "QV_TEST_OWN"})
        record.AddProperty(name, name, variable(name));
    char log_dir[256];
    XModule::GetLogDir(log_dir, sizeof log_dir);
    record.AddProperty("log_dir", "", log_dir);
    record.AddProperty("directory", "", std::filesystem::current_path().string());
    record.AddProperty("program_dir", "",
                       std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
    const mode_t mask = ::umask(0);
    ::umask(mask);
    record.AddProperty("umask", "", static_cast<int>(mask));
    record.AddProperty("input", "", std::getchar());
    record.AddToRepository(repository);

    std::puts("a word on standard output");
    std::fflush(stdout);
    if (std::system("echo a tool\\'s complaint >&2; : >capture.txt") != 0) std::abort();
}

}  // namespace

int AddModules(Modules& modules) {
    modules.push_back(boost::make_shared<TestModule>(
        "zeta", std::vector<std::pair<std::string, TestModule::Enumerate>>{
                    {"VALUES", values}, {"SURROUNDINGS", surroundings}}));
    modules.push_back(boost::make_shared<TestModule>(
        "alpha", std::vector<std::pair<std::string, TestModule::Enumerate>>{
                     {"EMPTY", [](RRepository&) {}},
                     {"ANOTHER", [](RRepository& r) { file(r, "ANOTHER", "1"); }}}));
    return 0;
}
