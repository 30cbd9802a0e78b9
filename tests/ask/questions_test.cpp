// The table of questions against what else knows captures and tools.
#include "ask/questions.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "ask/tools.h"
#include "inventory/capture_reader.h"
#include "inventory/ipmi/captures.h"
#include "inventory/storage/captures.h"
#include "inventory/system/captures.h"
#include "inventory/text.h"

namespace test {

namespace {

using namespace qvhost;

bool has_reader(const std::string& capture) {
    for (const auto readers : {inventory::storage_captures(), inventory::ipmi_captures(),
                               inventory::system_captures()}) {
        if (inventory::reader_for(readers, capture)) return true;
    }
    return false;
}

TEST(Questions, EachAnswerHasAReader) {
    for (const auto& question : ask::questions()) {
        EXPECT_TRUE(has_reader(inventory::filled_in(question.capture, "1"))) << question.capture;
        const auto told_by = inventory::filled_in(question.told_by, "1");
        EXPECT_TRUE(told_by.empty() || has_reader(told_by)) << told_by;
    }
}

// Two questions whose answers go into one capture ask for the same in other words.
TEST(Questions, ACaptureBelongsToOneTool) {
    std::map<std::string_view, std::string_view> tools;
    std::set<std::string> all;
    for (const auto& question : ask::questions()) {
        const auto [known, is_new] = tools.emplace(question.capture, question.tool);
        EXPECT_EQ(known->second, question.tool) << question.capture;
        const auto text = std::string(question.tool) + " " + std::string(question.arguments);
        EXPECT_TRUE(all.insert(text + std::to_string(static_cast<int>(question.when))).second)
            << text;
    }
}

// What asks a controller, an array or a drive asks about each.
TEST(Questions, NumbersTakeTheirPlaces) {
    EXPECT_EQ(inventory::filled_in("/c{n}/eall show {n}", "12"), "/c12/eall show 12");
    EXPECT_EQ(inventory::filled_in("plain", "12"), "plain");
    EXPECT_EQ(inventory::filled_in("{n}", ""), "");
    EXPECT_EQ(inventory::filled_in("{n}", "{n}x"), "{n}x");
}

TEST(Questions, TheyOnlyRead) {
    const std::set<std::string_view> kReading = {
        "show", "list",     "getconfig", "getstatus", "display", "status",   "elist",
        "info", "selftest", "sensor",    "fru",       "all",     "--detail", "--scan",
        "-ll",  "-x",       "-r",        "-J",        ""};
    for (const auto& question : ask::questions()) {
        if (question.tool == "cat") continue;
        std::string word;
        bool reads = question.arguments.empty();
        for (const char c : std::string(question.arguments) + " ") {
            if (c != ' ') {
                word += c;
            } else {
                reads = reads || kReading.contains(word);
                word.clear();
            }
        }
        EXPECT_TRUE(reads) << question.tool << " " << question.arguments;
        EXPECT_EQ(question.arguments.find_first_of(";&|<>$`\\\"'*?"), std::string_view::npos);
    }
}

}  // namespace

}  // namespace test
