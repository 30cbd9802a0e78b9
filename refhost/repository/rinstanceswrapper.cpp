#include "rinstanceswrapper.h"

#include "repository/sink.h"

namespace marlox::repository {

RInstancesWrapper::RInstancesWrapper(Impl& impl) : impl_(&impl) {}

void RInstancesWrapper::SetColumnHeaders(const std::vector<std::string>& ids, unsigned width,
                                         unsigned count) {
    impl_->layout = qvhost::ColumnLayout{ids, width, count};
}

void RInstancesWrapper::SetRowHeaders(const std::vector<std::string>& ids,
                                      const std::vector<unsigned>& widths, bool flag) {
    impl_->layout = qvhost::RowLayout{ids, widths, flag};
}

}  // namespace marlox::repository
