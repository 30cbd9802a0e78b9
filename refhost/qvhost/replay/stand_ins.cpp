#include "qvhost/replay/stand_ins.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <map>
#include <vector>

#include "files/script.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// Real tools that do no harm: filters in command lines, and chmod, which reaches the stand-ins alone.
constexpr const char* kRealTools[] = {"awk", "chmod", "grep", "wc"};

// A stand-in names its tools by their paths, since the search path has none of them.
std::string answer(const RecordedCommand& command) {
    std::string script;
    if (!command.stdout_file.empty())
        script += "/bin/cat " + shell_quoted(command.stdout_file) + "\n";
    if (!command.stderr_file.empty())
        script += "/bin/cat " + shell_quoted(command.stderr_file) + " >&2\n";
    if (!command.stderr_text.empty())
        script += "printf '%s' " + shell_quoted(command.stderr_text) + " >&2\n";
    for (const auto& [name, source] : command.files) {
        const auto folder = fs::path(name).parent_path();
        if (!folder.empty()) script += "/bin/mkdir -p " + shell_quoted(folder) + "\n";
        script += "/bin/cp " + shell_quoted(source) + " " + shell_quoted(name) + "\n";
    }
    if (command.seconds > 0) script += "/bin/sleep " + std::to_string(command.seconds) + "\n";
    if (command.signal > 0) script += "kill -" + std::to_string(command.signal) + " $$\n";
    return script + "exit " + std::to_string(command.exit_code) + "\n";
}

std::string script_for(const std::vector<RecordedCommand>& commands, const std::string& log_dir) {
    std::string script = "#!/bin/sh\ncase \"$*\" in\n";
    for (const auto& command : commands) {
        if (command.arguments) {
            auto arguments = *command.arguments;
            boost::replace_all(arguments, "{LOG}", log_dir);
            script += shell_quoted(arguments) + ")\n";
        } else {
            script += "*)\n";
        }
        script += answer(command) + ";;\n";
    }
    // As the shell says it of a tool by that name.
    script += "esac\nprintf 'sh: 1: %s: not found\\n' \"${0##*/}\" >&2\nexit 127\n";
    return script;
}

void link_real_tool(const std::string& name, const fs::path& search_path) {
    for (const fs::path directory : {"/usr/bin", "/bin"}) {
        if (!fs::exists(directory / name)) continue;
        fs::create_symlink(directory / name, search_path / name);
        return;
    }
}

}  // namespace

void write_stand_ins(const Machine& machine, const fs::path& vendor_tools,
                     const fs::path& search_path, const std::string& log_dir,
                     const std::vector<VendorTool>& vendors) {
    std::map<std::string, std::vector<RecordedCommand>> tools;
    for (const auto& command : machine.commands) tools[command.tool].push_back(command);
    for (const auto& entry : tools) {
        const auto& tool = entry.first;
        const auto script = script_for(entry.second, log_dir);
        const auto vendor = std::find_if(vendors.begin(), vendors.end(),
                                         [&](const VendorTool& one) { return one.name == tool; });
        if (vendor == vendors.end()) {
            write_script(search_path / tool, script);
            continue;
        }
        for (const auto& file : vendor->files) write_script(vendor_tools / file, script);
    }
    if (!tools.contains("uname") && !machine.uname.empty()) {
        write_script(search_path / "uname",
                     "#!/bin/sh\nprintf '%s\\n' " + shell_quoted(machine.uname) + "\n");
    }
    for (const char* name : kRealTools) {
        if (!tools.contains(name)) link_real_tool(name, search_path);
    }
}

}  // namespace qvhost
