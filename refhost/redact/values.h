// The values of a report that are to be replaced, each once, however often and however it is written.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

#include "redact/classes.h"
#include "redact/forms.h"

namespace qvhost::redact {

// Where a value stands in a text, and what it is.
struct Found {
    std::size_t at = 0, size = 0;
    Class which = Class::serials;
    Form form = Form::text;
    // It is what a label says of itself ("Serial Number: X"), not what looks like one.
    bool in_own_field = false;
};

struct Value {
    Form form = Form::text;
    std::string canonical;
    bool operator==(const Value&) const = default;
    bool operator<(const Value& other) const {
        return std::tie(form, canonical) < std::tie(other.form, other.canonical);
    }
};

struct ValueUse {
    ClassSet classes;
    std::size_t times = 0;
    bool is_searched =
        false;  // everywhere, in all spellings; else it is replaced in its own fields
    std::set<std::string> spelled;  // as it was seen, a few
};

class Values {
public:
    explicit Values(std::set<std::string> words = {}) : words_(std::move(words)) {}

    // Returns what it is; nothing: it is no value of that form, or too common to be anybody's.
    std::optional<Value> add(std::string_view text, Class which, Form form, bool in_own_field);
    // Without adding it.
    std::optional<Value> value_of(std::string_view text, Form form, bool in_own_field) const;

    // Those of another part of the report, too.
    void add(const Values& others);

    const std::map<Value, ValueUse>& all() const { return values_; }
    // How many of the additions were of values that the search for spellings does not find: common ones and short
    // ones, what is spelled in too many ways, and what touches a letter or a digit. Where such a value stands its field has to be read again.
    std::size_t told_by_fields() const { return told_by_fields_; }
    void note_told_by_field() { ++told_by_fields_; }

private:
    bool is_common(const Value& value) const;
    void add_parts(std::string_view host, Class which, bool in_own_field);

    std::set<std::string> words_;  // of reports themselves: names of tables and columns
    std::map<Value, ValueUse> values_;
    std::size_t told_by_fields_ = 0;
};

// Texts below this length are replaced in their own fields alone.
inline constexpr std::size_t kShortestSearched = 5;

}  // namespace qvhost::redact
