// Which server this is, and whether its BMC can be reached.
#pragma once

#include "export.h"

namespace marlox::repository {

// What check_bmc() returns.
inline constexpr int kNoBmc = 4;           // no BMC
inline constexpr int kFullBmc = 5;         // all BMC data, LEDs included
inline constexpr int kBmcWithoutLeds = 7;  // all but the LEDs
inline constexpr int kReducedBmc = 9;      // neither versions, power supplies, LEDs nor SDR
inline constexpr int kReducedBmcIvb = 11;  // the same, older servers
inline constexpr int kUnreadableProduct = 255;

// The server's BMC kind, told from its product name: one of the values above.
QV_EXPORT int check_bmc();

// Whether the kernel's IPMI device interface is loaded: 1 yes, 0 no, -1 unknown.
QV_EXPORT int check_ipmi_devintf();

}  // namespace marlox::repository
