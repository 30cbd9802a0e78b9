#include "findings/sensors.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "findings/states.h"
#include "text/case.h"

namespace qvhost::findings {

namespace {

using inventory::Inventory;
using inventory::PowerSupply;
using inventory::Sensor;

enum class Level { well, warning, critical };

struct StatusRow {
    std::string_view status;
    Level level;
};

// clang-format off
// The status column of `ipmitool sensor` and `ipmitool sdr`.
constexpr auto kStatus = std::to_array<StatusRow>({
    {"ok",  Level::well    },
    {"ns",  Level::well    },  // not scanned
    {"na",  Level::well    },  // not available
    {"nc",  Level::warning },  // non-critical
    {"lnc", Level::warning },
    {"unc", Level::warning },
    {"cr",  Level::critical},  // critical
    {"lcr", Level::critical},
    {"ucr", Level::critical},
    {"nr",  Level::critical},  // non-recoverable
    {"lnr", Level::critical},
    {"unr", Level::critical},
});

struct KindRow {
    std::string_view kind;
    const char* warning;
    const char* critical;
};

constexpr auto kSensorKinds = std::to_array<KindRow>({
    {"temperature", "temperature_warning", "temperature_critical"},
    {"fan",         "fan_warning",         "fan_warning"         },  // fan_critical, if redundancy is lost
    {"voltage",     "voltage_warning",     "voltage_critical"    },
    {"current",     "voltage_warning",     "voltage_critical"    },
    {"power",       "voltage_warning",     "voltage_critical"    },
});

// Names of sensors that measure the battery of the clock.
constexpr auto kClockBatteries = std::to_array<std::string_view>(
    {"vbat", "cmos", "rtc", "3v batt", "v_bat", "bat 3v", "coin", "vbatt", "p3v_bat", "p3v bat", "battery"});

// What a discrete sensor's words call for. Redundancy is judged by what is redundant, see below.
constexpr auto kWords = std::to_array<StateRow>({
    // Healthy: presence, function, ordinary states.
    {"Presence detected",                            ""                      },
    {"Presence Detected",                            ""                      },
    {"Drive Present",                                ""                      },
    {"Device Present",                               ""                      },
    {"Present",                                      ""                      },
    {"Fully Redundant",                              ""                      },
    {"Redundancy Regained",                          ""                      },
    {"OK",                                           ""                      },
    {"ok",                                           ""                      },
    {"Enabled",                                      ""                      },
    {"Device Enabled",                               ""                      },
    {"Running",                                      ""                      },
    {"On",                                           ""                      },
    {"Performance Met",                              ""                      },
    {"Limit Not Exceeded",                           ""                      },
    {"Deasserted",                                   ""                      },
    {"State Deasserted",                             ""                      },
    {"Predictive Failure Deasserted",                ""                      },
    {"transition to OK",                             ""                      },
    {"Transition to OK",                             ""                      },
    {"Transition to Idle",                           ""                      },
    {"Transition to Active",                         ""                      },
    {"Transition to Busy",                           ""                      },
    {"Transition to Running",                        ""                      },
    {"Transition to In Test",                        ""                      },
    {"Informational",                                ""                      },
    {"Monitor",                                      ""                      },
    {"Hot Spare",                                    ""                      },
    {"Parity Check In Progress",                     ""                      },
    {"S0/G0: working",                               ""                      },
    {"S0/G0",                                        ""                      },
    {"S4/S5: soft-off",                              ""                      },
    {"S5/G2: soft-off",                              ""                      },
    {"Legacy ON state",                              ""                      },
    {"System Boot Initiated",                        ""                      },
    {"Initiated by power up",                        ""                      },
    {"Initiated by hard reset",                      ""                      },
    {"Initiated by warm reset",                      ""                      },
    {"C: boot completed",                            ""                      },
    {"boot completed - device not specified",        ""                      },
    {"OEM System boot event",                        ""                      },
    {"Log area reset/cleared",                       ""                      },
    {"Power Button pressed",                         ""                      },
    {"Slot / Connector Device installed/attached",   ""                      },
    {"Terminator Presence Detected",                 ""                      },
    {"Connected",                                    ""                      },
    {"Management controller available",              ""                      },
    {"platform generated LAN alert",                 ""                      },
    {"Processor Presence detected",                  ""                      },
    {"Disabled",                                     ""                      },
    {"Not Available",                                ""                      },
    {"No Reading",                                   ""                      },
    {"Unknown",                                      ""                      },
    {"Timer interrupt",                              ""                      },
    {"Initiated by OEM",                             ""                      },
    // Power.
    {"Power Supply AC lost",                         "power_input"           },
    {"AC lost or out-of-range",                      "power_input"           },
    {"AC out-of-range, but present",                 "power_input"           },
    {"AC lost",                                      "power_input"           },
    {"Input lost",                                   "power_input"           },
    {"Failure detected",                             "power_supply"          },
    {"Predictive failure",                           "power_supply"          },
    {"Config Error",                                 "power_supply"          },
    {"Config Error: Vendor Mismatch",                "power_supply"          },
    {"Config Error: Revision Mismatch",              "power_supply"          },
    {"Config Error: Processor Missing",              "power_supply"          },
    {"Power off/down",                               "power_supply"          },
    {"Power cycle",                                  "power_supply"          },
    {"240VA power down",                             "power_supply"          },
    {"Interlock power down",                         "power_supply"          },
    {"Soft-power control failure",                   "power_supply"          },
    {"Failure Detected",                             "power_supply"          },
    // Drives.
    {"Drive Fault",                                  "drive_bay_fault"       },
    {"Predictive Failure",                           "drive_bay_fault"       },
    {"Predictive Failure Asserted",                  "sensor_failure_word"   },
    {"In Critical Array",                            "drive_bay_fault"       },
    {"In Failed Array",                              "drive_bay_array_failed"},
    {"Rebuild In Progress",                          "drive_bay_fault"       },
    {"Rebuild/Remap in progress",                    "drive_bay_fault"       },
    {"Rebuild Aborted",                              "drive_bay_fault"       },
    // Processor and memory.
    {"Thermal Trip",                                 "thermal_trip"          },
    {"IERR",                                         "processor_error"       },
    {"FRB1/BIST failure",                            "processor_error"       },
    {"FRB2/Hang in POST failure",                    "processor_error"       },
    {"FRB3/Processor startup/init failure",          "processor_error"       },
    {"Configuration Error",                          "sensor_failure_word"   },
    {"Configuration error",                          "sensor_failure_word"   },
    {"SM BIOS Uncorrectable CPU-complex Error",      "processor_error"       },
    {"Uncorrectable machine check exception",        "processor_error"       },
    {"Machine Check Exception",                      "processor_error"       },
    {"Throttled",                                    "sensor_failure_word"   },
    {"Correctable machine check error",              "sensor_failure_word"   },
    {"Uncorrectable ECC",                            "memory_error"          },
    {"Parity",                                       "memory_error"          },
    {"Memory Device Disabled",                       "memory_error"          },
    {"Critical Overtemperature",                     "memory_error"          },
    {"Correctable ECC logging limit reached",        "memory_limit"          },
    {"Correctable ECC",                              "memory_corrected"      },
    {"Spare",                                        ""                      },
    {"Presence Detected, Enabled",                   ""                      },
    // The chassis and the rest.
    {"General Chassis intrusion",                    "intrusion"             },
    {"General Chassis Intrusion",                    "intrusion"             },
    {"Drive Bay intrusion",                          "intrusion"             },
    {"I/O Card area intrusion",                      "intrusion"             },
    {"Processor area intrusion",                     "intrusion"             },
    {"System unplugged from LAN",                    "intrusion"             },
    {"Unauthorized dock",                            "intrusion"             },
    {"FAN area intrusion",                           "intrusion"             },
    {"Log almost full",                              "sel_nearly_full"       },
    {"Log full",                                     "sel_nearly_full"       },
    {"Low",                                          "clock_battery"         },
    {"Failed",                                       "sensor_failure_word"   },
    {"Limit Exceeded",                               "sensor_failure_word"   },
    {"Performance Lags",                             "sensor_failure_word"   },
    {"Transition to Non-critical from OK",           "sensor_failure_word"   },
    {"Transition to Critical from less severe",      "sensor_critical"       },
    {"Transition to Non-recoverable from less severe", "sensor_critical"     },
    {"Transition to Non-critical from more severe",  "sensor_failure_word"   },
    {"Transition to Critical from Non-recoverable",  "sensor_critical"       },
    {"Transition to Non-recoverable",                "sensor_critical"       },
    {"Transition to Critical",                       "sensor_critical"       },
    {"Transition to Power Off",                      ""                      },
    {"Transition to Degraded",                       "sensor_failure_word"   },
    {"Device Absent",                                "sensor_failure_word"   },
    {"Front Panel NMI",                              "sensor_failure_word"   },
    {"Bus Timeout",                                  "sensor_failure_word"   },
    {"I/O Channel check NMI",                        "sensor_failure_word"   },
    {"Software NMI",                                 "sensor_failure_word"   },
    {"PCI PERR",                                     "sensor_failure_word"   },
    {"PCI SERR",                                     "sensor_critical"       },
    {"Bus Correctable error",                        "sensor_failure_word"   },
    {"Bus Uncorrectable error",                      "sensor_critical"       },
    {"Fatal NMI",                                    "sensor_critical"       },
    {"Bus Fatal Error",                              "sensor_critical"       },
    {"Bus Degraded",                                 "sensor_failure_word"   },
    {"Fault Status",                                 "sensor_failure_word"   },
    {"Fault Status Asserted",                        "sensor_failure_word"   },
    {"Sensor failure",                               "sensor_failure_word"   },
    {"FRU failure",                                  "sensor_failure_word"   },
    {"Management controller unavailable",            "sensor_failure_word"   },
    {"Management controller off-line",               "sensor_failure_word"   },
    {"Sensor access degraded or unavailable",        "sensor_failure_word"   },
    {"Controller access degraded or unavailable",    "sensor_failure_word"   },
    {"Hard reset",                                   "sensor_failure_word"   },
    {"Timer expired",                                "sensor_failure_word"   },
});

// Words of redundancy, the same for all that can be redundant.
struct RedundancyRow {
    std::string_view word;
    bool is_insufficient;
};
constexpr auto kRedundancy = std::to_array<RedundancyRow>({
    {"Redundancy Lost",                                  false},
    {"Redundancy Degraded",                              false},
    {"Non-Redundant: Sufficient from Redundant",         false},
    {"Non-Redundant: Sufficient from Insufficient",      false},
    {"Non-Redundant: Sufficient Resources",              false},
    {"Redundancy Degraded from Fully Redundant",         false},
    {"Redundancy Degraded from Non-Redundant",           false},
    {"Non-Redundant: Insufficient Resources",            true },
});

// What is redundant is told by the sensor's name, since the tool prints nothing else of it.
struct RedundantRow {
    std::string_view in_name;  // lower case
    const char* lost;
    const char* insufficient;
};
constexpr auto kRedundant = std::to_array<RedundantRow>({
    {"fan",    "cooling_redundancy", "cooling_insufficient"},
    {"cool",   "cooling_redundancy", "cooling_insufficient"},
    {"ps",     "power_redundancy",   "power_insufficient"  },
    {"pwr",    "power_redundancy",   "power_insufficient"  },
    {"power",  "power_redundancy",   "power_insufficient"  },
    {"",       "redundancy",         "power_insufficient"  },
});

// Words of power supplies that are well, as their tools print them.
constexpr auto kSupplyStates = std::to_array<StateRow>({
    {"ok",                   ""            },
    {"on",                   ""            },
    {"output on",            ""            },
    {"output off",           "power_supply"},
    {"AC ok",                ""            },
    {"present",              ""            },
    {"Present, OK",          ""            },
    {"Presence detected",    ""            },
    {"enabled",              ""            },
    {"normal",               ""            },
    {"good",                 ""            },
    {"Optimal",              ""            },
    {"standby",              ""            },
    {"AC lost",              "power_input" },
    {"no AC",                "power_input" },
    {"Power Supply AC lost", "power_input" },
    {"input lost",           "power_input" },
    {"no input",             "power_input" },
});
// clang-format on

const StatusRow* status_row(const Sensor& sensor) {
    if (!sensor.status) return nullptr;
    const auto* const found =
        std::find_if(kStatus.begin(), kStatus.end(),
                     [&](const StatusRow& row) { return same_word(row.status, *sensor.status); });
    return found == kStatus.end() ? nullptr : found;
}

Level level_of(const Sensor& sensor) {
    const auto* const row = status_row(sensor);
    return row ? row->level : Level::well;
}

// Discrete sensors have their bits there, such as "0x0180".
bool has_unknown_status(const Sensor& sensor) {
    return sensor.status && !status_row(sensor) && !sensor.status->starts_with("0x");
}

std::string name_of(const Sensor& sensor) { return sensor.name.value_or("sensor without a name"); }

// Names repeat; numbers do not. Where no capture tells the numbers, the second sensor of a name is "Temp.2".
std::string key_of(const Inventory& inventory, const Sensor& sensor) {
    if (sensor.number) return name_of(sensor) + "." + *sensor.number;
    const auto before = std::count_if(inventory.sensors.data(), &sensor, [&](const Sensor& other) {
        return !other.number && other.name == sensor.name;
    });
    return before == 0 ? name_of(sensor) : name_of(sensor) + "." + std::to_string(before + 1);
}

struct SubsystemRow {
    std::string_view in_name;  // lower case
    Subsystem subsystem;
};

// clang-format off
constexpr auto kKindSubsystems = std::to_array<SubsystemRow>({
    {"temperature", Subsystem::temperature},
    {"fan",         Subsystem::cooling    },
    {"voltage",     Subsystem::power      },
    {"current",     Subsystem::power      },
    {"power",       Subsystem::power      },
});

// What a sensor without a kind measures is told by its name.
constexpr auto kNameSubsystems = std::to_array<SubsystemRow>({
    {"fan",         Subsystem::cooling    },
    {"cool",        Subsystem::cooling    },
    {"temp",        Subsystem::temperature},
    {"therm",       Subsystem::temperature},
    {"ps",          Subsystem::power      },
    {"pwr",         Subsystem::power      },
    {"power",       Subsystem::power      },
    {"dimm",        Subsystem::memory     },
    {"mem",         Subsystem::memory     },
    {"ecc",         Subsystem::memory     },
    {"cpu",         Subsystem::processor  },
    {"proc",        Subsystem::processor  },
    {"hdd",         Subsystem::storage    },
    {"ssd",         Subsystem::storage    },
    {"drive",       Subsystem::storage    },
    {"disk",        Subsystem::storage    },
});
// clang-format on

Subsystem subsystem_of(const Sensor& sensor) {
    for (const auto& row : kKindSubsystems) {
        if (sensor.kind && row.in_name == *sensor.kind) return row.subsystem;
    }
    const auto name = lowered(name_of(sensor));
    for (const auto& row : kNameSubsystems) {
        if (name.find(row.in_name) != std::string::npos) return row.subsystem;
    }
    return Subsystem::system;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

// "106 degrees C, status cr; upper critical threshold 95"
std::string reading_text(const Sensor& sensor) {
    std::string text;
    if (sensor.reading) text = number(*sensor.reading) + " " + sensor.unit.value_or("") + ", ";
    text += "status " + *sensor.status;
    if (!sensor.reading) return text;
    struct Limit {
        const inventory::Real& value;
        bool is_upper;
        const char* name;
    };
    const Limit limits[] = {
        {sensor.unr, true,  "upper non-recoverable"},
        {sensor.lnr, false, "lower non-recoverable"},
        {sensor.uc,  true,  "upper critical"       },
        {sensor.lc,  false, "lower critical"       },
        {sensor.unc, true,  "upper non-critical"   },
        {sensor.lnc, false, "lower non-critical"   },
    };
    for (const auto& limit : limits) {
        if (!limit.value) continue;
        if (limit.is_upper ? *sensor.reading >= *limit.value : *sensor.reading <= *limit.value)
            return text + ", " + limit.name + " threshold " + number(*limit.value);
    }
    return text;
}

bool measures_clock_battery(const Sensor& sensor) {
    const auto name = lowered(name_of(sensor));
    return std::any_of(kClockBatteries.begin(), kClockBatteries.end(),
                       [&](std::string_view part) { return name.find(part) != std::string::npos; });
}

const RedundancyRow* redundancy_of(std::string_view word) {
    for (const auto& row : kRedundancy) {
        if (same_word(row.word, word)) return &row;
    }
    return nullptr;
}

const RedundantRow& redundant_in(const Sensor& sensor) {
    const auto name = lowered(name_of(sensor));
    return *std::find_if(kRedundant.begin(), kRedundant.end(), [&](const RedundantRow& row) {
        return name.find(row.in_name) != std::string::npos;
    });
}

bool cooling_redundancy_is_lost(const Inventory& inventory) {
    for (const auto& sensor : inventory.sensors) {
        for (const auto& state : sensor.states) {
            if (redundancy_of(state) &&
                std::string_view(redundant_in(sensor).lost) == "cooling_redundancy")
                return true;
        }
    }
    return false;
}

Subject subject_of_sensor(const Inventory& inventory, const Sensor& sensor) {
    return {key_of(inventory, sensor), "Sensor " + name_of(sensor), {ref_to(inventory, sensor)}};
}

void judge_status(const Inventory& inventory, const Sensor& sensor, bool fans_exposed,
                  Collector& findings) {
    const auto level = level_of(sensor);
    if (level == Level::well) return;
    const bool critical = level == Level::critical;
    std::string name = critical ? "sensor_critical" : "sensor_warning";
    for (const auto& row : kSensorKinds) {
        if (sensor.kind && row.kind == *sensor.kind) name = critical ? row.critical : row.warning;
    }
    if (name == "fan_warning" && critical && fans_exposed) name = "fan_critical";
    if (sensor.kind == "voltage" && measures_clock_battery(sensor)) name = "clock_battery";
    findings.add(subject_of_sensor(inventory, sensor), name, reading_text(sensor), sensor.place);
}

// "PS2 Status" and the power supply 2 are one thing: the one number in the name tells.
std::string supply_key(std::string_view name) {
    std::string digits;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (!std::isdigit(static_cast<unsigned char>(name[i]))) continue;
        if (!digits.empty() && !std::isdigit(static_cast<unsigned char>(name[i - 1])))
            return std::string(name);
        digits += name[i];
    }
    return digits.empty() ? std::string(name) : "PSU" + digits;
}

bool is_of_power_supply(std::string_view rule_name) {
    return rule_name == "power_input" || rule_name == "power_supply";
}

void judge_words(const Inventory& inventory, const Sensor& sensor, Collector& findings) {
    for (const auto& state : sensor.states) {
        auto subject = subject_of_sensor(inventory, sensor);
        if (const auto* redundancy = redundancy_of(state)) {
            const auto& row = redundant_in(sensor);
            findings.add(subject, redundancy->is_insufficient ? row.insufficient : row.lost, state,
                         place_of(sensor, "states"));
            continue;
        }
        const auto found = rule_for(kWords, state);
        if (!found || found->empty()) continue;
        if (is_of_power_supply(*found)) subject.key = supply_key(name_of(sensor));
        findings.add(subject, *found, state, place_of(sensor, "states"));
    }
}

// "present, AC ok, output on"
std::vector<std::string_view> parts_of(std::string_view state) {
    std::vector<std::string_view> parts;
    while (true) {
        const auto comma = state.find(", ");
        parts.push_back(state.substr(0, comma));
        if (comma == std::string_view::npos) return parts;
        state.remove_prefix(comma + 2);
    }
}

// "AC 230 V": a feed that is there.
bool is_input_voltage(std::string_view state) {
    if (!state.starts_with("AC ") && !state.starts_with("DC ")) return false;
    const auto behind = state.find_first_not_of("0123456789.", 3);
    return behind != 3 && behind != std::string_view::npos && state.substr(behind) == " V";
}

// "0 Errors since power on", "no faults"
bool counts_none(std::string_view state) {
    const auto words = lowered(state);
    if (!words.starts_with("0 ") && !words.starts_with("no ")) return false;
    const auto counted = std::string_view(words).substr(words.find(' ') + 1);
    return counted.starts_with("error") || counted.starts_with("fault") ||
           counted.starts_with("failure");
}

bool is_harmless(std::string_view state) { return is_input_voltage(state) || counts_none(state); }

}  // namespace

bool is_well(const Sensor& sensor) { return level_of(sensor) == Level::well; }

void judge_sensors(const Inventory& inventory, Collector& findings) {
    const bool fans_exposed = cooling_redundancy_is_lost(inventory);
    for (const auto& sensor : inventory.sensors) {
        judge_status(inventory, sensor, fans_exposed, findings);
        judge_words(inventory, sensor, findings);
    }
}

std::vector<UnknownWord> unknown_words(const Inventory& inventory) {
    std::vector<UnknownWord> unknown;
    for (const auto& sensor : inventory.sensors) {
        const auto subsystem = subsystem_of(sensor);
        for (const auto& state : sensor.states) {
            if (!redundancy_of(state) && !rule_for(kWords, state))
                unknown.push_back({subsystem, name_of(sensor), state, place_of(sensor, "states")});
        }
        if (has_unknown_status(sensor))
            unknown.push_back({subsystem, name_of(sensor), *sensor.status, sensor.place});
    }
    return unknown;
}

void judge_power_supplies(const Inventory& inventory, Collector& findings) {
    for (const PowerSupply& supply : inventory.power_supplies) {
        if (supply.present == false) continue;  // an empty bay is no failure
        const auto slot = supply.slot.value_or("");
        const Subject subject = {supply_key(slot),
                                 (slot.starts_with("Power") ? "" : "Power supply ") + slot +
                                     (supply.model ? ", " + *supply.model : "") +
                                     (supply.serial ? ", serial " + *supply.serial : ""),
                                 {ref_to(inventory, supply)}};
        if (supply.state) {
            for (const auto part : parts_of(*supply.state)) {
                const auto name =
                    rule_for(kSupplyStates, part).value_or(is_harmless(part) ? "" : "power_supply");
                if (!name.empty())
                    findings.add(subject, name, "state " + *supply.state,
                                 place_of(supply, "state"));
            }
        }
        if (supply.input_state) {
            const auto name =
                rule_for(kSupplyStates, *supply.input_state)
                    .value_or(is_input_voltage(*supply.input_state) ? "" : "power_input");
            if (!name.empty())
                findings.add(subject, "power_input", "input " + *supply.input_state,
                             place_of(supply, "input_state"));
        }
    }
}

void judge_bmc(const Inventory& inventory, Collector& findings) {
    for (const auto& bmc : inventory.bmcs) {
        // A BMC that has none says so.
        if (bmc.self_test && !same_word(*bmc.self_test, "passed") &&
            !same_word(*bmc.self_test, "not implemented"))
            findings.add({"self_test", "BMC", {ref_to(inventory, bmc)}}, "self_test",
                         "self test: " + *bmc.self_test, place_of(bmc, "self_test"));
    }
    for (const auto& log : inventory.sel_logs) {
        const bool full = log.overflow == true;
        if (!full &&
            !(log.used_percent && *log.used_percent >= findings.rule("sel_nearly_full").threshold))
            continue;
        findings.add({"sel", "System event log"}, "sel_nearly_full",
                     full ? "entries were lost" : number(*log.used_percent) + " % full", log.place);
    }
}

}  // namespace qvhost::findings
