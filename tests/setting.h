// How much a test does: a little every day, more with ./test --long.
#pragma once

#include <algorithm>
#include <cstddef>
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

// Of a list of servers those that a test runs on. Under sanitizers every fourth: the other build tries them all, and
// the others run the same code.
template <class List>
List some_of(const List& all) {
#ifdef QV_SANITIZED
    List some;
    for (std::size_t i = 0; i < all.size(); i += 4) some.push_back(all[i]);
    return some;
#else
    return all;
#endif
}

// Of many trials that differ in what they damage those that are run, by their number: under sanitizers every fourth.
inline bool is_run(long trial) {
#ifdef QV_SANITIZED
    return trial % 4 == 0;
#else
    return trial >= 0;
#endif
}

}  // namespace test
