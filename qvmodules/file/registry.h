// Registering a module's tables: one enumerate member for all, one wrap member a table.
#pragma once

#include <boost/bind/bind.hpp>
#include <initializer_list>
#include <string>

#include "rmodule.h"

namespace marlox::repository::capture {

template <class Module>
struct Table {
    const std::string& id;
    void (Module::*wrap)(RInstancesWrapper&);
};

template <class Module>
void register_tables(Module* module, void (Module::*enumerate)(RRepository&),
                     std::initializer_list<Table<Module>> tables) {
    using boost::placeholders::_1;
    for (const auto& table : tables) {
        auto& callbacks = module->callbacks[table.id];
        callbacks.enumerate = boost::bind(enumerate, module, _1);
        callbacks.wrap = boost::bind(table.wrap, module, _1);
    }
}

}  // namespace marlox::repository::capture
