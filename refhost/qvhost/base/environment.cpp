#include "qvhost/base/environment.h"

#include <boost/algorithm/string/join.hpp>
#include <cstdlib>
#include <vector>

namespace qvhost {

namespace {

void set_number(const char* variable, long long number) {
    ::setenv(variable, std::to_string(number).c_str(), 1);
}

std::string with_system_directories(std::string path) {
    for (const char* directory : {"/usr/sbin", "/usr/bin", "/sbin", "/bin"}) {
        if ((":" + path + ":").find(":" + std::string(directory) + ":") != std::string::npos)
            continue;
        if (!path.empty()) path += ':';
        path += directory;
    }
    return path;
}

}  // namespace

std::filesystem::path program_file() { return std::filesystem::read_symlink("/proc/self/exe"); }

std::filesystem::path installed_plugin() {
    return program_file().parent_path().parent_path() / "lib" / "librepository_qvmodule.so";
}

std::string usual_search_path() {
    const char* users = std::getenv("PATH");
    return with_system_directories(users ? users : "");
}

void set_tool_environment(const std::string& search_path, const Limits& limits,
                          std::uint64_t free_bytes, const std::string& tool_limits,
                          const std::filesystem::path& command_log) {
    const auto path = search_path.empty() ? usual_search_path() : search_path;
    ::setenv("PATH", path.c_str(), 1);

    for (const char* variable : {"LANG", "LANGUAGE", "LC_COLLATE", "LC_CTYPE", "LC_MESSAGES",
                                 "LC_MONETARY", "LC_NUMERIC", "LC_TIME", "COLUMNS"})
        ::unsetenv(variable);
    ::setenv("LC_ALL", "C.UTF-8", 1);

    set_number("QV_TOOL_TIMEOUT", limits.tool_seconds);
    set_number("QV_ARCHIVE_TIMEOUT", limits.archive_seconds);
    set_number("QV_SILENCE_TIMEOUT", limits.silence_seconds);
    const auto set_size = [](const char* variable, std::uint64_t bytes) {
        set_number(variable, static_cast<long long>(bytes));
    };
    set_size("QV_CAPTURE_BYTES", limits.capture_bytes);
    set_size("QV_ARCHIVE_BYTES", limits.archive_bytes);
    set_size("QV_RUN_BYTES", limits.run_bytes);
    set_size("QV_FREE_BYTES", free_bytes);
    set_number("QV_VALUE_BYTES", kMostValueBytes);
    set_number("QV_PROCESSES", limits.processes);
    ::setenv("QV_TOOL_LIMITS", tool_limits.c_str(), 1);
    ::setenv("QV_COMMAND_LOG", command_log.c_str(), 1);
    ::setenv("QV_END_PROCESSES", "1", 1);  // the collecting child adopts orphans (runner/group.h)
    const std::vector<std::string> bmc_tools(kBmcTools.begin(), kBmcTools.end());
    ::setenv("QV_DEVICE_TOOLS", boost::join(bmc_tools, " ").c_str(), 1);
    ::setenv("QV_DEVICE_QUESTION", "ipmitool mc info", 1);
    ::unsetenv("QV_DEVICE_LEFT");
}

void set_tool_deadline(std::chrono::steady_clock::time_point deadline) {
    using std::chrono::seconds;
    set_number("QV_DEADLINE", std::chrono::ceil<seconds>(deadline.time_since_epoch()).count());
}

}  // namespace qvhost
