// The command line of qvhost, an argument a line, as far as it is understood; nothing is done. What the
// collecting child is told arrives there as it was meant. Completion takes the same words.
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include "check.h"
#include "outcome.h"
#include "qvhost/base/collect_options.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/plugin.h"
#include "qvhost/cli/command_line.h"

namespace {

using qvhost::ParsedArguments;

// What was asked for; nothing if the command line was wrong, or asked for help.
std::optional<ParsedArguments> parsed(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qvhost");
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    ParsedArguments result;
    const auto app = qvhost::command_line(result);
    try {
        app->parse(static_cast<int>(arguments.size()), argv.data());
    } catch (const CLI::Success& wanted) {
        app->exit(wanted);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        const fuzz::Printed printed;
        app->exit(error);
        fuzz::expect(!printed.text().empty(), "a failure says what it is");
        return std::nullopt;
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // libFuzzer reads the counters of a library after it was unloaded: completion must not be the last to use it.
    static const auto* const plugin = new qvhost::Plugin(qvhost::installed_plugin());
    fuzz::expect(!plugin->modules().empty(), "the plug-in is there");

    fuzz::Pieces input(fuzz::text_of(data, size));
    std::vector<std::string> arguments;
    while (!input.at_end()) arguments.emplace_back(input.until('\n'));

    const fuzz::Printed printed;
    ParsedArguments nothing;
    for (const bool with_meanings : {false, true}) {
        fuzz::told([&] {
            qvhost::write_completions(std::cout, *qvhost::command_line(nothing), arguments,
                                      with_meanings);
        });
    }

    const auto result = parsed(arguments);
    if (!result || result->collect.log_dir.empty()) return 0;
    const auto& options = result->collect;
    const auto limits = qvhost::limits_for(options);
    fuzz::expect(options.log_level <= 4, "options are in their ranges");
    fuzz::expect(limits.silence_seconds >= 1 && limits.silence_seconds <= limits.tool_seconds &&
                     limits.tool_seconds <= limits.archive_seconds &&
                     limits.archive_seconds <= limits.module_seconds &&
                     limits.module_seconds <= limits.run_seconds,
                 "limits do not contradict each other");
    fuzz::expect(qvhost::options_from(qvhost::settings_of(options)) == options,
                 "the child gets the options that were given");
    return 0;
}
