// The lock of a machine: one holder, who is named, and who leaves nothing behind that locks.
#include "qvhost/base/machine_lock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "files/temporary_directory.h"

namespace qvhost {

namespace {

std::string told_by_second(const std::filesystem::path& file) {
    try {
        const MachineLock second(file, "the second");
        return "no";
    } catch (const MachineBusy& error) {
        return error.what();
    }
}

std::string text_of(const std::filesystem::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(MachineLock, TheSecondIsToldWhoTheFirstIs) {
    const TemporaryDirectory place("lock");
    const auto file = place.path() / "lock";
    {
        const MachineLock first(file, "collecting into /var/log");
        const auto told = told_by_second(file);
        EXPECT_TRUE(told.starts_with("another run asks this machine: process " +
                                     std::to_string(::getpid()) + " since 20"))
            << told;
        EXPECT_TRUE(told.ends_with("Z, collecting into /var/log")) << told;
        EXPECT_EQ(told_by_second(file), told) << "a refusal changes nothing";
    }
    EXPECT_EQ(told_by_second(file), "no");
    EXPECT_TRUE(text_of(file).ends_with("Z, the second")) << "nothing of the first is left";
}

TEST(MachineLock, WhatCannotBeLockedIsRefused) {
    const TemporaryDirectory place("lock");
    const auto in = [&](const char* name) { return place.path() / name; };
    EXPECT_THROW(MachineLock(in("missing") / "lock", ""), std::runtime_error);
    EXPECT_THROW(MachineLock(place.path(), ""), std::runtime_error);
    std::filesystem::create_symlink(in("victim"), in("link"));
    EXPECT_THROW(MachineLock(in("link"), ""), std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(in("victim")));
}

}  // namespace

}  // namespace qvhost
