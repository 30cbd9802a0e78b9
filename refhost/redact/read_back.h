// The last look at a bundle that is made: whether any value is in it, in any spelling.
#pragma once

#include <string>
#include <string_view>

#include "redact/redactor.h"

namespace qvhost::redact {

class ReadBack {
public:
    explicit ReadBack(const SpellingSearch& search) : search_(search) {}

    // A file's name, and its bytes, part by part.
    void begin(std::string_view name);
    void add(std::string_view bytes);
    void end();

    // The first file that holds a value or has one in its name; empty: none.
    const std::string& found_in() const { return found_in_; }

private:
    void look_at(std::string_view text);

    const SpellingSearch& search_;
    std::string name_, pending_, found_in_;
};

}  // namespace qvhost::redact
