#include "rbmcinfo/collectors.h"

#include <unistd.h>

#include "rbmcinfo/unit.h"
#include "run/command.h"
#include "runner/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

using capture::expand;
using runner::run;

constexpr const char* kRedHat = "/etc/redhat-release";
constexpr const char* kNxbr = "/etc/NXBR-release";

// The result of access(): 0 if the file exists.
int missing(const char* file) { return ::access(file, F_OK); }

// The archive keeps the name that the distribution's tool gave it.
int pack_and_fetch(const char* pack, const char* fetch) {
    run(pack, runner::TimeoutKind::archive);
    return run(expand(fetch, {}), runner::TimeoutKind::archive);
}

}  // namespace

int mingling() { return run(expand("cat /proc/cmdline >'{L}cmdline.log'", {})); }

int cpuinfo() { return run(expand("cat /proc/cpuinfo >'{L}cpuinfo.log'", {})); }

int dmesg() { return run(expand("dmesg >'{L}dmesg.log'", {})); }

int dmidecode() { return run(expand("dmidecode >'{L}dmidecode.log'", {})); }

int interrupts() { return run(expand("cat /proc/interrupts >'{L}interrupts.log'", {})); }

int sos() {
    if (missing(kRedHat) == 0) {
        unit.progress("Redhat linux, using sosreport command to collect sos info");
        return pack_and_fetch("sosreport --batch --name=OSlogs --tmp-dir=/tmp",
                              "mv /tmp/sosreport-OSlogs-* '{L}'");
    }
    if (missing(kNxbr) == 0) return 0;
    unit.progress("SUSE linux, using supportconfig command to collect sos info");
    return pack_and_fetch("supportconfig -R /tmp", "mv /tmp/nts_linux* '{L}'");
}

int get_bios_settings() {
    if (missing(kRedHat) != 0) {
        if (const int result = missing(kNxbr)) return result;
    }
    // For a word size that is neither 32 nor 64 the command names no tool, and fails.
    const char* command =
        linux_x32_x64 == 32   ? "'{P}qv_tools/SCELNX_32' /o /s '{L}bios_settings.txt'"
        : linux_x32_x64 == 64 ? "'{P}qv_tools/SCELNX_64' /o /s '{L}bios_settings.txt'"
                              : "'{P}{L}bios_settings.txt'";
    const auto line = expand(command, {current_absolute_path_bmc});
    unit.detail("get bios settings, the final command line:", line);
    return run(line);
}

}  // namespace marlox::repository
