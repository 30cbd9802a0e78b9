// Why a file cannot be run, and that the system agrees.
#include "qvhost/finish/not_executable.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>

#include "place.h"

namespace qvhost {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class NotExecutable : public test::Place {
protected:
    fs::path file(const std::string& content, mode_t mode = 0755) const {
        const auto path = dir / "tool";
        fs::remove(path);
        std::ofstream(path, std::ios::binary) << content;
        ::chmod(path.c_str(), mode);
        return path;
    }

    // Whether a shell could start it.
    static bool runs(const fs::path& path) {
        const int status =
            std::system(("'" + path.string() + "' </dev/null >/dev/null 2>&1").c_str());
        return WIFEXITED(status) && WEXITSTATUS(status) != 126 && WEXITSTATUS(status) != 127;
    }
};

TEST_F(NotExecutable, WordsAndTheSystemAgree) {
    auto foreign = test::content("/bin/true");
    ASSERT_GT(foreign.size(), 20u);
    foreign.replace(18, 2, "\x15\0"s);  // the machine: 64-bit PowerPC
    const struct {
        std::string content;
        std::string why;
        mode_t mode = 0755;
    } files[] = {
        {test::content("/bin/true"), ""},
        {"#!/bin/sh\nexit 0\n", ""},
        {"#! /bin/sh -e\n", ""},
        {"#!/bin/sh -e\r\n", ""},
        {"exit 0\n", ""},
        {"exit 0\n", "there is no right to run it", 0644},
        {"\0\1\2"s, "it is no program"},
        {"\177ELF", "it is cut off"},
        {"\177ELF"s + std::string(40, '\0'), "it is cut off"},
        {foreign, "it is a program for another kind of machine"},
        {"#!/no/such/shell\n", "its interpreter /no/such/shell is not installed"},
        {"#! \t/no/such/shell -x", "its interpreter /no/such/shell is not installed"},
        {"#!/bin/sh\r\n", "its first line ends with a carriage return"},
    };
    for (const auto& [content, why, mode] : files) {
        const auto path = file(content, mode);
        EXPECT_EQ(why_not_executable(path), why) << content.substr(0, 40);
        EXPECT_EQ(runs(path), why.empty()) << content.substr(0, 40);
    }
}

TEST_F(NotExecutable, WhatIsNoFile) {
    EXPECT_EQ(why_not_executable(dir), "it is a directory");
    const auto pipe = dir / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0755), 0);
    EXPECT_EQ(why_not_executable(pipe), "it is no file");
}

// A shell takes it for a script that does nothing.
TEST_F(NotExecutable, AnEmptyFileIsNoTool) {
    EXPECT_EQ(why_not_executable(file("")), "it is an empty file");
}

TEST_F(NotExecutable, TheLoaderIsNamed) {
    auto program = test::content("/bin/true");
    const auto begin = program.find("/lib");
    ASSERT_NE(begin, std::string::npos);
    program.replace(begin, 4, "/LIB");
    const auto loader = program.substr(begin, program.find('\0', begin) - begin);
    const auto path = file(program);
    EXPECT_EQ(why_not_executable(path), "it needs " + loader + ", which is not installed");
    EXPECT_FALSE(runs(path));
}

}  // namespace

}  // namespace qvhost
