#include <algorithm>
#include <cctype>
#include <iterator>
#include <ostream>

#include "qvhost/cli/command_line.h"
#include "text/case.h"

namespace qvhost {

namespace {

// Characters that have a meaning in roff, and how to print them.
constexpr struct {
    char plain;
    const char* escaped;
} kEscapes[] = {
    {'\\', "\\e"  },
    {'-',  "\\-"  },
    {'\'', "\\(aq"},
    {'~',  "\\(ti"},
    {'^',  "\\(ha"},
    {'`',  "\\(ga"},
};

// The text so that roff prints it as it is.
std::string roff(const std::string& text) {
    std::string out;
    bool line_begins = true;
    for (const char c : text) {
        if (line_begins && (c == '.' || c == '\'')) out += "\\&";
        line_begins = c == '\n';
        const auto* const escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                                [&](const auto& one) { return one.plain == c; });
        out += escape == std::end(kEscapes) ? std::string(1, c) : escape->escaped;
    }
    return out;
}

std::string bold(const std::string& text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + roff(text) + "\\fR"; }

std::string roff_term(const CLI::Option& option) {
    if (option.get_positional()) return italic(option.get_name(true));
    std::string term;
    for (const auto& name : option.get_snames()) term += bold("-" + name) + ", ";
    for (const auto& name : option.get_lnames()) term += bold("--" + name);
    const auto value = option.get_type_name();
    if (value.empty()) return term;
    const bool to_replace = std::isupper(static_cast<unsigned char>(value.front())) != 0;
    return term + " " + (to_replace ? italic(value) : roff(value));
}

void write_entries(std::ostream& out, const std::vector<const CLI::Option*>& options) {
    for (const auto* option : options) {
        out << ".TP\n" << roff_term(*option) << '\n' << roff(option->get_description());
        if (is_required_option(*option)) out << " (required)";
        if (!option->get_default_str().empty())
            out << "; by default " << roff(option->get_default_str());
        out << ".\n";
    }
}

void write_examples(std::ostream& out, const CommandText& text) {
    for (const auto& example : text.examples) {
        out << ".PP\n"
            << roff(example.meaning) << "\n.PP\n.in +4n\n.EX\n"
            << roff(example.command) << "\n.EE\n.in\n";
    }
}

void write_command(std::ostream& out, const CLI::App& command) {
    const auto& text = text_of(command);
    out << ".SS " << roff(usage_of(command)) << '\n' << roff(text.summary) << ".\n";
    for (const char* const paragraph : text.paragraphs) out << ".PP\n" << roff(paragraph) << '\n';
    write_entries(out, arguments_of(command));
    write_entries(out, options_of(command));
    write_examples(out, text);
}

// An entry of the sections that are not about options.
struct Entry {
    const char* term;
    const char* text;
};

// clang-format off
constexpr Entry kExitStatus[] = {
    {"0", "Done; also if tools failed, whose failures the report tells."},
    {"1", "It could not be done. A message on standard error says why."},
    {"2", "The command line was wrong."},
    {"3", "The collection is incomplete, but there is a report of it."},
    {"75", "Another run asks this machine; see --machine-lock of collect and check."},
    {"0, 1, 2, 3", "Of check and doctor: ok, warning, critical, unknown; a wrong command line and a report that cannot be read are unknown."},
};

constexpr Entry kEnvironment[] = {
    {"QVHOST_CONF", "The file with settings, instead of /etc/qvhost.conf."},
    {"QVHOST_LOCK", "The file of --machine-lock, instead of /run/qvhost.lock."},
    {"PAGER",    "The command through which show prints on a terminal; less if it is not set. Empty or cat: none."},
    {"LESS",     "Options of less; FRX if it is not set."},
    {"COLUMNS",  "The width of tables, instead of the terminal's."},
    {"NO_COLOR", "If it is not empty, nothing is printed in bold."},
};

constexpr Entry kFiles[] = {
    {"/etc/qvhost.conf", "Options of every collection on this machine; see config."},
    {"DIR/*",                    "What the tools printed, one file a command."},
    {"DIR/qvhost.log",           "What was done, line by line."},
    {"DIR/report/report.json",   "All records, for programs."},
    {"DIR/report/report.sqlite", "The same as an SQLite database, the store."},
};
// clang-format on

template <class Entries>
void write_section(std::ostream& out, const char* title, const Entries& entries) {
    out << ".SH " << title << '\n';
    for (const auto& [term, text] : entries)
        out << ".TP\n" << bold(term) << '\n' << roff(text) << '\n';
}

}  // namespace

void write_manual(std::ostream& out, const CLI::App& app) {
    const auto& text = text_of(app);
    out << ".TH QVHOST 1 \"\" \"qvhost " QV_VERSION "\" \"User Commands\"\n"
        << ".SH NAME\nqvhost \\- " << lower(text.summary[0]) << roff(text.summary + 1) << '\n'
        << ".SH SYNOPSIS\n";
    for (const auto* command : commands_of(app))
        out << bold("qvhost " + command->get_name())
            << roff(usage_of(*command).substr(7 + command->get_name().size())) << "\n.br\n";
    out << ".SH DESCRIPTION\n";
    for (const char* const paragraph : text.paragraphs) out << ".PP\n" << roff(paragraph) << '\n';
    write_examples(out, text);
    out << ".SH OPTIONS\n";
    write_entries(out, options_of(app));
    out << ".SH COMMANDS\n";
    for (const auto* command : commands_of(app)) write_command(out, *command);
    write_section(out, "EXIT STATUS", kExitStatus);
    write_section(out, "ENVIRONMENT", kEnvironment);
    write_section(out, "FILES", kFiles);
    out << ".SH SEE ALSO\n.BR sqlite3 (1),\n.BR less (1)\n";
}

}  // namespace qvhost
