// `qvhost record`: a recorded server of a report.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Makes the recorded server and says what it does not hold. Throws if it could not be made.
void record(const RecordOptions& options);

}  // namespace qvhost
