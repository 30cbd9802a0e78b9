// A store file of any bytes, as somebody may send it: it is shown, or refused by name, and not written.
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "check.h"
#include "outcome.h"
#include "qvhost/tables_report.h"
#include "report/report_json.h"
#include "scratch.h"
#include "store/store.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const auto bytes = fuzz::text_of(data, size);
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

    std::ifstream file(path, std::ios::binary);
    fuzz::expect(std::string(std::istreambuf_iterator<char>(file), {}) == bytes,
                 "showing a store writes nothing");
    return 0;
}
