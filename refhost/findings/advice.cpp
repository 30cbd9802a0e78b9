#include "findings/advice.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace qvhost::findings {

namespace {

constexpr const char* kReseat =
    "See that the drive and its cables are seated firmly; then replace the drive.";
constexpr const char* kReseatSource =
    "DMTF Redfish, message registry StorageDevice: resolution of DriveFailure";
constexpr const char* kLocate =
    "Light the drive's own light first: storcli /cX/eY/sZ start locate.";
constexpr const char* kLocateSource = "StorCLI reference manual, locate commands";
constexpr const char* kInTime =
    "Replace it soon if it is in a volume with redundancy; if not, save its data first.";
constexpr const char* kInTimeSource =
    "DMTF Redfish, message registry StorageDevice: resolution of PredictiveDriveFailure";
constexpr const char* kThresholds =
    "Read the sensor again, with its thresholds: ipmitool sensor get NAME.";
constexpr const char* kThresholdsSource = "ipmitool(1), sensor get";
constexpr const char* kWhichModule =
    "See which module counts: grep . /sys/devices/system/edac/mc/mc*/dimm*/dimm_ce_count, and dimm_label beside it.";
constexpr const char* kWhichModuleSource =
    "Linux kernel, Documentation/admin-guide/RAS, \"EDAC - Error Detection And Correction\"";
constexpr const char* kSupplies = "Ask every supply's sensor: ipmitool sdr type \"Power Supply\".";
constexpr const char* kSdrSource = "ipmitool(1), sdr type";

// clang-format off
constexpr auto kAdvice = std::to_array<Advice>({
    {"volume_no_redundancy",          "With mdadm: --add a new drive to the array, and read its progress in /proc/mdstat.", "mdadm(8), manage mode"},
    {"volume_degraded",               "With mdadm: --add a new drive to the array, and read its progress in /proc/mdstat.", "mdadm(8), manage mode"},
    {"volume_rebuild",                "Wait for its end: storcli /cX/eall/sall show rebuild tells how far it is.", "StorCLI reference manual, rebuild commands"},
    {"volume_rebuild_still",          "Look what keeps it: the controller's log (storcli /cX show events), the kernel's log, and how fast it may go (storcli /cX show rebuildrate; /proc/sys/dev/raid/speed_limit_min).", "StorCLI reference manual, rebuild rate and events commands; md(4), speed_limit_min"},
    {"drive_failed_no_redundancy",    kLocate,    kLocateSource},
    {"drive_failed_no_redundancy",    kReseat,    kReseatSource},
    {"drive_failed",                  kLocate,    kLocateSource},
    {"drive_failed",                  kReseat,    kReseatSource},
    {"drive_unconfigured_bad",        kLocate,    kLocateSource},
    {"drive_unconfigured_bad",        kReseat,    kReseatSource},
    {"drive_bay_fault",               kReseat,    kReseatSource},
    {"drive_predicted_no_redundancy", kInTime,    kInTimeSource},
    {"drive_predicted",               kInTime,    kInTimeSource},
    {"drive_foreign",                 "Look at what it holds before anything is imported or deleted: storcli /cX/fall show.", "StorCLI reference manual, foreign configurations commands"},
    {"spare_in_use",                  "Replace the drive that failed, and make a drive a hot spare again: storcli /cX/eX/sX add hotsparedrive.", "StorCLI reference manual, hot spare commands"},
    {"drive_rebuild_still",           "Look what keeps it: the controller's log (storcli /cX show events), and how fast it may go (storcli /cX show rebuildrate).", "StorCLI reference manual, rebuild rate and events commands"},
    {"drive_rebuild",                 "Wait for its end: storcli /cX/eall/sall show rebuild tells how far it is.", "StorCLI reference manual, rebuild commands"},
    {"drive_media_errors",            "Have the drive read all of itself: smartctl -t long DEVICE, then smartctl -l selftest DEVICE (behind a controller with -d megaraid,N).", "smartctl(8), -t, -l and -d"},
    {"drive_media_errors",            "Let the controller read all drives: storcli /cX start patrolread.", "StorCLI reference manual, patrol read"},
    {"drive_media_errors_grow_no_redundancy", "Save what is on the volume now, before the drive or another one fails.", "Pinheiro, Weber, Barroso: Failure Trends in a Large Disk Drive Population (FAST 2007)"},
    {"drive_wear",                    "Plan its replacement: at 100 percent the endurance that its maker estimates is used up, which is no failure yet.", "NVM Express, SMART / Health Information log: Percentage Used"},
    {"drive_other_errors",            "Ask the drive for its own error log: smartctl -x DEVICE.", "smartctl(8), -x"},
    {"drive_shielded_grow",           "Read when and why the controller shielded it: storcli /cX show events.", "StorCLI reference manual, events commands"},
    {"drive_shielded",                "Read when and why the controller shielded it: storcli /cX show events.", "StorCLI reference manual, events commands"},
    {"controller_attention",          "Read what it logged: storcli /cX show events.", "StorCLI reference manual, events commands"},
    {"battery",                       "Ask it for all that it knows: storcli /cX/bbu show all, or /cX/cv show all.", "StorCLI reference manual, BBU and CacheVault commands"},
    {"battery_write_back_forced",     "Ask it for all that it knows: storcli /cX/bbu show all, or /cX/cv show all.", "StorCLI reference manual, BBU and CacheVault commands"},
    {"battery_write_back_forced",     "Until it is well let the cache write through: storcli /cX/vall set wrcache=WT.", "StorCLI reference manual, virtual drive settings"},
    {"temperature_critical",          kThresholds, kThresholdsSource},
    {"temperature_warning",           kThresholds, kThresholdsSource},
    {"fan_critical",                  "Ask every fan: ipmitool sdr type Fan.", kSdrSource},
    {"fan_warning",                   "Ask every fan: ipmitool sdr type Fan.", kSdrSource},
    {"voltage_critical",              kThresholds, kThresholdsSource},
    {"voltage_warning",               kThresholds, kThresholdsSource},
    {"sensor_critical",               kThresholds, kThresholdsSource},
    {"sensor_warning",                kThresholds, kThresholdsSource},
    {"power_redundancy",              kSupplies,  kSdrSource},
    {"power_supply",                  kSupplies,  kSdrSource},
    {"power_input",                   kSupplies,  kSdrSource},
    {"memory_corrected",              kWhichModule, kWhichModuleSource},
    {"memory_limit",                  kWhichModule, kWhichModuleSource},
    {"event_memory_many",             kWhichModule, kWhichModuleSource},
    {"event_memory_corrected",        kWhichModule, kWhichModuleSource},
    {"event_memory_limit",            kWhichModule, kWhichModuleSource},
    {"intrusion",                     "See whether it is open now: ipmitool chassis status.", "ipmitool(1), chassis status"},
    {"bmc_slow",                      "Ask it again when nothing else does, and see whether that takes as long: time ipmitool mc info.", "ipmitool(1), mc info"},
    {"self_test",                     "Ask the BMC for its results again: ipmitool mc selftest.", "ipmitool(1), mc selftest"},
    {"sel_nearly_full",               "Keep what it holds, then clear it: ipmitool sel writeraw FILE, ipmitool sel clear.", "ipmitool(1), sel writeraw and sel clear"},
    {"clock_wrong",                   "Set the BMC's clock: ipmitool sel time set \"MM/DD/YYYY HH:MM:SS\". Its manual recommends to clear the SEL before.", "ipmitool(1), sel time set"},
    {"clock_wrong",                   "Set a controller's: storcli /cX set time=systemtime.", "StorCLI reference manual, controller commands"},
    {"event_disk",                    "Ask the drive for all it knows, its error log among it: smartctl -x DEVICE.", "smartctl(8), -x"},
    {"tool_missing",                  "Let qvhost doctor say which package has it.", "qvhost(1), doctor"},
});
// clang-format on

}  // namespace

std::span<const Advice> all_advice() { return kAdvice; }

std::vector<Advice> advice_on(std::string_view rule) {
    std::vector<Advice> found;
    std::copy_if(kAdvice.begin(), kAdvice.end(), std::back_inserter(found),
                 [&](const Advice& one) { return one.rule == rule; });
    return found;
}

}  // namespace qvhost::findings
