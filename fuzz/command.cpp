// Command lines: whatever the directories are called, the shell gets them as one word and opens no
// second command. A plain reader of the shell's quoting says what it gets.
//     input: program directory, NUL, log directory, NUL, any command text
#include "run/command.h"

#include <optional>
#include <vector>

#include "check.h"
#include "fakehost.h"

using namespace marlox::repository::capture;

namespace {

// The words of a line whose only quotes are single ones and backslashes outside of them.
std::optional<std::vector<std::string>> words_of(std::string_view line) {
    std::vector<std::string> words{""};
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\'') {
            quoted = !quoted;
        } else if (quoted) {
            words.back() += line[i];
        } else if (line[i] == '\\' && i + 1 < line.size()) {
            words.back() += line[++i];
        } else if (line[i] == ' ') {
            words.emplace_back();
        } else {
            words.back() += line[i];
        }
    }
    if (quoted) return std::nullopt;
    return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Pieces input(fuzz::text_of(data, size));
    const std::string program(input.until('\0'));
    const std::string log(input.until('\0').substr(0, 255));
    fakehost::log_dir = log;
    const Places places{program, static_cast<int>(input.byte()), static_cast<int>(input.byte())};

    const auto line =
        expand("'{P}qv_tools/storcli_{x}' /c{n} show > '{L}a.txt' 2>'{L}b.txt'", places);
    const std::string build = places.bits == 32 ? "x32" : "x64";
    const std::vector<std::string> wanted = {program + "qv_tools/storcli_" + build,
                                             "/c" + std::to_string(places.controller),
                                             "show",
                                             ">",
                                             log + "a.txt",
                                             "2>" + log + "b.txt"};
    fuzz::expect(words_of(line) == wanted, "the shell gets the directories as they are called");
    if (program.find('\'') == std::string::npos && log.find('\'') == std::string::npos) {
        fuzz::expect_same(
            line,
            "'" + wanted[0] + "' " + wanted[1] + " show > '" + wanted[4] + "' 2>'" + log + "b.txt'",
            "an ordinary name stands in the command as it is");
    }
    if (program.find('\'') != std::string::npos) {
        fuzz::expect(words_of(expand("{P}tool", places)) == std::vector{program + "tool"},
                     "a name with a quote is one word outside of quotes too");
    }

    const auto any = expand(input.rest(), places);
    if (input.rest().find('{') == std::string_view::npos)
        fuzz::expect_same(any, input.rest(), "a command without places is what it is");
    return 0;
}
