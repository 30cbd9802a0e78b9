#include "rrepository.h"

namespace marlox::repository {

RRepository::RRepository(Impl& impl) : impl_(&impl) {}

RRepository::Impl& RRepository::impl() { return *impl_; }

}  // namespace marlox::repository
