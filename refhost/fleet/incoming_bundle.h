// A bundle that arrives at a fleet: read and checked, its rows ready to be compared and stored.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bundle/manifest.h"
#include "files/scratch_files.h"
#include "fleet/database.h"
#include "store/store.h"

namespace qvhost::fleet {

// Which host it is: never by its name.
struct HostIdentity {
    std::string machine_id;  // empty: not known
    std::string serial;
    std::int64_t host = 0;  // made of both, and the same everywhere
};

// Throws std::runtime_error if neither is known.
HostIdentity identity_of(const std::string& machine_id, const std::string& serial);

class IncomingBundle {
public:
    // Its store is one of `files` as long as the object lives. Throws std::runtime_error naming the bundle if it is
    // broken, holds no report, or does not tell whose or when.
    IncomingBundle(const std::filesystem::path& bundle, ScratchFiles& files);

    const std::filesystem::path& bundle() const { return bundle_; }
    const HostIdentity& identity() const { return identity_; }
    const std::string& name() const { return name_; }  // of the host, for people; may be empty
    std::int64_t run() const { return run_; }        // when it started, in milliseconds since 1970
    std::uintmax_t bytes() const { return bytes_; }  // of its store
    const std::string& manifest() const { return manifest_sha256_; }

    // The row of the table `runs`.
    Row run_row() const;

    // Digests of the rows of a history, in the rows' order. Rows of one digest are the same row; none is there twice.
    const std::vector<std::int64_t>& digests(std::size_t history) const {
        return digests_[history];
    }

    // Hands on each row, in the order of its digests: the columns that a report has.
    void each_row(std::size_t history, const TakeRow& take) const;

private:
    void read_digests();

    std::filesystem::path bundle_;
    ScratchFile file_;
    std::unique_ptr<Store> store_;
    std::vector<bundle::BundledFile> captures_;
    std::string manifest_sha256_;
    std::uintmax_t bytes_ = 0;
    HostIdentity identity_;
    std::string name_;
    std::int64_t run_ = 0;
    std::vector<std::vector<std::int64_t>> digests_;
};

}  // namespace qvhost::fleet
