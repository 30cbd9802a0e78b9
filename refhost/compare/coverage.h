// Whether a report could have told of an entity that it does not have.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "compare/kinds.h"
#include "compare/table.h"

namespace qvhost::compare {

// What a report tells of, as far as it was read whole.
class Coverage {
public:
    // `tables` are those of the same report.
    Coverage(const findings::Verdict& verdict, const std::vector<Table>& tables);

    // `row` is another report's. Its capture was read whole here; or nothing is missing of what its kind
    // rests on.
    bool could_tell(const KindRow& kind, const Row& row) const;

private:
    std::set<std::string> whole_;   // captures that something stands in, or that a health rests on
    std::set<std::string> broken_;  // captures that could not be read whole
    std::set<std::string> kinds_;   // of which there is an entity
    std::set<findings::Subsystem> lacking_;
};

}  // namespace qvhost::compare
