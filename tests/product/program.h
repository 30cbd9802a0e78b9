// Runs the built qvhost as its users do.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace test {

struct Outcome {
    int exit = -1;   // the exit status; -1: it was killed
    int signal = 0;  // by this
    std::string out;
    std::string err;
};

struct Invocation {
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment = {};  // beside the test's own
    std::set<std::string> unset = {};
    std::string directory = {};  // where it runs
    mode_t mask = 022;
    std::string out_file = {};              // standard output, if it is not to be captured
    std::set<int> closed = {};              // standard descriptors that are closed
    bool terminal = false;                  // standard error is a terminal 20 columns wide
    std::vector<std::string> program = {};  // what is run; none: the built qvhost
};

std::filesystem::path plugin(const std::string& name);

// A directory of the test's own, which goes with it, and runs of the program in it.
class ProductTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Runs it to its end.
    Outcome run(const Invocation& invocation);
    Outcome run(const std::vector<std::string>& arguments) { return run(Invocation{arguments}); }

    // Starts it; every process that comes of it can be found.
    pid_t start(const Invocation& invocation);
    Outcome finish(pid_t pid);

    // The processes of this test's runs that are alive.
    std::vector<pid_t> family() const;

    // Of these the collecting process that `parent` has started; 0: there is none.
    pid_t child_of(pid_t parent) const;

    // "collect" with a plug-in of the tests into log_dir(); this machine itself is asked nothing.
    std::vector<std::string> collect(const std::string& name,
                                     const std::vector<std::string>& more = {}) const;

    std::filesystem::path dir() const { return dir_; }
    std::filesystem::path log_dir() const { return dir_ / "log"; }

private:
    struct Files {
        std::filesystem::path out;
        std::filesystem::path err;
        int terminal = -1;
    };
    std::filesystem::path dir_;
    std::map<pid_t, Files> running_;
    int runs_ = 0;
};

// A program that this signal may have hit has ended in one of the ways that it promises.
void expect_end_of_hit(const Outcome& outcome, int signal);

// Waits until it is so; fails the test when it takes too long.
void wait_until(const std::string& what, const std::function<bool()>& is_so);

std::string read_file(const std::filesystem::path& file);
void write_file(const std::filesystem::path& file, const std::string& text);
std::vector<std::string> lines_of(const std::string& text);

}  // namespace test
