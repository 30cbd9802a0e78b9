// How much a test does: a little every day, more with ./test --long.
#pragma once

#include <algorithm>
#include <cstdlib>

namespace test {

// The number in the environment's `variable`; without it `longer` if QV_TEST_LONG is set, else `usual`.
inline long setting(const char* variable, long usual, long longer) {
    if (const char* value = std::getenv(variable)) return std::atol(value);
    return std::getenv("QV_TEST_LONG") ? longer : usual;
}

// The same for how often a random trial is repeated. Under sanitizers a fifth is usual: the other build tries
// more, and a few trials run the same code.
inline long repetitions(const char* variable, long usual, long longer) {
#ifdef QV_SANITIZED
    usual = std::max(1L, usual / 5);
#endif
    return setting(variable, usual, longer);
}

}  // namespace test
