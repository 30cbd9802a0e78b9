// /etc/qvhost.conf: options of collections, for every collection on this machine.
//     # a comment
//     tool-timeout = 600        # the names are those of the options
//     limit = ipmitool=900      # what can be given more than once has a line each
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost {

struct Setting {
    std::string name;
    std::string value;
    unsigned line = 0;  // counted from 1

    std::string argument() const { return "--" + name + "=" + value; }
};

// The file that is read: $QVHOST_CONF, or /etc/qvhost.conf.
std::filesystem::path settings_file();

// What it says, in its order; nothing if there is no such file. Throws std::runtime_error, "FILE:LINE:
// REASON" if a line is wrong, and if others could have written the file.
std::vector<Setting> read_settings_file(const std::filesystem::path& file);

// The command line with the file's settings behind the command's name, if the command collects: what it gives
// itself stands. Throws as read_settings_file() does.
std::vector<std::string> with_settings(const std::vector<std::string>& arguments);

// `qvhost config`: prints each option, what is in force, and where that is said.
void print_settings();

}  // namespace qvhost
