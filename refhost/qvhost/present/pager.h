// Long output on a terminal, as git shows it.
#pragma once

#include <functional>
#include <iosfwd>

namespace qvhost {

// Prints to standard output; if that is a terminal and `wanted`, through $PAGER (less if it is not
// set, nothing if it is empty or cat). A pager that is quit early ends the printing, without an
// error; where the pager cannot be run, `print` is called again without it.
void print_paged(bool wanted, const std::function<void(std::ostream&)>& print);

}  // namespace qvhost
