// The generator keeps its word: the same server for a number, every fact on the line that tells it, every
// fault with evidence, every damage with consequences.
#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "inventory/fields.h"
#include "truth.h"

namespace truth {

namespace {

namespace fs = std::filesystem;

Options options_of(std::uint64_t seed, int percent_hurt = 45) {
    Options options;
    options.seed = seed;
    options.now = usual_now();
    options.percent_hurt = percent_hurt;
    return options;
}

std::vector<std::string> lines_of(const std::string& bytes) {
    std::vector<std::string> lines;
    std::istringstream in(bytes);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// What the line says now that was the page's.
std::string line_at(const Fate& fate, const std::vector<std::string>& lines, int line) {
    const int at = fate.where[static_cast<std::size_t>(line)];
    if (at < 1 || static_cast<std::size_t>(at) > lines.size())
        return "(no line " + std::to_string(at) + ")";
    return lines[static_cast<std::size_t>(at - 1)];
}

TEST(Random, GivesTheSameNumbersEverywhere) {
    Random random(1);
    EXPECT_EQ(random.next(), 0x910a2dec89025cc1u);
    EXPECT_EQ(random.next(), 0xbeeb8da1658eec67u);
    EXPECT_EQ(random.between(1, 6), 1);
    EXPECT_EQ(random.capitals(8), "M30RP2JP");
}

TEST(Text, PrintsSizesAndTimesAsTheToolsDo) {
    EXPECT_EQ(storcli_size(935544832), "446.102 GB");
    EXPECT_EQ(storcli_size(2339061760), "1.089 TB");
    EXPECT_EQ(storcli_size(1952448512, true), "931.0 GB");
    EXPECT_EQ(bytes_of_size("1.089 TB"), 1197368162648);
    const auto time = seconds_at(2014, 1, 4, 18, 22, 56);
    EXPECT_EQ(c_time(time), "Sat Jan  4 18:22:56 2014");
    EXPECT_EQ(sel_time(time), "01/04/14 18:22:56");
    EXPECT_EQ(storcli_time(time), "01/04/2014 18:22:56");
    EXPECT_EQ(iso(time), "2014-01-04T18:22:56");
    EXPECT_EQ(seconds_of_iso("2014-01-04T18:22:56"), time);
}

TEST(Generator, MakesTheSameServerOfTheSameNumber) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        const auto one = make(options_of(seed));
        const auto other = make(options_of(seed));
        EXPECT_EQ(one->truth, other->truth) << seed;
        for (const auto& [name, fate] : one->fates.by_page)
            EXPECT_EQ(fate.bytes, other->fates.of(name).bytes) << seed << " " << name;
    }
}

TEST(Generator, MakesDifferentServersOfDifferentNumbers) {
    std::set<std::string> summaries;
    for (std::uint64_t seed = 1; seed <= 40; ++seed)
        summaries.insert(make(options_of(seed, 0))->fates.of("dmidecode.log").bytes);
    EXPECT_EQ(summaries.size(), 40u);
}

// A value stands in the line that tells it, be it in the text's own form.
bool stands_in(const Fact& fact, const std::string& line) {
    const auto& value = fact.told.value;
    if (fact.told.is_free || value.is_null() || value.is_boolean() ||
        fact.field == "capacity_bytes")
        return true;
    std::vector<Json> values = {value};
    values.insert(values.end(), fact.told.also.begin(), fact.told.also.end());
    if (value.is_array()) values = {value.begin(), value.end()};
    static const std::map<std::string, std::vector<std::string>> kMeanings = {
        {"global", {"GHS", "Global"}}, {"dedicated", {"DHS", "Dedicated"}},
        {"temperature", {"degrees"}},  {"fan", {"RPM"}},
        {"voltage", {"Volts"}},        {"current", {"Amps"}},
        {"power", {"Watts"}},          {"HDD", {"SSD  "}},
        {"faulty", {"(F)"}},           {"active", {" blocks "}}};
    const auto holds = [&](const Json& one) {
        if (one.is_number_float()) {
            for (const int decimals : {0, 1, 2, 3}) {
                if (line.find(number(one.get<double>(), decimals)) != std::string::npos)
                    return true;
            }
            return false;
        }
        if (one.is_number()) {
            const auto digits = one == 4096 ? std::string("4") : one.dump();
            return line.find(digits) != std::string::npos;
        }
        if (!one.is_string()) return false;
        const auto& text = one.get_ref<const std::string&>();
        if (line.find(text) != std::string::npos) return true;
        if (text.starts_with("/dev/") && line.find(text.substr(5)) != std::string::npos)
            return true;
        const auto meaning = kMeanings.find(text);
        return meaning != kMeanings.end() &&
               std::any_of(
                   meaning->second.begin(), meaning->second.end(),
                   [&](const std::string& word) { return line.find(word) != std::string::npos; });
    };
    // What nobody has to read tells nothing by its words; clocks are told in the tool's own form.
    if (std::count(fact.told.also.begin(), fact.told.also.end(), nullptr) > 0) return true;
    if (fact.field == "time" || fact.field == "system" || fact.field == "enclosure" ||
        fact.field == "controller")
        return true;
    if (value.is_array()) return std::all_of(values.begin(), values.end(), holds);
    return std::any_of(values.begin(), values.end(), holds);
}

TEST(Generator, TellsEachFactOnTheLineThatSaysSo) {
    int facts = 0;
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
        const auto made = make(options_of(seed, 0));
        for (const auto& subject : made->book.subjects) {
            for (const auto& fact : subject.facts) {
                const auto& page = *made->fates.of(fact.spot.page).page;
                const auto& line = page.lines[static_cast<std::size_t>(fact.spot.first)].text;
                ASSERT_TRUE(stands_in(fact, line))
                    << seed << " " << subject.kind << " " << fact.field << " " << fact.told.value
                    << " in " << page.name << ": " << line;
                ++facts;
            }
        }
    }
    EXPECT_GT(facts, 40000);
}

TEST(Generator, KnowsWhereEachLineStandsAfterADamage) {
    std::set<Damage> seen;
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
        const auto made = make(options_of(seed, 100));
        for (const auto& [name, fate] : made->fates.by_page) {
            seen.insert(fate.damage);
            if (!fate.is_there) continue;
            const auto lines = lines_of(fate.bytes);
            for (int line = 0; line < static_cast<int>(fate.where.size()); ++line) {
                if (fate.where[static_cast<std::size_t>(line)] == 0) continue;
                const auto& text = fate.page->lines[static_cast<std::size_t>(line)].text;
                if (text.empty()) continue;
                if (line == fate.cut_line) {
                    EXPECT_TRUE(text.starts_with(line_at(fate, lines, line)))
                        << seed << " " << name;
                } else {
                    ASSERT_EQ(line_at(fate, lines, line), text)
                        << seed << " " << name << " " << word(fate.damage);
                }
            }
        }
    }
    EXPECT_EQ(seen.size(), all_damages().size() + 1) << "some damage never happened";
}

TEST(Generator, LeavesNoOkWhereTheEvidenceIsBroken) {
    // What rests on what, told a second time.
    const std::map<std::string, std::vector<std::string>> rests = {
        {"sensorinfo.txt", {"temperature", "cooling", "power"}},
        {"sdrinfo.txt", {"temperature", "cooling", "power"}},
        {"selinfo.txt", {"memory", "processor"}},
        {"selfinfo.txt", {"bmc"}},
        {"dmesg.log", {"memory", "processor"}},
        {"c0_showall.txt", {"storage"}},
        {"c1_showall.txt", {"storage"}},
        {"ctrlcount.txt", {"storage"}}};
    std::map<std::string, int> broken;
    for (std::uint64_t seed = 1; seed <= 250; ++seed) {
        const auto made = make(options_of(seed, 100));
        for (const auto& [name, subsystems] : rests) {
            const auto fate = made->fates.by_page.find(name);
            if (fate == made->fates.by_page.end() || fate->second.trust != Trust::broken) continue;
            if (!made->server.has_bmc && name != "dmesg.log") continue;
            if (fate->second.page->lines.empty()) continue;
            ++broken[name];
            for (const auto& subsystem : subsystems) {
                const auto& words = made->truth.at("health").at(subsystem);
                EXPECT_EQ(std::count(words.begin(), words.end(), "ok"), 0)
                    << seed << " " << name << " " << words;
            }
        }
    }
    EXPECT_EQ(broken.size(), rests.size());
}

std::unique_ptr<Made> with_fault(std::uint64_t seed, const std::string& name) {
    auto options = options_of(seed, 0);
    options.fault = name;
    return make(options);
}

TEST(Generator, CanMakeEachFaultAndShowsItsEvidence) {
    const std::set<std::string> harmless = {"zero_thresholds"};
    for (const auto& name : fault_names()) {
        const auto seeds = seeds_with(name, 3);
        EXPECT_EQ(seeds.size(), 3u) << name;
        for (const auto seed : seeds) {
            const auto made = with_fault(seed, name);
            EXPECT_TRUE(made->server.faults.contains(name));
            int expected = 0;
            for (const auto& finding : made->truth.at("findings")) {
                const bool counts = finding.at("certain").get<bool>() || name == "controller_event";
                expected += counts ? 1 : 0;
                EXPECT_FALSE(finding.at("places").empty()) << name;
            }
            EXPECT_EQ(expected > 0, !harmless.contains(name)) << name << " " << seed;
        }
    }
}

// Each certain finding's line holds the word that the finding is about.
TEST(Generator, PointsAtTheLineThatHoldsTheWord) {
    struct Row {
        const char* fault;
        const char* capture;
        const char* words;
    };
    static constexpr Row kRows[] = {
        {"volume_offline", "showall.txt", " OfLn "},
        {"topology_alone", "showall.txt", "gd "},
        {"drive_bad", "", "UBad"},
        {"drive_foreign", "", " F "},
        {"battery_failed", "", "ailed|Degraded|Dgd"},
        {"temperature_nc", "sensorinfo.txt", "| nc "},
        {"temperature_cr", "sensorinfo.txt", "| cr "},
        {"ac_lost", "sdrinfo.txt", "Power Supply AC lost"},
        {"redundancy_lost", "sdrinfo.txt", "Redundancy Lost"},
        {"power_insufficient", "sdrinfo.txt", "Insufficient Resources"},
        {"self_test", "selfinfo.txt", "device corrupted|fatal error"},
        {"sel_uncorrectable_new", "selinfo.txt", "Uncorrectable ECC"},
        {"sel_pci_old", "selinfo.txt", "PCI SERR"},
        {"machine_check", "dmesg.log", "Machine Check Exception"},
        {"disk_error", "dmesg.log", "I/O error"},
        {"drive_lost", "dmesg.log", "offline|giv|Remov"},
        {"controller_lost", "dmesg.log", "megaraid_sas|aacraid|hpsa|smartpqi|mpt3sas_cm0"},
        {"smart_alert", "", "S.M.A.R.T"},
        {"media_errors", "", "Media Error Count = |Medium Error Count"},
    };
    for (const auto& row : kRows) {
        int held = 0;
        for (const auto seed : seeds_with(row.fault, 8)) {
            const auto made = with_fault(seed, row.fault);
            for (const auto& finding : made->truth.at("findings")) {
                if (!finding.at("certain").get<bool>()) continue;
                for (const auto& place : finding.at("places")) {
                    const auto& name = place.at("capture").get_ref<const std::string&>();
                    if (name.find(row.capture) == std::string::npos) continue;
                    const auto lines = lines_of(made->fates.of(name).bytes);
                    const auto& line = lines.at(place.at("first").get<std::size_t>() - 1);
                    std::istringstream words(row.words);
                    for (std::string one; std::getline(words, one, '|');)
                        held += !one.empty() && line.find(one) != std::string::npos ? 1 : 0;
                }
            }
        }
        EXPECT_GE(held, 3) << row.fault;
    }
}

TEST(Generator, NamesTheFieldsOfTheContract) {
    std::map<std::string, std::vector<std::string>> ours;
    for (const auto& kind : contract()) ours[kind.name] = {kind.fields.begin(), kind.fields.end()};
    std::map<std::string, std::vector<std::string>> theirs;
    qvhost::inventory::each_kind([&](const auto& kind) {
        for (const auto& field : kind.fields) theirs[kind.name].emplace_back(field.name);
    });
    EXPECT_EQ(ours, theirs);
}

TEST(Generator, KnowsOfEachFieldThatSomeServerTells) {
    std::set<std::string> told;
    const auto rebuilt = seeds_with("md_rebuild", 1).front();
    for (std::uint64_t seed = 0; seed <= 80; ++seed) {
        const auto made = seed == 0 ? with_fault(rebuilt, "md_rebuild") : make(options_of(seed, 0));
        for (const auto& [kind, list] : made->truth.at("inventory").items()) {
            for (const auto& entity : list) {
                for (const auto& [field, value] : entity.items()) {
                    if (!value.is_null()) told.insert(std::string(kind) + "." + std::string(field));
                }
            }
        }
    }
    // What the captures of the plug-in never tell.
    const std::set<std::string> never = {
        "batteries.charge_percent",   "drives.available_spare_percent",
        "drives.percentage_used",     "drives.power_on_hours",
        "drives.rebuild_percent",     "enclosures.serial",
        "power_supplies.input_state", "power_supplies.part",
        "power_supplies.state"};
    std::set<std::string> missing;
    for (const auto& kind : contract()) {
        for (const char* field : kind.fields) {
            const auto name = std::string(kind.name) + "." + field;
            if (!told.contains(name)) missing.insert(name);
        }
    }
    EXPECT_EQ(missing, never);
}

class Directory : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "truth-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        dir_ = name;
    }
    void TearDown() override { fs::remove_all(dir_); }
    fs::path dir_;
};

std::string bytes_of(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST_F(Directory, HoldsTheCapturesByTheirNames) {
    const auto made = make(options_of(3, 0));
    write_log_dir(*made, dir_);
    for (const auto& [name, fate] : made->fates.by_page)
        EXPECT_EQ(bytes_of(dir_ / name), fate.bytes) << name;
    EXPECT_EQ(Json::parse(bytes_of(dir_ / "truth.json")), made->truth);
}

TEST_F(Directory, HoldsARecordedServer) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        auto options = options_of(seed, 100);
        options.is_recorded = true;
        const auto made = make(options);
        const auto dir = dir_ / std::to_string(seed);
        write_machine(*made, dir);
        const auto machine = Json::parse(bytes_of(dir / "machine.json"));
        std::set<std::string> questions;
        for (const auto& command : machine.at("commands")) {
            const auto question =
                command.at("tool").get<std::string>() + " " + command.at("args").get<std::string>();
            EXPECT_TRUE(questions.insert(question).second) << question;
            if (command.contains("stdout")) {
                EXPECT_TRUE(fs::exists(dir / command.at("stdout").get<std::string>())) << question;
            }
        }
        EXPECT_EQ(questions.contains("storcli /c0 show"),
                  made->server.storage_tool == StorageTool::storcli &&
                      made->fates.of("c0_showall.txt").damage != Damage::tool_missing);
    }
}

}  // namespace

}  // namespace truth
