// Hides the numbers of JSON that the program itself writes: lines, counts and indexes are nobody's, whatever value they
// spell. Texts, which may hold a value, stay.
#pragma once

#include <string>
#include <string_view>

namespace qvhost::redact {

class JsonNumbers {
public:
    // `script`: the JSON stands in a script, between single quotes, with `\\` and `\'` for `\` and `'`.
    enum class Written { json, script };
    explicit JsonNumbers(Written written) : is_script_(written == Written::script) {}

    // Adds the next part to the text, with another character for each digit of a number.
    void append(std::string_view part, std::string& text);

private:
    void read(char c);

    bool is_script_;
    bool is_escaped_in_script_ = false;
    bool is_in_text_ = false;
    bool is_escaped_ = false;
};

}  // namespace qvhost::redact
