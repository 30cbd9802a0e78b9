#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "file/record.h"
#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/items.h"
#include "rbmcinfo/rbmcinfo.h"
#include "rbmcinfo/unit.h"
#include "read/lines.h"
#include "read/text.h"
#include "run/process.h"

namespace marlox::repository {

namespace {

using capture::Record;

// An answer of labels and values, which becomes one record with a property a label:
//     Device ID : 32
//     Firmware Revision : 1.2
struct Labels {
    const char* delimiters;            // between a label and its value, and between lines
    std::span<const char* const> ids;  // by row; labels beyond them have no place in the record
    unsigned* count;
};

// What is asked of the BMC, and how the answer is announced, judged and read.
struct Question {
    const char* command;
    const char* file;
    const char* label;         // for check_system_call()
    const char* announcement;  // at level 4
    const char* not_opened;
    unsigned not_opened_level;
    const std::string* table;
    const char* name;
    std::variant<Labels, capture::LineProperty> shape;  // of labels, or a row a line
};

constexpr Question kController{
    .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem mc 1>'{L}mcinfo.txt' 2>&1",
    .file = "mcinfo.txt",
    .label = "MC",
    .announcement = "exe ipmiutil dorvanoem mc",
    .not_opened = "Failed to open mcinfo log file",
    .not_opened_level = capture::kProgress,
    .table = &RBMCInfo::MCINFO,
    .name = "MC Information",
    .shape = Labels{":\n\r", mcitem, &mc_item_size},
};

constexpr Question kSelfTest{
    .command = "ipmitool mc selftest 1>'{L}selfinfo.txt' 2>&1",
    .file = "selfinfo.txt",
    .label = "selftest",
    .announcement = "exe ipmitool mc selftest",
    .not_opened = "Failed to open selfinfo log file",
    .not_opened_level = capture::kProgress,
    .table = &RBMCInfo::SELFINFO,
    .name = "QVM Selftest",
    .shape = Labels{":\n\r", selfitem, &self_item_size},
};

constexpr Question kVersions{
    .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem ver 1>'{L}verinfo.txt' 2>&1",
    .file = "verinfo.txt",
    .label = "version",
    .announcement = "exe ipmiutil dorvanoem ver",
    .not_opened = "Failed to open versioninfo log file",
    .not_opened_level = capture::kDetail,
    .table = &RBMCInfo::VERINFO,
    .name = "Version Information",
    .shape = Labels{":\n\r", veritem, &ver_item_size},
};

constexpr Question kPowerSupplies{
    .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem psu 1>'{L}psuinfo.txt' 2>&1",
    .file = "psuinfo.txt",
    .label = "PSU",
    .announcement = "exe ipmiutil dorvanoem psu",
    .not_opened = "Failed to open psuinfo log file",
    .not_opened_level = capture::kDetail,
    .table = &RBMCInfo::PSUINFO,
    .name = "PSU Information",
    .shape = capture::LineProperty{"PSUINFO", "PSU Detailed Info"},
};

// The one answer with a hyphen between label and value.
constexpr Question kLan{
    .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem lan 1>'{L}laninfo.txt' 2>&1",
    .file = "laninfo.txt",
    .label = "LAN",
    .announcement = "exe ipmiutil dorvanoem lan",
    .not_opened = "Failed to open laninfo log file",
    .not_opened_level = capture::kDetail,
    .table = &RBMCInfo::LANINFO,
    .name = "LAN Information",
    .shape = Labels{"-\n\r", lanitem, &lan_item_size},
};

constexpr Question kLeds{
    .command = "'{P}qv_tools/ipmiutil_{x}_nh' dorvanoem led 1>'{L}ledinfo.txt' 2>&1",
    .file = "ledinfo.txt",
    .label = "LED",
    .announcement = "exe ipmiutil dorvanoem led",
    .not_opened = "Failed to open ledinfo log file",
    .not_opened_level = capture::kDetail,
    .table = &RBMCInfo::LEDINFO,
    .name = "LEDs Status",
    .shape = capture::LineProperty{"LEDINFO", "LED Detailed Status"},
};

// By kind, from 1 on.
constexpr const Question* kQuestions[] = {&kController,    &kSelfTest, &kVersions,
                                          &kPowerSupplies, &kLan,      &kLeds};

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
void file_labelled(std::string_view text, const Labels& labels, Record record) {
    struct Pair {
        std::string_view label;
        std::string_view value;
    };
    std::vector<Pair> pairs;
    capture::Tokens tokens(text, labels.delimiters);
    while (const auto label = tokens.next()) {
        pairs.push_back({*label, tokens.next().value_or(std::string_view())});
    }

    unit.detail("From vector:");
    for (const auto& [label, value] : pairs) unit.detail("", label, ": ", value);

    *labels.count = static_cast<unsigned>(pairs.size());
    for (std::size_t i = 0; i < pairs.size() && i < labels.ids.size(); ++i) {
        record.set(labels.ids[i], pairs[i].label, pairs[i].value);
    }
    record.add();
}

}  // namespace

int bmc_info(RRepository& repo, int kind) {
    if (kind < 1 || kind > static_cast<int>(std::size(kQuestions))) return 1;
    const Question& question = *kQuestions[kind - 1];

    const auto command = bmc_command(question.command);
    unit.detail(question.announcement);
    if (&question == &kController) unit.progress("mc final path:", command);
    if (check_system_call(capture::run(command), question.label) != 0) return 1;

    auto bytes = capture::read_bytes(capture::log_dir() + question.file);
    if (!bytes) {
        unit.write(question.not_opened_level, question.not_opened);
        return 1;
    }
    if (&question == &kSelfTest) join_two_lines(*bytes);
    const auto text = capture::c_text(*bytes);
    unit.detail("se:", text);
    if (is_error(text)) return 1;

    if (const auto* labels = std::get_if<Labels>(&question.shape)) {
        file_labelled(text, *labels, Record(repo, *question.table, question.name));
    } else {
        capture::read_split_lines(text, std::get<capture::LineProperty>(question.shape),
                                  Record(repo, *question.table, question.name),
                                  [](std::string_view line) { unit.detail("", line); });
    }
    return 0;
}

}  // namespace marlox::repository
