// The second look at a store: in its file neighbouring cells follow each other without anything between them, so that
// two of them may spell a value that neither holds.
#pragma once

#include <filesystem>

#include "redact/redactor.h"

namespace qvhost::redact {

// Whether a text of any table, the schema among them, holds a value, or the file has pages that no table uses. Throws
// SQLite::Exception.
bool has_value_in_cells(const std::filesystem::path& store, const SpellingSearch& search);

}  // namespace qvhost::redact
