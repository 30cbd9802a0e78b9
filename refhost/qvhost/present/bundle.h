// `bundle`, `verify`, and `open` of a bundle: a report as one file, to hand on.
#pragma once

#include <filesystem>
#include <string>

#include "qvhost/base/options.h"

namespace qvhost {

// Why these options do not go together; empty: they do.
std::string bundle_misuse(const BundleOptions& options);

// Writes the bundle and says on standard output what is in it, and what is not.
void make_bundle(const BundleOptions& options);

// Reads a whole bundle and says what it holds. Throws std::runtime_error if it is not as its manifest says.
void verify_file(const std::filesystem::path& bundle);

// Makes a log directory of a bundle, with a page of its own, and prints its path. Nothing of it stays if the bundle
// is not as its manifest says.
void open_bundle(const OpenOptions& options);

}  // namespace qvhost
