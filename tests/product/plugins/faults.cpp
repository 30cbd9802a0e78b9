// One module for each way in which a collection can go wrong. $QV_TEST_FAULT chooses the one that is
// loaded.
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "test_module.h"

namespace {

using namespace test;
using Tables = std::vector<std::pair<std::string, TestModule::Enumerate>>;

void file_many(RRepository& repository, const std::string& table, int count) {
    for (int i = 0; i < count; ++i) file(repository, table, std::to_string(i));
}

[[noreturn]] void die(int signal) {
    std::signal(signal, SIG_DFL);  // a sanitizer may have a handler of its own
    std::raise(signal);
    std::abort();
}

// A tool in a process group of its own, another in a session of its own that cannot be asked to end.
[[noreturn]] void hang() {
    if (std::system("setsid sh -c \"trap '' TERM HUP INT; while :; do sleep 1000; done\" &") != 0)
        std::abort();
    for (;;) {
        if (std::system("sleep 1000") == -1) std::abort();
    }
}

Tables tables_for(const std::string& fault) {
    const auto before = [](RRepository& r) { file_many(r, "A_BEFORE", 1000); };
    const auto after = [](RRepository& r) { file_many(r, "Z_AFTER", 3); };
    const auto filing = [](auto ending) {
        return [ending](RRepository& r) {
            file_many(r, "M_FAULT", 2);
            ending();
        };
    };
    const auto with = [&](TestModule::Enumerate faulty) {
        return Tables{{"A_BEFORE", before}, {"M_FAULT", std::move(faulty)}, {"Z_AFTER", after}};
    };
    if (fault == "crash") return with(filing([] { die(SIGSEGV); }));
    if (fault == "kill") return with(filing([] { die(SIGKILL); }));
    if (fault == "exit") return with(filing([] { ::_exit(0); }));
    if (fault == "throw") return with(filing([] { throw std::runtime_error("no\nluck"); }));
    if (fault == "throw_int") return with(filing([] { throw 7; }));
    if (fault == "hang") return with(filing([] { hang(); }));
    if (fault == "flood") {
        return with([](RRepository& r) {
            for (int i = 0;; ++i) file(r, "M_FAULT", std::to_string(i));
        });
    }
    return {};
}

}  // namespace

int AddModules(Modules& modules) {
    const char* fault = std::getenv("QV_TEST_FAULT");
    const std::string name = fault ? fault : "";
    if (name == "load") die(SIGSEGV);
    modules.push_back(boost::make_shared<TestModule>("faults", tables_for(name)));
    return 0;
}
