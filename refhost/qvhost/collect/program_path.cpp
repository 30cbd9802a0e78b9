#include "qvhost/collect/program_path.h"

#include <stdexcept>
#include <string>

namespace qvhost {

void expect_path_fits_plugin(const std::filesystem::path& program) {
    constexpr std::size_t kMost = 255;
    const auto path = std::filesystem::canonical(program).native();  // as /proc/self/exe has it
    if (path.size() <= kMost) return;
    throw std::runtime_error("the path of the collecting program has " +
                             std::to_string(path.size()) + " bytes, and the plug-in takes " +
                             std::to_string(kMost) + ": use a directory with a shorter name than " +
                             path);
}

}  // namespace qvhost
