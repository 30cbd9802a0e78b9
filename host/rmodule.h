// A module of the repository service: it names itself and, for every table that it fills,
// registers how the table's rows are collected and how the table is laid out.
#pragma once

#include <boost/function.hpp>
#include <map>
#include <string>

namespace marlox::repository {

class RRepository;
class RInstancesWrapper;

class RModule {
public:
    // The two callbacks of one table. The record does not own the module they are bound to.
    struct _callbacks_t {
        boost::function<void(RRepository&)> enumerate;   // collects the table's rows
        boost::function<void(RInstancesWrapper&)> wrap;  // sets the table's headers
    };

    RModule();
    virtual ~RModule();

    RModule(const RModule&) = delete;
    RModule& operator=(const RModule&) = delete;

    // The module's identifier, without blanks, such as "BMC_Info".
    virtual std::string GetName() = 0;

    // The module's title for people, such as "BMC information".
    virtual std::string GetDisplay() = 0;

    // Fills `callbacks`. The host calls it once, before any callback of this module.
    virtual void InitCallbacks() = 0;

    // Table id -> the table's callbacks. The host calls one callback at a time; it may call each
    // of them any number of times and in any order.
    std::map<std::string, _callbacks_t> callbacks;
};

}  // namespace marlox::repository
