// The lock that lets one run at a time ask a machine, whatever its log directory is.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "files/descriptor.h"

namespace qvhost {

// The exit status of a run that another one keeps from beginning (EX_TEMPFAIL): a later try may succeed.
inline constexpr int kMachineBusy = 75;

// Another run holds the lock; the text says which.
class MachineBusy : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// $QVHOST_LOCK, or /run/qvhost.lock.
std::filesystem::path machine_lock_file();

// Held until the object ends, or its process, however it ends; tools do not inherit it.
class MachineLock {
public:
    // Notes in the file who holds it: this process, and what it is for, "collecting into /var/tmp/log".
    // Throws MachineBusy, and std::runtime_error if the file cannot be used.
    MachineLock(const std::filesystem::path& file, const std::string& purpose);

private:
    Descriptor file_;
};

}  // namespace qvhost
