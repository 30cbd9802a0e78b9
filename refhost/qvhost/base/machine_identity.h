// Which machine a collection is from, and what runs on it.
#pragma once

#include <optional>
#include <string>

namespace qvhost {

// What is not known is nothing.
struct MachineIdentity {
    std::optional<std::string> host;
    std::optional<std::string> machine_id;  // of 32 hexadecimal digits, machine-id(5)
    std::optional<std::string> os;          // its name for people, os-release(5)
    std::optional<std::string> kernel;      // its release
    std::optional<long> uptime_seconds;
};

// The machine that this program runs on.
MachineIdentity this_machine();

// The PRETTY_NAME of an os-release(5) text, without quotes and escapes; nothing if it has none.
std::optional<std::string> os_name_in(const std::string& os_release);

// The name of the user whose rights this process has; the number if there is no name.
std::string effective_user();

}  // namespace qvhost
