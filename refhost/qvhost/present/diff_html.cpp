// What changed, as one page: no script, nothing from elsewhere, and what the reports say is text.
#include <ostream>
#include <string_view>

#include "compare/words.h"
#include "qvhost/present/diff_view.h"
#include "show/visible.h"
#include "verdict/inventory_tables.h"

namespace qvhost {

namespace {

using compare::Trend;

constexpr const char* kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>What changed</title>
<style>
:root { color-scheme: light dark; --worse: #b3261e; --better: #146c2e; --line: #8886; }
@media (prefers-color-scheme: dark) { :root { --worse: #ff8a80; --better: #7bd88f; } }
body { font: 15px/1.45 system-ui, sans-serif; margin: 2rem auto; max-width: 70rem; padding: 0 1rem; }
h1 { font-size: 1.5rem; } h2 { font-size: 1.1rem; margin: 1.6rem 0 .4rem; }
table { border-collapse: collapse; width: 100%; }
th, td { border-bottom: 1px solid var(--line); padding: .3rem .6rem .3rem 0; text-align: left; vertical-align: top; overflow-wrap: anywhere; }
th { font-weight: 600; } td:first-child, th:first-child { width: 9rem; }
.worse td:first-child { color: var(--worse); font-weight: 600; }
.better td:first-child { color: var(--better); font-weight: 600; }
.two { border: 2px solid var(--worse); padding: .6rem; font-weight: 600; }
@media print { body { margin: 0; max-width: none; } tr { break-inside: avoid; } }
</style>
</head>
<body>
<h1>What changed</h1>
)";

std::string escaped(std::string_view text) {
    std::string html;
    for (const char c : one_line(text)) {
        switch (c) {
            case '&': html += "&amp;"; break;
            case '<': html += "&lt;"; break;
            case '>': html += "&gt;"; break;
            case '"': html += "&quot;"; break;
            case '\'': html += "&#39;"; break;
            default: html += c;
        }
    }
    return html;
}

// Sections of rows with three cells; one without rows is left out.
class HtmlPrinter {
public:
    explicit HtmlPrinter(std::ostream& out) : out_(out) {}

    void section(const std::string& title) {
        end();
        title_ = title;
    }

    void row(const std::string& first, const std::string& second, const std::string& third = "",
             Trend trend = Trend::none) {
        if (!title_.empty()) out_ << "<section><h2>" << escaped(title_) << "</h2>\n<table>\n";
        is_open_ = is_open_ || !title_.empty();
        title_.clear();
        out_ << "<tr class=\"" << word(trend) << "\"><td>" << escaped(first) << "</td><td>"
             << escaped(second) << "</td><td>" << escaped(third) << "</td></tr>\n";
    }

    void end() {
        if (is_open_) out_ << "</table></section>\n";
        is_open_ = false;
    }

private:
    std::ostream& out_;
    std::string title_;
    bool is_open_ = false;
};

std::string fields_of(const compare::Change& change) {
    std::string text;
    for (const auto& field : change.fields) text += (text.empty() ? "" : "; ") + words_of(field);
    return text;
}

void put_findings(HtmlPrinter& page, const compare::Difference& difference) {
    const auto put = [&](const std::string& what, const findings::Finding& finding, Trend trend) {
        page.row(what + " " + word(finding.severity), finding.subject, finding.says, trend);
    };
    const auto is_bad = [](const findings::Finding& one) {
        return one.severity <= findings::Severity::warning;
    };
    page.section("Findings");
    for (const auto& one : difference.new_findings)
        put("new", one, is_bad(one) ? Trend::worse : Trend::none);
    for (const auto& [finding, from] : difference.other_severity)
        put(std::string(word(from)) + ", now", finding,
            finding.severity < from ? Trend::worse : Trend::better);
    for (const auto& one : difference.gone_findings)
        put("gone", one, is_bad(one) ? Trend::better : Trend::none);
}

void put_unread(HtmlPrinter& page, const char* title, const std::vector<compare::Unread>& list,
                const std::vector<compare::Lack>& lacks) {
    page.section(title);
    for (const auto& lack : lacks) page.row(word(lack.subsystem), lack.words);
    for (const auto& unread : list) page.row(compare::title_of(unread.kind), words_of(unread));
}

void put_events(HtmlPrinter& page, const char* title, const EventTally& tally) {
    page.section(title);
    for (const auto severity :
         {inventory::Severity::critical, inventory::Severity::warning, inventory::Severity::info}) {
        const auto at = static_cast<std::size_t>(severity);
        if (tally.counts[at] == 0) continue;
        const auto trend = severity == inventory::Severity::info ? Trend::none : Trend::worse;
        page.row(word(severity), std::to_string(tally.counts[at]) + " events", "", trend);
        for (const auto& [event, count] : tally.first[at])
            page.row(event.time.value_or("no clock"),
                     event.source + (event.subject ? ": " + *event.subject : ""),
                     event.text + (count > 1 ? " (x " + std::to_string(count) + ")" : ""));
        if (const auto more = tally.counts[at] - tally.folded[at])
            page.row("", "and " + std::to_string(more) + " more");
    }
}

void put_raw(HtmlPrinter& page, DiffView& view) {
    for (const auto& table : view.raw_tables) {
        page.section("Rows of " + table);
        const auto put = [&](const char* what, const Record& record) {
            view.has_raw_rows = true;
            std::string values;
            for (const auto& [id, display, value] : record.properties) {
                const auto* text = std::get_if<std::string>(&value);
                values += (values.empty() ? "" : ", ") + id + "=" +
                          (text ? trimmed(*text) : std::to_string(std::get<int>(value)));
            }
            page.row(what, record.name, values);
        };
        each_raw_row(
            view, table, [&](const Record& record) { put("gone", record); },
            [&](const Record& record) { put("new", record); });
    }
}

}  // namespace

void print_diff_html(std::ostream& out, DiffView& view) {
    const auto& difference = view.difference;
    out << kHead;
    if (difference.machines == compare::Machines::two)
        out << "<p class=\"two\">These are reports of two machines.</p>\n";
    out << "<p>old: " << escaped(words_of(view.from)) << "<br>new: " << escaped(words_of(view.to))
        << "</p>\n";
    if (difference.is_backwards) out << "<p>The old one is the later one.</p>\n";
    HtmlPrinter page(out);
    page.section("Health");
    for (const auto& one : difference.health)
        page.row(word(one.subsystem), std::string(word(one.from)) + " -> " + word(one.to), "",
                 one.to < one.from ? Trend::worse : Trend::better);
    std::string kind;
    for (const auto& change : difference.changes) {
        if (change.kind != kind) page.section(compare::title_of(change.kind));
        kind = change.kind;
        page.row(change.what, change.subject, fields_of(change), change.trend);
    }
    put_findings(page, difference);
    put_unread(page, "Read then and not now", difference.not_now, difference.lacking_now);
    put_unread(page, "Read now and not then", difference.not_then, difference.lacking_then);
    put_events(page, "New events", view.new_events);
    put_events(page, "Events that are gone", view.gone_events);
    put_raw(page, view);
    page.end();
    if (view.is_same()) out << "<p>Nothing changed.</p>\n";
    out << "</body>\n</html>\n";
}

}  // namespace qvhost
