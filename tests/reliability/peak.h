// How much memory the largest process took.
#pragma once

#include <sys/resource.h>

namespace test {

#ifdef QV_SANITIZED
inline constexpr bool kMemoryTells = false;  // it keeps what is freed
#else
inline constexpr bool kMemoryTells = true;
#endif

// KiB, of all processes so far that this one has started and that have ended. What this one had when it started them
// counts as theirs.
inline long peak_so_far() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
}

}  // namespace test
