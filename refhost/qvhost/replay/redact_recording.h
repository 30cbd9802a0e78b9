// A recorded server without its secrets: values replaced as a redacted bundle has them.
#pragma once

#include <filesystem>
#include <string>

#include "redact/classes.h"
#include "redact/substitutes.h"
#include "store/store.h"

namespace qvhost {

// Copies the recorded server in `from` into `to`, an empty directory, with values of these classes replaced by others
// of the same form and length, the same ones everywhere. `store` is of the report that it was made of. Files that are
// no text are left out. `substitutes` get one for each value that has none. Throws std::runtime_error if a value is left.
void redact_recording(const Store& store, const std::filesystem::path& from,
                      const std::filesystem::path& to, redact::ClassSet classes,
                      redact::Substitutes& substitutes);

}  // namespace qvhost
