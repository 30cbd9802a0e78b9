// A store's file as it is read: SQLite writes nothing to it or beside it, whoever made it.
//
// SQLite by itself rolls back a journal that lies beside a file, and removes a file that the journal names.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "files/temporary_directory.h"

namespace qvhost::store {

class ReadableFile {
public:
    // A file with a write-ahead log beside it is copied with its log into a temporary directory. Throws
    // std::runtime_error naming the file if it is no regular file, or has a rollback journal beside it.
    explicit ReadableFile(const std::string& path);

    // What SQLite opens, with SQLITE_OPEN_URI, as long as this object lives.
    const std::string& uri() const { return uri_; }
    std::uint64_t bytes() const { return bytes_; }

private:
    std::unique_ptr<TemporaryDirectory> copy_;
    std::string uri_;
    std::uint64_t bytes_ = 0;
};

}  // namespace qvhost::store
