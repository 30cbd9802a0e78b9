#include "qvhost/replay/replay.h"

#include <boost/algorithm/string/replace.hpp>

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
    for (const auto& command : machine.commands) {
        texts.push_back(command.tool);
        if (!command.arguments) continue;
        texts.back() += '\t' + boost::replace_all_copy(*command.arguments, "{LOG}", log_dir);
    }
    return texts;
}

}  // namespace

int replay(const std::filesystem::path& machine_dir, CollectOptions options) {
    const auto machine = read_machine(machine_dir);
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
                             .lacks = machine.lacks,
                             .recorded = machine.recorded});
}

}  // namespace qvhost
