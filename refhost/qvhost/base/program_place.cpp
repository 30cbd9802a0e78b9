#include "qvhost/base/program_place.h"

#include <sys/statvfs.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "files/leftovers.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/trust.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

bool programs_may_run(const fs::path& directory) {
    struct statvfs info {};
    return ::statvfs(directory.c_str(), &info) != 0 || (info.f_flag & ST_NOEXEC) == 0;
}

// A new directory in it, or nothing; `why` then gets the reason.
fs::path made_in(const fs::path& directory, const std::string& name, std::string& why) {
    if (!programs_may_run(directory)) {
        why = directory.string() + ": programs may not run there (noexec)";
        return {};
    }
    std::string pattern = fs::absolute(directory) / ("qvhost-" + name + "-XXXXXX");
    if (!::mkdtemp(pattern.data())) {
        why = pattern + ": " + std::strerror(errno);
        return {};
    }
    why = judge_private(pattern).refusal;
    if (why.empty()) return pattern;
    why = pattern + ": " + why;
    std::error_code ignored;
    fs::remove(pattern, ignored);
    return {};
}

// The program under another name: a second link costs nothing, where the file system has one.
void copy_program(const fs::path& to) {
    std::error_code error;
    fs::create_hard_link(program_file(), to, error);
    if (error) fs::copy_file(program_file(), to);
}

}  // namespace

ProgramPlace::ProgramPlace(const std::string& name, const fs::path& also_in) {
    std::error_code error;
    auto temporary = fs::temp_directory_path(error);
    if (error) temporary = "/tmp";
    std::string reasons;
    for (const auto& directory : std::vector<fs::path>{temporary, also_in, "/var/tmp"}) {
        if (directory.empty()) continue;
        std::string why;
        path_ = made_in(directory, name, why);
        if (!path_.empty()) {
            held_ = hold_directory(path_);
            remove_leftovers(directory);
            break;
        }
        reasons += (reasons.empty() ? "" : "; ") + why;
    }
    if (path_.empty()) throw std::runtime_error("no place to run from: " + reasons);
    try {
        fs::create_directories(vendor_tools());
        fs::create_directory(search_path());
        fs::create_directory(notes());
        fs::create_directory(recorders());
        copy_program(program());
        fs::create_directory_symlink(program_file().parent_path().parent_path() / "lib",
                                     path_ / "lib");
    } catch (...) {
        fs::remove_all(path_, error);
        throw;
    }
}

ProgramPlace::~ProgramPlace() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

}  // namespace qvhost
