// Random servers, each with one known change: it is told once, and nothing else.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>

#include <gtest/gtest.h>

#include "compare/multiset.h"
#include "compare/told.h"
#include "findings/judge.h"
#include "inventory/survey.h"
#include "setting.h"
#include "text/keyed_hash.h"
#include "truth.h"

namespace qvhost::compare {

namespace {

namespace fs = std::filesystem;
using truth::Server;

struct Report {
    Side side;
    std::vector<inventory::Event> events;
    bool says_which_machine = false;  // not every board has a serial number or a UUID
};

class Servers : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "compare-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        dir_ = name;
    }
    void TearDown() override { fs::remove_all(dir_); }
    void TestBody() override {}

    Report report_of(const truth::Options& options) const {
        const auto made = truth::make(options);
        fs::remove_all(dir_);
        fs::create_directory(dir_);
        truth::write_log_dir(*made, dir_);
        std::vector<inventory::CaptureOrigin> origins;
        findings::Circumstances circumstances;
        circumstances.now = truth::iso(made->server.now);
        for (const auto& page : made->pages) {
            if (made->fates.of(page.name).is_there) origins.push_back({page.name, page.tool, ""});
        }
        Report report;
        findings::EventJudge judge;
        auto survey = inventory::survey(dir_, origins, [&](inventory::Event&& event) {
            judge.take(event);
            report.events.push_back(std::move(event));
        });
        report.side.verdict = findings::judge(survey, judge, circumstances);
        report.side.inventory = std::move(survey.inventory);
        for (const auto& system : made->truth.at("inventory").at("systems"))
            report.says_which_machine =
                !system.at("uuid").is_null() || !system.at("serial").is_null();
        return report;
    }

    fs::path dir_;
};

// "drives failed: state Onln -> Offln": without the subject.
Lines lines_of(const std::vector<Change>& changes) {
    Lines lines;
    for (const auto& change : changes) lines.push_back(change.kind + " " + words_of(change));
    std::sort(lines.begin(), lines.end());
    return lines;
}

Lines new_events(const Report& from, const Report& to, Lines& gone) {
    const KeyedHash hash;
    const auto hash_of = [&](const inventory::Event& event) {
        return hash(event.source + "\n" + event.time.value_or("-") + "\n" + event.text);
    };
    const auto hashes = [&](const Report& report) {
        return [&](const auto& take) {
            for (const auto& event : report.events) take(hash_of(event));
        };
    };
    MultisetDifference difference(hashes(from), hashes(to));
    Lines added;
    difference.each_new([&](const auto& is_told) {
        for (const auto& event : to.events) {
            if (is_told(hash_of(event))) added.push_back(event.source + ": " + event.text);
        }
    });
    difference.each_gone([&](const auto& is_told) {
        for (const auto& event : from.events) {
            if (is_told(hash_of(event))) gone.push_back(event.source + ": " + event.text);
        }
    });
    return added;
}

// What happens to a server, and what is to be told of it; nothing where it has nothing that this can
// happen to.
struct Happening {
    const char* name;
    std::function<std::optional<Lines>(Server&)> happen;
    std::size_t events = 0;        // new ones
    bool asks_for_a_look = false;  // findings and health may change as well
};

// The plug-in asks for the details of the first controller's drives alone.
truth::Controller* first_controller(Server& server) {
    return server.storage_tool == truth::StorageTool::storcli && !server.controllers.empty() &&
                   server.controllers[0].number == 0 && server.controllers[0].drives.size() > 1
               ? &server.controllers[0]
               : nullptr;
}

truth::Drive* a_drive(Server& server, const char* state) {
    auto* controller = first_controller(server);
    if (!controller) return nullptr;
    for (auto& drive : controller->drives) {
        if (drive.state == state && drive.is_spun_up && !drive.is_missing && !drive.is_foreign)
            return &drive;
    }
    return nullptr;
}

bool has_findings(const truth::Drive& drive) {
    return drive.media_errors > 0 || drive.other_errors > 0 || drive.predicted_failures > 0 ||
           drive.shield_counter > 0 || drive.smart_alert;
}

std::string fields(const char* kind, const char* what,
                   const std::vector<std::array<std::string, 3>>& changes) {
    std::string line = std::string(kind) + " " + what;
    const char* separator = ": ";
    for (const auto& [field, from, to] : changes) {
        line += separator + field + " " + from + " -> " + to;
        separator = "; ";
    }
    return line;
}

// clang-format off
const std::vector<Happening> kHappenings = {
    {"nothing", [](Server&) { return std::optional(Lines{}); }},
    {"readings move", [](Server& server) -> std::optional<Lines> {
         for (auto& controller : server.controllers) {
             for (auto& drive : controller.drives) drive.temperature += 2;
         }
         for (auto& supply : server.bmc.supplies) supply.watts += 11;
         return Lines{};
     }},
    {"a drive is replaced", [](Server& server) -> std::optional<Lines> {
         auto* drive = a_drive(server, "Onln");
         if (!drive || has_findings(*drive)) return std::nullopt;  // they would be the new drive's
         const auto old_serial = drive->serial, old_wwn = drive->wwn;
         drive->serial = "NEWSERIAL1";
         drive->wwn = "5000AAAABBBBCCCC";
         return Lines{fields("drives", "replaced", {{"serial", old_serial, drive->serial}, {"wwn", old_wwn, drive->wwn}})};
     }},
    {"a drive gets firmware", [](Server& server) -> std::optional<Lines> {
         auto* drive = a_drive(server, "Onln");
         if (!drive) return std::nullopt;
         const auto old = std::exchange(drive->firmware, "NEW1");
         return Lines{fields("drives", "changed", {{"firmware", old, "NEW1"}})};
     }},
    {"media errors grow", [](Server& server) -> std::optional<Lines> {
         auto* drive = a_drive(server, "Onln");
         if (!drive) return std::nullopt;
         const auto old = std::to_string(drive->media_errors);
         drive->media_errors += 215;
         return Lines{fields("drives", "changed", {{"media errors", old, std::to_string(drive->media_errors) + " (+215)"}})};
     }, 0, true},
    {"a drive fails", [](Server& server) -> std::optional<Lines> {
         auto* drive = a_drive(server, "Onln");
         if (!drive || !drive->group) return std::nullopt;
         auto& controller = server.controllers[0];
         const auto before = controller.volumes;
         drive->state = "Offln";
         truth::settle(controller);
         Lines lines{fields("drives", "failed", {{"state", "Onln", "Offln"}})};
         for (std::size_t i = 0; i < before.size(); ++i) {
             if (before[i].state != controller.volumes[i].state)
                 lines.push_back(fields("volumes", "degraded", {{"state", before[i].state, controller.volumes[i].state}}));
         }
         return lines;
     }, 0, true},
    {"a loose drive is pulled", [](Server& server) -> std::optional<Lines> {
         auto* drive = a_drive(server, "UGood");
         if (!drive || has_findings(*drive)) return std::nullopt;  // they would go with it
         auto& drives = server.controllers[0].drives;
         drives.erase(drives.begin() + (drive - drives.data()));
         return Lines{"drives removed"};
     }},
    {"a loose drive is plugged", [](Server& server) -> std::optional<Lines> {
         const auto* drive = a_drive(server, "UGood");
         if (!drive || has_findings(*drive)) return std::nullopt;  // the other one would have them
         auto other = *drive;
         other.slot += 40;
         other.device_id += 400;
         other.serial = "NEWSERIAL2";
         other.wwn = "5000AAAABBBBDDDD";
         server.controllers[0].drives.push_back(other);
         return Lines{"drives added"};
     }},
    {"a loose drive moves", [](Server& server) -> std::optional<Lines> {
         auto* drive = a_drive(server, "UGood");
         if (!drive) return std::nullopt;
         const auto old = std::to_string(drive->slot);
         drive->slot += 40;
         // Of a drive beside the enclosures the plug-in does not ask which one it is: it may be any other.
         if (!drive->enclosure && !server.controllers[0].enclosures.empty())
             return Lines{"drives added", "drives removed"};
         return Lines{fields("drives", "moved", {{"slot", old, std::to_string(drive->slot)}})};
     }},
    {"a volume gets a name", [](Server& server) -> std::optional<Lines> {
         auto* controller = first_controller(server);
         if (!controller || controller->volumes.empty()) return std::nullopt;
         const auto old = std::exchange(controller->volumes[0].name, "fresh");
         return Lines{fields("volumes", "changed", {{"name", old.empty() ? "none" : old, "fresh"}})};
     }},
    {"a memory module is replaced", [](Server& server) -> std::optional<Lines> {
         for (auto& module : server.memory) {
             if (!module.is_there) continue;
             const auto old = std::exchange(module.serial, "4F4F4F4F");
             return Lines{fields("memory_modules", "replaced", {{"serial", old, module.serial}})};
         }
         return std::nullopt;
     }},
    {"a memory module is taken out", [](Server& server) -> std::optional<Lines> {
         const auto count = std::count_if(server.memory.begin(), server.memory.end(), [](const auto& one) { return one.is_there; });
         if (count < 2) return std::nullopt;
         for (auto& module : server.memory) {
             if (std::exchange(module.is_there, false)) break;
         }
         return Lines{"memory_modules removed"};
     }},
    {"the BIOS is new", [](Server& server) -> std::optional<Lines> {
         const auto old = std::exchange(server.firmware, "NEWBIOS 9.9");
         return Lines{fields("systems", "changed", {{"firmware", old, server.firmware}})};
     }},
    {"the BMC's firmware is new", [](Server& server) -> std::optional<Lines> {
         if (!server.has_bmc || !server.asks_sdr()) return std::nullopt;
         const auto old = std::exchange(server.bmc.firmware, "9.99");
         return Lines{fields("bmcs", "changed", {{"firmware", old, "9.99"}})};
     }},
    {"an entry of the SEL is new", [](Server& server) -> std::optional<Lines> {
         if (!server.has_bmc || !server.asks_sdr()) return std::nullopt;
         const auto& sel = server.bmc.sel;
         const auto found = std::find_if(sel.begin(), sel.end(), [](const auto& one) { return one.kind == truth::SelKind::threshold && one.time; });
         if (found == sel.end()) return std::nullopt;
         auto entry = *found;
         entry.time = *entry.time + 1;
         server.bmc.sel.insert(server.bmc.sel.begin() + (found - sel.begin()) + 1, entry);
         return Lines{};
     }, 1, true},
};
// clang-format on

TEST_F(Servers, TellEachKnownChangeOnceAndNothingElse) {
    const long seeds = test::repetitions("QV_TRUTH_SEEDS", 14, 300);
    const long first = test::setting("QV_TRUTH_FIRST", 1, 1);
    std::map<std::string, int> happened;
    for (long seed = first; seed < first + seeds; ++seed) {
        truth::Options options;
        options.seed = static_cast<std::uint64_t>(seed);
        options.now = truth::usual_now();
        options.percent_hurt = 0;
        const auto from = report_of(options);
        for (const auto& happening : kHappenings) {
            std::optional<Lines> expected;
            options.change = [&](Server& server) { expected = happening.happen(server); };
            const auto to = report_of(options);
            if (!expected) continue;
            ++happened[happening.name];
            std::sort(expected->begin(), expected->end());
            const auto difference = compare(from.side, to.side);
            const auto about = std::string(happening.name) + ", server " + std::to_string(seed);
            EXPECT_EQ(lines_of(difference.changes), *expected) << about;
            EXPECT_EQ(difference.machines,
                      from.says_which_machine ? Machines::same : Machines::unsure)
                << about;
            Lines gone;
            EXPECT_EQ(new_events(from, to, gone).size(), happening.events) << about;
            EXPECT_EQ(gone, Lines()) << about;
            Difference rest = difference;
            rest.changes.clear();
            rest.lacking_both.clear();  // no difference
            if (happening.asks_for_a_look) {
                rest.new_findings.clear();
                rest.gone_findings.clear();
                rest.other_severity.clear();
                rest.health.clear();
            }
            EXPECT_EQ(told(rest), Lines()) << about;
        }
    }
    if (seeds < 14) return;
    for (const auto& happening : kHappenings)
        EXPECT_GT(happened[happening.name], 0) << happening.name;
}

}  // namespace

}  // namespace qvhost::compare
