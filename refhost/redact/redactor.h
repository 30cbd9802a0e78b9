// Replaces values in texts. A replacement has the length of what it replaces, so a text keeps its lines and columns.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "redact/classes.h"
#include "redact/normal.h"
#include "redact/search.h"
#include "redact/spellings.h"
#include "redact/substitutes.h"
#include "redact/values.h"

namespace qvhost::redact {

// Finds values in all their spellings.
class SpellingSearch {
public:
    void add(const Value& value, const std::string& replacement,
             const std::set<std::string>& spelled);

    struct Match {
        const Spelling* spelling;
        std::size_t at;                   // in the text
        std::vector<std::size_t> places;  // of each of its characters
    };
    template <class Take>
    void each(std::string_view text, Take take) const {
        each_joined(text, take);
        each_hex(text, take);
    }

private:
    static constexpr std::size_t kHexBeginning = 8;
    static constexpr std::size_t kShort = 256;  // characters
    using TakeMatch = std::function<void(const Match&)>;
    bool is_short_without_joined(std::string_view text) const;
    void each_joined(std::string_view text, const TakeMatch& take) const;
    void each_hex(std::string_view text, const TakeMatch& take) const;

    std::vector<Spelling> spellings_;
    Search joined_{kShortestSearched}, hex_{kHexBeginning};
};

// For what a text is read: `spellings_alone` is enough where Values::told_by_fields() counted nothing.
enum class Look { fields_too, spellings_alone };

class Redactor {
public:
    // Those of the values that are of these classes. `substitutes` has all of them.
    Redactor(ClassSet classes, const Values& values, const Substitutes& substitutes);

    // Whole lines; places that a replacement over several lines takes are told.
    struct Lines {
        std::size_t begin, end;
    };
    std::string text(std::string_view text, Look look = Look::fields_too,
                     std::vector<Lines>* over_lines = nullptr) const;

    // What stands in a field of that name; declared to be of that class.
    std::string field(std::string_view label, std::string_view value,
                      Look look = Look::fields_too) const;
    std::string declared(std::string_view label, std::string_view value, Class which,
                         Look look = Look::fields_too) const;

    const SpellingSearch& search() const { return search_; }

private:
    // Writes the replacements of what stands in the text over the same places of `made`.
    void replace_found(std::string_view text, std::string& made,
                       std::vector<Lines>* over_lines) const;
    void overwrite(std::string& made, std::string_view text, std::size_t at, std::size_t size,
                   Form form, bool in_own_field) const;

    ClassSet classes_;
    const Values& values_;
    const Substitutes& substitutes_;
    SpellingSearch search_;
};

// A field as a capture has it: its name says what the value is, and what it is not.
std::string labelled(std::string_view label, std::string_view value);

// The form of what a field of this class holds.
Form form_in_field(Class which, std::string_view value);

}  // namespace qvhost::redact
