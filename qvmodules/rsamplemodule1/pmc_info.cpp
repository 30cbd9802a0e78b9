#include <array>
#include <string>

#include "file/keys.h"
#include "file/link.h"
#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule1/rsamplemodule1.h"
#include "rsamplemodule1/unit.h"
#include "run/command.h"
#include "run/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

using capture::always;
using capture::Key;
using capture::When;
using sample1::unit;

// arcconf puts its values into a fixed column:
//     Controller Status                        : Optimal
//     Controller Model                         : Adaptec ASR8805
constexpr std::size_t kValueColumn = 43;  // counted from where the key starts

// A "Controller Mode" line is also any that says "Controller Model".
constexpr When kModel{"Controller Model", {}};

// Other lines speak of a BIOS too; they go on to the keys behind.
constexpr When kOwnBios{
    "", {"Controller BIOS", "Runtime BIOS", "BIOS Halt"}
};

constexpr auto kSettings = std::to_array<Key>({
    {"Controller Status",                         "Status",        "Controller Status",               always},
    {"Controller Mode",                           "Model",         "Controller Model",                kModel},
    {"Controller Mode",                           "Mode",          "Controller Mode",                 always},
    {"Channel description",                       "description",   "Channel description",             always},
    {"Controller Serial Number",                  "SerialNumber",  "Controller Serial Number",        always},
    {"Controller World Wide Name",                "WorldWideName", "Controller World Wide Name",      always},
    {"Controller Alarm",                          "Alarm",         "Controller Alarm",                always},
    {"Temperature",                               "Temperature",   "Temperature",                     always},
    {"Installed memory",                          "memory",        "Installed memory",                always},
    {"Global task priority",                      "priority",      "Global task priority",            always},
    {"Host bus type",                             "type",          "Host bus type",                   always},
    {"Host bus speed",                            "speed",         "Host bus speed",                  always},
    {"Host bus link width",                       "width",         "Host bus link width",             always},
    {"Stayawake period",                          "period",        "Stayawake period",                always},
    {"Spinup limit internal drives",              "internal",      "Spinup limit internal drives",    always},
    {"Spinup limit external drives ",             "external",      "Spinup limit external drives ",   always},
    {"Logical devices/Failed/Degraded",           "Logical",       "Logical devices/Failed/Degraded", always},
    {"NCQ status",                                "NCQ",           "NCQ status",                      always},
    {"Statistics data collection mode",           "Statistics",    "Statistics data collection mode", always},
    {"Global Physical Device Write Cache Policy", "Policy",
     "Global Physical Device Write Cache Policy",                                                     always},
    {"Monitor Log Severity Level",                "Level",         "Monitor Log Severity Level",      always},
    {"Global Max SAS Phy Link Rate",              "Rate",          "Global Max SAS Phy Link Rate",    always},
});
static_assert(capture::well_formed(kSettings, "Rate"));

// Lines that no setting's key takes:
//     BIOS                                     : 7.5-0 (32033)
constexpr auto kVersions = std::to_array<Key>({
    {"BIOS",       "BIOS",      "BIOS",       kOwnBios},
    {"Firmware",   "Firmware",  "Firmware",   always  },
    {"Driver",     "Driver",    "Driver",     always  },
    {"Boot Flash", "BootFlash", "Boot Flash", always  },
});
static_assert(capture::well_formed(kVersions, "BootFlash"));

// The controller's two rows, each complete with its last property.
void read_configuration(capture::Lines& lines, RRepository& repository) {
    capture::Record settings(repository, RSampleModule1::T_PMCINFO_TABLE, "Controller information");
    capture::Record versions(repository, RSampleModule1::T_PMCVER_TABLE, "Controller Version Info");
    while (const auto line = lines.next()) {
        auto* record = &settings;
        auto hit = capture::find_key(kSettings, *line);
        if (!hit) {
            record = &versions;
            hit = capture::find_key(kVersions, *line);
        }
        if (!hit) continue;
        record->set(hit->key->id, hit->key->display, capture::rest(*line, hit->at + kValueColumn));
        if (hit->key == &kSettings.back() || hit->key == &kVersions.back()) record->add();
    }
}

}  // namespace

void pmc_info(RRepository& repository) {
    const auto count = capture::output_of("lspci | grep Adaptec | wc -l");
    if (!count) {
        unit.progress("Can not find the PMC Card!");
        return;
    }
    if (capture::leading_int(*count) <= 0) return;

    // The build is chosen by an answer of its own, not by what the modules found before.
    const auto platform = capture::output_of("uname -i");
    if (!platform) {
        unit.progress("Cannot get the linux OS structure!");
        return;
    }
    const int bits = capture::contains(capture::first_line(*platform, 9), "64") ? 64 : 32;

    const capture::Fill fill{current_absolute_path, bits};
    capture::run(capture::expand("'{P}qv_tools/arcconf_{x}' savesupportarchive", fill));
    capture::run(capture::expand("cp -rf /var/log/Support/Firmware '{L}' 2>/dev/null", fill));

    const auto path = capture::log_dir() + "Firmware/Controller 1 Config.txt";
    unit.detail("PMC raid firmware log path:", path);
    auto lines = capture::Lines::open(path);
    if (!lines) {
        unit.detail("Failed to open PMC Controller file");
        return;
    }

    capture::Record link(repository, RSampleModule1::T_PMCLINK_TABLE, "PMC other info link");
    link.set("Link", "Link Address", capture::link_text("Firmware"));
    link.add();

    read_configuration(*lines, repository);
}

}  // namespace marlox::repository
