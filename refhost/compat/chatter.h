// Takes one known line out of what ipmitool prints, and lets everything else pass as it comes.
#pragma once

#include <string>
#include <string_view>

namespace qvhost::compat {

class ChatterFilter {
public:
    // What passes of these bytes, which follow those before. The beginning of a line that may become the
    // known one is held until that is clear.
    std::string pass(std::string_view bytes);

    // What is still held at the end.
    std::string rest();

    // The line that was taken out, without its end; empty: none was.
    const std::string& taken() const { return taken_; }

private:
    bool at_line_start_ = true;
    std::string held_;
    std::string taken_;
};

}  // namespace qvhost::compat
