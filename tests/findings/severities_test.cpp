// What wakes whom: for each kind of fault the severity and the rule that name it. The same cases then
// try the rules: with any rule's severity or threshold changed, some case must come out otherwise.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "findings/judge.h"

namespace qvhost::findings {
namespace {

using inventory::Drive;
using inventory::Event;
using inventory::Inventory;
using inventory::Sensor;
using inventory::Survey;
using inventory::SurveyedCapture;
using inventory::TopologyRow;
using inventory::Volume;
using Events = std::vector<Event>;
using Lines = std::vector<std::string>;
using EventSeverity = inventory::Severity;

constexpr const char* kNow = "2026-11-21T12:00:00";

struct Server {
    Survey survey;
    Events events;
    Past past;
    std::vector<BmcAnswer> bmc_answers;
    Inventory& has() { return survey.inventory; }
};

struct Case {
    const char* fault;
    std::function<void(Server&)> make;
    Lines findings;  // "SEVERITY RULE" each
};

Lines judged(const Case& one, const Rules& rules = built_in_rules()) {
    Server server;
    one.make(server);
    EventJudge events;
    for (const auto& event : server.events) events.take(event);
    Circumstances circumstances;
    circumstances.now = kNow;
    circumstances.past = server.past;
    circumstances.past.started = "2026-11-21T12:00:00Z";
    circumstances.bmc_answers = server.bmc_answers;
    Lines lines;
    for (const auto& finding : judge(server.survey, events, circumstances, rules).findings)
        lines.push_back(std::string(word(finding.severity)) + " " + finding.rule);
    return lines;
}

// ---- Parts of servers ----

void add_volume(Server& server, const char* raid, const char* state, const char* cache = "RWBD") {
    Volume volume;
    volume.place = {"c0_showall.txt", 20};
    volume.controller = 0;
    volume.drive_group = 0;
    volume.number = static_cast<std::int64_t>(server.has().volumes.size());
    volume.raid = raid;
    volume.state = state;
    volume.cache = cache;
    server.has().volumes.push_back(volume);
}

Drive& add_drive(Server& server, const char* state) {
    Drive drive;
    drive.place = {"c0_showall.txt", 40};
    drive.controller = 0;
    drive.enclosure = 8;
    drive.slot = static_cast<std::int64_t>(server.has().drives.size());
    drive.serial = "Z" + std::to_string(*drive.slot);
    drive.drive_group = 0;
    drive.state = state;
    server.has().drives.push_back(drive);
    return server.has().drives.back();
}

Drive& add_nvme(Server& server) {
    Drive drive;
    drive.place = {"host_smartctl_nvme0.json", 9};
    drive.interface = "NVMe";
    drive.device = "/dev/nvme0";
    drive.serial = "N1";
    drive.smart_alert = false;
    server.has().drives.push_back(drive);
    return server.has().drives.back();
}

void add_group(Server& server, const char* state) {
    TopologyRow row;
    row.place = {"c0_showall.txt", 12};
    row.controller = 0;
    row.drive_group = 0;
    row.type = "RAID5";
    row.state = state;
    server.has().topology.push_back(row);
}

void add_battery(Server& server, const char* state) {
    inventory::Battery battery;
    battery.place = {"c0_showall.txt", 60};
    battery.controller = 0;
    battery.state = state;
    server.has().batteries.push_back(battery);
}

void add_controller(Server& server, const char* status) {
    inventory::Controller controller;
    controller.place = {"c0_showall.txt", 4};
    controller.number = 0;
    controller.status = status;
    server.has().controllers.push_back(controller);
}

void add_sensor(Server& server, const char* name, const char* kind, const char* status,
                inventory::Texts states = {}) {
    Sensor sensor;
    sensor.place = {"sensorinfo.txt", 1};
    sensor.name = name;
    sensor.kind = kind;
    sensor.status = status;
    if (states.empty()) sensor.reading = 1;
    sensor.states = std::move(states);
    server.has().sensors.push_back(sensor);
}

void add_supply(Server& server, const char* state, const char* input = "") {
    inventory::PowerSupply supply;
    supply.place = {"psuinfo.txt", 1};
    supply.slot = "PSU1";
    supply.present = true;
    supply.state = state;
    if (*input) supply.input_state = input;
    server.has().power_supplies.push_back(supply);
}

void add_chassis(Server& server, const char* name, const char* state) {
    server.has().chassis_states.push_back({{"host_chassis_status.txt", 1}, name, state});
}

void add_event(Server& server, const char* source, const char* time, EventSeverity severity,
               const char* subject, const char* text) {
    Event event;
    event.place = {"selinfo.txt", 1};
    event.source = source;
    if (*time) event.time = time;
    event.severity = severity;
    if (*subject) event.subject = subject;
    event.text = text;
    server.events.push_back(event);
}

SurveyedCapture& add_capture(Server& server, const char* name) {
    SurveyedCapture capture;
    capture.name = name;
    capture.tool = "ipmitool";
    capture.is_there = true;
    capture.how.lines = 10;
    server.survey.captures.push_back(capture);
    return server.survey.captures.back();
}

// ---- Cases of one line ----

Case volume(const char* fault, const char* raid, const char* state, Lines findings) {
    return {fault, [=](Server& s) { add_volume(s, raid, state); }, std::move(findings)};
}

Case operation(const char* fault, const char* runs, Lines findings) {
    return {fault,
            [=](Server& s) {
                add_volume(s, "RAID1", "Optl");
                s.has().volumes[0].operation = runs;
                s.has().volumes[0].progress_percent = 40;
            },
            std::move(findings)};
}

Case group(const char* fault, const char* state, Lines findings) {
    return {fault, [=](Server& s) { add_group(s, state); }, std::move(findings)};
}

// A drive in a volume that has the state.
Case drive(const char* fault, const char* volume_state, const char* state, Lines findings,
           const std::function<void(Drive&)>& more = {}) {
    return {fault,
            [=](Server& s) {
                add_volume(s, "RAID5", volume_state);
                auto& one = add_drive(s, state);
                if (more) more(one);
            },
            std::move(findings)};
}

// A drive whose counter an earlier run read as 3.
Case growing(const char* fault, const char* field, std::int64_t now, Lines findings,
             const char* raid = "", const char* volume_state = "Optl") {
    return {fault,
            [=](Server& s) {
                if (*raid) add_volume(s, raid, volume_state);
                auto& one = add_drive(s, "Onln");
                (std::string(field) == "media_errors"   ? one.media_errors
                 : std::string(field) == "other_errors" ? one.other_errors
                                                        : one.shield_counter) = now;
                s.past.grown.push_back({{"drives", 1}, {field, 3, now, "2026-11-01T02:00:00Z"}});
            },
            std::move(findings)};
}

// A drive that is rebuilt, a volume that is, and media errors, each of which was the same at that time.
Case rebuilt_drive(const char* fault, const char* since, Lines findings) {
    return {fault,
            [=](Server& s) {
                add_drive(s, "Rbld").rebuild_percent = 40;
                s.past.unchanged.push_back({{"drives", 1}, "rebuild_percent", since});
            },
            std::move(findings)};
}
Case rebuilt_volume(const char* fault, const char* operation, const char* since, Lines findings) {
    return {fault,
            [=](Server& s) {
                add_volume(s, "RAID1", "Optl");
                s.has().volumes[0].operation = operation;
                s.has().volumes[0].progress_percent = 40;
                s.past.unchanged.push_back({{"volumes", 1}, "progress_percent", since});
            },
            std::move(findings)};
}
Case steady_errors(const char* fault, const char* since, Lines findings) {
    return {fault,
            [=](Server& s) {
                add_drive(s, "Onln").media_errors = 3;
                s.past.unchanged.push_back({{"drives", 1}, "media_errors", since});
            },
            std::move(findings)};
}

// A drive that was a hot spare before, which is now in this state, beside another one.
Case former_spare(const char* fault, const char* state, const char* other, Lines findings) {
    return {fault,
            [=](Server& s) {
                add_drive(s, state);
                if (state == std::string("UGood")) s.has().drives[0].drive_group.reset();
                auto& two = add_drive(s, other);
                if (other == std::string("GHS")) two.spare = "global";
                s.past.former_spares = {0};
            },
            std::move(findings)};
}

// Two drives of software arrays, the first of them a hot spare before; an array names the drive of this number.
Case former_spare_of_array(const char* fault, std::size_t member_drive, Lines findings) {
    return {fault,
            [=](Server& s) {
                for (int i = 0; i < 2; ++i) add_drive(s, "Onln").drive_group.reset();
                inventory::VolumeMember member;
                member.place = {"host_mdadm_md0.txt", 20};
                member.is_spare = false;
                member.drive = member_drive;
                s.has().volume_members.push_back(member);
                s.past.former_spares = {0};
            },
            std::move(findings)};
}

Case pool_spares(const char* fault, const char* one, const char* two, Lines findings) {
    return {fault,
            [=](Server& s) {
                for (const char* state : {one, two}) {
                    inventory::VolumeMember member;
                    member.place = {"host_zpool.txt", 20};
                    member.volume_name = "tank";
                    member.is_spare = true;
                    member.state = state;
                    member.device = "sdz";
                    s.has().volume_members.push_back(member);
                }
            },
            std::move(findings)};
}

Case answer(const char* fault, double seconds, Lines findings) {
    return {fault,
            [=](Server& s) {
                s.bmc_answers.push_back({seconds, {"mcinfo.txt", 0}});
            },
            std::move(findings)};
}

Case nvme(const char* fault, const std::function<void(Drive&)>& more, Lines findings) {
    return {fault, [=](Server& s) { more(add_nvme(s)); }, std::move(findings)};
}

Case battery(const char* fault, const char* state, const char* cache, Lines findings) {
    return {fault,
            [=](Server& s) {
                add_volume(s, "RAID1", "Optl", cache);
                add_battery(s, state);
            },
            std::move(findings)};
}

Case controller(const char* fault, const char* status, Lines findings) {
    return {fault, [=](Server& s) { add_controller(s, status); }, std::move(findings)};
}

Case sensor(const char* fault, const char* name, const char* kind, const char* status,
            Lines findings) {
    return {fault, [=](Server& s) { add_sensor(s, name, kind, status); }, std::move(findings)};
}

Case words(const char* name, const char* state, Lines findings) {
    return {state, [=](Server& s) { add_sensor(s, name, "discrete", "ok", {state}); },
            std::move(findings)};
}

Case chassis(const char* fault, const char* name, const char* state, Lines findings) {
    return {fault, [=](Server& s) { add_chassis(s, name, state); }, std::move(findings)};
}

Case light(const char* state, Lines findings) {
    return {state,
            [=](Server& s) {
                s.has().leds.push_back({{"ledinfo.txt", 2}, "System error LED", state});
            },
            std::move(findings)};
}

Case supply(const char* fault, const char* state, const char* input, Lines findings) {
    return {fault, [=](Server& s) { add_supply(s, state, input); }, std::move(findings)};
}

Case sel(const char* fault, const char* time, const char* subject, const char* text, Lines findings,
         EventSeverity severity = EventSeverity::info) {
    return {fault, [=](Server& s) { add_event(s, "bmc", time, severity, subject, text); },
            std::move(findings)};
}

Case kernel(const char* fault, const char* time, EventSeverity severity, const char* text,
            Lines findings) {
    return {fault, [=](Server& s) { add_event(s, "kernel", time, severity, "", text); },
            std::move(findings)};
}

Case log(const char* fault, const char* time, const char* text, Lines findings) {
    return {
        fault,
        [=](Server& s) { add_event(s, "controller 0", time, EventSeverity::critical, "", text); },
        std::move(findings)};
}

Case corrected(const char* fault, int count, Lines findings) {
    return {fault,
            [=](Server& s) {
                for (int i = 0; i < count; ++i)
                    add_event(s, "bmc", "2026-11-20T08:00:00", EventSeverity::info, "DIMM A1",
                              "Memory: Correctable ECC, Asserted");
            },
            std::move(findings)};
}

Case sel_log(const char* fault, double used, Lines findings) {
    return {fault,
            [=](Server& s) {
                s.has().sel_logs.push_back({{"selinfo.txt", 3}, 10, used, {}});
            },
            std::move(findings)};
}

Case clock_of(const char* fault, const char* says, const char* system, Lines findings) {
    return {fault,
            [=](Server& s) {
                s.has().clocks.push_back({{"c0_showall.txt", 9}, "controller 0", says, system});
            },
            std::move(findings)};
}

const char* const kToday = "2026-11-21T08:00:00";
const char* const kAWeekAgo = "2026-11-14T12:00:00";
const char* const kLonger = "2026-11-14T11:00:00";
const char* const kLastMonth = "2026-10-01T08:00:00";

const std::vector<Case>& cases() {
    // clang-format off
    static const std::vector<Case> kCases = {
        // Volumes, arrays and what runs on them.
        volume("healthy volume",                   "RAID5",  "Optl",       {}),
        volume("volume offline",                   "RAID5",  "OfLn",       {"critical volume_offline"}),
        volume("volume failed",                    "5",      "Failed",     {"critical volume_offline"}),
        volume("no redundancy left",               "RAID5",  "Dgrd",       {"critical volume_no_redundancy"}),
        volume("two drives of RAID 6 lost",        "RAID6",  "Dgrd",       {"critical volume_no_redundancy"}),
        volume("partially degraded RAID 6",        "RAID6",  "Pdgd",       {"warning volume_degraded"}),
        volume("degraded RAID 6 of arcconf",       "6",      "Degraded",   {"warning volume_degraded"}),
        volume("degraded md array",                "raid1",  "clean, degraded",             {"critical volume_no_redundancy"}),
        volume("md RAID 1 without a member",       "raid1",  "active, degraded [__]",       {"critical volume_offline"}),
        volume("md RAID 1 with two of three",      "raid1",  "active, degraded [U_U]",      {"warning volume_degraded"}),
        volume("md RAID 5 that lacks one",         "raid5",  "active, degraded [U_U]",      {"critical volume_no_redundancy"}),
        volume("md RAID 5 that lacks two",         "raid5",  "active, degraded [U__]",      {"critical volume_offline"}),
        volume("md RAID 6 that lacks two",         "raid6",  "clean, degraded [_UU_], recovering", {"critical volume_no_redundancy"}),
        volume("md RAID 6 that lacks three",       "raid6",  "active, degraded [_U__]",     {"critical volume_offline"}),
        volume("md RAID 10 that lacks one",        "raid10", "active, degraded [_UUU]",     {"critical volume_no_redundancy"}),
        volume("md array that mdadm calls failed", "raid10", "clean, FAILED",               {"critical volume_offline"}),
        volume("md array that nobody wrote to",    "raid1",  "active (auto-read-only)",     {}),
        volume("md array that waits for a resync", "raid1",  "clean, resyncing (PENDING)",  {"notice volume_maintenance"}),
        volume("md array that waits for a rebuild", "raid6", "clean, recovering (DELAYED)", {"warning volume_rebuild"}),
        volume("container without its arrays",     "container", "inactive",                 {"critical volume_offline"}),
        volume("media errors of a Smart Array",    "1",      "OK, Unrecoverable Media Errors: Detected", {"warning volume_state"}),
        volume("degraded pool",                    "mirror", "DEGRADED",   {"critical volume_no_redundancy"}),
        volume("lost path",                        "multipath", "degraded, 1 of 2 paths failed", {"critical volume_no_redundancy"}),
        volume("lost paths, two are left",         "multipath", "partially degraded, 2 of 4 paths failed", {"warning volume_degraded"}),
        volume("no path is left",                  "multipath", "failed, no path is left",  {"critical volume_offline"}),
        volume("inactive volume of sas2ircu",      "RAID1",  "Inactive, Okay (IOKY)",       {"warning volume_state"}),
        volume("initialising volume of sas2ircu",  "RAID1",  "Initializing (INIT)",         {"notice volume_maintenance"}),
        volume("online volume of sas2ircu",        "RAID0",  "Online (ONL)",                {}),
        volume("a state that nobody knows",        "RAID5",  "Odd",        {"warning volume_state"}),
        operation("rebuild",                       "Rebuild",              {"warning volume_rebuild"}),
        operation("copyback",                      "Copyback",             {"warning volume_rebuild"}),
        operation("consistency check",             "CC",                   {"notice volume_maintenance"}),
        operation("patrol read",                   "Patrol Read",          {"notice volume_maintenance"}),
        operation("initialisation",                "Init",                 {"notice volume_maintenance"}),
        operation("nothing runs",                  "None",                 {}),
        operation("an operation that nobody knows", "Odd",                 {"warning volume_operation"}),
        group("healthy group",                     "Optl",                 {}),
        group("degraded group without a volume",   "Dgrd",                 {"critical topology_no_redundancy"}),
        group("offline group",                     "OfLn",                 {"critical topology_offline"}),
        group("partially degraded group",          "Pdgd",                 {"warning topology_state"}),
        group("a state that nobody knows",         "Odd",                  {"warning topology_state"}),

        // Drives.
        drive("healthy drive",                     "Optl", "Onln",         {}),
        drive("JBOD",                              "Optl", "JBOD",         {}),
        drive("idle hot spare",                    "Optl", "GHS",          {}),
        drive("idle dedicated spare",              "Optl", "DHS",          {}),
        drive("unconfigured good of storcli2",     "Optl", "UConf",        {}),
        drive("spare of a pool that is not there", "ONLINE", "UNAVAIL",    {"warning drive_failed"}),
        drive("unconfigured good",                 "Optl", "UGood",        {}),
        drive("failed, redundancy left",           "Pdgd", "Offln",        {"warning volume_degraded", "warning drive_failed"}),
        drive("failed, no redundancy left",        "Dgrd", "Offln",        {"critical volume_no_redundancy", "critical drive_failed_no_redundancy"}),
        drive("failed in an offline volume",       "OfLn", "Failed",       {"critical volume_offline", "critical drive_failed_no_redundancy"}),
        drive("unconfigured bad",                  "Optl", "UBad",         {"warning drive_unconfigured_bad"}),
        drive("rebuild",                           "Optl", "Rbld",         {"warning drive_rebuild"}),
        drive("copyback",                          "Optl", "Cpybck",       {"warning drive_rebuild"}),
        drive("a state that nobody knows",         "Optl", "Odd",          {"warning drive_state"}),
        drive("foreign",                           "Optl", "UGood",        {"warning drive_foreign"},                       [](Drive& d) { d.is_foreign = true; }),
        drive("SMART alert",                       "Optl", "Onln",         {"warning drive_predicted"},                     [](Drive& d) { d.smart_alert = true; }),
        drive("SMART alert in a degraded array",   "Dgrd", "Onln",         {"critical volume_no_redundancy", "critical drive_predicted_no_redundancy"}, [](Drive& d) { d.smart_alert = true; }),
        drive("attribute at its threshold",        "Optl", "Onln",         {"warning drive_predicted"},                     [](Drive& d) { d.smartctl_status = 0x10; }),
        drive("errors of self tests",              "Optl", "Onln",         {"warning drive_predicted"},                     [](Drive& d) { d.smartctl_status = 0x80; }),
        drive("what smartctl tells of the past",   "Optl", "Onln",         {},                                              [](Drive& d) { d.smartctl_status = 0x64; }),
        drive("predicted failure",                 "Optl", "Onln",         {"warning drive_predicted"},                     [](Drive& d) { d.predicted_failures = 1; }),
        drive("predicted failure, degraded array", "Dgrd", "Onln",         {"critical volume_no_redundancy", "critical drive_predicted_no_redundancy"}, [](Drive& d) { d.predicted_failures = 1; }),
        drive("media errors",                      "Optl", "Onln",         {"warning drive_media_errors"},                  [](Drive& d) { d.media_errors = 1; }),
        drive("other errors",                      "Optl", "Onln",         {"notice drive_other_errors"},                   [](Drive& d) { d.other_errors = 1; }),
        drive("shielded for diagnosis",            "Optl", "Onln",         {"notice drive_shielded"},                       [](Drive& d) { d.shield_counter = 1; }),
        drive("reallocated sectors",               "Optl", "Onln",         {"notice drive_reallocated"},                    [](Drive& d) { d.reallocated_sectors = 1; }),
        drive("counters of zero",                  "Optl", "Onln",         {},                                              [](Drive& d) { d.media_errors = d.other_errors = d.predicted_failures = d.shield_counter = d.reallocated_sectors = 0; }),
        drive("counters of zero, degraded array",  "Dgrd", "Onln",         {"critical volume_no_redundancy"},               [](Drive& d) { d.predicted_failures = 0; }),
        growing("media errors grow",               "media_errors", 4, {"warning drive_media_errors_grow"}),
        growing("media errors stay",               "media_errors", 3, {"warning drive_media_errors"}),
        growing("media errors grow in RAID 5",     "media_errors", 4, {"warning drive_media_errors_grow"}, "RAID5"),
        growing("media errors grow in RAID 0",     "media_errors", 4, {"critical drive_media_errors_grow_no_redundancy"}, "RAID0"),
        growing("media errors grow where redundancy is lost", "media_errors", 4, {"critical volume_no_redundancy", "critical drive_media_errors_grow_no_redundancy"}, "RAID5", "Dgrd"),
        growing("media errors stay where redundancy is lost", "media_errors", 3, {"critical volume_no_redundancy", "warning drive_media_errors"}, "RAID5", "Dgrd"),
        growing("other errors grow where redundancy is lost", "other_errors", 4, {"critical volume_no_redundancy", "warning drive_other_errors_grow"}, "RAID5", "Dgrd"),
        steady_errors("media errors as many for 30 days", "2026-10-22T12:00:00Z", {"notice drive_media_errors"}),
        steady_errors("media errors as many for less",    "2026-10-22T12:00:01Z", {"warning drive_media_errors"}),
        rebuilt_drive("rebuild goes on",           "2026-11-21T06:00:01Z", {"warning drive_rebuild"}),
        rebuilt_drive("rebuild stands still",      "2026-11-21T06:00:00Z", {"critical drive_rebuild_still"}),
        rebuilt_volume("rebuild of a volume goes on", "Rebuild",    "2026-11-21T06:00:01Z", {"warning volume_rebuild"}),
        rebuilt_volume("rebuild of a volume stands still", "Rebuild", "2026-11-21T06:00:00Z", {"critical volume_rebuild_still"}),
        rebuilt_volume("a check that stands still", "CC",           "2026-11-21T06:00:00Z", {"notice volume_maintenance"}),
        former_spare("hot spare in use, none left", "Onln", "Onln", {"warning spare_in_use"}),
        former_spare("hot spare in use, one left", "Onln", "GHS",   {}),
        former_spare("hot spare that was taken out", "UGood", "Onln", {}),
        former_spare_of_array("hot spare of an array in use", 0,    {"warning spare_in_use"}),
        former_spare_of_array("another drive in use", 1,            {}),
        pool_spares("spare of a pool in use, none left", "INUSE", "INUSE", {"warning spare_in_use"}),
        pool_spares("spare of a pool in use, one left", "INUSE", "AVAIL", {}),
        growing("other errors grow",               "other_errors", 4, {"warning drive_other_errors_grow"}),
        growing("other errors stay",               "other_errors", 3, {"notice drive_other_errors"}),
        growing("shielded again",                  "shield_counter", 4, {"warning drive_shielded_grow"}),
        growing("shielded no more",                "shield_counter", 3, {"notice drive_shielded"}),
        nvme("healthy NVMe drive",                 [](Drive& d) { d.percentage_used = 79; d.available_spare_percent = 11; },             {}),
        nvme("80 % of its life used",              [](Drive& d) { d.percentage_used = 80; },                                             {"warning drive_wear"}),
        nvme("its life used up, spare good",       [](Drive& d) { d.percentage_used = 120; d.available_spare_percent = 100; },           {"warning drive_wear"}),
        nvme("spare below the usual threshold",    [](Drive& d) { d.available_spare_percent = 10; },                                     {"critical drive_spare_low"}),
        nvme("spare above its own threshold",      [](Drive& d) { d.available_spare_percent = 9; d.available_spare_threshold = 5; },     {}),
        nvme("spare below its own threshold",      [](Drive& d) { d.available_spare_percent = 4; d.available_spare_threshold = 5; },     {"critical drive_spare_low"}),
        nvme("spare at its own threshold",         [](Drive& d) { d.available_spare_percent = 5; d.available_spare_threshold = 5; },     {}),
        nvme("counts no spare blocks",             [](Drive& d) { d.available_spare_percent = 0; d.available_spare_threshold = 0; },     {}),
        nvme("counts none and warns of nothing",   [](Drive& d) { d.available_spare_percent = 0; d.nvme_warnings = 0; },                 {}),
        nvme("warns of spare blocks",              [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 1; },                          {"critical drive_spare_low"}),
        nvme("warns of its temperature",           [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 2; },                                          {"warning drive_temperature"}),
        nvme("warns of its reliability alone",     [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 4; },                          {"warning drive_predicted"}),
        nvme("read-only",                          [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 8; },                          {"critical drive_read_only"}),
        nvme("backup of its memory failed",        [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 16; },                         {"critical drive_read_only"}),
        nvme("its persistent memory fails",        [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 32; },                         {"critical drive_read_only"}),
        nvme("warns of something unknown",         [](Drive& d) { d.smart_alert = true; d.nvme_warnings = 64; },                         {"warning drive_predicted"}),

        // Controllers, batteries, enclosures.
        controller("healthy controller",           "Optimal",              {}),
        controller("failed controller",            "Failed",               {"critical controller_failed"}),
        controller("needs attention",              "Needs Attention",      {"warning controller_attention"}),
        controller("a state that nobody knows",    "Odd",                  {"warning controller_attention"}),
        battery("healthy battery",                 "Optimal", "RWBD",      {}),
        battery("healthy backup of a cache",       "ZMM Optimal", "On",    {}),
        battery("learn cycle",                     "Learning", "RWBD",     {"notice battery_maintenance"}),
        battery("failed battery",                  "Failed", "RWBD",       {"warning battery"}),
        battery("missing battery",                 "Missing", "RWBD",      {"warning battery"}),
        battery("battery to be replaced",          "Dgd (Needs Attention)", "RWBD", {"warning battery"}),
        battery("failed, write-back forced",       "Failed", "RAWBD",      {"critical battery_write_back_forced"}),
        {"enclosure not well", [](Server& s) { s.has().enclosures.push_back({{"c0_showall.txt", 70}, 0, 8, 12, "Critical", {}, {}, {}}); }, {"warning enclosure_state"}},
        {"healthy enclosure",  [](Server& s) { s.has().enclosures.push_back({{"c0_showall.txt", 70}, 0, 8, 12, "OK", {}, {}, {}}); }, {}},

        // Sensors by their status.
        sensor("temperature ok",                   "CPU1 Temp", "temperature", "ok", {}),
        sensor("temperature not read",             "CPU1 Temp", "temperature", "na", {}),
        sensor("temperature nc",                   "CPU1 Temp", "temperature", "nc", {"warning temperature_warning"}),
        sensor("temperature cr",                   "CPU1 Temp", "temperature", "cr", {"critical temperature_critical"}),
        sensor("temperature nr",                   "CPU1 Temp", "temperature", "nr", {"critical temperature_critical"}),
        sensor("temperature ucr of sdr",           "CPU1 Temp", "temperature", "ucr", {"critical temperature_critical"}),
        sensor("fan nc",                           "FAN1", "fan", "nc",         {"warning fan_warning"}),
        sensor("one fan cr",                       "FAN1", "fan", "cr",         {"warning fan_warning"}),
        {"fan cr, redundancy lost", [](Server& s) { add_sensor(s, "FAN1", "fan", "cr"); add_sensor(s, "Fan Redundancy", "discrete", "ok", {"Redundancy Lost"}); }, {"critical fan_critical", "warning cooling_redundancy"}},
        sensor("voltage nc",                       "12V", "voltage", "nc",      {"warning voltage_warning"}),
        sensor("voltage cr",                       "12V", "voltage", "cr",      {"critical voltage_critical"}),
        sensor("current nr",                       "PSU1 Iout", "current", "nr", {"critical voltage_critical"}),
        sensor("clock battery cr",                 "VBAT", "voltage", "cr",     {"warning clock_battery"}),
        sensor("sensor of no kind nc",             "Odd", "other", "nc",        {"warning sensor_warning"}),
        sensor("sensor of no kind cr",             "Odd", "other", "cr",        {"critical sensor_critical"}),

        // Words of discrete sensors.
        words("PSU1 Status",    "Presence detected",                       {}),
        words("PSU Redundancy", "Fully Redundant",                         {}),
        words("PSU1 Status",    "Power Supply AC lost",                    {"warning power_input"}),
        words("PSU1 Status",    "Failure detected",                        {"warning power_supply"}),
        words("PSU1 Status",    "Predictive failure",                      {"warning power_supply"}),
        words("PSU Redundancy", "Redundancy Lost",                         {"warning power_redundancy"}),
        words("PSU Redundancy", "Non-Redundant: Insufficient Resources",   {"critical power_insufficient"}),
        words("Fan Redundancy", "Redundancy Degraded",                     {"warning cooling_redundancy"}),
        words("Fan Redundancy", "Non-Redundant: Insufficient Resources",   {"critical cooling_insufficient"}),
        words("Link",           "Redundancy Lost",                         {"warning redundancy"}),
        words("Chassis Intru",  "General Chassis intrusion",               {"warning intrusion"}),
        words("HDD1",           "Drive Present",                           {}),
        words("HDD1",           "Drive Fault",                             {"warning drive_bay_fault"}),
        words("HDD1",           "In Failed Array",                         {"critical drive_bay_array_failed"}),
        words("CPU1 Status",    "IERR",                                    {"critical processor_error"}),
        words("CPU1 Status",    "Thermal Trip",                            {"critical thermal_trip"}),
        words("Memory ECC",     "Uncorrectable ECC",                       {"critical memory_error"}),
        words("Memory ECC",     "Correctable ECC logging limit reached",   {"warning memory_limit"}),
        words("Memory ECC",     "Correctable ECC",                         {"notice memory_corrected"}),
        words("Critical IRQ",   "Fatal NMI",                               {"critical sensor_critical"}),
        words("Fan Fault",      "Fault Status Asserted",                   {"warning sensor_failure_word"}),
        words("SEL",            "Log almost full",                         {"warning sel_nearly_full"}),
        words("CMOS Battery",   "Low",                                     {"warning clock_battery"}),

        // Power supplies in their makers' words.
        supply("supply well",                      "Present, OK", "AC ok",      {}),
        supply("supply without errors",            "0 Errors since power on", "", {}),
        supply("supply with errors",               "2 Errors since power on", "", {"warning power_supply"}),
        supply("input lost",                       "Present, OK", "AC lost",    {"warning power_input"}),
        supply("supply failed",                    "FAILED", "",                {"warning power_supply"}),
        {"empty bay", [](Server& s) { add_supply(s, "not present"); s.has().power_supplies[0].present = false; }, {}},

        // The BMC and clocks.
        {"self test passed", [](Server& s) { s.has().bmcs.push_back({{"selfinfo.txt", 1}, {}, {}, "passed", {}, {}, {}}); }, {}},
        {"no self test", [](Server& s) { s.has().bmcs.push_back({{"selfinfo.txt", 1}, {}, {}, "not implemented", {}, {}, {}}); }, {}},
        answer("BMC answers at once",  4.9, {}),
        answer("BMC answers slowly",   5,   {"notice bmc_slow"}),
        {"self test failed", [](Server& s) { s.has().bmcs.push_back({{"selfinfo.txt", 1}, {}, {}, "device corrupted", {}, {}, {}}); }, {"warning self_test"}},
        sel_log("SEL 89 % full",                   89,                          {}),
        sel_log("SEL 90 % full",                   90,                          {"warning sel_nearly_full"}),
        clock_of("clock right",                    "2026-11-21T12:04:59", kNow, {}),
        clock_of("another time zone",              "2026-11-21T14:00:10", kNow, {}),
        clock_of("clock wrong",                    "2026-11-21T12:05:00", kNow, {"warning clock_wrong"}),

        // The SEL.
        sel("memory error",                        kToday,     "DIMM A1", "Memory: Uncorrectable ECC, Asserted",  {"critical event_memory_error"}),
        sel("memory error a week ago",             kAWeekAgo,  "DIMM A1", "Memory: Uncorrectable ECC, Asserted",  {"critical event_memory_error"}),
        sel("memory error, longer ago",            kLonger,    "DIMM A1", "Memory: Uncorrectable ECC, Asserted",  {"warning event_memory_error"}),
        sel("memory error of an unset clock",      "",         "DIMM A1", "Memory: Uncorrectable ECC, Asserted",  {"critical event_memory_error"}),
        sel("logging limit",                       kToday,     "DIMM A1", "Memory: Correctable ECC logging limit reached", {"warning event_memory_limit"}),
        corrected("one corrected error",           1,                                                             {"notice event_memory_corrected"}),
        corrected("24 corrected errors a day",     24,                                                            {"notice event_memory_corrected"}),
        corrected("25 corrected errors a day",     25,                                                            {"warning event_memory_many"}),
        sel("processor error",                     kAWeekAgo,  "CPU1", "Processor: IERR, Asserted",               {"critical event_processor"}),
        sel("processor error, longer ago",         kLonger,    "CPU1", "Processor: IERR, Asserted",               {"warning event_processor"}),
        sel("thermal trip",                        kAWeekAgo,  "CPU1", "Processor: Thermal Trip, Asserted",       {"critical event_thermal_trip"}),
        sel("thermal trip, longer ago",            kLonger,    "CPU1", "Processor: Thermal Trip, Asserted",       {"warning event_thermal_trip"}),
        sel("fatal bus error",                     kAWeekAgo,  "PCIe", "Critical Interrupt: Bus Fatal Error",     {"critical event_pci"}),
        sel("fatal bus error, longer ago",         kLonger,    "PCIe", "Critical Interrupt: Bus Fatal Error",     {"warning event_pci"}),
        sel("input lost",                          kToday,     "PSU1", "Power Supply AC lost, Asserted",          {"warning event_power"}),
        {"input lost and back", [](Server& s) {
             add_event(s, "bmc", kToday, EventSeverity::info, "PSU1", "Power Supply AC lost, Asserted");
             add_event(s, "bmc", kToday, EventSeverity::info, "PSU1", "Power Supply AC lost, Deasserted");
         }, {"notice event_power"}},
        sel("redundancy lost",                     kToday,     "PS Red", "Redundancy Lost, Asserted",             {"warning event_redundancy"}),
        sel("drive fault",                         kToday,     "HDD1", "Drive Fault, Asserted",                   {"warning event_drive"}),
        sel("drive fault, a month ago",            kLastMonth, "HDD1", "Drive Fault, Asserted",                   {"warning event_drive"}),
        sel("threshold, sensor not known",         kToday,     "CPU1 Temp", "Upper Critical going high, Asserted", {"warning event_threshold"}),
        sel("threshold of little weight",          kToday,     "CPU1 Temp", "Temp: Hi Noncrit thresh",           {"notice event_threshold_past"}),
        {"threshold, sensor ok again", [](Server& s) {
             add_sensor(s, "CPU1 Temp", "temperature", "ok");
             add_event(s, "bmc", kToday, EventSeverity::critical, "CPU1 Temp", "Upper Critical going high, Asserted");
         }, {"notice event_threshold_past"}},
        sel("SEL cleared",                         kToday,     "SEL", "Event Logging Disabled: Log area reset/cleared, Asserted", {}),
        sel("SEL nearly full",                     kToday,     "SEL", "Log almost full, Asserted",               {"warning sel_nearly_full"}),
        sel("what the BMC calls critical",         kAWeekAgo,  "Odd", "Odd thing", {"critical event_critical"}, EventSeverity::critical),
        sel("the same, longer ago",                kLonger,    "Odd", "Odd thing", {"warning event_critical"},  EventSeverity::critical),
        sel("a month ago",                         kLastMonth, "Odd", "Odd thing", {"warning event_critical"},  EventSeverity::critical),
        sel("what the BMC calls a warning",        kToday,     "Odd", "Odd thing", {"notice event_warning"},    EventSeverity::warning),
        sel("what is ordinary",                    kToday,     "Odd", "Odd thing", {}),

        // The chassis: the BMC's summary, where nothing else is wrong.
        chassis("overload",                        "Power Overload",      "true",     {"warning chassis_power"}),
        chassis("main power",                      "Main Power Fault",    "true",     {"warning chassis_power"}),
        chassis("power control",                   "Power Control Fault", "true",     {"warning chassis_power"}),
        chassis("cooling",                         "Cooling/Fan Fault",   "true",     {"warning chassis_cooling"}),
        chassis("drive",                           "Drive Fault",         "true",     {"warning drive_bay_fault"}),
        chassis("no fault",                        "Drive Fault",         "false",    {}),
        chassis("open",                            "Chassis Intrusion",   "active",   {"warning intrusion"}),
        chassis("closed",                          "Chassis Intrusion",   "inactive", {}),
        chassis("on",                              "System Power",        "on",       {}),
        chassis("supplies not redundant",          "Redundancy",          "lost",     {"warning power_redundancy"}),
        chassis("supplies, and more words",        "Redundancy",          "lost; capping at 550 W", {"warning power_redundancy"}),
        chassis("a setting",                       "Front-Panel Lockout", "active",   {}),
        chassis("supplies redundant",              "Redundancy",          "full",     {}),
        {"a fan that tells it better", [](Server& s) {
             add_sensor(s, "FAN1", "fan", "cr");
             add_chassis(s, "Cooling/Fan Fault", "true");
         }, {"warning fan_warning"}},
        {"an old event tells of no fault now", [](Server& s) {
             add_event(s, "bmc", kLastMonth, EventSeverity::warning, "HDD1", "Drive Fault, Asserted");
             add_chassis(s, "Drive Fault", "true");
         }, {"warning drive_bay_fault", "warning event_drive"}},
        {"a switch that tells it better", [](Server& s) {
             add_sensor(s, "Intrusion", "discrete", "ok", {"General Chassis intrusion"});
             add_chassis(s, "Chassis Intrusion", "active");
         }, {"warning intrusion"}},
        light("amber, on",                         {"warning system_error_light"}),
        light("red, blinking",                     {"warning system_error_light"}),
        light("off",                               {}),
        {"an event that explains the light", [](Server& s) {
             add_event(s, "bmc", kToday, EventSeverity::warning, "HDD1", "Drive Fault, Asserted");
             s.has().leds.push_back({{"ledinfo.txt", 2}, "System error LED", "amber, on"});
         }, {"warning event_drive"}},

        // The kernel and controllers' logs.
        kernel("corrected memory error",           kToday,  EventSeverity::info,     "EDAC MC0: 1 CE on DIMM_A1",              {"notice event_memory_corrected"}),
        kernel("uncorrected memory error",         kToday,  EventSeverity::critical, "EDAC MC0: 1 UE on DIMM_A1",              {"critical event_memory_error"}),
        kernel("machine check",                    kToday,  EventSeverity::critical, "mce: [Hardware Error]: Machine check",   {"critical event_processor"}),
        kernel("drive given up",                   kToday,  EventSeverity::critical, "sd 2:0:0:0: rejecting I/O to offline device",      {"critical event_drive_lost"}),
        kernel("drive given up a week ago",        kAWeekAgo, EventSeverity::critical, "sd 2:0:0:0: Device offlined - not ready after error recovery", {"critical event_drive_lost"}),
        kernel("drive given up longer ago",        kLonger,  EventSeverity::critical, "nvme nvme0: Removing after probe failure status: -19", {"warning event_drive_lost"}),
        kernel("link given up",                    kToday,  EventSeverity::critical, "ata3.00: reset failed, giving up",                  {"critical event_drive_lost"}),
        kernel("NVMe drive given up",              kToday,  EventSeverity::critical, "nvme nvme0: Disabling device after reset failure: -19", {"critical event_drive_lost"}),
        kernel("NVMe drive disabled",              kToday,  EventSeverity::critical, "nvme nvme0: I/O 12 QID 3 timeout, disable controller", {"critical event_drive_lost"}),
        kernel("NVMe drive not ready",             kToday,  EventSeverity::critical, "nvme nvme0: Device not ready; aborting reset, CSTS=0x1", {"critical event_drive_lost"}),
        kernel("controller's firmware stopped",    kToday,  EventSeverity::critical, "megaraid_sas 0000:03:00.0: FW in FAULT state!!",    {"critical event_controller_lost"}),
        kernel("it stopped longer ago",            kLonger, EventSeverity::critical, "mpt3sas_cm0: fault_state(0x5862)!",                 {"warning event_controller_lost"}),
        kernel("it stopped a week ago",            kAWeekAgo, EventSeverity::critical, "hpsa 0000:03:00.0: Controller lockup detected: 0x00130000 after 30", {"critical event_controller_lost"}),
        kernel("controller given up",              kToday,  EventSeverity::critical, "megaraid_sas 0000:03:00.0: Reset not supported, killing adapter scsi0.", {"critical event_controller_lost"}),
        kernel("aacraid's controller dead",        kToday,  EventSeverity::critical, "aacraid 0000:03:00.0: Host adapter dead -1",        {"critical event_controller_lost"}),
        kernel("aacraid's controller stopped",     kToday,  EventSeverity::critical, "aacraid: Adapter health - 239",                     {"critical event_controller_lost"}),
        kernel("hpsa's controller stopped",        kToday,  EventSeverity::critical, "hpsa 0000:03:00.0: Controller lockup detected: 0x00130000 after 30", {"critical event_controller_lost"}),
        kernel("smartpqi's controller offline",    kToday,  EventSeverity::critical, "smartpqi 0000:03:00.0: controller is offline: status code 0x6100c", {"critical event_controller_lost"}),
        kernel("controller's fatal event",         kToday,  EventSeverity::critical, "megaraid_sas 0000:81:00.0: 5573 (boot + 5s/0x0020/FATAL) - Controller cache lost", {"critical event_controller_fatal"}),
        kernel("fatal event a week ago",           kAWeekAgo, EventSeverity::critical, "megaraid_sas 0000:81:00.0: 5573 (boot + 5s/0x0020/FATAL) - Controller cache lost", {"critical event_controller_fatal"}),
        kernel("fatal event longer ago",           kLonger, EventSeverity::critical, "megaraid_sas 0000:81:00.0: 5573 (boot + 5s/0x0020/DEAD) - Controller cache lost", {"warning event_controller_fatal"}),
        kernel("disk error",                       kToday,  EventSeverity::warning,  "blk_update_request: I/O error, dev sda", {"warning event_disk"}),
        log("controller's critical event",         kAWeekAgo, "Controller encountered a fatal error",                            {"warning event_controller"}),
        log("the same, longer ago",                kLonger,   "Controller encountered a fatal error",                            {"notice event_controller"}),
        log("of a drive",                          kToday,    "State change on PD 0d(e0xfc/s2) from ONLINE to FAILED",           {"notice event_controller_drive"}),

        // What could not be told.
        {"a capture cut off", [](Server& s) { add_capture(s, "sensorinfo.txt").how.gaps.push_back({9, "cut off"}); }, {"unknown not_read"}},
        {"a tool's error",    [](Server& s) { add_capture(s, "sensorinfo.txt").how.errors.push_back({9, "Timeout"}); }, {"unknown not_read"}},
        {"a tool killed",     [](Server& s) { add_capture(s, "sensorinfo.txt").ended_badly = "killed by signal 9"; }, {"unknown not_read"}},
        {"a tool not there",  [](Server& s) { add_capture(s, "sensorinfo.txt").ended_badly = "exit code 127: not installed"; }, {"notice tool_missing"}},
        {"a line nobody knows", [](Server& s) { add_capture(s, "sensorinfo.txt").how.unknown_line(3); }, {"notice not_understood"}},
        {"a whole capture",   [](Server& s) { add_capture(s, "sensorinfo.txt"); }, {}},
    };
    // clang-format on
    return kCases;
}

TEST(Severities, EachFaultHasItsOwn) {
    for (const auto& one : cases()) EXPECT_EQ(judged(one), one.findings) << one.fault;
}

bool is_noticed(const Rules& rules) {
    for (const auto& one : cases()) {
        if (judged(one, rules) != one.findings) return true;
    }
    return false;
}

TEST(Severities, AnotherSeverityOfARuleIsNoticed) {
    for (const auto& rule : all_rules()) {
        for (const auto severity : kSeverities) {
            if (severity == rule.severity) continue;
            Rules rules;
            rules.find(rule.name)->severity = severity;
            EXPECT_TRUE(is_noticed(rules)) << rule.name << " as " << word(severity);
        }
    }
}

TEST(Severities, AnotherThresholdOfARuleIsNoticed) {
    for (const auto& rule : all_rules()) {
        if (*rule.compares == '\0') continue;
        const double step = std::string_view(rule.compares).starts_with("{} days") ? 2.0 / 24 : 1;
        for (const double other : {rule.threshold - step, rule.threshold + step}) {
            Rules rules;
            rules.find(rule.name)->threshold = other;
            EXPECT_TRUE(is_noticed(rules)) << rule.name << " at " << other;
        }
    }
}

}  // namespace
}  // namespace qvhost::findings
