#include <array>
#include <string>
#include <string_view>

#include "file/keys.h"
#include "file/link.h"
#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule1/unit.h"
#include "run/command.h"
#include "runner/process.h"
#include "tools/tools.h"

namespace marlox::repository {

namespace {

using capture::Before;
using capture::Key;
using capture::When;
using sample1::unit;

// arcconf puts its values into a fixed column:
//     Controller Status                        : Optimal
//     Controller Model                         : Adaptec ASR8805
constexpr std::size_t kValueColumn = 43;  // characters from the start of the key

// clang-format off
// "Controller Model" contains "Controller Mode".
constexpr When kModel{"Controller Model", {}};

// These lines contain "BIOS" but are not about the controller's own.
constexpr When kOwnBios{"", {"Controller BIOS", "Runtime BIOS", "BIOS Halt"}};

constexpr auto kListed = std::to_array<Key>({
    {"Controller Status",                         {"Status",        "Controller Status",                         "state, \"Optimal\" if all is well"}},
    {"Controller Mode",                           {"Mode",          "Controller Mode",                           "how it presents drives: as RAID, as they are, or both"}},
    {"Channel description",                       {"description",   "Channel description",                       "the channel's name"}},
    {"Controller Mode",                           {"Model",         "Controller Model",                          "model"}, kModel, Before{"Mode"}},
    {"Controller Serial Number",                  {"SerialNumber",  "Controller Serial Number",                  "serial number"}},
    {"Controller World Wide Name",                {"WorldWideName", "Controller World Wide Name",                "world wide name"}},
    {"Controller Alarm",                          {"Alarm",         "Controller Alarm",                          "whether the alarm sounds"}},
    {"Temperature",                               {"Temperature",   "Temperature",                               "temperature in degrees Celsius and Fahrenheit, and how it is judged"}},
    {"Installed memory",                          {"memory",        "Installed memory",                          "size of the cache in MB"}},
    {"Global task priority",                      {"priority",      "Global task priority",                      "priority of background work"}},
    {"Host bus type",                             {"type",          "Host bus type",                             "kind of the host bus"}},
    {"Host bus speed",                            {"speed",         "Host bus speed",                            "speed of the host bus"}},
    {"Host bus link width",                       {"width",         "Host bus link width",                       "lanes of the host bus"}},
    {"Stayawake period",                          {"period",        "Stayawake period",                          "how long drives are kept from sleeping"}},
    {"Spinup limit internal drives",              {"internal",      "Spinup limit internal drives",              "how many internal drives start at once"}},
    {"Spinup limit external drives ",             {"external",      "Spinup limit external drives ",             "how many external drives start at once"}},
    {"Logical devices/Failed/Degraded",           {"Logical",       "Logical devices/Failed/Degraded",           "numbers of logical devices: all, failed, degraded"}},
    {"NCQ status",                                {"NCQ",           "NCQ status",                                "whether native command queuing is on"}},
    {"Statistics data collection mode",           {"Statistics",    "Statistics data collection mode",           "whether the controller keeps statistics"}},
    {"Global Physical Device Write Cache Policy", {"Policy",        "Global Physical Device Write Cache Policy", "whether the drives' own write caches are used"}},
    {"Monitor Log Severity Level",                {"Level",         "Monitor Log Severity Level",                "least severity that is logged"}},
    {"Global Max SAS Phy Link Rate",              {"Rate",          "Global Max SAS Phy Link Rate",              "highest rate of a SAS link"}},
});
constexpr auto kSettings = capture::in_order_of_search(kListed);
static_assert(capture::well_formed(kSettings));

// Looked for in lines that contain no key of a setting:
//     BIOS                                     : 7.5-0 (32033)
constexpr auto kVersions = std::to_array<Key>({
    {"BIOS",       {"BIOS",      "BIOS",       "version of the controller's BIOS"}, kOwnBios},
    {"Firmware",   {"Firmware",  "Firmware",   "version of the firmware"}},
    {"Driver",     {"Driver",    "Driver",     "version of the driver"}},
    {"Boot Flash", {"BootFlash", "Boot Flash", "version of the boot flash"}},
});
// clang-format on
static_assert(capture::well_formed(kVersions));

constexpr auto kSettingsColumns = capture::columns_of(kListed);
constexpr auto kVersionsColumns = capture::columns_of(kVersions);
constexpr auto kLinkColumns = std::to_array<capture::Column>({
    {"Link", "Link Address", "a link to the folder of the controller's support files"},
});

constexpr std::string_view kGates[] = {"lspci | grep Adaptec | wc -l", "uname -i"};

// The tool leaves an archive of files in a directory of its own, which is copied.
constexpr capture::Source kSource = {
    .tool = "arcconf",
    .command = "'{P}qv_tools/arcconf_{x}' savesupportarchive",
    .capture = "Firmware/Controller 1 Config.txt",
    .not_asked = "no Adaptec controller",
    .gates = kGates,
};

// Files the controller's two records, each at the line of its last property.
void read_configuration(capture::Lines& lines, RRepository& repository) {
    capture::Record settings(repository, kPmcInfo);
    capture::Record versions(repository, kPmcVer);
    while (const auto line = lines.next()) {
        auto* record = &settings;
        auto hit = capture::find_key(kSettings, *line);
        if (!hit) {
            record = &versions;
            hit = capture::find_key(kVersions, *line);
        }
        if (!hit) continue;
        record->set(hit->key->column, capture::rest(*line, hit->at + kValueColumn));
        if (hit->key == &kSettings.back() || hit->key == &kVersions.back()) record->add();
    }
}

}  // namespace

constexpr capture::Table kPmcInfo = {
    .id = "PMCINFO",
    .title = "Controller information",
    .row = "The row is the settings of Adaptec controller 1.",
    .source = kSource,
    .filled = capture::Filled::pmc,
    .layout = capture::header_column(20),
    .columns = kSettingsColumns,
};
static_assert(capture::well_formed(kPmcInfo));

constexpr capture::Table kPmcVer = {
    .id = "PMCVER",
    .title = "Controller Version Info",
    .row = "The row is the versions of what runs on Adaptec controller 1.",
    .source = kSource,
    .filled = capture::Filled::pmc,
    .layout = capture::header_column(10),
    .columns = kVersionsColumns,
};
static_assert(capture::well_formed(kPmcVer));

constexpr capture::Table kPmcLink = {
    .id = "PMCLINK",
    .title = "PMC other info link",
    .row = "The row leads to the support files of all Adaptec controllers.",
    .source = kSource,
    .filled = capture::Filled::pmc,
    .layout = capture::header_column(10),
    .columns = kLinkColumns,
};
static_assert(capture::well_formed(kPmcLink));

void pmc_info(RRepository& repository) {
    const auto count = runner::output_of("lspci | grep Adaptec | wc -l");
    if (!count) {
        unit.progress("Can not find the PMC Card!");
        return;
    }
    if (capture::leading_int(*count) <= 0) return;

    // The word size is asked anew; the one that the modules found before is not used.
    const auto platform = runner::output_of("uname -i");
    if (!platform) {
        unit.progress("Cannot get the linux OS structure!");
        return;
    }
    const int bits = capture::contains(capture::first_line(*platform, 9), "64") ? 64 : 32;

    const capture::Places places{current_absolute_path, bits};
    runner::run(capture::expand(kSource.command, places));
    runner::run(capture::expand("cp -rf /var/log/Support/Firmware '{L}' 2>/dev/null", places));

    const auto path = capture::log_path(kSource.capture);
    unit.detail("PMC raid firmware log path:", path);
    auto lines = capture::Lines::open(path);
    if (!lines) {
        unit.detail("Failed to open PMC Controller file");
        return;
    }

    capture::Record link(repository, kPmcLink);
    link.set(kLinkColumns.front(), capture::link_text("Firmware"));
    link.add();

    read_configuration(*lines, repository);
}

}  // namespace marlox::repository
