#include "bundle/archive_writer.h"

#include <archive.h>
#include <archive_entry.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace qvhost::bundle {

struct ArchiveWriter::Impl {
    Impl(std::ostream& to, std::time_t at) : out(to), time(at) {}
    ~Impl() {
        archive_entry_free(entry);
        // What is not closed is not to be finished: nobody keeps it.
        archive_write_fail(archive);
        archive_write_free(archive);
    }

    void check(int result) const {
        if (result == ARCHIVE_OK) return;
        const char* said = archive_error_string(archive);
        throw ArchiveError(said ? said : "it cannot be written");
    }

    std::ostream& out;
    std::time_t time;
    ::archive* archive = archive_write_new();
    ::archive_entry* entry = archive_entry_new();
};

namespace {

la_ssize_t write_to(::archive* archive, void* data, const void* bytes, size_t size) {
    auto& out = *static_cast<std::ostream*>(data);
    errno = 0;
    if (out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size)))
        return static_cast<la_ssize_t>(size);
    archive_set_error(archive, errno, "%s", errno != 0 ? std::strerror(errno) : "output fails");
    return -1;
}

}  // namespace

ArchiveWriter::ArchiveWriter(std::ostream& out, Format format, std::time_t time)
    : impl_(std::make_unique<Impl>(out, time)) {
    auto* const archive = impl_->archive;
    if (!archive || !impl_->entry) throw std::bad_alloc();
    if (format == Format::zip) {
        impl_->check(archive_write_set_format_zip(archive));
    } else {
        impl_->check(archive_write_set_format_pax_restricted(archive));
        impl_->check(archive_write_add_filter_zstd(archive));
        // So many on every machine: with threads, however many, zstd makes other bytes than without. A libarchive
        // before 3.6 knows no threads.
        archive_write_set_filter_option(archive, "zstd", "threads", "2");
    }
    // The last block is as long as it has to be.
    impl_->check(archive_write_set_bytes_in_last_block(archive, 1));
    impl_->check(archive_write_open(archive, &impl_->out, nullptr, write_to, nullptr));
}

ArchiveWriter::~ArchiveWriter() = default;

void ArchiveWriter::begin(const std::string& name, std::uint64_t bytes) {
    auto* const entry = impl_->entry;
    archive_entry_clear(entry);
    archive_entry_set_pathname(entry, name.c_str());
    archive_entry_set_filetype(entry, AE_IFREG);
    archive_entry_set_perm(entry, 0600);
    archive_entry_set_size(entry, static_cast<la_int64_t>(bytes));
    archive_entry_set_mtime(entry, impl_->time, 0);
    impl_->check(archive_write_header(impl_->archive, entry));
}

void ArchiveWriter::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = archive_write_data(impl_->archive, bytes.data(), bytes.size());
        if (written < 0) impl_->check(static_cast<int>(written));
        if (written == 0) throw ArchiveError("a file is longer than it was");
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void ArchiveWriter::close() { impl_->check(archive_write_close(impl_->archive)); }

}  // namespace qvhost::bundle
