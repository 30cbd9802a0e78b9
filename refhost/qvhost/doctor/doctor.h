// `qvhost doctor`: what a collection will find on this machine, and the command that mends what is missing.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

enum class Condition { ok, unknown, warning, critical };  // the worse one comes later

struct Examined {
    std::string subject;
    Condition condition = Condition::ok;
    std::string says;
    std::string mend = {};  // a command; empty: there is nothing to mend, or no command does it
};

// `root` is where the machine's files are.
std::vector<Examined> examine(const DoctorOptions& options,
                              const std::filesystem::path& root = "/");

// Prints it on standard output. Returns the exit status of a monitoring plug-in.
int doctor(const DoctorOptions& options);

}  // namespace qvhost
