// Why a table is empty or partial, as the commands that make its capture tell. Where nothing tells, the
// reason is "unknown".
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "qvhost/finish/commands.h"
#include "store/declared_table.h"
#include "store/store.h"

namespace qvhost {

// Where the tools of the collection are looked for. Empty: this is not known, and nothing is said of it.
struct ToolPlaces {
    std::filesystem::path vendor_tools;
    std::string search_path;
    // By build, where scripts stand in for vendors' tools: the file that the script starts, and why none is
    // started though there is one.
    std::map<std::string, std::filesystem::path> started = {};
    std::map<std::string, std::string> refused = {};
};

class Reasons {
public:
    // The store has the declarations of the tables. `broken_off`: modules by name, and operations
    // as kAlsoMark, that ended before their time, so that what they did not ask is no answer.
    Reasons(const LogDir& dir, ToolPlaces places, const CommandLog& log, const Store& store,
            std::set<std::string> broken_off);

    // Why the table of the module has no records, for people. Never empty.
    std::string why_empty(const std::string& module, const std::string& table) const;

    // Why a table that has records may lack some; empty: nothing tells that it does.
    std::string why_partial(const std::string& module, const std::string& table) const;

    // Why every tool of the module that is there failed, by the first of its tables; empty: one did
    // not, or none is installed. Where there is no BMC, a tool that asks it cannot fail.
    std::string why_failed(const ModuleInfo& module, bool has_no_bmc) const;

private:
    const DeclaredTable* declared(const std::string& id) const;  // null: it is not
    std::string section_of(const std::string& module, const DeclaredTable& table) const;
    // The last command of the section for which this holds; null: there is none.
    template <class Test>
    const CommandInfo* last_in(const std::string& section, Test is_meant) const;
    // The last command of the module that left the table's capture; null: there is none.
    const CommandInfo* maker(const std::string& section, const DeclaredTable& table) const;

    bool is_missing(const CommandInfo& command) const;
    std::filesystem::path file_of(
        const CommandInfo& command) const;  // of its tool; empty: not found
    std::string shells_words(const DeclaredTable& table, const CommandInfo& command) const;
    bool is_installed(const DeclaredTable& table, const CommandInfo& command) const;
    std::string why_not_started(const DeclaredTable& table, const CommandInfo& command) const;
    std::string why_not_run(const DeclaredTable& table, const CommandInfo& command) const;
    std::string why_not_asked(const std::string& module, const DeclaredTable& table) const;
    std::string why_pipeline_failed(const CommandInfo& pipeline) const;
    std::string why_gate_closed(const std::string& section, const DeclaredTable& table) const;
    std::string why_no_bmc() const;
    bool has_answered(const std::string& module, const std::string& tool) const;
    std::string trouble(const DeclaredTable& table, const CommandInfo& command) const;
    std::string answered_error(const DeclaredTable& table, const CommandInfo& command) const;
    std::string first_words(const DeclaredTable& table, const CommandInfo& command) const;

    LogDir dir_;
    ToolPlaces places_;
    const CommandLog& log_;
    std::vector<DeclaredTable> declared_;
    std::vector<std::string> also_;  // what the user asked for beside the modules
    std::string product_;            // as the plug-in's log tells it
    bool product_is_logged_ = false;
    std::set<std::string> broken_off_;
};

}  // namespace qvhost
