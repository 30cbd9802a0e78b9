// A report with its values replaced, ready to be bundled.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "bundle/contents.h"
#include "bundle/manifest.h"
#include "bundle/write_bundle.h"
#include "qvhost/base/options.h"
#include "redact/redactor.h"
#include "redact/store_values.h"
#include "store/store.h"

namespace qvhost {

class Redaction {
public:
    // Reads all of the report. `order` says which of its files; what cannot be redacted moves to those that are left
    // out. Throws std::runtime_error or std::system_error naming what cannot be read.
    Redaction(const Store& store, bundle::Order order, const BundleOptions& options);

    // What would be replaced, by class, with how often and a few examples.
    void review(std::ostream& out) const;

    // Writes the bundle, and the map if there is one. Nothing stays of either if a value is left in the bundle, or
    // something else goes wrong.
    bundle::Manifest write_bundle(const std::string& program) const;

private:
    void gather_from_files(const std::vector<bundle::Source>& sources);
    void make_report(const std::filesystem::path& directory,
                     const redact::Redactor& redactor) const;
    void redact_files(const std::filesystem::path& directory,
                      const redact::Redactor& redactor) const;
    void read_back(const std::filesystem::path& bundle, const std::filesystem::path& store,
                   const redact::Redactor& redactor) const;

    const Store& store_;
    bundle::Order order_;
    std::filesystem::path map_;
    redact::ClassSet classes_;
    struct File {
        std::string name;
        redact::Look look;
    };
    std::vector<File> files_;  // that are redacted one by one
    redact::TablesWithFields tables_;
    redact::Values values_;
    redact::Substitutes substitutes_;
};

// Why these options do not go together; empty: they do.
std::string redaction_misuse(const BundleOptions& options);

}  // namespace qvhost
