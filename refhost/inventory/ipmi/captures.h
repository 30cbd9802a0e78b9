// Which of a BMC's captures is read by which reader.
#pragma once

#include <span>

#include "inventory/capture_reader.h"

namespace qvhost::inventory {

std::span<const CaptureReader> ipmi_captures();

}  // namespace qvhost::inventory
