// Any SQL on a report, in each format: it is answered or refused, and the report stays as it is.
//     input: format, then the statement
#include <filesystem>
#include <iterator>

#include "check.h"
#include "outcome.h"
#include "qvhost/present/query.h"
#include "scratch.h"
#include "sound_store.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const char* const kFormats[] = {"table", "csv", "json"};
    static const fuzz::Scratch scratch;
    static const std::string path = scratch / "report.sqlite";
    static const std::string sound = fuzz::sound_store(path);
    fuzz::Pieces input(fuzz::text_of(data, size));
    const auto kind = input.byte();
    const std::string sql(input.rest());
    // Endless by the user's own wish.
    for (const char* endless : {"RECURSIVE", "recursive"}) {
        if (sql.find(endless) != std::string::npos) return 0;
    }

    const fuzz::Printed shown;
    fuzz::told([&] { qvhost::query_report({path, sql, kFormats[kind % 3], false}); });
    if (kind % 3 == 0) fuzz::expect_harmless(shown.text());
    fuzz::expect(fuzz::content(path) == sound, "asking changes nothing");
    fuzz::expect(std::distance(std::filesystem::directory_iterator(scratch.path()),
                               std::filesystem::directory_iterator()) == 1,
                 "asking leaves no file");
    return 0;
}
