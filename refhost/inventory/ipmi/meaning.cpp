#include "inventory/ipmi/meaning.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "inventory/text.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

constexpr auto kInfo = Severity::info;
constexpr auto kWarning = Severity::warning;
constexpr auto kCritical = Severity::critical;

struct State {
    std::string_view words;
    Severity holds;         // how bad it is that it holds
    Severity gone = kInfo;  // how bad it is that it does no longer
};

// IPMI 2.0, tables 42-2 and 42-3. A row a state; upper and lower case are the same.
// clang-format off
constexpr State kStates[] = {
  // generic: transitions
    {"Transition to Idle",                                    kInfo},
    {"Transition to Active",                                  kInfo},
    {"Transition to Busy",                                    kInfo},
    {"State Deasserted",                                      kInfo},
    {"State Asserted",                                        kWarning},
    {"Predictive Failure Deasserted",                         kInfo},
    {"Predictive Failure Asserted",                           kWarning},
    {"Limit Not Exceeded",                                    kInfo},
    {"Limit Exceeded",                                        kWarning},
    {"Performance Met",                                       kInfo},
    {"Performance Lags",                                      kWarning},
    {"Transition to OK",                                      kInfo},
    {"Transition to Non-critical from OK",                    kWarning},
    {"Transition to Critical from less severe",               kCritical},
    {"Transition to Non-recoverable from less severe",        kCritical},
    {"Transition to Non-critical from more severe",           kWarning},
    {"Transition to Critical from Non-recoverable",           kCritical},
    {"Transition to Non-recoverable",                         kCritical},
    {"Monitor",                                               kInfo},
    {"Informational",                                         kInfo},
    {"Device Absent",                                         kInfo},
    {"Device Present",                                        kInfo},
    {"Device Removed / Device Absent",                        kInfo},
    {"Device Inserted / Device Present",                      kInfo},
    {"Device Disabled",                                       kInfo},
    {"Device Enabled",                                        kInfo},
    {"Transition to Running",                                 kInfo},
    {"Transition to In Test",                                 kInfo},
    {"Transition to Power Off",                               kInfo},
    {"Transition to On Line",                                 kInfo},
    {"Transition to Off Line",                                kWarning},
    {"Transition to Off Duty",                                kInfo},
    {"Transition to Degraded",                                kWarning},
    {"Transition to Power Save",                              kInfo},
    {"Running",                                               kInfo},
    {"In Test",                                               kInfo},
    {"Power Off",                                             kInfo},
    {"On Line",                                               kInfo},
    {"Off Line",                                              kWarning},
    {"Off Duty",                                              kInfo},
    {"Degraded",                                              kWarning},
    {"Power Save",                                            kInfo},
    {"Install Error",                                         kWarning},
    // generic: redundancy
    {"Fully Redundant",                                       kInfo,     kWarning},
    {"Redundancy Lost",                                       kWarning},
    {"Redundancy Degraded",                                   kWarning},
    {"Redundancy OK",                                         kInfo},
    {"Redundant",                                             kInfo},
    {"Not Redundant",                                         kWarning},
    {"Non-Redundant: Sufficient from Redundant",              kWarning},
    {"Non-Redundant: Sufficient from Insufficient",           kWarning},
    {"Non-Redundant: Insufficient Resources",                 kCritical},
    {"Redundancy Degraded from Fully Redundant",              kWarning},
    {"Redundancy Degraded from Non-Redundant",                kWarning},
    {"D0 Power State",                                        kInfo},
    {"D1 Power State",                                        kInfo},
    {"D2 Power State",                                        kInfo},
    {"D3 Power State",                                        kInfo},
    // 05h, 06h: security
    {"General Chassis intrusion",                             kWarning},
    {"Chassis Intrusion",                                     kWarning},
    {"Drive Bay intrusion",                                   kWarning},
    {"I/O Card area intrusion",                               kWarning},
    {"Processor area intrusion",                              kWarning},
    {"System unplugged from LAN",                             kWarning},
    {"LAN Leash Lost",                                        kWarning},
    {"Unauthorized dock",                                     kWarning},
    {"FAN area intrusion",                                    kWarning},
    {"Front Panel Lockout violation attempted",               kWarning},
    {"Pre-boot password violation",                           kWarning},
    {"Pre-boot Password Violation",                           kWarning},
    {"Other pre-boot password violation",                     kWarning},
    {"Out-of-band access password violation",                 kWarning},
    // 07h: processor
    {"IERR",                                                  kCritical},
    {"Thermal Trip",                                          kCritical},
    {"FRB1/BIST failure",                                     kCritical},
    {"FRB2/Hang in POST failure",                             kCritical},
    {"FRB3/Processor startup/init failure",                   kCritical},
    {"FRB1 BIST failure",                                     kCritical},
    {"FRB2 timeout",                                          kCritical},
    {"FRB3 Proc error",                                       kCritical},
    {"Configuration Error",                                   kWarning},
    {"SM BIOS Uncorrectable CPU-complex Error",               kCritical},
    {"SM BIOS Uncorrectable CPU",                             kCritical},
    {"Presence detected",                                     kInfo,     kWarning},
    {"Disabled",                                              kWarning},
    {"Terminator presence detected",                          kInfo},
    {"Throttled",                                             kWarning},
    {"Uncorrectable machine check exception",                 kCritical},
    {"Correctable machine check error",                       kInfo},
    // 08h: power supply
    {"Failure detected",                                      kWarning},
    {"Failure",                                               kWarning},
    {"Predictive failure",                                    kWarning},
    {"Power Supply AC lost",                                  kWarning},
    {"Power Supply Input Lost",                               kWarning},
    {"AC lost",                                               kWarning},
    {"AC Regained",                                           kInfo},
    {"AC lost or out-of-range",                               kWarning},
    {"AC out-of-range, but present",                          kWarning},
    {"Config Error",                                          kWarning},
    {"Power Supply Inactive",                                 kInfo},
    {"Inserted",                                              kInfo},
    {"Removed",                                               kWarning},
    // 09h: power unit
    {"Power off/down",                                        kInfo},
    {"Power Off or Down",                                     kInfo},
    {"Enabled",                                               kInfo},
    {"240VA power down",                                      kCritical},
    {"Interlock power down",                                  kWarning},
    {"Soft-power control failure",                            kWarning},
    // 0Ch: memory
    {"Correctable ECC",                                       kInfo},
    {"Correctable ECC logging limit reached",                 kWarning},
    {"Correctable ECC log limit",                             kWarning},
    {"Correctable ECC limit reached",                         kWarning},
    {"Uncorrectable ECC",                                     kCritical},
    {"Parity",                                                kCritical},
    {"Parity Error",                                          kCritical},
    {"Memory Parity Error",                                   kCritical},
    {"Memory Scrub Failed",                                   kWarning},
    {"Memory Device Disabled",                                kWarning},
    {"ECC limit reached",                                     kWarning},
    {"Spare",                                                 kInfo},
    {"Memory Automatically Throttled",                        kWarning},
    {"Critical Overtemperature",                              kCritical},
    // 0Dh: drive slot
    {"Drive Present",                                         kInfo,     kWarning},
    {"Drive Fault",                                           kWarning},
    {"Drive Removed",                                         kWarning},
    {"Faulty",                                                kWarning},
    {"Hot Spare",                                             kInfo},
    {"Parity Check In Progress",                              kInfo},
    {"Consistency Check In Progress",                         kInfo},
    {"In Critical Array",                                     kWarning},
    {"In Failed Array",                                       kCritical},
    {"Rebuild In Progress",                                   kWarning},
    {"Rebuild Aborted",                                       kWarning},
    {"Rebuild/Remap In Progress",                             kWarning},
    // 0Fh: firmware
    {"System Firmware Error",                                 kWarning},
    {"System Firmware Hang",                                  kCritical},
    {"Unrecoverable hard-disk failure",                       kCritical},
    {"Unrecoverable system-board failure",                    kCritical},
    {"No system memory installed",                            kCritical},
    {"No usable system memory",                               kCritical},
    {"CPU speed matching failure",                            kWarning},
    {"CPU voltage mismatch",                                  kCritical},
    {"Firmware (BIOS) ROM corruption detected",               kCritical},
    {"System boot initiated",                                 kInfo},
    {"prog, Starting OS boot",                                kInfo},
    {"Memory initialization",                                 kInfo},
    {"Hard-disk initialization",                              kInfo},
    {"Secondary CPU Initialization",                          kInfo},
    {"PCI resource configuration",                            kInfo},
    {"Video initialization",                                  kInfo},
    {"Option ROM initialization",                             kInfo},
    {"Unspecified",                                           kInfo},
    // 10h: event logging
    {"Correctable memory error logging disabled",             kWarning},
    {"Event logging disabled",                                kWarning},
    {"All event logging disabled",                            kWarning},
    {"Log area reset/cleared",                                kInfo},
    {"Log Cleared",                                           kInfo},
    {"Log full",                                              kWarning},
    {"Log almost full",                                       kWarning},
    {"SEL Full",                                              kWarning},
    {"SEL Almost Full",                                       kWarning},
    {"Correctable Machine Check Error Logging Disabled",      kWarning},
    // 11h, 23h: watchdog
    {"BIOS Reset",                                            kWarning},
    {"OS Reset",                                              kWarning},
    {"OS Shut Down",                                          kWarning},
    {"OS Power Down",                                         kWarning},
    {"OS Power Cycle",                                        kWarning},
    {"OS NMI/Diag Interrupt",                                 kWarning},
    {"OS Expired",                                            kWarning},
    {"OS pre-timeout Interrupt",                              kWarning},
    {"Timer expired",                                         kWarning},
    {"Hard reset",                                            kWarning},
    {"Power down",                                            kWarning},
    {"Power cycle",                                           kWarning},
    {"Timer interrupt",                                       kWarning},
    // 12h: system event
    {"System Reconfigured",                                   kInfo},
    {"OEM System boot event",                                 kInfo},
    {"OEM System Booted",                                     kInfo},
    {"Undetermined system hardware failure",                  kCritical},
    {"Entry added to auxiliary log",                          kInfo},
    {"PEF Action",                                            kInfo},
    {"Timestamp Clock Sync",                                  kInfo},
    {"Boot: ClockSync_1",                                     kInfo},
    {"Boot: ClockSync_2",                                     kInfo},
    // 13h: critical interrupt
    {"NMI/Diag Interrupt",                                    kCritical},
    {"Front Panel NMI",                                       kWarning},
    {"Bus Timeout",                                           kCritical},
    {"I/O Channel check NMI",                                 kCritical},
    {"Software NMI",                                          kWarning},
    {"PCI PERR",                                              kCritical},
    {"PCI SERR",                                              kCritical},
    {"EISA failsafe timeout",                                 kCritical},
    {"Bus Correctable error",                                 kInfo},
    {"Bus Uncorrectable error",                               kCritical},
    {"Fatal NMI",                                             kCritical},
    {"Bus Fatal Error",                                       kCritical},
    {"Bus Degraded",                                          kWarning},
    {"Fatal",                                                 kCritical},
    // 14h: button
    {"Power Button pressed",                                  kInfo},
    {"Sleep Button pressed",                                  kInfo},
    {"Reset Button pressed",                                  kInfo},
    {"FRU Latch",                                             kInfo},
    {"FRU Service",                                           kInfo},
    // 1Bh to 1Fh: cable, boot
    {"Cable/Interconnect is Connected",                       kInfo},
    {"Connected",                                             kInfo,     kWarning},
    {"Initiated by power up",                                 kInfo},
    {"Initiated by hard reset",                               kInfo},
    {"Initiated by warm reset",                               kInfo},
    {"User requested PXE boot",                               kInfo},
    {"Automatic boot to diagnostic",                          kInfo},
    {"OS initiated hard reset",                               kInfo},
    {"OS initiated warm reset",                               kInfo},
    {"System Restart",                                        kInfo},
    {"No bootable media",                                     kWarning},
    {"Non-bootable disk in drive",                            kWarning},
    {"PXE server not found",                                  kWarning},
    {"Invalid boot sector",                                   kWarning},
    {"Timeout waiting for selection",                         kInfo},
    {"A: boot completed",                                     kInfo},
    {"C: boot completed",                                     kInfo},
    {"PXE boot completed",                                    kInfo},
    {"Diagnostic boot completed",                             kInfo},
    {"CD-ROM boot completed",                                 kInfo},
    {"ROM boot completed",                                    kInfo},
    {"boot completed - device not specified",                 kInfo},
    {"Installation started",                                  kInfo},
    {"Installation completed",                                kInfo},
    {"Installation aborted",                                  kInfo},
    {"Installation failed",                                   kWarning},
    // 20h: operating system
    {"Error during system startup",                           kCritical},
    {"Run-time critical stop",                                kCritical},
    {"Runtime Crit Stop",                                     kCritical},
    {"panic",                                                 kCritical},
    {"OS graceful stop",                                      kInfo},
    {"OS graceful shutdown",                                  kInfo},
    {"PEF initiated soft shutdown",                           kWarning},
    {"Agent not responding",                                  kWarning},
    // 21h: slot
    {"Fault Status",                                          kWarning},
    {"Identify Status",                                       kInfo},
    {"Device Installed",                                      kInfo},
    {"Ready for Device Installation",                         kInfo},
    {"Ready for Device Removal",                              kInfo},
    {"Slot Power is Off",                                     kInfo},
    {"Device Removal Request",                                kInfo},
    {"Interlock",                                             kInfo},
    {"Slot is Disabled",                                      kInfo},
    {"Spare Device",                                          kInfo},
    // 22h: ACPI
    {"S0/G0: working",                                        kInfo},
    {"S0/G0 Working",                                         kInfo},
    {"S1: sleeping with system hw & processor context maintained", kInfo},
    {"S2: sleeping, processor context lost",                  kInfo},
    {"S3: sleeping, processor & hw context lost, memory retained", kInfo},
    {"S4: non-volatile sleep/suspend-to-disk",                kInfo},
    {"S5/G2: soft-off",                                       kInfo},
    {"S4/S5: soft-off",                                       kInfo},
    {"S4/S5 Soft-Off",                                        kInfo},
    {"G3: mechanical off",                                    kInfo},
    {"Sleeping in S1/S2/S3 state",                            kInfo},
    {"G1: sleeping",                                          kInfo},
    {"S5: entered by override",                               kInfo},
    {"Legacy ON state",                                       kInfo},
    {"Legacy OFF state",                                      kInfo},
    {"Unknown",                                               kInfo},
    // 24h, 25h, 27h: alerts, entities, network
    {"Platform generated page",                               kInfo},
    {"Platform generated LAN alert",                          kInfo},
    {"Platform Event Trap generated",                         kInfo},
    {"Platform generated SNMP trap, OEM format",              kInfo},
    {"Present",                                               kInfo,     kWarning},
    {"Absent",                                                kInfo},
    {"Heartbeat Lost",                                        kWarning},
    {"Heartbeat",                                             kInfo},
    // 28h: management subsystem
    {"Sensor access degraded or unavailable",                 kWarning},
    {"Controller access degraded or unavailable",             kWarning},
    {"Management controller off-line",                        kWarning},
    {"Management controller unavailable",                     kWarning},
    {"Sensor failure",                                        kWarning},
    {"FRU failure",                                           kWarning},
    // 29h: battery
    {"Low",                                                   kWarning},
    {"Failed",                                                kWarning},
    // 2Ah to 2Ch: sessions, versions, FRU states
    {"Session Activated",                                     kInfo},
    {"Session Deactivated",                                   kInfo},
    {"Activated User",                                        kInfo},
    {"Deactivated User",                                      kInfo},
    {"Invalid Username or Password",                          kWarning},
    {"Invalid password disable",                              kWarning},
    {"Hardware change detected",                              kInfo},
    {"Firmware or software change detected",                  kInfo},
    {"Hardware incompatibility detected",                     kWarning},
    {"Firmware or software incompatibility detected",         kWarning},
    {"Invalid or unsupported hardware version",               kWarning},
    {"Invalid or unsupported firmware or software version",   kWarning},
    {"Hardware change success",                               kInfo},
    {"Firmware or software change success",                   kInfo},
    {"Not Installed",                                         kInfo},
    {"Inactive",                                              kInfo},
    {"Activation Requested",                                  kInfo},
    {"Activation in Progress",                                kInfo},
    {"Active",                                                kInfo},
    {"Deactivation Requested",                                kInfo},
    {"Deactivation in Progress",                              kInfo},
    {"Communication lost",                                    kWarning},
};
// clang-format on

struct Threshold {
    std::string_view words;
    Severity severity;
};

// IPMI 2.0, table 42-2, type 01h. The first row whose words the event begins with.
constexpr Threshold kThresholds[] = {
  // ipmitool
    {"Lower Non-critical going low",     kWarning },
    {"Lower Non-critical going high",    kInfo    },
    {"Lower Critical going low",         kCritical},
    {"Lower Critical going high",        kInfo    },
    {"Lower Non-recoverable going low",  kCritical},
    {"Lower Non-recoverable going high", kInfo    },
    {"Upper Non-critical going low",     kInfo    },
    {"Upper Non-critical going high",    kWarning },
    {"Upper Critical going low",         kInfo    },
    {"Upper Critical going high",        kCritical},
    {"Upper Non-recoverable going low",  kInfo    },
    {"Upper Non-recoverable going high", kCritical},
 // ipmiutil: LoN, LoC, LoU, HiN, HiC, HiU when a reading comes back
    {"LoN thresh OK now",                kInfo    },
    {"LoC thresh OK now",                kInfo    },
    {"LoU thresh OK now",                kInfo    },
    {"HiN thresh OK now",                kInfo    },
    {"HiC thresh OK now",                kInfo    },
    {"HiU thresh OK now",                kInfo    },
    {"Lo Noncrit thresh",                kWarning },
    {"Lo Crit thresh",                   kCritical},
    {"Lo Unrec thresh",                  kCritical},
    {"Hi Noncrit thresh",                kWarning },
    {"Hi Crit thresh",                   kCritical},
    {"Hi Unrec thresh",                  kCritical},
    {"Low Noncritical",                  kWarning },
    {"Low Critical",                     kCritical},
    {"Low NonRecoverable",               kCritical},
    {"High Noncritical",                 kWarning },
    {"High Critical",                    kCritical},
    {"High NonRecoverable",              kCritical},
};

// IPMI 2.0, table 42-3, in ipmitool's words; where one begins with another, it stands before it.
constexpr auto kSensorTypes = std::to_array<std::string_view>({
    "Physical Security",
    "Platform Security",
    "Processor",
    "Power Supply",
    "Power Unit",
    "Cooling Device",
    "Memory",
    "Drive Slot / Bay",
    "Drive Slot",
    "POST Memory Resize",
    "System Firmwares",
    "System Firmware",
    "Event Logging Disabled",
    "Event Log",
    "Watchdog1",
    "Watchdog2",
    "Watchdog 1",
    "Watchdog 2",
    "System Event",
    "Critical Interrupt",
    "Button",
    "Module / Board",
    "Microcontroller/Coprocessor",
    "Microcontroller",
    "Add-in Card",
    "Chassis",
    "Chip Set",
    "Other FRU",
    "Cable / Interconnect",
    "Terminator",
    "System Boot Initiated",
    "Boot Error",
    "OS Boot",
    "OS Critical Stop",
    "Slot / Connector",
    "System ACPI Power State",
    "ACPI Power State",
    "Platform Alert",
    "Entity Presence",
    "Monitor ASIC",
    "LAN",
    "Management Subsystem Health",
    "Management Subsys Health",
    "Mgmt Subsys Health",
    "Management Subsystem",
    "Battery",
    "Session Audit",
    "Version Change",
    "FRU State",
    "Temperature",
    "Voltage",
    "Current",
    "Fan",
    "Other",
    "Unknown",
    "OEM reserved",
    "OEM",
    "Reserved",
    "reserved",
});

struct Row {
    std::string words;  // in lower case
    const State* state;
};

const std::vector<Row>& sorted_states() {
    static const auto sorted = [] {
        std::vector<Row> rows;
        for (const auto& state : kStates) rows.push_back({lowered(state.words), &state});
        std::stable_sort(rows.begin(), rows.end(),
                         [](const Row& a, const Row& b) { return a.words < b.words; });
        return rows;
    }();
    return sorted;
}

bool is_word_end(std::string_view text, std::size_t at) {
    if (at >= text.size()) return true;
    const char c = lower(text[at]);
    return !(c >= 'a' && c <= 'z') && !(c >= '0' && c <= '9');
}

// The longest row whose words the text begins with.
const State* find_state(std::string_view text) {
    const auto words = lowered(trimmed(text));
    const auto& rows = sorted_states();
    std::string_view key = words;
    while (!key.empty()) {
        auto row = std::upper_bound(rows.begin(), rows.end(), key,
                                    [](std::string_view a, const Row& b) { return a < b.words; });
        if (row == rows.begin()) return nullptr;
        --row;
        const std::string_view candidate = row->words;
        if (std::string_view(words).starts_with(candidate) && is_word_end(words, candidate.size()))
            return row->state;
        // What the text and the row before it share is all that a shorter row can match.
        const auto end = std::mismatch(key.begin(), key.end(), candidate.begin(), candidate.end());
        auto shared = static_cast<std::size_t>(end.first - key.begin());
        if (shared == key.size()) --shared;
        key = key.substr(0, shared);
    }
    return nullptr;
}

}  // namespace

std::optional<Severity> severity_of_state(std::string_view words) {
    const auto* state = find_state(words);
    return state != nullptr ? std::optional(state->holds) : std::nullopt;
}

Severity severity_of_deasserted(std::string_view words) {
    const auto* state = find_state(words);
    return state != nullptr ? state->gone : Severity::info;
}

std::optional<Severity> severity_of_threshold(std::string_view words) {
    words = trimmed(words);
    for (const auto& row : kThresholds)
        if (words.starts_with(row.words)) return row.severity;
    return std::nullopt;
}

std::string_view sensor_type_of(std::string_view text) {
    for (const auto type : kSensorTypes)
        if (text.starts_with(type) && (text.size() == type.size() || text[type.size()] == ' '))
            return text.substr(0, type.size());
    return {};
}

}  // namespace qvhost::inventory
