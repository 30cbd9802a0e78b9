#include "tools/tools.h"

#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "log/unit_log.h"
#include "read/text.h"
#include "run/command.h"
#include "runner/process.h"

char current_absolute_path[256] = {};

namespace marlox::repository {

namespace {

// The BMC module's unit: hosts expect these messages there.
constexpr capture::UnitLog unit{"qvmodules/rbmcinfo"};

}  // namespace

char current_absolute_path_bmc[256] = {};
char current_absolute_path2[256] = {};
int abs_path = 0;
int abs_path2 = 0;
char fullpath[256] = {};
int linux_x32_x64 = 64;

int check_system_call(int status, const char* name) {
    if (status == -1) {
        unit.progress("Failed to get ", name, " info");
        return 1;
    }
    const int code = (status >> 8) & 255;
    if ((status & 127) != 0) {
        unit.progress("Signal terminal while getting ", name, " info,exit status:", code);
        return 1;
    }
    if (code == 0) {
        unit.detail("Get ", name, " info successfully");
        return 0;
    }
    const std::string_view what = name;
    if (what == "selftest") return 0;
    if (what == "FRU" && code == 1) return 0;
    unit.progress("Failed to get ", name, " info,exit code:", code);
    return 1;
}

int GetProgramDir(char* buffer) {
    constexpr ssize_t size = 256;
    const ssize_t length = ::readlink("/proc/self/exe", buffer, size);
    if (length < 0 || length >= size) {
        std::puts("Failed to get current absolute path");
        buffer[0] = '\0';  // what readlink() wrote of a longer path names another directory
        return -1;
    }
    // The byte behind the link text, which readlink() does not write: zero in a fresh buffer.
    if (buffer[length] == '/') {
        if (length + 1 < size) buffer[length + 1] = '\0';
        return 0;
    }
    for (ssize_t i = length - 1; i >= 0; --i) {
        if (buffer[i] != '/') continue;
        buffer[i + 1] = '\0';
        break;
    }
    return 0;
}

int check_linux_bit() {
    const auto platform = runner::output_of("uname -i");
    if (!platform) {
        unit.progress("Fail to get the Linux OS structure");
        return 1;
    }
    linux_x32_x64 = capture::contains(capture::first_line(*platform, 9), "64") ? 64 : 32;
    return 0;
}

char* strupr(char* text) {
    for (char* c = text; *c; ++c) {
        const auto letter = static_cast<unsigned char>(*c);
        if (std::islower(letter)) *c = static_cast<char>(std::toupper(letter));
    }
    return text;
}

void StrReplace(char* text, char* from, char* to) {
    const std::string_view wanted = from;
    if (wanted.empty()) return;
    std::string replaced;
    std::string_view rest = text;
    for (auto at = rest.find(wanted); at != std::string_view::npos; at = rest.find(wanted)) {
        replaced.append(rest.substr(0, at)).append(to);
        rest.remove_prefix(at + wanted.size());
    }
    replaced.append(rest);
    std::memcpy(text, replaced.c_str(), replaced.size() + 1);
}

void make_tools_executable(const char* program_dir) {
    runner::run(capture::expand("chmod 544 '{P}qv_tools'/*", {program_dir}));
}

}  // namespace marlox::repository
