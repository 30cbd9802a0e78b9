// librepository.so with a repository that counts the records it is given.
#include "kinds.h"
#include "repository/sink.h"

namespace bench {

namespace {

struct Counter : marlox::repository::RRepository::Impl {
    Count seen;

    void add(const qvhost::Record& record) override {
        ++seen.records;
        seen.properties += record.properties.size();
    }
};

}  // namespace

Count count(const Kind& kind) {
    Counter counter;
    marlox::repository::RRepository repository(counter);
    kind.parse(repository);
    return counter.seen;
}

}  // namespace bench
