// A store file as somebody may send it: it is shown, or refused by name, and not written.
//     input: a whole file, or the bytes that differ from a sound one: place (four bytes) and value
#include <nlohmann/json.hpp>

#include "check.h"
#include "outcome.h"
#include "qvhost/present/show.h"
#include "report/report_json.h"
#include "scratch.h"
#include "sound_store.h"

namespace {

std::string damaged(std::string store, std::string_view places) {
    for (fuzz::Pieces input(places); !input.at_end();) {
        const auto place = input.number();
        store[place % store.size()] = static_cast<char>(input.byte());
    }
    return store;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    static const std::string sound = fuzz::sound_store(scratch / "sound.sqlite");
    std::string bytes(fuzz::text_of(data, size));
    if (!bytes.starts_with("SQLite format 3")) bytes = damaged(sound, bytes);
    const std::string path = scratch / "report.sqlite";
    fuzz::write_file(path, bytes);

    const fuzz::Printed shown;
    const auto failure = fuzz::told([&] { qvhost::show_report({path, {}, false}); });
    fuzz::expect_harmless(shown.text());
    fuzz::expect(failure.empty() || failure.starts_with(path), "a failure names the file");

    std::ostringstream json;
    const auto json_failure = fuzz::told(
        [&] { write_report_json(qvhost::Store(path, qvhost::Store::Mode::read), json); });
    fuzz::expect(!json_failure.empty() || nlohmann::json::accept(json.str()), "it is JSON");

    fuzz::expect(fuzz::content(path) == bytes, "showing a store writes nothing");
    return 0;
}
