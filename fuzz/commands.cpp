// The command log: of any bytes, and as the plug-in writes it of any commands.
//     input: the log's bytes, and again commands (text up to a NUL, status, reason, processes)
#include "qvhost/finish/commands.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "check.h"
#include "outcome.h"
#include "runner/command_log.h"
#include "scratch.h"

namespace {

void expect_sound(const std::vector<qvhost::CommandInfo>& commands) {
    for (const auto& command : commands) {
        fuzz::expect(std::isfinite(command.seconds.value_or(0)), "a time is a number");
        fuzz::expect(!was_cut_off(command) || !outcome(command).empty(),
                     "what was cut off did not end well");
    }
}

bool begins(std::string_view line) {
    return line.starts_with("> ") || line.starts_with("? ") || line.starts_with("- ");
}

void read_any(const std::filesystem::path& log, std::string_view bytes) {
    fuzz::write_file(log, bytes);
    std::size_t begun = 0;
    for (fuzz::Pieces lines(bytes); !lines.at_end();) begun += begins(lines.until('\n'));
    const auto commands = qvhost::read_commands(log, log.parent_path()).commands;
    expect_sound(commands);
    fuzz::expect(commands.size() == begun, "every command that began is told");
}

void read_written(const std::filesystem::path& log, fuzz::Pieces input) {
    struct Written {
        std::string text;
        int status;
        const char* reason;
        std::size_t left;
    };
    std::filesystem::remove(log);
    ::setenv("QV_COMMAND_LOG", log.c_str(), 1);
    std::vector<Written> written;
    while (!input.at_end() && written.size() < 20) {
        static const char* const kReasons[] = {nullptr, "time", "silence", "deadline"};
        const std::string text(input.until('\0'));
        const auto status = static_cast<int>(input.byte() << 8 | input.byte());
        const auto* reason = kReasons[input.byte() % 4];
        const std::vector<pid_t> left(reason ? input.byte() % 3 : 0, 4711);
        const auto limit =
            text.size() % 2 == 0 ? std::nullopt : std::optional(std::chrono::seconds(text.size()));
        runner::LoggedCommand(text, limit, false).ended(status, reason, left);
        written.push_back({text, status, reason, left.size()});
    }
    const auto commands = qvhost::read_commands(log, log.parent_path()).commands;
    expect_sound(commands);
    fuzz::expect(commands.size() == written.size(), "every command is told");
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const auto& [text, status, reason, left] = written[i];
        fuzz::expect_same(commands[i].text, text, "a command is told as it was run");
        fuzz::expect(outcome(commands[i]).empty() == (status == 0 && !reason),
                     "it is told whether it ended well");
        fuzz::expect(!reason || was_cut_off(commands[i]), "what was stopped is cut off");
        std::size_t named = 0;
        const auto told = outcome(commands[i]);
        for (auto at = told.find(" 4711 "); at != std::string::npos;
             at = told.find(" 4711 ", at + 1))
            ++named;
        fuzz::expect(named == left, "every process that was left is named");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    read_any(scratch / "any.log", fuzz::text_of(data, size));
    read_written(scratch / "commands.log", fuzz::Pieces(fuzz::text_of(data, size)));
    return 0;
}
