// A bundle as somebody may send it: it is checked and unpacked, or refused by name, and nothing of it lands elsewhere.
//     input: a whole file; a tar needs no packing
#include <filesystem>

#include "bundle/read_bundle.h"
#include "check.h"
#include "outcome.h"
#include "scratch.h"

namespace {

namespace fs = std::filesystem;

// How many there are of each: what lies beside the directory that is unpacked into stays as it is.
std::size_t entries_in(const fs::path& directory) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const auto file = scratch / "bundle";
    const auto place = scratch / "place";
    fuzz::write_file(file, fuzz::text_of(data, size));
    qvhost::bundle::Limits limits;
    limits.bytes = limits.free_bytes = 1 << 20;
    limits.files = 100;

    qvhost::bundle::Bundle found;
    const auto failure = fuzz::told([&] { found = qvhost::bundle::verify_bundle(file, limits); });
    fuzz::expect(failure.empty() || failure.starts_with(file.string()), "a failure names the file");

    fs::create_directory(place);
    const auto unpacking = fuzz::told([&] { qvhost::bundle::unpack_bundle(file, place, limits); });
    fuzz::expect(unpacking.empty() == failure.empty(), "what is checked can be unpacked");
    fuzz::expect(entries_in(scratch.path()) == 2, "nothing lands beside the directory");
    for (const auto& entry : fs::recursive_directory_iterator(place))
        fuzz::expect(
            entry.is_directory() || entry.symlink_status().type() == fs::file_type::regular,
            "there are files and directories alone");
    if (failure.empty()) {
        for (const auto& one : found.manifest.files)
            fuzz::expect(fs::file_size(place / one.name) == one.bytes, "each file is as it says");
    }
    fs::remove_all(place);
    return 0;
}
