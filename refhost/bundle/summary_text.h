// SUMMARY.txt of a bundle: what one pastes into a mail to a vendor or a colleague.
#pragma once

#include <string>
#include <vector>

#include "bundle/manifest.h"
#include "store/store.h"

namespace qvhost::bundle {

inline constexpr const char* kSummaryName = "SUMMARY.txt";

// Who and what, health and findings, serial and part numbers, firmware, and what is missing. Of the manifest it takes
// what was left out and redacted.
std::string summary_text(const Store& store, const Manifest& manifest);

}  // namespace qvhost::bundle
