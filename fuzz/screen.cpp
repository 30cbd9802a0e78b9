// Captured text on its way to a terminal and to the log.
//     input: width, then cells that end at a NUL
#include <sstream>
#include <vector>

#include "check.h"
#include "logger/control.h"
#include "outcome.h"
#include "show/text_table.h"
#include "show/visible.h"

namespace {

std::string unescaped(std::string_view line) {
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '\\') {
            text += line[i];
        } else if (line[++i] == 'x') {
            text += static_cast<char>(std::stoi(std::string(line.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            text += line[i] == 'n' ? '\n' : line[i] == 'r' ? '\r' : line[i] == 't' ? '\t' : line[i];
        }
    }
    return text;
}

void expect_wrapped(const std::string& text, std::size_t width) {
    std::string whole;
    for (const auto& line : qvhost::wrapped(text, width)) {
        whole += line;
        // One character may be wider than the whole line.
        fuzz::expect(qvhost::display_width(line) <= std::max<std::size_t>(width, 2),
                     "a line is as wide as asked at most");
    }
    const auto without_gaps = [](std::string all) {
        std::erase_if(all, [](char c) { return c == ' ' || c == '\n'; });
        return all;
    };
    fuzz::expect_same(without_gaps(whole), without_gaps(text), "wrapping loses no text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Pieces input(fuzz::text_of(data, size));
    const unsigned width = input.byte();
    const std::string_view whole = input.rest();
    std::vector<std::string> cells;
    std::vector<std::string> titles;
    while (!input.at_end() && cells.size() < 20) {
        titles.emplace_back(input.until('\0'));
        cells.emplace_back(input.until('\0'));
    }

    const auto text = qvhost::visible(whole);
    fuzz::expect_harmless(text);
    fuzz::expect_same(qvhost::visible(text), text, "what can be shown is shown as it is");
    fuzz::expect(qvhost::one_line(whole).find('\n') == std::string::npos, "one line is one line");
    expect_wrapped(text, width);
    const auto line = qvhost::one_line(whole);
    fuzz::expect(qvhost::display_width(qvhost::shortened(line, width)) <= width,
                 "a shortened text fits");

    std::ostringstream out;
    const qvhost::TerminalStyle style{width, false};
    for (const auto form : {qvhost::TableForm::fitting, qvhost::TableForm::blocks}) {
        qvhost::TextTable table(out, titles, style, form);
        table.add(cells);
        table.add(cells);
        table.end();
    }
    fuzz::expect_harmless(out.str());

    const auto logged = qvhost::escape_log_text(whole);
    fuzz::expect(logged.find_first_of("\n\r\t\x1b") == std::string::npos, "a log text is one line");
    fuzz::expect_same(unescaped(logged), whole, "a log text can be read back");
    return 0;
}
