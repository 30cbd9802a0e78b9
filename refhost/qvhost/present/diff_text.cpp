// What changed, as text for people.
#include <ostream>

#include "qvhost/present/diff_sections.h"
#include "show/visible.h"

namespace qvhost {

namespace {

using compare::Trend;

std::string coloured(const std::string& text, Trend trend, const TerminalStyle& style) {
    if (!style.colour || trend == Trend::none) return text;
    return (trend == Trend::worse ? "\033[31m" : "\033[32m") + text + "\033[0m";
}

void print_machines(std::ostream& out, const DiffView& view, const TerminalStyle& style) {
    if (view.difference.machines == compare::Machines::two)
        out << bold("These are reports of two machines.", style) << '\n';
    out << "old: " << one_line(words_of(view.from)) << '\n';
    out << "new: " << one_line(words_of(view.to)) << '\n';
    if (view.difference.is_backwards) out << "The old one is the later one.\n";
}

}  // namespace

void print_diff_text(std::ostream& out, DiffView& view, const TerminalStyle& style) {
    print_machines(out, view, style);
    std::string section;
    each_line(view, [&](const std::string& title, const DiffLine& line) {
        if (title != section) out << '\n' << bold(one_line(title), style) << '\n';
        section = title;
        out << "  " << coloured(one_line(line.text), line.trend, style) << '\n';
    });
    if (const auto outcome = outcome_of(view); !outcome.empty())
        out << (section.empty() ? "" : "\n") << outcome << '\n';
}

}  // namespace qvhost
