// `diff`: what changed between two reports.
#pragma once

#include <string>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

// Prints it on standard output and returns the exit status: 0 nothing changed, 1 something did. Throws if it
// cannot be told; the exit status is then kDiffTrouble.
inline constexpr int kDiffTrouble = 2;
int diff_reports(const DiffOptions& options);

std::vector<std::string> diff_formats();

}  // namespace qvhost
