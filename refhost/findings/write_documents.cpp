// Writes docs/inventory.md or docs/findings.md from the tables in the code.
#include <cstring>
#include <iostream>
#include <string>
#include <variant>

#include "findings/advice.h"
#include "findings/rules.h"
#include "inventory/fields.h"

namespace {

using namespace qvhost;

// Text in a cell of a Markdown table.
std::string cell(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '|') out += '\\';
        out += c;
    }
    return out;
}

template <class Entity>
const char* type_of(const inventory::Member<Entity>& member) {
    constexpr const char* kTypes[] = {"text", "integer", "number", "boolean", "list of texts"};
    return kTypes[member.index()];
}

void write_inventory() {
    std::cout
        << "# Inventory\n\n"
           "What qvhost reads from the captures of a collection: entities with typed fields, in\n"
           "`report.json` below `inventory` and as SQL tables of the same names in the store. A field\n"
           "that no capture tells is null. Every entity has `capture` and `line` (counted from 1): where\n"
           "it stands. This page is made of `refhost/inventory/fields.cpp`.\n";
    inventory::each_kind([](const auto& kind) {
        std::cout << "\n## " << kind.name << "\n\n"
                  << kind.meaning << "\n\n"
                  << "| field | type | unit | meaning | told by |\n|---|---|---|---|---|\n";
        for (const auto& field : kind.fields)
            std::cout << "| `" << field.name << "` | " << type_of(field.member) << " | "
                      << field.unit << " | " << cell(field.meaning) << " | " << cell(field.source)
                      << " |\n";
    });
}

// As `qvhost explain` says it.
void write_advice(findings::Subsystem subsystem) {
    const char* heading = "\n| rule | what people do | source |\n|---|---|---|\n";
    for (const auto& advice : findings::all_advice()) {
        if (findings::rule(advice.rule).subsystem != subsystem) continue;
        std::cout << heading << "| `" << advice.rule << "` | " << cell(advice.words) << " | "
                  << cell(advice.source) << " |\n";
        heading = "";
    }
}

void write_findings() {
    std::cout
        << "# Findings\n\n"
           "The rules by which qvhost judges an inventory and its events. One rule is one row of\n"
           "`refhost/findings/rules.cpp`, of which this page is made.\n\n"
           "`critical` wakes somebody, `warning` makes a ticket, `unknown` says that nobody can tell, `notice`\n"
           "is shown and colours nothing.\n\n"
           "A site may see some of them in another way. With `--rules FILE` (in `/etc/qvhost.conf`: `rules = FILE`) a\n"
           "collection judges by these rules with the lines of FILE applied; `qvhost check REPORT --rules FILE`\n"
           "judges a report again:\n\n"
           "    # comment\n"
           "    severity     fan_warning notice\n"
           "    threshold    drive_wear 90\n"
           "    acknowledge  drive_media_errors:ZA1B2C3D until 2027-01-31 by Jane Doe: a new drive is ordered\n\n"
           "A finding that is acknowledged is a notice up to and on that day, and every view says so, by whom and\n"
           "why. Its id is shown by `qvhost explain REPORT`. With a line that is none of these nothing is\n"
           "collected, and the answer of `check` is UNKNOWN; the line is named.\n\n"
           "What a finding is about stands in the store's table `finding_entities`: `kind` is the table of the\n"
           "entity, `number` its rowid there.\n\n"
           "`first_seen` says since when it is there: the first of the runs of the log directory that have it\n"
           "without a gap (UTC), or the event that began it, by its source's clock; null if neither tells. A run\n"
           "that could not tell of the subsystem is no gap, and a run of another machine tells nothing. `finding_growth` has the counters\n"
           "of what it is about that have grown within thirty days, by what the earlier runs read. `unchanged_values`\n"
           "has what stands still: media errors, of which none is new for thirty days, are a notice, and a rebuild that gets\n"
           "no further is critical.\n\n"
           "Health is `ok` only where all that could have said otherwise was read whole. For storage that is the\n"
           "count of controllers, each controller's drives and volumes, what was asked of their batteries and\n"
           "events, and each drive behind no RAID controller: a NVMe drive that lspci shows, or a SATA or NVMe\n"
           "drive that lsblk shows, and that nobody asked leaves storage `unknown`, since it answers for\n"
           "itself alone.\n";
    for (const auto subsystem : findings::kSubsystems) {
        std::cout
            << "\n## " << word(subsystem)
            << "\n\n| rule | severity | looks at | says | threshold | why | known from | Redfish |\n"
               "|---|---|---|---|---|---|---|---|\n";
        for (const auto& rule : findings::all_rules()) {
            if (rule.subsystem != subsystem) continue;
            std::cout << "| `" << rule.name << "` | " << word(rule.severity) << " | "
                      << cell(rule.looks_at) << " | " << cell(rule.words) << " | "
                      << threshold_text(rule) << " | " << cell(rule.why) << " | "
                      << cell(rule.source) << " | " << rule.redfish << " |\n";
        }
        write_advice(subsystem);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "inventory") == 0) {
        write_inventory();
    } else if (argc == 2 && std::strcmp(argv[1], "findings") == 0) {
        write_findings();
    } else {
        std::cerr << "usage: write_documents inventory|findings\n";
        return 2;
    }
    return std::cout.flush() ? 0 : 1;
}
