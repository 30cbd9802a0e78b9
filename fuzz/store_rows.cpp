// A sound SQLite file whose rows are not those of a store: rows of any values are put into a small
// store's tables, which is then shown.
#include <nlohmann/json.hpp>

#include "check.h"
#include "odd_rows.h"
#include "outcome.h"
#include "qvhost/present/show.h"
#include "report/report_json.h"
#include "scratch.h"
#include "sound_store.h"
#include "store/store.h"

using namespace qvhost;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    static const std::string sound = fuzz::sound_store(scratch / "sound.sqlite");
    const std::string path = scratch / "report.sqlite";
    fuzz::write_file(path, sound);
    fuzz::Pieces input(fuzz::text_of(data, size));
    fuzz::put_rows(path, input);

    const fuzz::Printed shown;
    const auto failure = fuzz::told([&] { show_report({path, {}, false}); });
    fuzz::expect_harmless(shown.text());
    fuzz::expect(failure.empty() || failure.starts_with(path), "a failure names the file");
    std::ostringstream json;
    const auto json_failure =
        fuzz::told([&] { write_report_json(Store(path, Store::Mode::read), json); });
    fuzz::expect(!json_failure.empty() || nlohmann::json::accept(json.str()), "it is JSON");
    return 0;
}
