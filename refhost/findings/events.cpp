#include "findings/events.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

#include "findings/sensors.h"
#include "findings/states.h"
#include "inventory/ipmi/join.h"

namespace qvhost::findings {

using inventory::Event;
using EventSeverity = inventory::Severity;

// Which events are looked at, by their source and their words. The first row that fits decides.
struct EventRow {
    std::string_view source;  // what the source's name begins with
    std::string_view words;   // what the text or the subject contains; "" for all
    EventSeverity at_least;   // how bad the source calls it
    const char* rule;         // "" if it is of no interest
};

namespace {

constexpr auto kInfo = EventSeverity::info;
constexpr auto kWarning = EventSeverity::warning;
constexpr auto kCritical = EventSeverity::critical;

// clang-format off
constexpr auto kEvents = std::to_array<EventRow>({
    {"bmc",        "Uncorrectable ECC",                      kInfo,     "event_memory_error"    },
    {"bmc",        "Uncorrectable memory error",             kInfo,     "event_memory_error"    },
    {"bmc",        "Correctable ECC logging limit reached",  kInfo,     "event_memory_limit"    },
    {"bmc",        "Correctable ECC",                        kInfo,     "event_memory_corrected"},
    {"bmc",        "Thermal Trip",                           kInfo,     "event_thermal_trip"    },
    {"bmc",        "IERR",                                   kInfo,     "event_processor"       },
    {"bmc",        "Uncorrectable machine check exception",  kInfo,     "event_processor"       },
    {"bmc",        "SM BIOS Uncorrectable CPU-complex Error", kInfo,    "event_processor"       },
    {"bmc",        "FRB1/BIST failure",                      kInfo,     "event_processor"       },
    {"bmc",        "FRB2/Hang in POST failure",              kInfo,     "event_processor"       },
    {"bmc",        "FRB3/Processor startup/init failure",    kInfo,     "event_processor"       },
    {"bmc",        "Bus Fatal Error",                        kInfo,     "event_pci"             },
    {"bmc",        "Bus Uncorrectable error",                kInfo,     "event_pci"             },
    {"bmc",        "PCI SERR",                               kInfo,     "event_pci"             },
    {"bmc",        "Fatal NMI",                              kInfo,     "event_pci"             },
    {"bmc",        "Power Supply AC lost",                   kInfo,     "event_power"           },
    {"bmc",        "AC lost",                                kInfo,     "event_power"           },
    {"bmc",        "AC Lost",                                kInfo,     "event_power"           },
    {"bmc",        "Power Supply",                           kWarning,  "event_power"           },
    {"bmc",        "Redundancy Lost",                        kInfo,     "event_redundancy"      },
    {"bmc",        "Insufficient Resources",                 kInfo,     "event_redundancy"      },
    {"bmc",        "Drive Fault",                            kInfo,     "event_drive"           },
    {"bmc",        "In Critical Array",                      kInfo,     "event_drive"           },
    {"bmc",        "In Failed Array",                        kInfo,     "event_drive"           },
    {"bmc",        "Log almost full",                        kInfo,     "sel_nearly_full"       },
    {"bmc",        "Log full",                               kInfo,     "sel_nearly_full"       },
    {"bmc",        "Log area reset/cleared",                 kInfo,     ""                      },
    {"bmc",        "Critical going",                         kInfo,     "event_threshold"       },
    {"bmc",        "critical going",                         kInfo,     "event_threshold"       },
    {"bmc",        "Non-recoverable going",                  kInfo,     "event_threshold"       },
    {"bmc",        " Crit thresh",                           kInfo,     "event_threshold"       },
    {"bmc",        " Unrec thresh",                          kInfo,     "event_threshold"       },
    {"bmc",        " Noncrit thresh",                        kInfo,     "event_threshold_past"  },
    {"bmc",        "",                                       kCritical, "event_critical"        },
    {"bmc",        "",                                       kWarning,  "event_warning"         },
    {"controller", "PD ",                                    kCritical, "event_controller_drive"},
    {"controller", "VD ",                                    kCritical, "event_controller_drive"},
    {"controller", "",                                       kCritical, "event_controller"      },
    {"kernel",     "Memory failure:",                        kWarning,  "event_memory_error"    },
    {"kernel",     "hardware memory error",                  kWarning,  "event_memory_error"    },
    {"kernel",     "section_type: memory error",             kWarning,  "event_memory_error"    },
    {"kernel",     "section_type: memory error",             kInfo,     "event_memory_corrected"},
    {"kernel",     "section_type: PCIe error",               kCritical, "event_pci"             },
    {"kernel",     "event severity:",                        kCritical, "event_critical"        },
    {"kernel",     "rejecting I/O to offline device",        kCritical, "event_drive_lost"      },
    {"kernel",     "Device offlined",                        kCritical, "event_drive_lost"      },
    {"kernel",     "Removing after probe failure",           kCritical, "event_drive_lost"      },
    {"kernel",     "Disabling device after reset failure",   kCritical, "event_drive_lost"      },
    {"kernel",     "reset failed, giving up",                kCritical, "event_drive_lost"      },
    {"kernel",     "timeout, disable controller",            kCritical, "event_drive_lost"      },
    {"kernel",     "Device not ready",                       kCritical, "event_drive_lost"      },
    {"kernel",     "in FAULT",                               kCritical, "event_controller_lost" },
    {"kernel",     "fault_state(",                           kCritical, "event_controller_lost" },
    {"kernel",     "killing adapter",                        kCritical, "event_controller_lost" },
    {"kernel",     "Host adapter dead",                      kCritical, "event_controller_lost" },
    {"kernel",     "Adapter health - ",                      kCritical, "event_controller_lost" },
    {"kernel",     "Controller lockup detected",             kCritical, "event_controller_lost" },
    {"kernel",     "controller is offline",                  kCritical, "event_controller_lost" },
    {"kernel",     "megaraid_sas ",                          kCritical, "event_controller_fatal"},
    {"kernel",     " error, dev ",                           kWarning,  "event_disk"            },
    {"kernel",     "{ UNC",                                  kWarning,  "event_disk"            },
    {"kernel",     "Unrecovered read error",                 kWarning,  "event_disk"            },
    {"kernel",     "(sct 0x2 /",                             kWarning,  "event_disk"            },
    {"kernel",     "EDAC",                                   kCritical, "event_memory_error"    },
    {"kernel",     "EDAC",                                   kInfo,     "event_memory_corrected"},
    {"kernel",     "Sense Key",                              kWarning,  "event_disk"            },
    {"kernel",     "Machine check",                          kCritical, "event_processor"       },
    {"kernel",     "Hardware Error",                         kCritical, "event_processor"       },
    {"kernel",     "I/O error",                              kWarning,  "event_disk"            },
    {"kernel",     "Medium Error",                           kWarning,  "event_disk"            },
    {"kernel",     "disk",                                   kWarning,  "event_disk"            },
    {"kernel",     "",                                       kCritical, "event_critical"        },
    {"kernel",     "",                                       kWarning,  "event_warning"         },
});
// clang-format on
static_assert(std::ranges::is_sorted(kEvents, {}, &EventRow::source),
              "rows of a source stand together");

// What is kept of a log that names thousands of things, or says pages of them. The store has all.
constexpr std::size_t kMostGroups = 2'000;
constexpr std::size_t kMostKept = 1'000;  // bytes of a text

std::string kept_of(const std::string& text) {
    auto size = std::min(text.size(), kMostKept);
    // Not in the middle of a character.
    while (size < text.size() && size > 0 && (text[size] & 0xC0) == 0x80) --size;
    return text.substr(0, size) + (size < text.size() ? "..." : "");
}

std::span<const EventRow> rows_for(std::string_view source) {
    const auto is_of_it = [&](const EventRow& row) { return source.starts_with(row.source); };
    const auto begin = std::find_if(kEvents.begin(), kEvents.end(), is_of_it);
    return {begin, std::find_if_not(begin, kEvents.end(), is_of_it)};
}

const EventRow* row_for(const Event& event, std::span<const EventRow> rows) {
    for (const auto& row : rows) {
        if (event.severity < row.at_least) continue;
        if (event.text.find(row.words) != std::string::npos ||
            (event.subject && event.subject->find(row.words) != std::string::npos))
            return *row.rule == '\0' ? nullptr : &row;
    }
    return nullptr;
}

// Days since 1970-01-01 of an ISO 8601 text.
std::optional<double> days_of(const std::string& time) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    if (std::sscanf(time.c_str(), "%d-%u-%uT%d:%d", &year, &month, &day, &hour, &minute) < 3)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (!date.ok()) return std::nullopt;
    return static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count()) +
           hour / 24.0 + minute / 1440.0;
}

// An error is critical while it is news; a controller's log goes on to be told as a notice.
Severity severity_at(const Rule& rule, const std::optional<double>& age) {
    if (!age || rule.severity == Severity::notice) return rule.severity;
    const std::string_view name = rule.name;
    if (name == "event_controller") return *age > rule.threshold ? Severity::notice : rule.severity;
    if (rule.severity != Severity::critical) return rule.severity;
    const double limit = rule.threshold > 0 ? rule.threshold : kNewsDays;
    return *age > limit ? Severity::warning : rule.severity;
}

// Rules of events that a later event, or the sensor itself, may end.
bool may_end(std::string_view rule_name) {
    return rule_name == "event_threshold" || rule_name == "event_power" ||
           rule_name == "event_redundancy" || rule_name == "event_drive";
}

bool has_ended(std::string_view text) { return text.find("Deasserted") != std::string_view::npos; }

// "Fully Redundant, Asserted": whatever was lost before.
bool says_redundant(const Event& event) {
    return event.text.find("Fully Redundant") != std::string::npos && !has_ended(event.text);
}

// That something is over, of which no loss is told, is no fault.
bool is_mere_end(const Event& event, std::string_view rule_name) {
    return event.severity == EventSeverity::info && has_ended(event.text) && !may_end(rule_name);
}

// What is said of the same thing, whether it begins or ends.
std::string_view without_end_word(std::string_view text) {
    for (const std::string_view word : {"Deasserted", "Asserted"}) {
        const auto at = text.find(word);
        if (at != std::string_view::npos) return text.substr(0, at);
    }
    return text;
}

}  // namespace

EventJudge::Source& EventJudge::source_of(const Event& event) {
    if (!latest_ || latest_->first != event.source) {
        const auto [at, is_new] = sources_.try_emplace(event.source);
        if (is_new) at->second.rows = rows_for(event.source);
        latest_ = &*at;
    }
    return latest_->second;
}

void EventJudge::take(const Event& event) {
    auto& [rows, dated] = source_of(event);
    if (event.time) dated = *event.time;
    if (says_redundant(event)) end_redundancy_lost(event);
    const auto* row = row_for(event, rows);
    if (!row || is_mere_end(event, row->rule)) return;

    auto subject = kept_of(event.subject.value_or(""));
    auto key = std::string(row->rule) + '\n' + event.source + '\n' + subject;
    if (may_end(row->rule)) key += '\n' + kept_of(std::string(without_end_word(event.text)));
    if (groups_.size() >= kMostGroups && !groups_.contains(key)) {
        key = std::string(row->rule) + '\n' + event.source;
        subject.clear();
    }
    auto& group = groups_[key];
    if (group.count++ == 0) {
        group.row = row;
        group.subject = subject;
        group.source = event.source;
        group.first = event.place;
        group.first_time = event.time;
    }
    if (group.open == 0) group.opened = event.time;
    group.open = has_ended(event.text) ? 0 : group.open + 1;
    group.last = event.place;
    group.says = kept_of(event.text);
    group.time = event.time;
    group.dated = dated;
    if (event.time) {
        const auto day = event.time->substr(0, 10);
        if (day != group.day) group.on_day = 0;
        group.day = day;
        group.most_on_day = std::max(group.most_on_day, ++group.on_day);
    }
}

void EventJudge::end_redundancy_lost(const Event& event) {
    for (auto& [key, group] : groups_) {
        if (group.row->rule != std::string_view("event_redundancy") ||
            group.source != event.source || group.subject != kept_of(event.subject.value_or("")))
            continue;
        group.open = 0;
        group.last = event.place;
        group.says = kept_of(event.text);
        group.time = event.time;
        group.dated = source_of(event).dated;
    }
}

void EventJudge::finish(const Group& group, const inventory::Inventory& inventory,
                        const std::string& now, Collector& findings) {
    const Rule* judged = &findings.rule(group.row->rule);
    const std::string_view name = judged->name;
    const auto then = days_of(group.dated);
    const auto today = days_of(now);
    const auto age = then && today ? std::optional(std::max(0.0, *today - *then)) : std::nullopt;

    if (name == "event_memory_corrected" &&
        static_cast<double>(group.most_on_day) > findings.rule("event_memory_many").threshold)
        judged = &findings.rule("event_memory_many");
    // What the sensor says now has more weight than what it once said.
    const auto* const sensor = inventory::sensor_of_event(inventory, group.subject);
    const bool was_read = sensor && (sensor->reading || !sensor->states.empty());
    const bool has_passed = may_end(name) && (group.open == 0 || (was_read && is_well(*sensor)));
    if (name == "event_threshold" && has_passed) judged = &findings.rule("event_threshold_past");
    auto severity = severity_at(*judged, age);
    const bool is_of_the_past = has_passed || (may_end(name) && sensor && !is_well(*sensor));
    if (is_of_the_past && judged->name == name) severity = Severity::notice;

    Finding finding;
    finding.id = finding_id(*judged, group.subject.empty() ? group.source : group.subject);
    finding.rule = judged->name;
    finding.severity = severity;
    finding.subsystem = judged->subsystem;
    finding.subject = group.subject.empty() ? group.source : group.subject;
    finding.says = group.says;
    finding.time = group.time;
    finding.count = group.count;
    finding.first_seen = group.first_time;
    if (sensor && may_end(name) && group.open > 0 && group.opened && !is_well(*sensor)) {
        const auto [known, is_new] =
            began_.try_emplace(ref_to(inventory, *sensor).number, *group.opened);
        if (!is_new) known->second = std::min(known->second, *group.opened);
    }
    if (sensor) finding.entities.push_back(ref_to(inventory, *sensor));
    for (const auto& controller : inventory.controllers) {
        if (controller.number && group.source == "controller " + std::to_string(*controller.number))
            finding.entities.push_back(ref_to(inventory, controller));
    }
    finding.evidence.push_back(group.last);
    if (!(group.first == group.last)) finding.evidence.push_back(group.first);
    findings.add(std::move(finding));
}

Text EventJudge::began(const std::vector<EntityRef>& entities) const {
    for (const auto& entity : entities) {
        const auto found = began_.find(entity.number);
        if (entity.kind == "sensors" && found != began_.end()) return found->second;
    }
    return std::nullopt;
}

void EventJudge::finish(const inventory::Inventory& inventory, const std::string& now,
                        Collector& findings) {
    for (const auto& [key, group] : groups_) finish(group, inventory, now, findings);
    groups_.clear();
}

}  // namespace qvhost::findings
