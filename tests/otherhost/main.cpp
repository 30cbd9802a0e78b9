// otherhost PLUGIN FILE: collects all tables of the plug-in and writes modules, layouts and records into
// the file, as report.json has them. (Standard output is the tools' as well.)
#include <dlfcn.h>

#include <boost/shared_ptr.hpp>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <vector>

#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

using namespace marlox::repository;
using nlohmann::ordered_json;

namespace {

ordered_json layout_of(const RInstancesWrapper& wrapper) {
    if (wrapper.rows) {
        return {{"kind", "rows"},
                {"headers", wrapper.ids},
                {"widths", wrapper.widths},
                {"flag", wrapper.flag}};
    }
    return {{"kind", "columns"},
            {"headers", wrapper.ids},
            {"width", wrapper.widths.at(0)},
            {"count", wrapper.count}};
}

ordered_json json_of(const RInstance& record) {
    auto properties = ordered_json::array();
    for (const auto& [id, display, value] : record.properties()) {
        ordered_json json{{"id", id}, {"display", display}};
        std::visit([&](const auto& held) { json["value"] = held; }, value);
        properties.push_back(std::move(json));
    }
    return {{"table", record.table()},
            {"name", record.name()},
            {"index", record.index()},
            {"properties", std::move(properties)}};
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: otherhost PLUGIN FILE\n";
        return 2;
    }
    void* const plugin = ::dlopen(arguments[1], RTLD_NOW);
    if (!plugin) {
        std::cerr << ::dlerror() << '\n';
        return 1;
    }
    using Modules = std::vector<boost::shared_ptr<RModule>>;
    auto* const add_modules = reinterpret_cast<int (*)(Modules&)>(::dlsym(plugin, "AddModules"));
    if (!add_modules) {
        std::cerr << ::dlerror() << '\n';
        return 1;
    }

    Modules modules;
    add_modules(modules);
    for (const auto& module : modules) module->InitCallbacks();

    RRepository repository;
    auto told = ordered_json::array();
    for (const auto& module : modules) {
        auto tables = ordered_json::array();
        for (const auto& [id, callbacks] : module->callbacks) {
            RInstancesWrapper wrapper;
            callbacks.enumerate(repository);
            callbacks.wrap(wrapper);
            tables.push_back({{"id", id}, {"layout", layout_of(wrapper)}});
        }
        if (!module->sound() || module->GetVersion() != "1") {
            std::cerr << module->GetName() << " has written over its host's members\n";
            return 1;
        }
        told.push_back({{"name", module->GetName()},
                        {"display", module->GetDisplay()},
                        {"tables", std::move(tables)}});
    }
    auto records = ordered_json::array();
    for (const auto& record : repository.records) records.push_back(json_of(record));
    const ordered_json report{{"modules", std::move(told)}, {"records", std::move(records)}};
    std::ofstream file(arguments[2]);
    file << report.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
    return file.flush() ? 0 : 1;
}
