#include "qvhost/collect/selection.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace qvhost {

namespace {

bool wanted(const std::vector<std::string>& names, const std::string& name) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

void check_names(const Plugin& plugin, const CollectOptions& options) {
    std::vector<std::string> modules;
    std::vector<std::string> tables;
    for (const auto& module : plugin.modules()) {
        modules.push_back(module->GetName());
        for (const auto& [table, callbacks] : module->callbacks) tables.push_back(table);
    }
    const auto check = [](const char* kind, const std::vector<std::string>& known,
                          const std::vector<std::string>& asked) {
        for (const auto& name : asked) {
            if (wanted(known, name)) continue;
            std::string text = std::string("there is no ") + kind + " \"" + name + "\"; there are:";
            for (const auto& one : known) text += " " + one;
            throw std::runtime_error(text);
        }
    };
    check("module", modules, options.modules);
    check("table", tables, options.tables);
}

}  // namespace

std::vector<SelectedModule> select_modules(const Plugin& plugin, const CollectOptions& options) {
    for (const auto& module : plugin.modules()) module->InitCallbacks();
    check_names(plugin, options);
    std::vector<SelectedModule> selected;
    for (const auto& module : plugin.modules()) {
        if (!wanted(options.modules, module->GetName())) continue;
        std::vector<std::string> tables;
        for (const auto& [table, callbacks] : module->callbacks) {
            if (wanted(options.tables, table)) tables.push_back(table);
        }
        if (!tables.empty()) selected.push_back({module.get(), std::move(tables)});
    }
    return selected;
}

}  // namespace qvhost
