// What a report's store knows of values: the fields of the inventory, each of which is declared with its class, and
// what stands in records, commands and facts.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "redact/values.h"
#include "store/store.h"

namespace qvhost::redact {

// The class of a field of the inventory, by its table and column.
std::optional<Class> class_of_field(const std::string& table, const std::string& column);

// Words that every report has: names of tables and columns. No value is looked for by such a name.
std::set<std::string> words_of_reports(const Store& store);

// The tables in which values stand that their fields alone tell (Values::told_by_fields).
using TablesWithFields = std::set<std::string>;

TablesWithFields gather_from_store(const Store& store, Values& values);

}  // namespace qvhost::redact
