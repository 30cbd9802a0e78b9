// Whether something calls for a question on this machine, and what there is to ask about.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "ask/facts.h"
#include "ask/questions.h"

namespace qvhost::ask {

enum class Called {
    no,
    maybe,  // nothing says that it is needed, and nothing that it is not
    yes,    // a tool that is missing is told of
};

struct Call {
    Called called = Called::no;
    std::vector<std::string> each =
        {};                    // what takes the place of "{n}"; one empty text: nothing does
    std::string problem = {};  // why it cannot be asked although it is needed; empty: nothing
};

// Where to look: the root directory of the machine; empty in a replay, which looks at no machine and takes
// what it has recorded for needed.
Call called_for(When when, const Facts& facts, const std::filesystem::path& root);

}  // namespace qvhost::ask
