// The last look at a bundle that is made: whether any value is in it, in any spelling.
#pragma once

#include <cstddef>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "redact/json_numbers.h"
#include "redact/redactor.h"

namespace qvhost::redact {

class ReadBack {
public:
    explicit ReadBack(const SpellingSearch& search) : search_(search) {}

    // A file's name, and its bytes, part by part. Of JSON that the program wrote the numbers are left out. All else is
    // looked at, in a thread beside the caller's.
    void begin(std::string_view name, std::optional<JsonNumbers> json = std::nullopt);
    void add(std::string_view bytes);
    // Behind the last file.
    void end();

    // The first file that holds a value or has one in its name; empty: none. Known after end().
    const std::string& found_in() const { return found_in_; }

private:
    struct Part {
        std::string name, text;  // of a file
    };
    // The name of the first of these files that holds a value.
    std::string found_in(const std::vector<Part>& parts) const;
    bool has_value(std::string_view text) const;
    void look_at_pending();
    void wait();

    const SpellingSearch& search_;
    std::string found_in_;
    std::optional<JsonNumbers> json_;
    std::vector<Part> pending_;
    std::size_t pending_bytes_ = 0;
    std::vector<Part> looked_at_;     // by the other thread
    std::future<std::string> found_;  // in them
};

}  // namespace qvhost::redact
