// `qvhost open`: the page of a report, made here.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Makes the page from the report's store, with the captures of its log directory, in a directory of the
// user's own. Prints where it is, and shows it in the browser that $BROWSER names. Throws std::runtime_error
// if it cannot be made.
void open_page(const OpenOptions& options);

}  // namespace qvhost
