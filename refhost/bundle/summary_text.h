// SUMMARY.txt of a bundle: what one pastes into a mail to a vendor or a colleague.
#pragma once

#include <string>
#include <vector>

#include "bundle/manifest.h"
#include "store/store.h"

namespace qvhost::bundle {

inline constexpr const char* kSummaryName = "SUMMARY.txt";

// Who and what, health and findings, serial and part numbers, firmware, and what is missing.
std::string summary_text(const Store& store, const std::vector<LeftOut>& left_out);

}  // namespace qvhost::bundle
