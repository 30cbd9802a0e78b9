#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "file/record.h"
#include "file/rows.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/command.h"
#include "rbmcinfo/items.h"
#include "rbmcinfo/unit.h"
#include "read/text_file.h"
#include "runner/process.h"

namespace marlox::repository {

namespace {

using capture::Record;

// A question to the BMC: its table, its log lines and how its answer is read.
struct Question {
    const capture::Table& table;
    const char* announcement;  // at level 4
    const char* not_opened;
    unsigned not_opened_level;
    const char* delimiters = nullptr;  // between labels and values; null: each line is a row
    unsigned* count = nullptr;         // receives the number of labels
};

// clang-format off
// Kind 1 is the first row. Only the LAN answer has a hyphen between label and value.
constexpr Question kQuestions[] = {
    {kMcInfo,   "exe ipmiutil dorvanoem mc",  "Failed to open mcinfo log file",      capture::kProgress, ":\n\r", &mc_item_size},
    {kSelfInfo, "exe ipmitool mc selftest",   "Failed to open selfinfo log file",    capture::kProgress, ":\n\r", &self_item_size},
    {kVerInfo,  "exe ipmiutil dorvanoem ver", "Failed to open versioninfo log file", capture::kDetail,   ":\n\r", &ver_item_size},
    {kPsuInfo,  "exe ipmiutil dorvanoem psu", "Failed to open psuinfo log file",     capture::kDetail},
    {kLanInfo,  "exe ipmiutil dorvanoem lan", "Failed to open laninfo log file",     capture::kDetail,   "-\n\r", &lan_item_size},
    {kLedInfo,  "exe ipmiutil dorvanoem led", "Failed to open ledinfo log file",     capture::kDetail},
};
// clang-format on

// Labels and values alternate over the whole text, so a delimiter inside a value
// shifts all later ones. A label at the end has an empty value.
void file_labelled(capture::TextFile& text, const Question& question, Record record) {
    unit.detail("From vector:");
    unsigned pairs = 0;
    const auto& columns = question.table.columns;
    capture::FileTokens tokens(text, question.delimiters);
    while (const auto token = tokens.next()) {
        const std::string label(*token);
        const auto value = tokens.next().value_or(std::string_view());
        unit.detail("", label, ": ", value);
        if (pairs < columns.size())
            record.set(capture::PropertyName(columns[pairs].id, label), value);
        ++pairs;
    }
    *question.count = pairs;
    record.add();
}

}  // namespace

int bmc_info(RRepository& repo, int kind) {
    if (kind < 1 || kind > static_cast<int>(std::size(kQuestions))) return 1;
    const Question& question = kQuestions[kind - 1];
    const capture::Table& table = question.table;

    const auto command = bmc_command(table.source.command);
    unit.detail(question.announcement);
    if (&table == &kMcInfo) unit.progress("mc final path:", command);
    if (check_system_call(runner::run(command), table.source.log_label) != 0) return 1;

    auto text = capture::TextFile::open(capture::log_path(table.source.capture));
    if (!text) {
        unit.write(question.not_opened_level, question.not_opened);
        return 1;
    }
    // A failed self-test is two lines, which are one answer:
    //     Selftest: device error
    //                     -> FRU Internal Use Area corrupted
    if (&table == &kSelfInfo) text->join_two_lines();
    unit.detail("se:", capture::LoggedText{*text});
    if (text->contains({"Error", "Bad response", "Cannot open an IPMI driver"})) return 1;

    if (question.delimiters) {
        file_labelled(*text, question, {repo, table});
    } else {
        capture::read_split_lines(capture::FileTokens(*text, capture::kLineEnds),
                                  table.columns.front(), repo, table,
                                  [](std::string_view line) { unit.detail("", line); });
    }
    return 0;
}

}  // namespace marlox::repository
