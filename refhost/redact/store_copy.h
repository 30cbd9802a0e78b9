// A new store of redacted records: of the old file nothing is taken but what it tells.
#pragma once

#include <filesystem>

#include "redact/redactor.h"
#include "store/store.h"

namespace qvhost::redact {

// The file must be new. Throws std::runtime_error naming it.
void copy_redacted(const Store& from, const std::filesystem::path& file, const Redactor& redactor);

// A command as the redacted store has it.
CommandInfo redacted(const CommandInfo& command, const Redactor& redactor);

// File names joined by '/', as the store keeps them.
std::string redacted_names(const std::string& names, const Redactor& redactor);

}  // namespace qvhost::redact
