// `check`: the verdict of a report, as monitoring plug-ins say it.
#pragma once

#include <string>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

// Exit statuses of monitoring plug-ins.
inline constexpr int kMonitoringOk = 0;
inline constexpr int kMonitoringWarning = 1;
inline constexpr int kMonitoringCritical = 2;
inline constexpr int kMonitoringUnknown = 3;

// Prints the verdict on standard output and returns the exit status. A report that cannot be read is
// UNKNOWN, with the reason in the first line.
int check_report(const CheckOptions& options);

// Tells why there is no verdict. Returns the exit status.
int tell_unknown(const std::string& reason);

// Tells that the command line was wrong, as a monitoring plug-in does. Returns the exit status.
int tell_usage_error(const std::string& what);

// What the options of `check` take, the default first.
std::vector<std::string> check_formats();
std::vector<std::string> check_unknown_words();
std::vector<std::string> check_perfdata();
std::vector<std::string> subsystem_words();

}  // namespace qvhost
