// How much a test does: a little every day, more with ./test --long.
#pragma once

#include <cstdlib>

namespace test {

// The number in the environment's `variable`; without it `longer` if QV_TEST_LONG is set, else `usual`.
inline long setting(const char* variable, long usual, long longer) {
    if (const char* value = std::getenv(variable)) return std::atol(value);
    return std::getenv("QV_TEST_LONG") ? longer : usual;
}

}  // namespace test
