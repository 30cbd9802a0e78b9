// Random servers through the survey and the judgement themselves, without the program around them.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "compare.h"
#include "findings/judge.h"
#include "inventory/survey.h"
#include "report/verdict_json.h"
#include "setting.h"
#include "truth.h"

namespace truth {

namespace {

namespace fs = std::filesystem;
using test::repetitions;
using test::setting;

Json event_json(const qvhost::inventory::Event& event) {
    return {{"source", event.source},
            {"time", event.time ? Json(*event.time) : Json()},
            {"subject", event.subject ? Json(*event.subject) : Json()},
            {"text", event.text},
            {"capture", event.place.capture},
            {"line", event.place.line}};
}

// Captures of one kind differ in their numbers alone: "c0_showall.txt", "c1_showall.txt".
std::string kind_of(std::string name) {
    std::erase_if(name, [](char c) { return c >= '0' && c <= '9'; });
    return name;
}

class Survey : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "truth-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        dir_ = name;
    }
    void TearDown() override { fs::remove_all(dir_); }

    // What is said of the server.
    Json report_of(const Made& made) {
        fs::remove_all(dir_);
        fs::create_directory(dir_);
        write_log_dir(made, dir_);
        std::vector<qvhost::inventory::CaptureOrigin> origins;
        qvhost::findings::Circumstances circumstances;
        circumstances.now = iso(made.server.now);
        for (const auto& page : made.pages) {
            const auto& fate = made.fates.of(page.name);
            if (!fate.is_there) continue;
            origins.push_back({page.name, page.tool, fate.ended_badly});
            if (!fate.ended_badly.empty())
                circumstances.cut_off_commands.push_back(page.tool + " " + page.arguments + ": " +
                                                         fate.ended_badly);
        }
        qvhost::findings::EventJudge judge;
        Json events = Json::array();
        const auto survey =
            qvhost::inventory::survey(dir_, origins, [&](qvhost::inventory::Event&& event) {
                judge.take(event);
                events.push_back(event_json(event));
            });
        const auto verdict = qvhost::findings::judge(survey, judge, circumstances);
        Json report;
        std::ostringstream inventory;
        qvhost::put_inventory(survey.inventory, true, inventory);
        report["inventory"] = Json::parse(inventory.str());
        report["findings"] = qvhost::json_of(verdict.findings);
        report["health"] = qvhost::json_of(verdict.health);
        report["events"] = events;
        return report;
    }

    // Files the differences; says how to see them again.
    void check(const Options& options, const std::string& how) {
        const auto made = make(options);
        const auto differences = compare(made->truth, report_of(*made));
        if (differences.empty()) return;
        ++wrong_;
        if (wrong_ > most_shown_) return;
        std::string all;
        for (std::size_t at = 0; at < std::min<std::size_t>(differences.size(), 12); ++at)
            all += "    " + differences[at] + "\n";
        ADD_FAILURE() << "truth_server --seed " << options.seed << how
                      << " --output DIR: " << differences.size() << " differences\n"
                      << all;
    }

    void TestBody() override {}
    long most_shown_ = setting("QV_TRUTH_SHOWN", 25, 25);
    fs::path dir_;
    int wrong_ = 0;
};

TEST_F(Survey, TellsTheTruthOfRandomServers) {
    const long first = setting("QV_TRUTH_FIRST", 1, 1);
    const long seeds = repetitions("QV_TRUTH_SEEDS", 150, 4000);
    for (long seed = first; seed < first + seeds; ++seed) {
        Options options;
        options.seed = static_cast<std::uint64_t>(seed);
        options.now = usual_now();
        check(options, "");
    }
    EXPECT_EQ(wrong_, 0) << "of " << seeds << " servers";
}

TEST_F(Survey, FindsEachFault) {
    const long seeds = repetitions("QV_TRUTH_SEEDS", 3, 60);
    for (const auto& name : fault_names()) {
        for (const auto seed : seeds_with(name, static_cast<std::size_t>(seeds))) {
            Options options;
            options.seed = seed;
            options.now = usual_now();
            options.percent_hurt = 0;
            options.fault = name;
            check(options, " --percent-hurt 0 --fault " + name);
        }
    }
    EXPECT_EQ(wrong_, 0);
}

TEST_F(Survey, IsNotMisledByDamagedCaptures) {
    const long seeds = repetitions("QV_TRUTH_SEEDS", 2, 15);
    std::map<std::string, long> tried;
    long trials = 0;
    for (std::uint64_t seed = 1; seed < 60; ++seed) {
        Options options;
        options.seed = seed;
        options.now = usual_now();
        options.percent_hurt = 0;
        const auto made = make(options);
        for (const auto& page : made->pages) {
            for (const auto damage : all_damages()) {
                if (!fits(page, damage) || page.lines.empty()) continue;
                if (++tried[kind_of(page.name) + word(damage)] > seeds) continue;
                if (!test::is_run(trials++)) continue;
                options.page = page.name;
                options.damage = damage;
                check(options,
                      " --percent-hurt 0 --page '" + page.name + "' --damage " + word(damage));
            }
        }
    }
    EXPECT_EQ(wrong_, 0);
}

// Each capture cut behind every line, and within lines: what is left is told, and no subsystem whose
// evidence is cut off is well.
TEST_F(Survey, IsNotMisledByCutsAnywhere) {
    const long first = setting("QV_TRUTH_FIRST", 1, 1);
    const long seeds = repetitions("QV_TRUTH_SEEDS", 2, 12);
    const long most_cuts = repetitions("QV_TRUTH_CUTS", 6, 30);  // of one capture
    for (long seed = first; seed < first + seeds; ++seed) {
        Options options;
        options.seed = static_cast<std::uint64_t>(seed);
        options.now = usual_now();
        options.percent_hurt = 0;
        options.damage = Damage::cut;
        const auto made = make(options);
        Random random(options.seed);
        for (const auto& page : made->pages) {
            std::vector<std::size_t> cuts;
            std::size_t at = 0;
            for (const auto& line : page.lines) {
                at += line.text.size() + 1;
                cuts.push_back(at);
                if (!line.text.empty())
                    cuts.push_back(
                        at - 1 -
                        static_cast<std::size_t>(random.below(static_cast<int>(line.text.size()))));
            }
            random.shuffle(cuts);
            cuts.resize(std::min(cuts.size(), static_cast<std::size_t>(most_cuts)));
            options.page = page.name;
            for (const auto cut : cuts) {
                if (cut >= made->fates.of(page.name).bytes.size()) continue;
                options.cut_at = cut;
                check(options, " --percent-hurt 0 --page '" + page.name +
                                   "' --damage cut --cut-at " + std::to_string(cut));
            }
        }
    }
    EXPECT_EQ(wrong_, 0);
}

}  // namespace

}  // namespace truth
