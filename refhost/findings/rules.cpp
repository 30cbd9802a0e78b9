#include "findings/rules.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace qvhost::findings {

namespace {

using enum Subsystem;
constexpr auto kCritical = Severity::critical;
constexpr auto kWarning = Severity::warning;
constexpr auto kUnknown = Severity::unknown;
constexpr auto kNotice = Severity::notice;

static_assert(kNewsDays == 30);  // "thirty days" in the rows, and in write_documents.cpp
// clang-format off
constexpr auto kRules = std::to_array<Rule>({
    // Volumes.
    {"volume_offline",              storage, kCritical, "volumes.state",               "volume is offline",                          0, "", "the data cannot be reached",                                              "storcli: OfLn; arcconf: Failed, Offline",            "StorageDevice.VolumeOffline"},
    {"volume_no_redundancy",        storage, kCritical, "volumes.state, volumes.raid", "volume has no redundancy left",              0, "", "the next drive that fails takes data with it",                            "storcli: Dgrd; arcconf: Degraded; mdadm: degraded",  "StorageDevice.VolumeDegraded"},
    {"volume_degraded",             storage, kWarning,  "volumes.state, volumes.raid", "volume is degraded, with redundancy left",   0, "", "a drive is missing; one more can be lost",                                "storcli: Pdgd; RAID 6 with one drive lost",          "StorageDevice.VolumeDegraded"},
    {"volume_state",                storage, kWarning,  "volumes.state",               "volume is in no healthy state",              0, "", "each state but Optimal asks for a look",                                  "storcli and arcconf manuals: virtual drive states",  "StorageDevice.VolumeDegraded"},
    {"volume_rebuild_still",         storage, kCritical, "volumes.progress_percent now and in earlier runs", "rebuild of the volume stands still", 6, "{} hours or more", "without redundancy, and no end in sight", "the field's practice", ""},
    {"volume_rebuild",              storage, kWarning,  "volumes.operation",           "volume is being rebuilt",                    0, "", "until it ends there is less redundancy",                                  "arcconf: Rebuild; mdadm: recovery",                  ""},
    {"volume_operation",            storage, kWarning,  "volumes.operation",           "something unknown runs on the volume",       0, "", "whether it is routine cannot be told",                                    "storcli, arcconf and mdadm: operations",             ""},
    {"volume_maintenance",          storage, kNotice,   "volumes.operation",           "volume is being checked or initialised",     0, "", "routine work that ends by itself",                                        "storcli: CC, Init; mdadm: check, resync",            ""},
    {"topology_state",              storage, kWarning,  "the topology's State",        "array is in no healthy state",               0, "", "shown where no volume of the group says so itself",                       "storcli: TOPOLOGY",                                  "StorageDevice.VolumeDegraded"},
    {"topology_no_redundancy",      storage, kCritical, "the topology's State",        "array has no redundancy left",               0, "", "the next drive that fails takes data with it",                            "storcli: TOPOLOGY, Dgrd",                            "StorageDevice.VolumeDegraded"},
    {"topology_offline",            storage, kCritical, "the topology's State",        "array is offline",                           0, "", "the data cannot be reached",                                              "storcli: TOPOLOGY, OfLn",                            "StorageDevice.VolumeOffline"},

    // Drives. Those of one drive are one finding, named by the first of these that is as bad as any.
    {"drive_failed_no_redundancy",  storage, kCritical, "drives.state and its volume", "failed drive in a volume without redundancy", 0, "", "the next drive that fails takes data with it",                           "the volume's state decides",                         "StorageDevice.DriveFailure"},
    {"drive_failed",                storage, kWarning,  "drives.state",                "drive failed",                               0, "", "its redundancy is used up, or it is no help any more",                    "storcli: Offln, Failed, Msng; arcconf: Failed",      "StorageDevice.DriveFailure"},
    {"drive_unconfigured_bad",      storage, kWarning,  "drives.state",                "drive is unconfigured and bad",              0, "", "no data is at risk now; the controller will not use it",                  "storcli: UBad",                                      "StorageDevice.DriveFailure"},
    {"drive_predicted_no_redundancy", storage, kCritical, "drives.predicted_failures, drives.smart_alert, its volume", "failure predicted in a volume without redundancy", 0, "", "the next drive that fails takes data with it",      "S.M.A.R.T.",                                         "StorageDevice.PredictiveDriveFailure"},
    {"drive_predicted",             storage, kWarning,  "drives.predicted_failures, drives.smart_alert", "drive predicts its failure", 0, "more than {}", "to be replaced in time",                                        "S.M.A.R.T.",                                         "StorageDevice.PredictiveDriveFailure"},
    {"drive_spare_low",             storage, kCritical, "drives.available_spare_percent", "spare blocks are below their threshold",   10, "{} percent or less", "an SSD without spare blocks becomes read-only",          "NVM Express: Available Spare Threshold",             "StorageDevice.DriveMediaLifeLow"},
    {"drive_read_only",             storage, kCritical, "what an NVMe drive warns of", "drive is read-only, or lost the backup of its memory", 0, "", "nothing more can be written, or what was written last is at risk", "NVM Express: Critical Warning, bits 3 to 5",  ""},
    {"drive_temperature",           storage, kWarning,  "what the drive says of its temperature", "drive is too hot or too cold",               0, "", "it slows down, and ages",                                                 "NVM Express: Critical Warning, bit 1; arcconf: Temperature",               ""},
    {"drive_foreign",               storage, kWarning,  "drives.is_foreign",           "drive has a foreign configuration",          0, "", "it holds another controller's data, or lost touch with its own",          "storcli: DG F, UGood F",                             ""},
    {"spare_in_use",                 storage, kWarning, "drives.spare now and in earlier runs; what a pool says of its spares", "hot spare is in use, and none is left", 0, "", "the next drive that fails is replaced by nobody", "storcli: GHS, DHS; zpool: INUSE", ""},
    {"drive_rebuild_still",          storage, kCritical, "drives.rebuild_percent now and in earlier runs", "rebuild of the drive stands still", 6, "{} hours or more", "without redundancy, and no end in sight", "the field's practice", ""},
    {"drive_rebuild",               storage, kWarning,  "drives.state, drives.rebuild_percent", "drive is being rebuilt",            0, "", "until it ends there is less redundancy",                                  "storcli: Rbld, Cpybck",                              ""},
    {"drive_media_errors_grow_no_redundancy",storage, kCritical, "drives.media_errors now and in the runs of the last thirty days, its volume", "media errors become more where nothing may be lost", 0, "more than {}", "what cannot be read then is lost", "Pinheiro, Weber, Barroso: Failure Trends in a Large Disk Drive Population (FAST 2007)", "StorageDevice.DriveMediaError"},
    {"drive_media_errors_grow",     storage, kWarning,  "drives.media_errors now and in the runs of the last thirty days", "media errors become more", 0, "more than {}", "after its first errors a drive fails far more often; a count that stays is no news", "Pinheiro, Weber, Barroso: Failure Trends in a Large Disk Drive Population (FAST 2007)", "StorageDevice.DriveMediaError"},
    {"drive_media_errors",          storage, kWarning,  "drives.media_errors",         "drive has media errors",                     0, "more than {}", "a sector that cannot be read breaks a rebuild",                 "storcli: Media Error Count",                         "StorageDevice.DriveMediaError"},
    {"drive_wear",                  storage, kWarning,  "drives.percentage_used",      "drive is worn",                              80, "{} percent or more", "wear is planned for; never critical by itself",          "NVM Express: Percentage Used",                       "StorageDevice.DriveMediaLifeLow"},
    {"drive_state",                 storage, kWarning,  "drives.state",                "drive is in no healthy state",               0, "", "each state but the healthy ones asks for a look",                         "storcli and arcconf manuals: drive states",          ""},
    {"drive_other_errors_grow",     storage, kWarning,  "drives.other_errors now and in the runs of the last thirty days", "other errors become more", 0, "more than {}", "a cable or a slot that is loose now, and no old story",  "storcli: Other Error Count",                        ""},
    {"drive_other_errors",          storage, kNotice,   "drives.other_errors",         "drive has other errors",                     0, "more than {}", "cables, resets, and commands it does not know",                    "storcli: Other Error Count",                         ""},
    {"drive_shielded_grow",         storage, kWarning,  "drives.shield_counter now and in the runs of the last thirty days", "drive is shielded again", 0, "more than {}", "the controller doubts it now, and no old story",         "storcli: Shield Counter",                            ""},
    {"drive_shielded",              storage, kNotice,   "drives.shield_counter",       "drive was shielded",                         0, "more than {}", "the controller took it out of use for diagnosis, and back",       "storcli: Shield Counter",                            ""},
    {"drive_reallocated",           storage, kNotice,   "what the drive says of its sectors", "drive has given up sectors", 0, "more than {}", "it replaced them by spare ones; a drive that goes on doing so wears out", "ATA attribute 5; SCSI: grown defect list", ""},

    // Controllers and what belongs to them.
    {"controller_failed",           storage, kCritical, "controllers.status",          "controller failed",                          0, "", "nothing behind it can be reached",                                        "storcli: Failed; arcconf: Failed, Not Responding",   "StorageDevice.StorageControllerFailure"},
    {"controller_attention",        storage, kWarning,  "controllers.status",          "controller needs attention",                 0, "", "something of it, or behind it, is not well",                              "storcli: Needs Attention",                           "StorageDevice.StorageControllerDegraded"},
    {"battery",                     storage, kWarning,  "batteries.state",             "cache battery is not well",                  0, "", "the write cache is not protected, or switched off",                       "storcli: BBU_Info, Cachevault_Info",                 "StorageDevice.BatteryFailure"},
    {"battery_write_back_forced",   storage, kCritical, "batteries.state, volumes.cache", "cache battery is not well, and write-back is forced", 0, "", "what is in the cache is lost with the power",              "storcli: AWB, Always WriteBack",                     "StorageDevice.BatteryFailure"},
    {"battery_maintenance",         storage, kNotice,   "batteries.state",             "cache battery is learning or charging",      0, "", "routine work that ends by itself",                                        "storcli: learn cycle",                               ""},
    {"enclosure_state",             storage, kWarning,  "enclosures.state",            "enclosure is not well",                      0, "", "its fans, supplies or links feed all its drives",                         "storcli: Enclosure LIST, State",                     ""},

    // Sensors: the tool's own status column decides.
    {"temperature_critical",        temperature, kCritical, "sensors.status",          "temperature is critical",                    0, "", "hardware throttles, stops or suffers",                                    "IPMI: status cr, nr",                                "SensorEvents.ReadingCritical"},
    {"temperature_warning",         temperature, kWarning,  "sensors.status",          "temperature is beyond its non-critical threshold", 0, "", "a filter, a fan, a room",                                           "IPMI: status nc",                                    "SensorEvents.ReadingWarning"},
    {"fan_critical",                cooling,     kCritical, "sensors.status",          "fans fail, and redundancy is lost",          0, "", "one fan more cannot be lost",                                             "IPMI: status cr, nr and the fans' redundancy",       "SensorEvents.ReadingCritical"},
    {"fan_warning",                 cooling,     kWarning,  "sensors.status",          "fan is outside its thresholds",              0, "", "the other fans still cool",                                               "IPMI: status nc, cr, nr",                            "SensorEvents.ReadingWarning"},
    {"voltage_critical",            power,       kCritical, "sensors.status",          "voltage, current or power is critical",      0, "", "parts run outside what they are made for",                                "IPMI: status cr, nr",                                "SensorEvents.ReadingCritical"},
    {"voltage_warning",             power,       kWarning,  "sensors.status",          "voltage, current or power is beyond its non-critical threshold", 0, "", "a supply ages or is overloaded",                      "IPMI: status nc",                                    "SensorEvents.ReadingWarning"},
    {"clock_battery",               system,      kWarning,  "sensors.status",          "clock battery is low",                       0, "", "a date is lost and no data",                                              "IPMI: status of VBAT and its like",                  ""},
    {"sensor_critical",             system,      kCritical, "sensors.status",          "sensor is critical",                         0, "", "the BMC calls it so",                                                     "IPMI: status cr, nr",                                "SensorEvents.ReadingCritical"},
    {"sensor_warning",              system,      kWarning,  "sensors.status",          "sensor is beyond its non-critical threshold", 0, "", "the BMC calls it so",                                                    "IPMI: status nc",                                    "SensorEvents.ReadingWarning"},

    // Words of discrete sensors and of power supplies.
    {"power_insufficient",          power,   kCritical, "sensors.states",              "power supplies do not suffice",              0, "", "the next peak switches the server off",                                   "IPMI: Non-Redundant: Insufficient Resources",        "Power.PowerSupplyGroupCritical"},
    {"power_redundancy",            power,   kWarning,  "sensors.states",              "power supplies are not redundant",           0, "", "the server runs; the next one that fails stops it",                       "IPMI: Redundancy Lost, Redundancy Degraded",         "Power.PowerSupplyGroupWarning"},
    {"power_supply",                power,   kWarning,  "sensors.states, power_supplies.state", "power supply is not well",          0, "", "the others carry its load",                                               "IPMI: sensor type Power Supply",                     "Power.PowerSupplyFailed"},
    {"power_input",                 power,   kWarning,  "sensors.states, power_supplies.input_state", "power supply has no input",    0, "", "a cord, a fuse, a feed; many at once are a feed",                         "IPMI: Power Supply AC lost",                         "Power.PowerSupplyInputPowerLost"},
    {"cooling_redundancy",          cooling, kWarning,  "sensors.states",              "fans are not redundant",                     0, "", "the next fan that fails is too much",                                     "IPMI: Redundancy Lost, Redundancy Degraded",         "ResourceEvent.RedundancyLost"},
    {"cooling_insufficient",        cooling, kCritical, "sensors.states",              "fans do not suffice",                        0, "", "the server will grow too hot",                                            "IPMI: Non-Redundant: Insufficient Resources",        "ResourceEvent.RedundancyLost"},
    {"redundancy",                  system,  kWarning,  "sensors.states",              "redundancy is lost",                         0, "", "the next part that fails is one too many",                                "IPMI: Redundancy Lost",                              "ResourceEvent.RedundancyLost"},
    {"drive_bay_fault",             storage, kWarning,  "sensors.states, chassis status", "BMC tells of a drive's fault",               0, "", "the bay's own light is on",                                               "IPMI: sensor type Drive Slot",                       "StorageDevice.DriveFailure"},
    {"drive_bay_array_failed",      storage, kCritical, "sensors.states",              "BMC tells of a failed array",                0, "", "the data cannot be reached",                                              "IPMI: In Failed Array",                              "StorageDevice.VolumeFailure"},
    {"thermal_trip",                processor, kCritical, "sensors.states",            "thermal trip",                               0, "", "the processor switched itself off",                                       "IPMI: Thermal Trip",                                 ""},
    {"processor_error",             processor, kCritical, "sensors.states",            "processor error",                            0, "", "the BMC tells of an internal error",                                      "IPMI: IERR, Uncorrectable machine check exception",  ""},
    {"memory_error",                memory,  kCritical, "sensors.states",              "uncorrectable memory error",                 0, "", "data was lost; the module is to be replaced",                             "IPMI: Uncorrectable ECC",                            "Memory.UncorrectableECCError"},
    {"memory_limit",                memory,  kWarning,  "sensors.states",              "memory errors reached their logging limit",  0, "", "so many that the BMC counts no more",                                     "IPMI: Correctable ECC logging limit reached",        "Memory.CorrectableECCErrorLimitExceeded"},
    {"memory_corrected",            memory,  kNotice,   "sensors.states",              "corrected memory errors",                    0, "", "a few are ordinary",                                                      "IPMI: Correctable ECC",                              "Memory.CorrectableECCError"},
    {"intrusion",                   system,  kWarning,  "sensors.states, chassis status", "chassis is or was open",                     0, "", "switches lie; look who was there",                                        "IPMI: General Chassis Intrusion",                    "PhysicalSecurity.IntrusionDetected"},
    {"sensor_failure_word",         system,  kWarning,  "sensors.states",              "sensor tells of a fault",                    0, "", "the BMC's own word",                                                      "IPMI: sensor-specific states",                       ""},
    {"chassis_power",               power,   kWarning,  "chassis status",              "BMC tells of a power fault",                 0, "", "the BMC's summary; nothing else tells which part",                        "IPMI: Get Chassis Status, Power Overload, Main Power Fault, Power Control Fault", "ResourceEvent.ResourceErrorsDetected"},
    {"chassis_cooling",             cooling, kWarning,  "chassis status",              "BMC tells of a cooling fault",               0, "", "the BMC's summary; nothing else tells which part",                        "IPMI: Get Chassis Status, Cooling/Fan Fault",        "ResourceEvent.ResourceErrorsDetected"},
    {"system_error_light",          system,  kWarning,  "lights",                      "system error light is on",                   0, "", "the BMC's summary; nothing else tells what is wrong",                     "the maker's own command of ipmiutil",                ""},

    // The BMC and the machine.
    {"bmc_slow",                     bmc, kNotice, "how long commands took", "BMC answers slowly", 5, "{} seconds or more for its identity", "busy, or about to hang", "the field's practice", ""},
    {"self_test",                   bmc,     kWarning,  "bmcs.self_test",              "self test failed",                           0, "", "what else the BMC says may be wrong",                                     "IPMI: Get Self Test Results",                        ""},
    {"sel_nearly_full",             bmc,     kWarning,  "how full the SEL is",         "event log is nearly full",                   90, "{} percent or more", "a full log keeps no new entries",                       "IPMI: Get SEL Info",                                 ""},
    {"clock_wrong",                 system,  kWarning,  "a clock that a capture names beside this system's", "clock is wrong",       300, "{} seconds or more", "times of events cannot be compared",                    "storcli: System Time, Controller Time",              ""},

    // Events: of the SEL by what they say, of the kernel and of controllers by their severity.
    {"event_memory_error",          memory,    kCritical, "events",                    "uncorrectable memory error was logged",      7, "{} days (older: warning)", "data was lost; the module is to be replaced",  "memory events are never taken back",                 "Memory.UncorrectableECCError"},
    {"event_memory_limit",          memory,    kWarning,  "events",                    "memory errors reached their logging limit",  0, "", "so many that the BMC counts no more",                                     "IPMI: Correctable ECC logging limit reached",        "Memory.CorrectableECCErrorLimitExceeded"},
    {"event_memory_many",           memory,    kWarning,  "events",                    "many corrected memory errors were logged",   24, "more than {}, of one module within a day", "a module that fails often fails for good", "the field's practice",                           "Memory.CorrectableECCErrorLimitExceeded"},
    {"event_memory_corrected",      memory,    kNotice,   "events",                    "corrected memory errors were logged",        0, "", "a few are ordinary",                                                      "IPMI: Correctable ECC; EDAC: CE",                    "Memory.CorrectableECCError"},
    {"event_processor",             processor, kCritical, "events",                    "processor error was logged",                 7, "{} days (older: warning)", "machine checks and internal errors do not go by themselves", "IPMI: IERR; kernel: machine check",     ""},
    {"event_thermal_trip",          processor, kCritical, "events",                    "thermal trip was logged",                    7, "{} days (older: warning)", "the processor switched itself off",           "IPMI: Thermal Trip",                                 ""},
    {"event_pci",                   system,    kCritical, "events",                    "fatal bus error was logged",                 7, "{} days (older: warning)", "a card or its slot fails",                    "IPMI: Bus Fatal Error, PCI SERR",                    ""},
    {"event_power",                 power,     kWarning,  "events",                    "power supply event was logged",              0, "", "a supply or its input went away and is not known to be back",             "IPMI: sensor type Power Supply",                     ""},
    {"event_drive",                 storage,   kWarning,  "events",                    "drive fault was logged",                     0, "", "the bay's light was on",                                                  "IPMI: sensor type Drive Slot",                       ""},
    {"event_disk",                  storage,   kWarning,  "events",                    "kernel logged disk errors",                  0, "", "reads or writes failed",                                                  "kernel: I/O error, Medium Error",                    ""},
    {"event_drive_lost",            storage,   kCritical, "events",                      "kernel gave up a drive",                     7, "{} days (older: warning)", "every read and write of it fails",             "kernel: rejecting I/O to offline device",            "StorageDevice.DriveFailure"},
    {"event_controller_lost",       storage,   kCritical, "events",                    "controller's firmware stopped, or the kernel gave the controller up", 7, "{} days (older: warning)", "nothing behind it can be reached until it is back", "kernel: FW in FAULT state, Host adapter dead", "StorageDevice.StorageControllerFailure"},
    {"event_controller_fatal",      storage,   kCritical, "events",                    "controller told the kernel of a fatal event", 7, "{} days (older: warning)", "its own word for the event",              "kernel: megaraid_sas, FATAL and DEAD",               "StorageDevice.StorageControllerDegraded"},
    {"event_controller",            storage,   kWarning,  "events",                    "controller logged critical events",          7, "{} days (older: notice)", "its own log calls them critical or worse",     "storcli: Class 2 to 4",                              ""},
    {"event_controller_drive",      storage,   kNotice,   "events",                    "controller logged critical events of a drive or volume", 0, "", "what they say now is in their states",                            "storcli: Class 2 to 4",                              ""},
    {"event_redundancy",            system,    kWarning,  "events",                    "loss of redundancy was logged",              0, "", "it is not known to be back",                                              "IPMI: Redundancy Lost",                              "ResourceEvent.RedundancyLost"},
    {"event_threshold",             system,    kWarning,  "events",                    "sensor crossed a critical threshold and is not known to be back", 0, "", "what the sensor says now is not known",              "IPMI: threshold events",                             ""},
    {"event_threshold_past",        system,    kNotice,   "events",                    "sensor crossed a threshold and is ok now",   0, "", "lost deassertions are common",                                            "IPMI: threshold events",                             ""},
    {"event_critical",              system,    kCritical, "events",                    "critical event was logged",                  7, "{} days (older: warning)", "its source calls it critical",                "IPMI: event severity; kernel log level",             ""},
    {"event_warning",               system,    kNotice,   "events",                    "warnings were logged",                       0, "", "its source calls them warnings",                                          "IPMI: event severity; kernel log level",             ""},

    // What could not be told.
    {"not_read",                    collection, kUnknown, "captures and commands",     "something could not be read",                0, "", "what it would have said is not known",                                    "the command's end, the capture's text",              ""},
    {"tool_missing",                collection, kNotice,  "commands",                  "tool is not installed",                      0, "", "health says where that leaves something unknown",                         "the shell's exit code 127",                          ""},
    {"not_understood",              collection, kNotice,  "captures",                  "lines were not understood",                  0, "", "no reader knows them; they may be a new version's",                       "the capture's text",                                 ""},
});
// clang-format on

const Rule* find_in(std::span<const Rule> rules, std::string_view name) {
    const auto found =
        std::find_if(rules.begin(), rules.end(), [&](const Rule& one) { return name == one.name; });
    return found == rules.end() ? nullptr : &*found;
}

const Rule& required_in(std::span<const Rule> rules, std::string_view name) {
    const auto* const found = find_in(rules, name);
    if (!found) throw std::logic_error("there is no rule " + std::string(name));
    return *found;
}

}  // namespace

std::span<const Rule> all_rules() { return kRules; }

std::string threshold_text(const Rule& rule) {
    char number[32];
    std::snprintf(number, sizeof number, "%g", rule.threshold);
    std::string text = rule.compares;
    if (const auto at = text.find("{}"); at != std::string::npos) text.replace(at, 2, number);
    return text;
}

const Rule& rule(std::string_view name) { return required_in(kRules, name); }

Rules::Rules() : rules_(kRules.begin(), kRules.end()) {}

const Rule& Rules::rule(std::string_view name) const { return required_in(rules_, name); }

Rule* Rules::find(std::string_view name) {
    const auto* const found = find_in(rules_, name);
    return found ? &rules_[static_cast<std::size_t>(found - rules_.data())] : nullptr;
}

void Rules::acknowledge(const std::string& finding_id, const Acknowledgement& acknowledgement) {
    acknowledged_[finding_id] = acknowledgement;
}

const Acknowledgement* Rules::acknowledged(const std::string& finding_id) const {
    const auto found = acknowledged_.find(finding_id);
    return found == acknowledged_.end() ? nullptr : &found->second;
}

const Rules& built_in_rules() {
    static const Rules rules;
    return rules;
}

}  // namespace qvhost::findings
