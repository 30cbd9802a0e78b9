// What changed, as one page: no script, nothing from elsewhere, and what the reports say is text.
#include <ostream>
#include <string_view>

#include "compare/words.h"
#include "qvhost/present/diff_sections.h"
#include "show/visible.h"

namespace qvhost {

namespace {

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

}  // namespace

void print_diff_html(std::ostream& out, DiffView& view) {
    const auto& difference = view.difference;
    out << kHead;
    if (difference.machines == compare::Machines::two)
        out << "<p class=\"two\">These are reports of two machines.</p>\n";
    out << "<p>old: " << escaped(words_of(view.from)) << "<br>new: " << escaped(words_of(view.to))
        << "</p>\n";
    if (difference.is_backwards) out << "<p>The old one is the later one.</p>\n";
    std::string section;
    const auto end = [&] { out << (section.empty() ? "" : "</table></section>\n"); };
    each_line(view, [&](const std::string& title, const DiffLine& line) {
        if (title != section) {
            end();
            out << "<section><h2>" << escaped(title) << "</h2>\n<table>\n";
        }
        section = title;
        out << "<tr class=\"" << word(line.trend) << "\">";
        for (const auto& cell : line.cells) out << "<td>" << escaped(cell) << "</td>";
        out << "</tr>\n";
    });
    end();
    if (const auto outcome = outcome_of(view); !outcome.empty())
        out << "<p>" << escaped(outcome) << "</p>\n";
    out << "</body>\n</html>\n";
}

}  // namespace qvhost
