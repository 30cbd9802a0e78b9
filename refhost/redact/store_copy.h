// A new store of redacted records: of the old file nothing is taken but what it tells.
#pragma once

#include <filesystem>

#include "redact/redactor.h"
#include "redact/store_values.h"
#include "store/store.h"

namespace qvhost::redact {

// The file must be new. Fields are read in these tables, in others spellings are replaced alone. Throws
// std::runtime_error naming the file.
void copy_redacted(const Store& from, const std::filesystem::path& file, const Redactor& redactor,
                   const TablesWithFields& tables);

// A command as the redacted store has it.
CommandInfo redacted(const CommandInfo& command, const Redactor& redactor);

// File names joined by '/', as the store keeps them.
std::string redacted_names(const std::string& names, const Redactor& redactor);

}  // namespace qvhost::redact
