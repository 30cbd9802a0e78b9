// A host whose records are nothing but a count: what is measured in it is the plug-in's alone.
#include <boost/function.hpp>

#include "kinds.h"
#include "rinstance.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"

namespace {

bench::Count seen;

}  // namespace

namespace marlox::repository {

struct RRepository::Impl {};
RRepository::RRepository(Impl& impl) : impl_(&impl) {}

struct RInstancesWrapper::Impl {};
void RInstancesWrapper::SetColumnHeaders(const std::vector<std::string>&, unsigned, unsigned) {}
void RInstancesWrapper::SetRowHeaders(const std::vector<std::string>&, const std::vector<unsigned>&,
                                      bool) {}

RModule::RModule() = default;
RModule::~RModule() = default;

struct RInstance::Impl {};
RInstance::RInstance(const std::string&, const std::string&, int) : impl_(new Impl) {}
RInstance::~RInstance() { delete impl_; }
void RInstance::AddProperty(const std::string&, const std::string&, const std::string&) {
    ++seen.properties;
}
void RInstance::AddProperty(const std::string&, const std::string&, int) { ++seen.properties; }
void RInstance::AddToRepository(RRepository&) const { ++seen.records; }

}  // namespace marlox::repository

namespace bench {

Count count(const Kind& kind) {
    seen = {};
    marlox::repository::RRepository::Impl impl;
    marlox::repository::RRepository repository(impl);
    kind.parse(repository);
    return seen;
}

}  // namespace bench
