#include "findings/health.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "findings/sensors.h"
#include "findings/storage_evidence.h"

namespace qvhost::findings {

namespace {

using inventory::Survey;
using inventory::SurveyedCapture;

enum class Needed {
    always,
    with_bmc,  // where there is a BMC, or one is expected
    if_asked,  // where a command was to make it
};

// What a subsystem's health rests on: one of the captures must be whole.
struct EvidenceRow {
    Subsystem subsystem;
    Needed needed;
    std::array<const char*, 2> captures;  // the plug-in's, the host's own
    const char* words;                    // what it is, where none of them was made
};

// clang-format off
constexpr auto kEvidence = std::to_array<EvidenceRow>({
    {Subsystem::temperature, Needed::with_bmc, {"sensorinfo.txt", "host_ipmitool_sensor.txt"}, "the sensors were not read"},
    {Subsystem::temperature, Needed::if_asked, {"sdrinfo.txt",    "host_ipmitool_sdr.txt"},    "the sensor records were not read"},
    {Subsystem::cooling,     Needed::with_bmc, {"sensorinfo.txt", "host_ipmitool_sensor.txt"}, "the sensors were not read"},
    {Subsystem::cooling,     Needed::if_asked, {"sdrinfo.txt",    "host_ipmitool_sdr.txt"},    "the sensor records were not read"},
    {Subsystem::cooling,     Needed::if_asked, {"host_chassis_status.txt", ""},                "the chassis was not asked"},
    {Subsystem::power,       Needed::with_bmc, {"sensorinfo.txt", "host_ipmitool_sensor.txt"}, "the sensors were not read"},
    {Subsystem::power,       Needed::if_asked, {"sdrinfo.txt",    "host_ipmitool_sdr.txt"},    "the sensor records were not read"},
    {Subsystem::power,       Needed::if_asked, {"host_chassis_status.txt", ""},                "the chassis was not asked"},
    {Subsystem::memory,      Needed::with_bmc, {"selinfo.txt",    "host_sel.txt"},             "the system event log was not read"},
    {Subsystem::memory,      Needed::always,   {"dmesg.log",      "host_dmesg.txt"},           "the kernel's messages were not read"},
    {Subsystem::processor,   Needed::with_bmc, {"selinfo.txt",    "host_sel.txt"},             "the system event log was not read"},
    {Subsystem::processor,   Needed::always,   {"dmesg.log",      "host_dmesg.txt"},           "the kernel's messages were not read"},
    {Subsystem::bmc,         Needed::with_bmc, {"selfinfo.txt",   "host_selftest.txt"},        "the self test was not asked for"},
    {Subsystem::system,      Needed::with_bmc, {"sensorinfo.txt", "host_ipmitool_sensor.txt"}, "the sensors were not read"},
    {Subsystem::system,      Needed::with_bmc, {"selinfo.txt",    "host_sel.txt"},             "the system event log was not read"},
    {Subsystem::system,      Needed::always,   {"dmesg.log",      "host_dmesg.txt"},           "the kernel's messages were not read"},
});
// clang-format on

void add_once(std::vector<std::string>& texts, const std::string& text) {
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
}

bool rests_on_bmc_alone(Subsystem subsystem) {
    return subsystem == Subsystem::temperature || subsystem == Subsystem::cooling ||
           subsystem == Subsystem::power || subsystem == Subsystem::bmc;
}

void weigh(const EvidenceRow& row, const Survey& survey, bool has_no_bmc, Health& health) {
    if (row.needed != Needed::always && has_no_bmc) return;
    const SurveyedCapture* best = nullptr;
    for (const char* name : row.captures) {
        const auto* capture = survey.find(name);
        if (capture && (!best || (!best->whole() && capture->whole()))) best = capture;
    }
    if (!best) {
        if (row.needed != Needed::if_asked) add_once(health.missing, row.words);
    } else if (best->whole()) {
        add_once(health.judged_by, best->name);
    } else {
        add_once(health.missing, why_not_whole(*best));
    }
}

void judge_collection(const Circumstances& circumstances, Health& health) {
    if (!circumstances.incomplete_because.empty())
        health.missing.push_back("the collection is incomplete: " +
                                 circumstances.incomplete_because);
    for (const auto& command : circumstances.cut_off_commands) add_once(health.missing, command);
    if (health.missing.empty()) health.judged_by.push_back("qvhost.log");
}

// Words that no table knows could mean anything.
void add_unknown_words(const std::vector<UnknownWord>& words, Health& health) {
    for (const auto& unknown : words) {
        if (unknown.subsystem == health.subsystem)
            add_once(health.missing, unknown.place.capture + ", line " +
                                         std::to_string(unknown.place.line) + ": sensor " +
                                         unknown.sensor + " says \"" + unknown.word +
                                         "\", which no rule knows");
    }
}

struct ReadingsRow {
    Subsystem subsystem;
    std::string_view kind;
    const char* words;
};
constexpr auto kReadings = std::to_array<ReadingsRow>({
    {Subsystem::temperature, "temperature", "no temperature sensor has a reading"},
    {Subsystem::cooling,     "fan",         "no fan has a reading"               },
});

// A BMC that reads none of its sensors says nothing of them.
void add_missing_readings(const Survey& survey, Health& health) {
    for (const auto& row : kReadings) {
        if (row.subsystem != health.subsystem) continue;
        bool is_there = false, is_read = false;
        for (const auto& sensor : survey.inventory.sensors) {
            if (sensor.kind != row.kind) continue;
            is_there = true;
            is_read = is_read || sensor.reading;
        }
        if (is_there && !is_read) add_once(health.missing, row.words);
        // A server may be cooled from outside; a BMC that measures no temperature has not told all.
        if (!is_there && row.subsystem == Subsystem::temperature &&
            !survey.inventory.sensors.empty())
            add_once(health.missing, "no temperature sensor is listed");
    }
}

std::optional<HealthWord> worst_finding(const std::vector<Finding>& findings, Subsystem subsystem) {
    std::optional<HealthWord> worst;
    for (const auto& finding : findings) {
        if (finding.subsystem != subsystem) continue;
        if (finding.severity == Severity::critical) return HealthWord::critical;
        if (finding.severity == Severity::warning) worst = HealthWord::warning;
    }
    return worst;
}

}  // namespace

// A virtual machine has none, and neither has a machine whose firmware names no IPMI device, unless
// a BMC answers.
const SurveyedCapture* absence_of_bmc(const Survey& survey) {
    const auto& inventory = survey.inventory;
    if (!inventory.sensors.empty() || !inventory.bmcs.empty() || !inventory.ipmi_devices.empty())
        return nullptr;
    const auto* dmidecode = survey.find("dmidecode.log");
    if (!dmidecode) dmidecode = survey.find("host_dmidecode.txt");
    if (!dmidecode || inventory.systems.empty()) return nullptr;
    if (inventory.systems.front().is_virtual == true) return dmidecode;
    return dmidecode->whole() ? dmidecode : nullptr;
}

bool is_not_installed(const SurveyedCapture& capture) {
    return capture.ended_badly.ends_with(": not installed");
}

std::string why_not_whole(const SurveyedCapture& capture) {
    const auto at = [&](std::int64_t line) {
        return capture.name + (line > 0 ? ", line " + std::to_string(line) : "") + ": ";
    };
    if (!capture.ended_badly.empty())
        return capture.name + ": " + (capture.tool.empty() ? "" : capture.tool + ": ") +
               capture.ended_badly;
    if (!capture.is_there) return capture.name + ": it was not made";
    if (!capture.how.errors.empty())
        return at(capture.how.errors.front().line) + capture.how.errors.front().words;
    if (!capture.how.gaps.empty())
        return at(capture.how.gaps.front().line) + capture.how.gaps.front().words;
    if (capture.how.lines == 0) return capture.name + ": it is empty";
    return "";
}

std::vector<Health> judge_health(const Survey& survey, const Circumstances& circumstances,
                                 const std::vector<Finding>& findings) {
    const auto* absent_by = absence_of_bmc(survey);
    const auto words = unknown_words(survey.inventory);
    std::vector<Health> all;
    for (const auto subsystem : kSubsystems) {
        Health health;
        health.subsystem = subsystem;
        for (const auto& row : kEvidence) {
            if (row.subsystem == subsystem) weigh(row, survey, absent_by, health);
        }
        bool is_absent = absent_by && rests_on_bmc_alone(subsystem);
        if (is_absent) add_once(health.judged_by, absent_by->name);
        if (subsystem == Subsystem::storage) is_absent = weigh_storage(survey, health);
        if (subsystem == Subsystem::collection) judge_collection(circumstances, health);
        // One that leaves a command without an answer is not well, whatever its self test said before.
        if (subsystem == Subsystem::bmc) {
            for (const auto& command : circumstances.unanswered_by_bmc)
                add_once(health.missing, command);
        }
        add_unknown_words(words, health);
        add_missing_readings(survey, health);

        if (const auto worst = worst_finding(findings, subsystem)) {
            health.health = *worst;
        } else if (!health.missing.empty()) {
            health.health = HealthWord::unknown;
        } else if (is_absent) {
            health.health = HealthWord::absent;
        } else {
            health.health = health.judged_by.empty() ? HealthWord::unknown : HealthWord::ok;
        }
        for (const auto& lack : circumstances.lacks) {
            const bool by_bmc =
                lack.subsystem == word(Subsystem::bmc) && rests_on_bmc_alone(subsystem);
            if (by_bmc || lack.subsystem == word(subsystem)) add_once(health.missing, lack.words);
        }
        all.push_back(std::move(health));
    }
    return all;
}

}  // namespace qvhost::findings
