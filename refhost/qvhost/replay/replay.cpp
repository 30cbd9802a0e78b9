#include "qvhost/replay/replay.h"

#include <boost/algorithm/string/replace.hpp>
#include <utility>

#include "qvhost/base/declared_tables.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/program_place.h"
#include "qvhost/collect/collect.h"
#include "qvhost/replay/machine.h"
#include "qvhost/replay/stand_ins.h"

namespace qvhost {

namespace {

// Each as CollectOptions has it.
std::vector<std::string> recorded_commands(const Machine& machine, const std::string& log_dir) {
    std::vector<std::string> texts;
    const auto filled = [&](const std::string& arguments) {
        return '\t' + boost::replace_all_copy(arguments, "{LOG}", log_dir);
    };
    if (machine.asked) {
        for (const auto& [tool, arguments] : *machine.asked)
            texts.push_back(tool + filled(arguments));
        return texts;
    }
    for (const auto& command : machine.commands) {
        texts.push_back(command.tool);
        if (!command.arguments) continue;
        texts.back() += filled(*command.arguments);
    }
    return texts;
}

}  // namespace

int replay(const std::filesystem::path& machine, CollectOptions options) {
    return replay(read_machine(machine), std::move(options), true);
}

int replay(const Machine& machine, CollectOptions options, bool summary) {
    options.log_dir = checked_log_dir(options.log_dir);

    const ProgramPlace place("replay");
    const auto log_dir = (options.log_dir / "").string();
    write_stand_ins(machine, place.vendor_tools(), place.search_path(), log_dir,
                    vendor_tools_of(options.plugin));
    options.search_path = place.search_path().string();
    options.replayed = true;
    options.recorded = recorded_commands(machine, log_dir);
    return collect(options, {.program = place.program(),
                             .kill_leftovers = true,
                             .machine = machine.identity,
                             .summary = summary,
                             .lacks = machine.lacks,
                             .recorded = machine.recorded});
}

}  // namespace qvhost
