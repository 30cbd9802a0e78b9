#include "files/read_beginning.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "files/descriptor.h"

namespace qvhost {

std::string read_beginning(const std::filesystem::path& path, std::size_t most_bytes) {
    // Do not follow a link out of the directory. Do not wait at a pipe that nobody writes to.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat info {};
    if (!file || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return "";
    return read_bytes(file.get(), std::min(most_bytes, static_cast<std::size_t>(info.st_size)));
}

}  // namespace qvhost
