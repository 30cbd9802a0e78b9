// Keeps the beginning of what a command says on standard error, for the command log.
#pragma once

#include <string>

namespace runner {

// The command gets a file without a name beside the command log in place of the standard error, so that
// nobody waits for a process that it leaves behind, and such a process can go on writing. pass_on() then
// gives the host's standard error what it would have got.
class KeptStandardError {
public:
    KeptStandardError();  // no file if there is no log, or none can be made
    ~KeptStandardError();
    KeptStandardError(const KeptStandardError&) = delete;
    KeptStandardError& operator=(const KeptStandardError&) = delete;

    int fd() const { return fd_; }  // -1: the command has the host's own

    // Copies what was said so far to the host's standard error. Returns its first 4 KiB.
    std::string pass_on() const;

private:
    int fd_ = -1;
};

}  // namespace runner
