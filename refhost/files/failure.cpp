#include "files/failure.h"

#include <filesystem>
#include <new>

namespace qvhost {

std::string words_of(const std::exception& failure) {
    if (const auto* error = dynamic_cast<const std::filesystem::filesystem_error*>(&failure)) {
        auto path = error->path1().string();
        if (path.empty()) return error->code().message();
        if (!error->path2().empty()) path += " -> " + error->path2().string();
        return path + ": " + error->code().message();
    }
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return "there is not enough memory";
    return failure.what();
}

}  // namespace qvhost
