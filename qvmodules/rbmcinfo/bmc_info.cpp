#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "capture/lines.h"
#include "capture/process.h"
#include "capture/record.h"
#include "capture/rows.h"
#include "capture/text.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/items.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"

namespace marlox::repository {

namespace {

using capture::Record;

// What is asked of the BMC, and how the answer is announced and judged.
struct Question {
    int kind;
    const char* command;
    const char* file;
    const char* label;         // of check_system_call
    const char* announcement;  // at level 4
    const char* not_opened;
    unsigned not_opened_level;
    const std::string* table;
    const char* name;
};

constexpr Question kQuestions[] = {
    {1, "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem mc 1>'{L}mcinfo.txt' 2>&1",   "mcinfo.txt",   "MC",
     "exe ipmiutil dorvanoem mc",                                                                                                        "Failed to open mcinfo log file",      capture::kProgress,
     &RBMCInfo::MCINFO,                                                                                                                                                                                                 "MC Information"     },
    {2, "ipmitool mc selftest 1>'{L}selfinfo.txt' 2>&1",                       "selfinfo.txt", "selftest",
     "exe ipmitool mc selftest",                                                                                                         "Failed to open selfinfo log file",    capture::kProgress,
     &RBMCInfo::SELFINFO,                                                                                                                                                                                               "QVM Selftest"       },
    {3, "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem ver 1>'{L}verinfo.txt' 2>&1", "verinfo.txt",
     "version",                                                                                            "exe ipmiutil dorvanoem ver", "Failed to open versioninfo log file",
     capture::kDetail,                                                                                                                                                                              &RBMCInfo::VERINFO, "Version Information"},
    {4, "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem psu 1>'{L}psuinfo.txt' 2>&1", "psuinfo.txt",  "PSU",
     "exe ipmiutil dorvanoem psu",                                                                                                       "Failed to open psuinfo log file",     capture::kDetail,
     &RBMCInfo::PSUINFO,                                                                                                                                                                                                "PSU Information"    },
    {5, "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem lan 1>'{L}laninfo.txt' 2>&1", "laninfo.txt",  "LAN",
     "exe ipmiutil dorvanoem lan",                                                                                                       "Failed to open laninfo log file",     capture::kDetail,
     &RBMCInfo::LANINFO,                                                                                                                                                                                                "LAN Information"    },
    {6, "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem led 1>'{L}ledinfo.txt' 2>&1", "ledinfo.txt",  "LED",
     "exe ipmiutil dorvanoem led",                                                                                                       "Failed to open ledinfo log file",     capture::kDetail,
     &RBMCInfo::LEDINFO,                                                                                                                                                                                                "LEDs Status"        },
};

// Answers of labels and values, one record with a property a label:
//     Device ID : 32
//     Firmware Revision : 1.2
// The management LAN's answer has a hyphen between the two.
struct Labelled {
    int kind;
    const char* delimiters;
    std::span<const char* const> ids;  // by row; labels beyond them have no place in the record
    unsigned* count;
};

const Labelled kLabelled[] = {
    {1, ":\n\r", mcitem,   &mc_item_size  },
    {2, ":\n\r", selfitem, &self_item_size},
    {3, ":\n\r", veritem,  &ver_item_size },
    {5, "-\n\r", lanitem,  &lan_item_size },
};

// Answers that are a row a line.
struct Listed {
    int kind;
    capture::LineProperty property;
};

constexpr Listed kListed[] = {
    {4, {"PSUINFO", "PSU Detailed Info"}  },
    {6, {"LEDINFO", "LED Detailed Status"}},
};

template <class Rows>
auto* row_of(int kind, Rows& rows) {
    for (auto& row : rows) {
        if (row.kind == kind) return &row;
    }
    return static_cast<decltype(&rows[0])>(nullptr);
}

// A failed self-test is two lines, which are one answer:
//     Selftest: device error
//                     -> FRU Internal Use Area corrupted
// The first line end becomes a blank; one at the very start of the text is not looked at.
void join_two_lines(std::string& text) {
    std::size_t newlines = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\n') continue;
        ++newlines;
        if (first == 0) first = i;
    }
    if (newlines == 2) text[first] = ' ';
}

bool is_error(std::string_view text) {
    return capture::contains(text, "Error") || capture::contains(text, "Bad response") ||
           capture::contains(text, "Cannot open an IPMI driver");
}

// Labels and values alternate over the whole text, so a value that holds a delimiter shifts all
// that follow it. A label at the end has the empty value.
void file_labelled(std::string_view text, const Labelled& answer, Record record) {
    struct Pair {
        std::string_view label;
        std::string_view value;
    };
    std::vector<Pair> pairs;
    capture::Tokens tokens(text, answer.delimiters);
    while (const auto label = tokens.next()) {
        pairs.push_back({*label, tokens.next().value_or(std::string_view())});
    }

    unit.detail("From vector:");
    for (const auto& [label, value] : pairs) unit.detail("", label, ": ", value);

    *answer.count = static_cast<unsigned>(pairs.size());
    for (std::size_t i = 0; i < pairs.size() && i < answer.ids.size(); ++i) {
        record.set(answer.ids[i], pairs[i].label, pairs[i].value);
    }
    record.add();
}

}  // namespace

int bmc_info(RRepository& repo, int kind) {
    const Question* question = row_of(kind, kQuestions);
    if (!question) return 1;

    const auto command = bmc_command(question->command);
    unit.detail(question->announcement);
    if (kind == 1) unit.progress("mc final path:", command);
    if (check_system_call(capture::run(command), question->label) != 0) return 1;

    auto bytes = capture::read_bytes(capture::log_dir() + question->file);
    if (!bytes) {
        unit.write(question->not_opened_level, question->not_opened);
        return 1;
    }
    if (kind == 2) join_two_lines(*bytes);
    const auto text = capture::c_text(*bytes);
    unit.detail("se:", text);
    if (is_error(text)) return 1;

    if (const Labelled* answer = row_of(kind, kLabelled)) {
        file_labelled(text, *answer, Record(repo, *question->table, question->name));
    } else if (const Listed* list = row_of(kind, kListed)) {
        capture::read_split_lines(text, list->property,
                                  Record(repo, *question->table, question->name),
                                  [](std::string_view line) { unit.detail("", line); });
    }
    return 0;
}

}  // namespace marlox::repository
