// Asks tools of which no host has heard, and logs its commands as QV_COMMAND_LOG wants them. What its
// tables are, the test writes beside it.
#include <boost/make_shared.hpp>
#include <cstdlib>
#include <fstream>
#include <string>

#include "test_module.h"

namespace {

using namespace test;

void run(const std::string& tool, const std::string& capture) {
    char log_dir[256];
    XModule::GetLogDir(log_dir, sizeof log_dir);
    const auto command = tool + " >'" + log_dir + "/" + capture + "' 2>&1";
    std::ofstream log(std::getenv("QV_COMMAND_LOG"), std::ios::app);
    log << "> " << command << std::endl;
    log << "< 0.010 " << std::system(command.c_str()) << std::endl;
}

}  // namespace

int AddModules(Modules& modules) {
    modules.push_back(boost::make_shared<TestModule>(
        "newcomer", std::vector<std::pair<std::string, TestModule::Enumerate>>{
                        {"ABSENT", [](RRepository&) { run("qv-absent-tool -a", "absent.txt"); }},
                        {"QUIET", [](RRepository&) { run("true", "quiet.txt"); }},
                        {"WORDY", [](RRepository&) { run("echo words", "wordy.txt"); }},
                        {"LATER", [](RRepository&) {}},
                        {"PLACE", [](RRepository&) {}},
                        {"UNTOLD", [](RRepository&) {}},
                    }));
    return 0;
}
