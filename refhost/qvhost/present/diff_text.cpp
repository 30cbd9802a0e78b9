// What changed, as text for people.
#include <ostream>

#include "compare/words.h"
#include "qvhost/present/diff_view.h"
#include "show/visible.h"
#include "verdict/inventory_tables.h"

namespace qvhost {

namespace {

using compare::Trend;

std::string coloured(const std::string& text, Trend trend, const TerminalStyle& style) {
    if (!style.colour || trend == Trend::none) return text;
    return (trend == Trend::worse ? "\033[31m" : "\033[32m") + text + "\033[0m";
}

// Sections with a heading, which is left out where nothing follows.
class TextPrinter {
public:
    TextPrinter(std::ostream& out, const TerminalStyle& style) : out_(out), style_(style) {}

    void section(const std::string& title) { title_ = title; }

    void line(const std::string& text, Trend trend = Trend::none) {
        if (!title_.empty()) out_ << '\n' << bold(one_line(title_), style_) << '\n';
        title_.clear();
        out_ << "  " << coloured(one_line(text), trend, style_) << '\n';
    }

private:
    std::ostream& out_;
    TerminalStyle style_;
    std::string title_;
};

Trend trend_of(findings::Severity severity) {
    return severity <= findings::Severity::warning ? Trend::worse : Trend::none;
}

void print_machines(std::ostream& out, const DiffView& view, const TerminalStyle& style) {
    if (view.difference.machines == compare::Machines::two)
        out << bold("These are reports of two machines.", style) << '\n';
    out << "old: " << one_line(words_of(view.from)) << '\n';
    out << "new: " << one_line(words_of(view.to)) << '\n';
    if (view.difference.is_backwards) out << "The old one is the later one.\n";
}

void print_findings(TextPrinter& printer, const compare::Difference& difference) {
    const auto words = [](const findings::Finding& finding) {
        return "[" + std::string(word(finding.severity)) + "] " + finding.subject + ": " +
               finding.says;
    };
    printer.section("Findings");
    for (const auto& one : difference.new_findings)
        printer.line("new  " + words(one), trend_of(one.severity));
    for (const auto& one : difference.other_severity)
        printer.line("was " + std::string(word(one.from)) + "  " + words(one.finding),
                     one.finding.severity < one.from ? Trend::worse : Trend::better);
    for (const auto& one : difference.gone_findings)
        printer.line("gone " + words(one),
                     trend_of(one.severity) == Trend::worse ? Trend::better : Trend::none);
}

void print_unread(TextPrinter& printer, const char* title, const std::vector<compare::Unread>& list,
                  const std::vector<compare::Lack>& lacks) {
    printer.section(title);
    for (const auto& lack : lacks)
        printer.line(std::string(word(lack.subsystem)) + ": " + lack.words);
    for (const auto& unread : list) printer.line(words_of(unread));
}

void print_events(TextPrinter& printer, const char* title, const EventTally& tally) {
    printer.section(title);
    for (const auto severity :
         {inventory::Severity::critical, inventory::Severity::warning, inventory::Severity::info}) {
        const auto at = static_cast<std::size_t>(severity);
        if (tally.counts[at] == 0) continue;
        printer.line(std::to_string(tally.counts[at]) + " " + word(severity));
        for (const auto& [event, count] : tally.first[at])
            printer.line("  [" + std::string(word(severity)) + "] " +
                             event.time.value_or("no clock") + " " + event.source + ": " +
                             (event.subject ? *event.subject + ": " : "") + event.text +
                             (count > 1 ? " (x " + std::to_string(count) + ")" : ""),
                         severity == inventory::Severity::info ? Trend::none : Trend::worse);
        if (const auto more = tally.counts[at] - tally.folded[at])
            printer.line("  and " + std::to_string(more) + " more; --format json has them all");
    }
}

std::string words_of(const Record& record) {
    std::string text = record.name;
    const char* separator = ": ";
    for (const auto& [id, display, value] : record.properties) {
        const auto* told = std::get_if<std::string>(&value);
        text +=
            separator + id + "=" + (told ? trimmed(*told) : std::to_string(std::get<int>(value)));
        separator = ", ";
    }
    return text;
}

void print_raw(TextPrinter& printer, DiffView& view) {
    for (const auto& table : view.raw_tables) {
        printer.section("Rows of " + table);
        const auto print = [&](const char* sign, const Record& record) {
            view.has_raw_rows = true;
            printer.line(sign + words_of(record));
        };
        each_raw_row(
            view, table, [&](const Record& record) { print("- ", record); },
            [&](const Record& record) { print("+ ", record); });
    }
}

}  // namespace

void print_diff_text(std::ostream& out, DiffView& view, const TerminalStyle& style) {
    const auto& difference = view.difference;
    print_machines(out, view, style);
    TextPrinter printer(out, style);
    printer.section("Health");
    for (const auto& one : difference.health)
        printer.line(
            std::string(word(one.subsystem)) + ": " + word(one.from) + " -> " + word(one.to),
            one.to < one.from ? Trend::worse : Trend::better);
    std::string kind;
    for (const auto& change : difference.changes) {
        if (change.kind != kind) printer.section(compare::title_of(change.kind));
        kind = change.kind;
        printer.line(change.subject + ": " + words_of(change), change.trend);
    }
    print_findings(printer, difference);
    print_unread(printer, "Read then and not now", difference.not_now, difference.lacking_now);
    print_unread(printer, "Read now and not then", difference.not_then, difference.lacking_then);
    print_events(printer, "New events", view.new_events);
    print_events(printer, "Events that are gone", view.gone_events);
    print_raw(printer, view);
    if (view.is_same()) out << "Nothing changed.\n";
}

}  // namespace qvhost
