// Files whose reading fails half-way, as those of a broken disk do. A program that includes this is linked with
// failing_reads.cpp and "-Wl,--wrap=read".
#pragma once

#include <string>

namespace test {

// While it lives, read() of the file gives its first half, and then EIO. The `from`th reading of the file from its
// beginning is the first that fails.
class FailingReads {
public:
    explicit FailingReads(const std::string& path, int from = 1);
    ~FailingReads();
    FailingReads(const FailingReads&) = delete;
    FailingReads& operator=(const FailingReads&) = delete;
};

}  // namespace test
