// Names in SQL for ids that may be any text.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace qvhost::store {

// The name as SQL takes it, between double quotes.
std::string identifier(std::string_view name);

// Names that differ, as SQLite compares them: without regard to the case of ASCII letters.
class NameSet {
public:
    // The id itself where it can be a name and is free, else a name made from it.
    std::string claim(std::string_view id);

private:
    std::set<std::string> taken_;
};

}  // namespace qvhost::store
