#include "qvhost/present/diff_sections.h"

#include <utility>

#include "compare/words.h"
#include "show/visible.h"
#include "verdict/inventory_tables.h"

namespace qvhost {

namespace {

using compare::Trend;
using findings::Finding;
using findings::Severity;

// A section of lines; one without lines is never seen.
class Section {
public:
    using Take = std::function<void(const std::string& title, const DiffLine& line)>;
    Section(const Take& take, std::string title) : take_(take), title_(std::move(title)) {}

    void line(std::string text, std::array<std::string, 3> cells, Trend trend = Trend::none) const {
        take_(title_, {std::move(text), std::move(cells), trend});
    }

private:
    const Take& take_;
    std::string title_;
};

bool is_bad(const Finding& finding) { return finding.severity <= Severity::warning; }

void tell_health(const Section& section, const compare::Difference& difference) {
    for (const auto& [subsystem, from, to] : difference.health) {
        const auto change = std::string(word(from)) + " -> " + word(to);
        section.line(std::string(word(subsystem)) + ": " + change, {word(subsystem), change, ""},
                     to < from ? Trend::worse : Trend::better);
    }
}

void tell_change(const Section& section, const compare::Change& change) {
    std::string fields;
    for (const auto& field : change.fields)
        fields += (fields.empty() ? "" : "; ") + words_of(field);
    section.line(change.subject + ": " + words_of(change), {change.what, change.subject, fields},
                 change.trend);
}

void tell_findings(const Section& section, const compare::Difference& difference) {
    const auto tell = [&](const std::string& what, const std::string& in_table,
                          const Finding& finding, Trend trend) {
        section.line(
            what + "[" + word(finding.severity) + "] " + finding.subject + ": " + finding.says,
            {in_table + " " + word(finding.severity), finding.subject, finding.says}, trend);
    };
    for (const auto& one : difference.new_findings)
        tell("new  ", "new", one, is_bad(one) ? Trend::worse : Trend::none);
    for (const auto& [finding, from] : difference.other_severity) {
        const std::string was = word(from);
        tell("was " + was + "  ", was + ", now", finding,
             finding.severity < from ? Trend::worse : Trend::better);
    }
    for (const auto& one : difference.gone_findings)
        tell("gone ", "gone", one, is_bad(one) ? Trend::better : Trend::none);
}

void tell_unread(const Section& section, const std::vector<compare::Lack>& lacks,
                 const std::vector<compare::Unread>& list) {
    for (const auto& [subsystem, words] : lacks)
        section.line(std::string(word(subsystem)) + ": " + words, {word(subsystem), words, ""});
    for (const auto& unread : list)
        section.line(words_of(unread), {compare::title_of(unread.kind), words_of(unread), ""});
}

void tell_events(const Section& section, const EventTally& tally) {
    using inventory::Severity;
    for (const auto severity : {Severity::critical, Severity::warning, Severity::info}) {
        const auto at = static_cast<std::size_t>(severity);
        if (tally.counts[at] == 0) continue;
        const std::string name = word(severity);
        const auto number = std::to_string(tally.counts[at]);
        const auto trend = severity == Severity::info ? Trend::none : Trend::worse;
        section.line(number + " " + name,
                     {name, number + (tally.counts[at] == 1 ? " event" : " events"), ""}, trend);
        for (const auto& [event, count] : tally.first[at]) {
            const auto time = event.time.value_or("no clock");
            const auto source = event.source + (event.subject ? ": " + *event.subject : "");
            const auto text = event.text + (count > 1 ? " (x " + std::to_string(count) + ")" : "");
            section.line("  [" + name + "] " + time + " " + source + ": " + text,
                         {time, source, text}, trend);
        }
        if (const auto more = tally.counts[at] - tally.folded[at]) {
            const auto words = "and " + std::to_string(more) + " more; --format json has them all";
            section.line("  " + words, {"", words, ""});
        }
    }
}

std::string values_of(const Record& record) {
    std::string text;
    for (const auto& [id, display, value] : record.properties) {
        const auto* told = std::get_if<std::string>(&value);
        text += (text.empty() ? "" : ", ") + id + "=" +
                (told ? trimmed(*told) : std::to_string(std::get<int>(value)));
    }
    return text;
}

void tell_raw(const Section& section, DiffView& view, const std::string& table) {
    const auto tell = [&](const char* sign, const char* what, const Record& record) {
        view.has_raw_rows = true;
        const auto values = values_of(record);
        section.line(sign + record.name + (values.empty() ? "" : ": ") + values,
                     {what, record.name, values});
    };
    each_raw_row(
        view, table, [&](const Record& record) { tell("- ", "gone", record); },
        [&](const Record& record) { tell("+ ", "new", record); });
}

}  // namespace

void each_line(DiffView& view,
               const std::function<void(const std::string& title, const DiffLine& line)>& take) {
    const auto& difference = view.difference;
    const auto section = [&](std::string title) { return Section(take, std::move(title)); };
    tell_health(section("Health"), difference);
    for (const auto& change : difference.changes)
        tell_change(section(compare::title_of(change.kind)), change);
    tell_findings(section("Findings"), difference);
    tell_unread(section("Read then and not now"), difference.lacking_now, difference.not_now);
    tell_unread(section("Read now and not then"), difference.lacking_then, difference.not_then);
    tell_unread(section("Read in neither report"), difference.lacking_both, {});
    tell_events(section("New events"), view.new_events);
    tell_events(section("Events that are gone"), view.gone_events);
    for (const auto& table : view.raw_tables) tell_raw(section("Rows of " + table), view, table);
}

std::string outcome_of(const DiffView& view) {
    if (!view.is_same()) return "";
    return view.difference.lacking_both.empty()
               ? "Nothing changed."
               : "Nothing changed in what both reports could read.";
}

}  // namespace qvhost
