#include "qvhost/collect/collect_here.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "ask/tools.h"
#include "compat/recorder.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/program_place.h"
#include "qvhost/base/trust.h"
#include "qvhost/collect/collect.h"
#include "qvhost/collect/program_path.h"
#include "qvhost/collect/warn.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

fs::path installed_tools() { return program_file().parent_path() / "qv_tools"; }

// Tells what the layer does, for report and plan.
void note_layer(Stage& stage, const std::vector<const compat::StandIn*>& stand_ins,
                const std::vector<compat::VendorFile>& files) {
    for (const auto* one : stand_ins) stage.stand_ins.emplace_back(one->tool, one->what);
    for (const auto& file : files) {
        if (!file.answers.empty()) stage.vendor_files.emplace_back(file.build, file.answers);
    }
}

// What the host's own questions would not run: a stand-in before it would hide whose file it is.
bool is_refused(const fs::path& file) {
    const auto names = ask::tool_names();
    const auto asked = [&](const std::string& name) {
        return file.filename() == name || file.filename() == name + "64";
    };
    return std::any_of(names.begin(), names.end(), asked) && !why_not_trusted(file).empty();
}

}  // namespace

std::vector<compat::VendorFile> vendor_files_here(const fs::path& plugin) {
    std::vector<compat::WantedTool> wanted;
    for (const auto& tool : vendor_tools_of(plugin)) wanted.push_back({tool.name, tool.files});
    // The way to the installed tools is the way to this program, which runs already.
    return compat::find_vendor_tools(
        wanted, installed_tools(), usual_search_path(), [](const fs::path& file) {
            return file.parent_path() == installed_tools() ? why_not_trusted(file)
                                                           : why_program_not_trusted(file);
        });
}

int collect_here(CollectOptions options, bool summary, const fs::path& tool_notes) {
    expect_path_fits_plugin(program_file());
    const bool wanted = !options.no_compat;
    Stage stage{
        .program = program_file(), .machine = this_machine(), .summary = summary, .recorded = ""};
    compat::Place place;
    place.search_path = usual_search_path();
    place.log_level = options.log_level;
    const auto stand_ins = compat::useful_stand_ins(place, wanted);
    const auto files =
        wanted ? vendor_files_here(options.plugin) : std::vector<compat::VendorFile>{};
    if (options.dry_run) {
        note_layer(stage, stand_ins, files);
        return collect(options, stage);
    }

    if (const auto reason = why_not_trusted(installed_tools()); !reason.empty())
        throw std::runtime_error("nothing is run from there: " + reason);
    place.log_dir = options.log_dir = checked_log_dir(options.log_dir);
    place.log = LogDir(place.log_dir).log();
    std::optional<ProgramPlace> programs;
    try {
        programs.emplace("run", place.log_dir.parent_path());
    } catch (const std::exception& error) {
        if (!tool_notes.empty()) throw;
        warn("without the compatibility layer: " + std::string(error.what()));
        return collect(options, stage);
    }
    place.directory = programs->search_path();
    place.program = programs->program();
    place.notes = programs->notes();
    compat::write_layer(place, stand_ins);
    options.search_path = place.directory.string() + ":" + place.search_path;
    if (wanted) {
        stage.started_files = compat::write_vendor_scripts(files, place, programs->vendor_tools());
        stage.search_path = place.search_path;
        stage.program = programs->program();
        for (const auto& file : files) {
            for (const auto& [refused, why_not] : file.refused) {
                const auto words = refused.string() + " is not run: " + why_not;
                warn(words);
                stage.refused_files.emplace(file.build, words);
            }
        }
    }
    note_layer(stage, stand_ins, files);
    if (!tool_notes.empty()) {
        compat::write_recorders(place, programs->recorders(), programs->vendor_tools(), tool_notes,
                                is_refused);
        options.search_path = programs->recorders().string() + ":" + options.search_path;
    }
    return collect(options, stage);
}

}  // namespace qvhost
