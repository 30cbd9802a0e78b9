#include "findings/health.h"

#include <gtest/gtest.h>

#include <map>

namespace qvhost::findings {
namespace {

using inventory::Survey;
using inventory::SurveyedCapture;

SurveyedCapture whole(const char* name) {
    SurveyedCapture capture;
    capture.name = name;
    capture.is_there = true;
    capture.how.lines = 10;
    return capture;
}

// A server of which everything was read, with one controller.
Survey healthy() {
    Survey survey;
    for (const char* name : {"sensorinfo.txt", "sdrinfo.txt", "selinfo.txt", "selfinfo.txt",
                             "dmesg.log", "dmidecode.log", "ctrlcount.txt", "c0_showall.txt"})
        survey.captures.push_back(whole(name));
    survey.inventory.systems.push_back({{"dmidecode.log", 1}, {}, {}, {}, {}, {}, {}, false});
    survey.inventory.sensors.emplace_back();
    survey.inventory.sensors.emplace_back();
    survey.inventory.sensors.back().kind = "temperature";
    survey.inventory.sensors.back().reading = 21;
    survey.inventory.controller_counts.push_back({{"ctrlcount.txt", 1}, "storcli", 1});
    survey.inventory.controllers.push_back(
        {{"c0_showall.txt", 1}, 0, {}, {}, {}, "Optimal", {}, {}, {}});
    return survey;
}

std::map<std::string, std::string> words_of(const Survey& survey,
                                            const Circumstances& circumstances = {},
                                            const std::vector<Finding>& findings = {}) {
    std::map<std::string, std::string> words;
    for (const auto& one : judge_health(survey, circumstances, findings))
        words[word(one.subsystem)] = word(one.health);
    return words;
}

SurveyedCapture& capture(Survey& survey, const char* name) {
    for (auto& one : survey.captures) {
        if (one.name == name) return one;
    }
    throw std::logic_error(name);
}

using Words = std::map<std::string, std::string>;
const Words kAllWell{
    {"temperature", "ok"}, {"cooling", "ok"},   {"power", "ok"},
    {"memory", "ok"},      {"processor", "ok"}, {"storage", "ok"},
    {"bmc", "ok"},         {"system", "ok"},    {"collection", "ok"},
};

TEST(Health, OkWhereEverythingWasReadWhole) { EXPECT_EQ(words_of(healthy()), kAllWell); }

// Behind a host bus adapter each counter may be "N/A": the drive told all that it has to tell.
TEST(Health, DetailsWithoutANumberAreDetails) {
    auto survey = healthy();
    survey.inventory.controllers[0].tool = "storcli";
    survey.captures.push_back(whole("c0_pdlist.txt"));
    inventory::Drive drive;
    drive.place = {"c0_showall.txt", 9};
    drive.tool = "storcli";
    drive.controller = 0;
    drive.enclosure = 8;
    drive.slot = 1;
    drive.state = "JBOD";
    survey.inventory.drives.push_back(drive);
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
    survey.inventory.drives[0].elsewhere = {{"media_errors", {"c0_pdlist.txt", 27}}};
    EXPECT_EQ(words_of(survey), kAllWell);
}

// Its self test and its readings came before; one question got no answer.
TEST(Health, ABmcThatLeavesAQuestionWithoutAnAnswerIsNotWell) {
    Circumstances circumstances;
    circumstances.unanswered_by_bmc = {"fruinfo.txt: ipmitool: stopped at its time limit"};
    auto expected = kAllWell;
    expected["bmc"] = "unknown";
    EXPECT_EQ(words_of(healthy(), circumstances), expected);
}

// Each capture that a word rests on, broken in each way: never ok.
TEST(Health, NeverOkOnBrokenEvidence) {
    const struct {
        const char* capture;
        std::vector<const char*> subsystems;
    } cases[] = {
        {"sensorinfo.txt", {"temperature", "cooling", "power", "system"}},
        {"sdrinfo.txt", {"temperature", "cooling", "power"}},
        {"selinfo.txt", {"memory", "processor", "system"}},
        {"dmesg.log", {"memory", "processor", "system"}},
        {"selfinfo.txt", {"bmc"}},
        {"c0_showall.txt", {"storage"}},
    };
    const std::map<std::string, void (*)(SurveyedCapture&)> breaks{
        {"killed", [](SurveyedCapture& c) { c.ended_badly = "killed by signal 9"; }},
        {"gone", [](SurveyedCapture& c) { c.is_there = false; }},
        {"empty", [](SurveyedCapture& c) { c.how.lines = 0; }},
        {"shifted",
         [](SurveyedCapture& c) {
             c.how.gaps.push_back({3, "a row of 4 cells"});
         }},
        {"refused",
         [](SurveyedCapture& c) {
             c.how.errors.push_back({3, "Un-supported"});
         }},
    };
    for (const auto& one : cases) {
        for (const auto& [name, broken] : breaks) {
            auto survey = healthy();
            broken(capture(survey, one.capture));
            auto expected = kAllWell;
            for (const char* subsystem : one.subsystems) expected[subsystem] = "unknown";
            EXPECT_EQ(words_of(survey), expected) << one.capture << " " << name;
        }
    }
}

TEST(Health, WordsThatNobodyKnowsLeaveTheirSubsystemUnknown) {
    const struct {
        const char* name;
        const char* kind;
        const char* status;
        const char* state;
        const char* subsystem;
    } cases[] = {
        {"CPU1 Temp", "temperature", "odd", "", "temperature"},
        {"FAN1", "fan", "odd", "", "cooling"},
        {"12V", "voltage", "odd", "", "power"},
        {"PSU1 Status", "discrete", "ok", "Odd", "power"},
        {"CPU1 Status", "discrete", "ok", "Odd", "processor"},
        {"P1-DIMM1A", "discrete", "ok", "Odd", "memory"},
        {"HDD1", "discrete", "ok", "Odd", "storage"},
        {"Watchdog", "discrete", "ok", "Odd", "system"},
    };
    for (const auto& one : cases) {
        auto survey = healthy();
        auto& sensor = survey.inventory.sensors.front();
        sensor.name = one.name;
        sensor.kind = one.kind;
        sensor.status = one.status;
        if (*one.state)
            sensor.states = {one.state};
        else
            sensor.reading = 1;
        auto expected = kAllWell;
        expected[one.subsystem] = "unknown";
        EXPECT_EQ(words_of(survey), expected) << one.name;
    }
}

TEST(Health, SensorsThatAreNotReadSayNothing) {
    auto survey = healthy();
    survey.inventory.sensors.front().kind = "fan";
    EXPECT_EQ(words_of(survey).at("cooling"), "unknown");
    survey.inventory.sensors.push_back(survey.inventory.sensors.front());
    survey.inventory.sensors.back().reading = 900;
    EXPECT_EQ(words_of(survey), kAllWell);
}

TEST(Health, DetailsThatWereAskedForMustBeWhole) {
    auto survey = healthy();
    survey.inventory.controllers[0].tool = "storcli";
    for (const char* name : {"pdlist.txt", "c0_raidevents.txt", "host_storcli_c0_cv.txt"}) {
        survey.captures.push_back(whole(name));
        EXPECT_EQ(words_of(survey), kAllWell) << name;
        survey.captures.back().how.gaps.push_back({9, "cut off"});
        EXPECT_EQ(words_of(survey).at("storage"), "unknown") << name;
        survey.captures.back() = whole(name);
    }
    // The same was told elsewhere.
    survey.inventory.controllers[0].tool = "storcli";
    survey.captures.push_back(whole("c0_pdlist.txt"));
    capture(survey, "pdlist.txt").is_there = false;
    EXPECT_EQ(words_of(survey), kAllWell);
    // How many controllers there are is no detail.
    capture(survey, "ctrlcount.txt").how.lines = 0;
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
}

TEST(Health, AChassisThatWasAskedMustHaveAnswered) {
    auto survey = healthy();
    survey.captures.push_back(whole("host_chassis_status.txt"));
    EXPECT_EQ(words_of(survey), kAllWell);
    survey.captures.back().how.gaps.push_back({3, "no word on Cooling/Fan Fault"});
    auto words = kAllWell;
    words["power"] = words["cooling"] = "unknown";
    EXPECT_EQ(words_of(survey), words);
}

TEST(Health, DrivesBehindNoControllerMustHaveAnswered) {
    auto survey = healthy();
    survey.captures.push_back(whole("host_lspci.txt"));
    survey.inventory.pci_devices.push_back(
        {{"host_lspci.txt", 2}, "65:00.0", "Non-Volatile memory controller", "Example NVMe SSD"});
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
    inventory::Drive drive;
    drive.device = "/dev/nvme0";
    drive.interface = "NVMe";
    survey.inventory.drives.push_back(drive);
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
    survey.inventory.drives.back().smart_alert = false;
    EXPECT_EQ(words_of(survey), kAllWell);

    survey.captures.push_back(whole("host_smartctl_sda.json"));
    survey.captures.back().how.gaps.push_back({9, "cut off"});
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
    survey.captures.back().ended_badly = "exit code 127: not installed";
    EXPECT_EQ(words_of(survey), kAllWell);
}

TEST(Health, WithoutATemperatureSensorNoTemperatureIsWell) {
    auto survey = healthy();
    survey.inventory.sensors.pop_back();
    auto expected = kAllWell;
    expected["temperature"] = "unknown";
    EXPECT_EQ(words_of(survey), expected);
}

// A pool calls a drive ONLINE that may be about to fail.
TEST(Health, ADriveOfAPoolMustHaveAnsweredForItself) {
    auto survey = healthy();
    inventory::Drive drive;
    drive.device = "/dev/sda";
    drive.state = "ONLINE";
    survey.inventory.drives.push_back(drive);
    for (const char* interface : {"SATA", "SAS"}) {
        survey.inventory.drives.back().interface = interface;
        survey.inventory.drives.back().smart_alert.reset();
        EXPECT_EQ(words_of(survey).at("storage"), "unknown") << interface;
        survey.inventory.drives.back().smart_alert = false;
        EXPECT_EQ(words_of(survey), kAllWell) << interface;
    }
}

TEST(Health, AThingWithoutAStateIsNotWell) {
    const std::map<std::string, void (*)(inventory::Inventory&)> things{
        {"battery",
         [](inventory::Inventory& has) {
             has.batteries.emplace_back().controller = 0;
             has.batteries.back().place = {"c0_showall.txt", 7};
         }},
        {"drive",
         [](inventory::Inventory& has) {
             has.drives.emplace_back().controller = 0;
             has.drives.back().media_errors = 0;
             has.drives.back().place = {"c0_showall.txt", 7};
         }},
        {"volume",
         [](inventory::Inventory& has) {
             has.volumes.emplace_back().controller = 0;
             has.volumes.back().place = {"c0_showall.txt", 7};
         }},
    };
    for (const auto& [what, add] : things) {
        auto survey = healthy();
        add(survey.inventory);
        for (const auto& one : judge_health(survey, {}, {})) {
            if (one.subsystem != Subsystem::storage) continue;
            EXPECT_EQ(one.health, HealthWord::unknown) << what;
            EXPECT_EQ(one.missing, std::vector<std::string>{"c0_showall.txt, line 7: a " + what +
                                                            " without a state"});
        }
    }
}

TEST(Health, WhatIsMissingIsSaidInWords) {
    auto survey = healthy();
    capture(survey, "selfinfo.txt").tool = "ipmitool";
    capture(survey, "selfinfo.txt").ended_badly = "killed by signal 9";
    for (const auto& one : judge_health(survey, {}, {})) {
        if (one.subsystem != Subsystem::bmc) continue;
        EXPECT_EQ(one.missing,
                  std::vector<std::string>{"selfinfo.txt: ipmitool: killed by signal 9"});
    }
}

TEST(Health, FindingsWeighMoreThanWhatIsMissing) {
    auto survey = healthy();
    capture(survey, "sensorinfo.txt").is_there = false;
    Finding finding;
    finding.subsystem = Subsystem::power;
    finding.severity = Severity::warning;
    auto notice = finding;
    notice.subsystem = Subsystem::cooling;
    notice.severity = Severity::notice;
    const auto words = words_of(survey, {}, {finding, notice});
    EXPECT_EQ(words.at("power"), "warning");
    EXPECT_EQ(words.at("cooling"), "unknown");
}

TEST(Health, AControllerThatWasNotAskedIsMissing) {
    auto survey = healthy();
    survey.inventory.controller_counts[0].count = 2;
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
}

TEST(Health, ARaidControllerWithoutItsToolIsMissing) {
    auto survey = healthy();
    survey.captures.push_back(whole("host_lspci.txt"));
    survey.inventory.pci_devices.push_back({{"host_lspci.txt", 2},
                                            "03:00.0",
                                            "RAID bus controller",
                                            "Adaptec Series 8 12G SAS/PCIe 3"});
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
}

// What lspci shows beside the controller that storcli read.
TEST(Health, EachRaidControllerMustHaveBeenRead) {
    const auto storage_with = [](const char* device_class, const char* name) {
        auto survey = healthy();
        survey.inventory.controllers[0].tool = "storcli";
        survey.captures.push_back(whole("host_lspci.txt"));
        for (const char* one : {"Broadcom / LSI MegaRAID SAS-3 3108 [Invader]", name})
            survey.inventory.pci_devices.push_back(
                {{"host_lspci.txt", 2}, "03:00.0", device_class, one});
        return words_of(survey).at("storage");
    };
    constexpr auto kRaid = "RAID bus controller";
    EXPECT_EQ(storage_with(kRaid, "Areca Technology Corp. ARC-1883"), "unknown");
    EXPECT_EQ(storage_with(kRaid, "Broadcom / LSI MegaRAID SAS-3 3108 [Invader]"), "unknown");
    // The drives behind these answer for themselves.
    for (const char* name : {"Intel Corporation Volume Management Device NVMe RAID Controller",
                             "Intel Corporation SATA Controller [RAID mode]",
                             "Intel Corporation C600/X79 series chipset SATA RAID Controller",
                             "Intel Corporation C602 chipset 4-Port SATA Storage Control Unit"})
        EXPECT_EQ(storage_with(kRaid, name), "ok") << name;
}

// A controller for which two tools will do leaves the other one its own.
TEST(Health, AControllerOfTwoToolsIsReadByEither) {
    auto survey = healthy();
    survey.inventory.controllers[0].tool = "storcli";
    survey.captures.push_back(whole("host_lspci.txt"));
    for (const char* name : {"Broadcom / LSI SAS3008 PCI-Express Fusion-MPT SAS-3",
                             "Broadcom / LSI MegaRAID SAS-3 3108 [Invader]"})
        survey.inventory.pci_devices.push_back(
            {{"host_lspci.txt", 2}, "03:00.0", "RAID bus controller", name});
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
    inventory::Controller other;
    other.place = {"host_sas3ircu_0_display.txt", 5};
    other.tool = "sas3ircu";
    other.number = 0;
    survey.inventory.controllers.push_back(other);
    survey.captures.push_back(whole("host_sas3ircu_0_display.txt"));
    EXPECT_EQ(words_of(survey).at("storage"), "ok");
}

TEST(Health, NoBmcIsAbsentOnlyOnEvidence) {
    Survey survey;
    for (const char* name : {"dmesg.log", "dmidecode.log"}) survey.captures.push_back(whole(name));
    survey.inventory.systems.push_back({{"dmidecode.log", 1}, {}, {}, {}, {}, {}, {}, true});
    auto words = words_of(survey);
    EXPECT_EQ(words.at("temperature"), "absent");
    EXPECT_EQ(words.at("bmc"), "absent");
    EXPECT_EQ(words.at("memory"), "ok");

    // dmidecode names an IPMI device: a BMC is expected.
    survey.inventory.ipmi_devices.push_back({{"dmidecode.log", 300}, "KCS"});
    EXPECT_EQ(words_of(survey).at("temperature"), "unknown");
    EXPECT_EQ(words_of(survey).at("bmc"), "unknown");

    // It was cut off, so it says nothing of what it does not name.
    survey.inventory.ipmi_devices.clear();
    survey.inventory.systems[0].is_virtual = false;
    capture(survey, "dmidecode.log").how.gaps.push_back({200, "it ends in the middle"});
    EXPECT_EQ(words_of(survey).at("temperature"), "unknown");
}

TEST(Health, ACommandThatDiedMakesTheCollectionUnknown) {
    EXPECT_EQ(
        words_of(healthy(), {"", "", {"ipmitool sensor: killed by signal 9"}}).at("collection"),
        "unknown");
    EXPECT_EQ(words_of(healthy(), {"", "the user ended it", {}}).at("collection"), "unknown");
}

TEST(Health, NoStorageIsAbsentOnlyOnEvidence) {
    Survey survey;
    survey.captures = {whole("ctrlcount.txt"), whole("host_lspci.txt")};
    survey.inventory.controller_counts.push_back({{"ctrlcount.txt", 1}, "storcli", 0});
    EXPECT_EQ(words_of(survey).at("storage"), "absent");
    survey.inventory.pci_devices.push_back(
        {{"host_lspci.txt", 2}, "00:17.0", "SATA controller", "Intel"});
    EXPECT_EQ(words_of(survey).at("storage"), "unknown");
}

}  // namespace
}  // namespace qvhost::findings
