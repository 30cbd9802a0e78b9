// A directory for one test, gone with it; and random texts.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace test {

class Place : public testing::Test {
protected:
    Place() {
        std::string pattern = std::filesystem::temp_directory_path() / "qv-host-XXXXXX";
        dir = ::mkdtemp(pattern.data());
    }
    ~Place() override {
        std::error_code ignored;
        std::filesystem::permissions(dir, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(dir, ignored);
    }

    std::filesystem::path dir;
};

inline std::string content(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The number that random tests begin with: QV_TEST_SEED, or a new one each time. It is printed.
inline unsigned long first_random() {
    const char* given = std::getenv("QV_TEST_SEED");
    const unsigned long number = given ? std::strtoul(given, nullptr, 10) : std::random_device()();
    std::printf("QV_TEST_SEED=%lu\n", number);
    return number;
}

}  // namespace test
