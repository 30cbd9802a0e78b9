// Files as they are read for a redaction: piece by piece, and only if they are text.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "redact/find.h"
#include "redact/redactor.h"
#include "redact/values.h"

namespace qvhost::redact {

// Why a file cannot be redacted: it is an archive, or no text. Empty: it can.
std::string why_not_redacted(const std::filesystem::path& file);

// Adds what is found in the file.
void gather_from_file(const std::filesystem::path& file, Values& values);

// Adds what was found in a text.
void gather_found(std::string_view text, const Found& found, Values& values);

// Finds and adds what is in a text.
void gather_from_text(std::string_view text, Values& values);

// Writes the redacted file, which must be new. All of these throw std::system_error naming a file.
void redact_file(const std::filesystem::path& from, const std::filesystem::path& to,
                 const Redactor& redactor, Look look);

}  // namespace qvhost::redact
