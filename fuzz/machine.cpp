// machine.json of a recorded server, and the stand-in tools that are made from it. Beside it there is
// one capture, "capture.txt".
#include "qvhost/replay/machine.h"

#include "check.h"
#include "outcome.h"
#include "qvhost/replay/stand_ins.h"
#include "scratch.h"

namespace fs = std::filesystem;

namespace {

// The recorded server, and one level below the directory that a replay throws away.
struct Place {
    Place() {
        fs::create_directory(server());
        fuzz::write_file(server() / "capture.txt", "text\n");
    }
    fs::path server() const { return scratch / "server"; }
    fs::path tools() const { return scratch / "away" / "tools"; }
    fs::path search_path() const { return scratch / "away" / "path"; }
    fuzz::Scratch scratch;
};

std::size_t entries_in(const fs::path& directory) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

void expect_inside(const fs::path& file, const fs::path& directory) {
    if (file.empty()) return;
    fuzz::expect(fs::canonical(file).parent_path() == fs::canonical(directory),
                 "a capture lies beside machine.json");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Place place;
    fuzz::write_file(place.server() / "machine.json", fuzz::text_of(data, size));
    fs::remove_all(place.scratch / "away");
    fs::create_directories(place.tools());
    fs::create_directories(place.search_path());

    const auto failure = fuzz::told([&] {
        const auto machine = qvhost::read_machine(place.server());
        for (const auto& command : machine.commands) {
            auto texts = command.tool + command.arguments.value_or("") + command.stderr_text;
            for (const auto& [name, source] : command.files) texts += name;
            fuzz::expect(texts.find('\0') == std::string::npos, "no NUL comes into a script");
            expect_inside(command.stdout_file, place.server());
            expect_inside(command.stderr_file, place.server());
            for (const auto& [name, source] : command.files) expect_inside(source, place.server());
        }
        qvhost::write_stand_ins(machine, place.tools(), place.search_path(), "/log/", {});
    });
    fuzz::expect(failure.empty() || failure.find(place.scratch.path()) != std::string::npos,
                 "a failure names the file");
    fuzz::expect(entries_in(place.scratch.path()) == 2 && entries_in(place.server()) == 2 &&
                     entries_in(place.scratch / "away") == 2,
                 "stand-ins are written nowhere else");
    return 0;
}
