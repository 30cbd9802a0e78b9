#include "read/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "runner/command_log.h"
#include "runner/written_files.h"

namespace marlox::repository::capture {

// A missing file is not logged: a tool that is not installed leaves none.
int open_for_reading(const std::string& path) {
    if (runner::is_stale(path))
        return -1;  // the command that should have written it was not started
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 && errno != ENOENT) runner::log_unread(path, errno);
    return fd;
}

// After a read error the text ends; what was read before is kept.
std::size_t read_some(int fd, char* to, std::size_t size) {
    for (;;) {
        const ssize_t n = ::read(fd, to, size);
        if (n >= 0) return static_cast<std::size_t>(n);
        if (errno == EINTR) continue;
        runner::log_unread(fd, errno);
        return 0;
    }
}

}  // namespace marlox::repository::capture
