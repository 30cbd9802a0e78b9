// A throw-away directory from which a collection runs: the plug-in looks for its tools beside the running
// program, so a copy of the program runs beside scripts that stand in for tools.
#pragma once

#include <filesystem>
#include <string>

#include "files/descriptor.h"

namespace qvhost {

// Where stand-ins leave notes for each other, beside a program that was copied into such a directory.
inline std::filesystem::path notes_of(const std::filesystem::path& program) {
    return program.parent_path().parent_path() / "notes";
}

// Mode 0700; removed with the object. What earlier ones have left in the same place is removed before.
class ProgramPlace {
public:
    // Made in the first of $TMPDIR or /tmp, `also_in` and /var/tmp where programs may run and where no
    // other user can replace it. Throws std::runtime_error that says why none of them fits.
    explicit ProgramPlace(const std::string& name, const std::filesystem::path& also_in = {});
    ~ProgramPlace();
    ProgramPlace(const ProgramPlace&) = delete;
    ProgramPlace& operator=(const ProgramPlace&) = delete;

    std::filesystem::path program() const { return path_ / "bin" / "qvhost"; }
    std::filesystem::path vendor_tools() const { return path_ / "bin" / "qv_tools"; }
    std::filesystem::path search_path() const { return path_ / "path"; }  // for its head
    // For the head of the search path of what is recorded.
    std::filesystem::path recorders() const { return path_ / "record"; }
    std::filesystem::path notes() const { return notes_of(program()); }

private:
    std::filesystem::path path_;
    Descriptor held_;  // while somebody uses the directory
};

}  // namespace qvhost
