// The table of kinds against the declarations of the inventory: no field is forgotten, none is made up.
#include <gtest/gtest.h>

#include "compare/entities.h"
#include "compare/kinds.h"
#include "findings/rules.h"
#include "inventory/fields.h"

namespace qvhost::compare {

namespace {

const KindRow* row_of(const std::string& kind) {
    for (const auto& row : kinds()) {
        if (kind == row.kind) return &row;
    }
    return nullptr;
}

TEST(Kinds, TellOfEveryFieldOnce) {
    const auto tables = tables_of({}, {});
    ASSERT_FALSE(tables.empty());
    for (const auto& table : tables) {
        const auto* kind = row_of(table.kind);
        ASSERT_NE(kind, nullptr) << table.kind;
        std::vector<std::string> told;
        for (const auto& field : kind->fields) told.emplace_back(field.name);
        EXPECT_EQ(told, table.columns) << table.kind;
        EXPECT_EQ(table.units.size(), table.columns.size());
    }
}

TEST(Kinds, NameFieldsThatThereAre) {
    for (const auto& table : tables_of({}, {})) {
        const auto* kind = row_of(table.kind);
        ASSERT_NE(kind, nullptr);
        const auto is_there = [&](const std::string& name) {
            return table.column(name) < table.columns.size();
        };
        EXPECT_FALSE(kind->keys.empty()) << table.kind;
        for (const auto& key : kind->keys) {
            for (const char* field : key)
                EXPECT_TRUE(is_there(field)) << table.kind << " " << field;
        }
        for (const char* field : {kind->presence, kind->again})
            EXPECT_TRUE(!*field || is_there(field)) << table.kind << " " << field;
        const std::string subject = kind->subject;
        for (auto at = subject.find('{'); at != std::string::npos; at = subject.find('{', at + 1)) {
            const auto name = subject.substr(at + 1, subject.find('}', at) - at - 1);
            EXPECT_TRUE(is_there(name)) << table.kind << " " << name;
        }
    }
}

TEST(Kinds, NameRulesThatThereAre) {
    for (const auto& word : rule_words()) EXPECT_NO_THROW(findings::rule(word.rule)) << word.rule;
}

TEST(Kinds, SayTheSubjectOfWhatIsKnown) {
    auto inventory = inventory::Inventory();
    inventory.drives.resize(4);
    auto& drives = inventory.drives;
    drives[0].slot = 1;
    drives[0].enclosure = 252;
    drives[0].controller = 0;
    drives[0].serial = "Z";
    drives[1].slot = 1;
    drives[2].device = "/dev/sda";
    drives[2].enclosure = 8;
    const std::vector<std::string> expected = {"Drive 252:1 of controller 0, serial Z", "Drive 1",
                                               "Drive /dev/sda", "Drive"};
    const auto* kind = row_of("drives");
    ASSERT_NE(kind, nullptr);
    for (const auto& table : tables_of(inventory, {})) {
        if (table.kind != "drives") continue;
        std::vector<std::string> subjects;
        for (const auto& row : table.rows) subjects.push_back(subject_of(*kind, table, row));
        EXPECT_EQ(subjects, expected);
        EXPECT_EQ(subject_of(*kind, table, table.rows[0], Identities::left_out),
                  "Drive 252:1 of controller 0");
    }
}

}  // namespace

}  // namespace qvhost::compare
