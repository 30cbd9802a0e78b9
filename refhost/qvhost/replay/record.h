// `qvhost record`: a recorded server of a report, or of this machine.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Makes the recorded server and says what it does not hold. Without a report this machine is collected, `collecting`
// says how, and what is made is replayed: the exit status is 3 if that gives something else. Throws if it could not be
// made.
int record(const RecordOptions& options, const CollectOptions& collecting);

}  // namespace qvhost
