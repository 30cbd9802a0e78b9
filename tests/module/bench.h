// The bench on which a module is tested: the built plug-in in the fake host, a throw-away program
// directory and log directory, stand-in tools, and a note of every command that the shell gets.
#pragma once

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fakehost.h"
#include "rmodule.h"

// What the operating system answers in place of the real thing, for calls from the plug-in.
struct System {
    std::string exe_link;                // of /proc/self/exe
    int exe_link_error = 0;              // or the error of reading it
    std::map<std::string, bool> exists;  // what access() says of these files
    // Started in place of every shell: captures are then what the test has put there.
    std::string program_instead;
    // The error with which starting a process fails, by command; 0 starts it.
    std::function<int(std::string_view command)> spawn_error;
};

extern System fake_system;

class Bench : public ::testing::Test {
protected:
    Bench();
    ~Bench() override;

    // A program on the search path, or a vendor's tool in qv_tools, as a shell script.
    void tool(const std::string& name, const std::string& script);
    void vendor_tool(const std::string& name, const std::string& script);

    // A script that prints exactly `text` and exits.
    std::string prints(const std::string& text, int exit_code = 0);

    // A script that kills the process that the host waits for: the shell, or itself where the shell
    // has replaced itself by its last command.
    static std::string dies_by(int signal);

    // A script with an answer for each argument list: `ARGS` -> what it does.
    static std::string by_arguments(const std::map<std::string, std::string>& answers);

    // Moves the two directories: the bench's places end with "/".
    void use_program_dir(const std::string& name);
    void use_log_dir(const std::string& name);

    std::string log_file(const std::string& name) const;  // its content; "(none)" if there is none

    // What was noted since the last call, one note a line, with the two directories shown as P/ and
    // L/.
    std::string noted();
    // The same, only the notes that begin with one of the given words ("$", "log 3", "add", ...).
    std::string noted(const std::vector<std::string>& beginnings);

    marlox::repository::RModule& module(const std::string& name);
    void forget_modules() { modules_.clear(); }  // the next one asked for is a new object
    void enumerate(const std::string& module_name, const std::string& table);
    void wrap(const std::string& module_name, const std::string& table);

    std::filesystem::path root;
    std::string program_dir;  // with "/"
    std::string log_dir;      // with "/"

private:
    void write_script(const std::filesystem::path& path, const std::string& script);

    std::string saved_path_;
    std::filesystem::path saved_directory_;
    std::size_t texts_ = 0;
    std::vector<boost::shared_ptr<marlox::repository::RModule>> modules_;
};
