#include "qvhost/base/machine_identity.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <sstream>

#include "files/descriptor.h"

namespace qvhost {

namespace {

std::string read_small_file(const char* path) {
    constexpr std::size_t kMaxBytes = 65536;
    const Descriptor file(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return file ? read_bytes(file.get(), kMaxBytes) : "";
}

// "d9a1...\n", or "uninitialized" while the machine is installed.
std::optional<std::string> machine_id_in(const std::string& text) {
    const auto id = text.substr(0, text.find('\n'));
    const bool is_id = id.size() == 32 && std::all_of(id.begin(), id.end(), [](char c) {
                           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
                       });
    return is_id ? std::optional(id) : std::nullopt;
}

// "3241.52 12034.11"
std::optional<long> seconds_in(const std::string& text) {
    long seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return error == std::errc() ? std::optional(seconds) : std::nullopt;
}

}  // namespace

std::optional<std::string> os_name_in(const std::string& os_release) {
    constexpr std::string_view kKey = "PRETTY_NAME=";
    std::istringstream lines(os_release);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(kKey)) continue;
        std::string name;
        char quote = 0;
        for (std::size_t i = kKey.size(); i < line.size(); ++i) {
            const char c = line[i];
            if (c == quote) {
                quote = 0;
            } else if (quote == 0 && (c == '"' || c == '\'')) {
                quote = c;
            } else if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
                name += line[++i];
            } else {
                name += c;
            }
        }
        return name.empty() ? std::nullopt : std::optional(name);
    }
    return std::nullopt;
}

MachineIdentity this_machine() {
    MachineIdentity machine;
    utsname names{};
    if (::uname(&names) == 0) {
        machine.host = names.nodename;
        machine.kernel = names.release;
    }
    machine.machine_id = machine_id_in(read_small_file("/etc/machine-id"));
    for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
        if (!machine.os) machine.os = os_name_in(read_small_file(file));
    }
    machine.uptime_seconds = seconds_in(read_small_file("/proc/uptime"));
    return machine;
}

std::string effective_user() {
    const auto* const user = ::getpwuid(::geteuid());
    return user ? user->pw_name : std::to_string(::geteuid());
}

}  // namespace qvhost
