// Which of the operating system's captures is read by which reader.
#pragma once

#include <span>

#include "inventory/capture_reader.h"

namespace qvhost::inventory {

std::span<const CaptureReader> system_captures();

}  // namespace qvhost::inventory
