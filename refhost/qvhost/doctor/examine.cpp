#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "ask/tools.h"
#include "compat/layer.h"
#include "files/script.h"
#include "inventory/capture_lines.h"
#include "inventory/storage/controller_tools.h"
#include "inventory/system/readers.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/plugin.h"
#include "qvhost/base/program_place.h"
#include "qvhost/base/trust.h"
#include "qvhost/collect/collect_here.h"
#include "qvhost/doctor/doctor.h"
#include "runner/process.h"
#include "text/size.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<Examined>;
using enum Condition;

// What the checks look at.
struct Machine {
    fs::path root;
    std::string search_path;
    DoctorOptions options;

    fs::path at(const std::string& path) const { return root / fs::path(path).relative_path(); }
    bool has(const std::string& path) const {
        std::error_code ignored;
        return fs::exists(at(path), ignored);
    }
    fs::path tool(const std::string& name) const { return compat::found_in(search_path, name); }
};

std::string first_line(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}

// Of a short command.
std::string answer_of(const std::string& command) {
    auto text = runner::output_of(command).value_or("");
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    return text;
}

// The distribution's own way to install a package.
std::string install(const Machine& machine, const std::string& package) {
    for (const auto& [tool, command] : {
             std::pair{"apt-get", "apt-get install "},
             std::pair{"dnf",     "dnf install "    },
             std::pair{"yum",     "yum install "    },
             std::pair{"zypper",  "zypper install " }
    }) {
        if (!machine.tool(tool).empty()) return command + package;
    }
    return "";
}

Lines rights(const Machine&) {
    if (::geteuid() == 0)
        return {
            {"root", ok, "runs as root"}
        };
    return {
        {"root", warning, "does not run as root: most of what is asked is root's to know",
         "sudo qvhost doctor"}
    };
}

// What `uname -i` answers in a collection: the layer answers the machine for "unknown".
std::string platform() {
    const auto answer = answer_of("uname -i 2>/dev/null");
    return answer == "unknown" ? answer_of("uname -m") : answer;
}

Lines word_size(const Machine&) {
    const auto said = answer_of("uname -i 2>/dev/null");
    const auto meant = platform();
    if (meant.empty())
        return {
            {"word size", unknown, "uname does not tell it"}
        };
    const bool is_64 = meant.find("64") != std::string::npos;
    return {
        {"word size", ok,
         "uname -i answers \"" + said + "\"" +
             (said == meant ? "" : ", and \"" + meant + "\" in a collection") +
             ": the vendors' tools are looked for in their " + (is_64 ? "64" : "32") +
             "-bit builds"}
    };
}

Lines vendor_tools(const Machine&) {
    const bool is_64 = platform().find("64") != std::string::npos;
    Lines lines;
    for (const auto& file : vendor_files_here({})) {
        if (file.build.find(is_64 ? "32" : "64") != std::string::npos) continue;
        for (const auto& [refused, why_not] : file.refused)
            lines.push_back({file.build, warning, refused.string() + " is not run: " + why_not,
                             "chown root: " + shell_quoted(refused) + " && chmod go-w " +
                                 shell_quoted(refused)});
        if (!file.answers.empty()) {
            lines.push_back({file.build, ok, file.answers.string() + " answers"});
        } else if (file.refused.empty()) {
            lines.push_back({file.build, ok, "nothing answers"});
        }
    }
    return lines;
}

// The RAID controllers that lspci shows.
std::vector<inventory::PciDevice> raid_controllers() {
    constexpr std::size_t kMostBytes = 1 << 20;
    // One line, since no more of an answer is read.
    auto text = runner::output_of("lspci 2>/dev/null | tr '\\n' '\\r'", kMostBytes).value_or("");
    std::replace(text.begin(), text.end(), '\r', '\n');
    inventory::Inventory found;
    inventory::CaptureLines lines(text);
    inventory::Reading reading{"lspci", found, [](inventory::Event&&) {}};
    inventory::read_lspci(lines, reading);
    std::erase_if(found.pci_devices,
                  [](const auto& device) { return !inventory::is_raid_controller(device); });
    return found.pci_devices;
}

Lines controllers(const Machine& machine) {
    if (machine.tool("lspci").empty())
        return {
            {"controllers", unknown, "lspci is not installed", install(machine, "pciutils")}
        };
    const auto tools_dir = program_file().parent_path() / "qv_tools";
    const auto files = vendor_files_here({});
    const auto answers = [&](std::string_view tool) {
        return !ask::find_tool(tool, {tools_dir, machine.search_path, why_not_trusted})
                    .found.empty() ||
               std::any_of(files.begin(), files.end(), [&](const compat::VendorFile& file) {
                   return file.tool == tool && !file.answers.empty();
               });
    };
    Lines lines;
    for (const auto& device : raid_controllers()) {
        const auto here = device.name.value_or("a RAID controller") + " is here, ";
        const auto tools = inventory::tools_for(device);
        const auto tool = std::find_if(tools.begin(), tools.end(), answers);
        if (tools.empty()) {
            lines.push_back({"controllers", warning, here + "and no tool for it is known"});
        } else if (tool != tools.end()) {
            lines.push_back({"controllers", ok, here + "and " + std::string(*tool) + " is"});
        } else {
            // As its maker delivers it.
            const auto file = std::string(tools[0]) + (tools[0] == "storcli" ? "64 " : " ");
            lines.push_back({"controllers", warning, here + inventory::any_of(tools) + " is not",
                             "cp " + file + shell_quoted(tools_dir.string() + "/")});
        }
    }
    if (lines.empty()) lines.push_back({"controllers", ok, "lspci shows none that needs a tool"});
    return lines;
}

Lines ipmi(const Machine& machine) {
    const auto loaded = [&](const char* module) {
        return std::string(module) + (machine.has("/sys/module/" + std::string(module))
                                          ? " is loaded"
                                          : " is not loaded");
    };
    const auto drivers = loaded("ipmi_si") + ", " + loaded("ipmi_devintf");
    Lines lines;
    const bool works =
        machine.has("/dev/ipmi0") || machine.has("/dev/ipmi/0") || machine.has("/dev/ipmidev/0");
    // The firmware's table has an entry of type 38 if there is a BMC; ACPI calls it IPI0001.
    const bool has_bmc = machine.has("/sys/firmware/dmi/entries/38-0") ||
                         machine.has("/sys/bus/acpi/devices/IPI0001:00");
    if (works) {
        lines.push_back({"IPMI driver", ok, "the device is there; " + drivers});
    } else if (has_bmc) {
        lines.push_back({"IPMI driver", warning,
                         "the firmware tells of a BMC, but there is no /dev/ipmi0; " + drivers,
                         "modprobe -a ipmi_si ipmi_devintf"});
    } else {
        lines.push_back({"IPMI driver", ok, "there is no sign of a BMC; " + drivers});
    }

    std::string service;
    for (const char* name : {"ipmi", "openipmi"}) {
        const std::string unit = std::string("/systemd/system/") + name + ".service";
        if (machine.has("/etc/init.d/" + std::string(name)) || machine.has("/etc" + unit) ||
            machine.has("/lib" + unit) || machine.has("/usr/lib" + unit))
            service += (service.empty() ? "" : " and ") + std::string(name);
    }
    lines.push_back({"IPMI service", ok,
                     service.empty() ? "there is none: a collection loads the driver itself"
                                     : "it is called " + service});

    if (!machine.tool("ipmitool").empty()) {
        const bool has_list = machine.has("/usr/share/misc/enterprise-numbers") ||
                              machine.has("/usr/share/misc/enterprise-numbers.txt");
        lines.push_back({"ipmitool", ok,
                         machine.tool("ipmitool").string() + " answers" +
                             (has_list ? ""
                                       : "; it lacks its list of enterprises and says so, which "
                                         "a collection keeps apart from its answers")});
    } else {
        lines.push_back({"ipmitool", works || has_bmc ? warning : ok, "it is not installed",
                         works || has_bmc ? install(machine, "ipmitool") : ""});
    }
    return lines;
}

// The plug-in judges by the product's name which questions its BMC takes.
Lines product(const Machine& machine) {
    constexpr int kNoBmc = 4;
    constexpr int kUnreadable = 255;
    if (machine.tool("dmidecode").empty())
        return {
            {"product", warning, "dmidecode is not installed: the product cannot be told",
             install(machine, "dmidecode")}
        };
    const auto name = first_line(machine.at("/sys/class/dmi/id/product_name"));
    const auto quoted = name.empty() ? "the product" : "\"" + name + "\"";
    try {
        const Plugin plugin(installed_plugin());
        void* const address = plugin.operation("_ZN6marlox10repository9check_bmcEv");
        if (!address)
            return {
                {"product", unknown, quoted + ": the plug-in does not tell its kind"}
            };
        const int kind = reinterpret_cast<int (*)()>(address)();
        if (kind == kUnreadable)
            return {
                {"product", warning, "its name could not be read"}
            };
        if (answer_of("dmidecode -t system 2>&1 | grep 'Product Name'").empty()) {
            const auto error = answer_of("dmidecode -t system 2>&1 >/dev/null");
            return {
                {"product", warning,
                 "dmidecode does not tell it: the plug-in will not ask the BMC" +
                     (error.empty() ? "" : "; " + error)}
            };
        }
        if (kind == kNoBmc)
            return {
                {"product", machine.has("/dev/ipmi0") ? warning : ok,
                 quoted +
                     " is of no kind that the plug-in knows: it will not ask the BMC (kind 4)"}
            };
        return {
            {"product", ok, quoted + " is of kind " + std::to_string(kind)}
        };
    } catch (const std::exception& error) {
        return {
            {"plug-in", critical, error.what()}
        };
    }
}

Lines support_archive(const Machine& machine) {
    if (machine.has("/etc/redhat-release")) {
        for (const char* tool : {"sosreport", "sos"}) {
            if (!machine.tool(tool).empty())
                return {
                    {"support archive", ok, machine.tool(tool).string() + " packs it"}
                };
        }
        return {
            {"support archive", warning, "neither sosreport nor sos is installed",
             install(machine, "sos")}
        };
    }
    if (!machine.tool("supportconfig").empty())
        return {
            {"support archive", ok, machine.tool("supportconfig").string() + " packs it"}
        };
    return {
        {"support archive", ok, "there will be none: supportconfig is not installed"}
    };
}

Lines directory(const Machine& machine) {
    const auto& asked = machine.options.log_dir;
    const auto [place, refusal] = judge_log_dir(fs::absolute(asked).lexically_normal());
    if (!refusal.empty())
        return {
            {"log directory", critical, asked.string() + ": " + refusal}
        };
    auto there = place;
    std::error_code ignored;
    while (!fs::exists(there, ignored)) there = there.parent_path();
    struct statvfs room {};
    if (::statvfs(there.c_str(), &room) != 0)
        return {
            {"log directory", unknown, there.string() + ": its room cannot be told"}
        };
    const auto bytes = std::uintmax_t{room.f_bavail} * room.f_frsize;
    const auto kept = free_bytes_for({}, there);
    if (bytes < kept)
        return {
            {"log directory", critical,
             place.string() + ": a collection asks nothing there: " + size_text(bytes) +
                 " are free, and it leaves " + size_text(kept),
             "df -h " + shell_quoted(there)}
        };
    const bool is_little = bytes < 2 * kept;
    return {
        {"log directory", is_little ? warning : ok,
         place.string() + " can be used, with " + size_text(bytes) + " free",
         is_little ? "df -h " + shell_quoted(there) : ""}
    };
}

// Programs of the search path run with the user's rights.
Lines search_path(const Machine& machine) {
    Lines lines;
    std::istringstream directories(machine.search_path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::error_code ignored;
        if (!fs::path(directory).is_absolute()) {
            lines.push_back({"search path", warning,
                             "\"" + directory + "\" in PATH is another directory everywhere"});
        } else if (fs::exists(directory, ignored)) {
            if (const auto why = why_program_not_trusted(directory); !why.empty())
                lines.push_back({"search path", ::geteuid() == 0 ? critical : warning, why,
                                 "chown root: " + shell_quoted(directory) + " && chmod go-w " +
                                     shell_quoted(directory)});
        }
    }
    if (lines.empty()) lines.push_back({"search path", ok, machine.search_path});
    return lines;
}

Lines program(const Machine&) {
    const auto bin = program_file().parent_path();
    Lines lines;
    for (const auto& place : {bin, bin.parent_path() / "lib"}) {
        if (const auto why = why_not_trusted(place); !why.empty())
            lines.push_back({"program", critical, why,
                             "chown -R root: " + shell_quoted(place) + " && chmod -R go-w " +
                                 shell_quoted(place)});
    }
    try {
        const ProgramPlace place("doctor");
    } catch (const std::exception& error) {
        lines.push_back({"program", warning,
                         std::string("a collection has no compatibility layer: ") + error.what(),
                         "TMPDIR=/root qvhost collect ..."});
    }
    if (lines.empty()) lines.push_back({"program", ok, program_file().string()});
    return lines;
}

constexpr Lines (*kChecks[])(const Machine&) = {
    rights,  word_size,       vendor_tools, controllers, ipmi,
    product, support_archive, directory,    search_path, program,
};

}  // namespace

std::vector<Examined> examine(const DoctorOptions& options, const fs::path& root) {
    const Machine machine{.root = root, .search_path = usual_search_path(), .options = options};
    ::setenv("PATH", machine.search_path.c_str(), 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("QV_TOOL_TIMEOUT", "20", 1);
    std::vector<Examined> lines;
    for (const auto check : kChecks) {
        for (auto& line : check(machine)) lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace qvhost
