// Registering a module's tables with the host: one enumerate member fills them all, and each is laid
// out as it is declared.
#pragma once

#include <boost/bind/bind.hpp>
#include <string>

#include "file/layout.h"
#include "file/table.h"
#include "rmodule.h"

namespace marlox::repository::capture {

template <class HostModule>
void register_tables(HostModule* module, void (HostModule::*enumerate)(RRepository&),
                     const Module& declared) {
    using boost::placeholders::_1;
    for (const Table* table : declared.tables) {
        auto& callbacks = module->callbacks[std::string(table->id)];
        callbacks.enumerate = boost::bind(enumerate, module, _1);
        callbacks.wrap = [table](RInstancesWrapper& wrapper) { lay_out(wrapper, *table); };
    }
}

}  // namespace marlox::repository::capture
