// An archive, written so that the same files give the same bytes: no owners, one time, private modes.
#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qvhost::bundle {

// The archive cannot be written; its name is not said.
struct ArchiveError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class Format { tar_zst, zip };

class ArchiveWriter {
public:
    // Every file gets this time. Times of a zip are also those of the time zone, which should be UTC.
    ArchiveWriter(std::ostream& out, Format format, std::time_t time);
    ~ArchiveWriter();

    // A file of so many bytes, which follow by write(). All of these throw ArchiveError.
    void begin(const std::string& name, std::uint64_t bytes);
    void write(std::string_view bytes);
    void close();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace qvhost::bundle
