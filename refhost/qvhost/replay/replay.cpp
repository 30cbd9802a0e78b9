#include "qvhost/replay/replay.h"

#include <boost/algorithm/string/replace.hpp>
#include <utility>
#include <vector>

#include "files/temporary_directory.h"
#include "qvhost/base/ambient.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/collect/collect.h"
#include "qvhost/replay/machine.h"
#include "qvhost/replay/stand_ins.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// A plug-in that does not say which tools it needs runs those of the installed one.
std::vector<VendorTool> vendor_tools_of(const fs::path& plugin) {
    if (!plugin.empty()) {
        if (auto declared = tables_declared_by(plugin); !declared.tools.empty())
            return std::move(declared.tools);
    }
    return tables_declared_by(installed_plugin()).tools;
}

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

int replay(const fs::path& machine_dir, CollectOptions options) {
    const auto machine = read_machine(machine_dir);
    options.log_dir = make_log_dir(options.log_dir);

    // The plug-in looks for its tools beside the running program, so a copy of the program runs
    // beside the stand-ins.
    const TemporaryDirectory place("qvhost-replay");
    const auto program = place.path() / "bin" / "qvhost";
    const auto vendor_tools = place.path() / "bin" / "qv_tools";
    const auto search_path = place.path() / "path";
    fs::create_directories(vendor_tools);
    fs::create_directories(search_path);
    fs::copy_file(program_file(), program);
    fs::create_directory_symlink(program_file().parent_path().parent_path() / "lib",
                                 place.path() / "lib");
    write_stand_ins(machine, vendor_tools, search_path, (options.log_dir / "").string(),
                    vendor_tools_of(options.plugin));
    options.search_path = search_path.string();
    options.replayed = true;
    options.recorded = recorded_commands(machine, (options.log_dir / "").string());
    return collect(options, {.program = program,
                             .kill_leftovers = true,
                             .machine = machine.identity,
                             .recorded = machine.recorded});
}

}  // namespace qvhost
