// A module made of functions, and the function that hands it to the host.
#pragma once

#include <boost/shared_ptr.hpp>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "rinstance.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"
#include "xmodule.h"

namespace test {

using marlox::repository::RInstance;
using marlox::repository::RInstancesWrapper;
using marlox::repository::RModule;
using marlox::repository::RRepository;

inline void log(unsigned level, const std::string& text) {
    if (XModule::Log::GetMinLogLevel() >= level)
        XModule::Log(level, "tests/product", 1).Stream() << "[repo] " << text;
}

// One record of one property.
inline void file(RRepository& repository, const std::string& table, const std::string& value) {
    RInstance record(table, "record", -1);
    record.AddProperty("value", "Value", value);
    record.AddToRepository(repository);
}

class TestModule : public RModule {
public:
    using Enumerate = std::function<void(RRepository&)>;

    TestModule(std::string name, std::vector<std::pair<std::string, Enumerate>> tables)
        : name_(std::move(name)), tables_(std::move(tables)) {}

    std::string GetName() override { return name_; }
    std::string GetDisplay() override { return "Module " + name_; }
    void InitCallbacks() override {
        log(3, "init " + name_);
        for (const auto& [id, collect] : tables_) {
            callbacks[id].enumerate = [id = id, collect = collect](RRepository& repository) {
                log(3, "enumerate " + id);
                collect(repository);
            };
            callbacks[id].wrap = [id = id](RInstancesWrapper& wrapper) {
                log(3, "wrap " + id);
                wrapper.SetRowHeaders({"value"}, {100}, false);
            };
        }
    }

private:
    std::string name_;
    std::vector<std::pair<std::string, Enumerate>> tables_;
};

using Modules = std::vector<boost::shared_ptr<RModule>>;

}  // namespace test

extern "C" __attribute__((visibility("default"))) int AddModules(test::Modules& modules);
