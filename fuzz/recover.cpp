// A collection that was broken off: whatever stands in its journal, all of its records come into the
// store, in order, and the report can be shown.
#include "qvhost/complete/recover.h"

#include <nlohmann/json.hpp>

#include "check.h"
#include "journal/journal.h"
#include "outcome.h"
#include "qvhost/present/report.h"
#include "report/report_json.h"
#include "scratch.h"
#include "store/store.h"

using namespace qvhost;

namespace {

// Texts come from a small stock as well, so that names meet.
std::string text(fuzz::Pieces& input) {
    static const char* const kStock[] = {"T", "t", "a", "A", "a_2", "qv_seq", "qv_meta", "id_", ""};
    const auto kind = input.byte();
    if (kind < std::size(kStock)) return kStock[kind];
    return std::string(input.take(kind % 32));
}

std::vector<std::string> texts(fuzz::Pieces& input) {
    std::vector<std::string> all;
    for (auto n = input.byte() % 8; n > 0; --n) all.push_back(text(input));
    return all;
}

Layout layout(fuzz::Pieces& input) {
    switch (input.byte() % 3) {
        case 0: return {};
        case 1: return ColumnLayout{texts(input), input.number(), input.number()};
        default:
            return RowLayout{
                texts(input), {input.number(), input.number()},
                 input.byte() > 0
            };
    }
}

Record record(fuzz::Pieces& input) {
    Record record{text(input), text(input), static_cast<int>(input.number()), {}};
    for (auto n = input.byte() % 8; n > 0; --n) {
        Property property{text(input), text(input), static_cast<int>(input.byte())};
        if (input.byte() % 2 > 0) property.value = text(input);
        record.properties.push_back(property);
    }
    return record;
}

JournalEntry entry(fuzz::Pieces& input) {
    switch (input.byte() % 6) {
        case 0: return ModuleEntry{text(input), text(input), texts(input)};
        case 1: return TableStartEntry{text(input), text(input)};
        case 2: return TableEndEntry{text(input), text(input), layout(input), text(input)};
        case 3: return EndEntry{text(input)};
        default: return record(input);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const LogDir dir(scratch.path());
    std::filesystem::remove_all(dir.report());
    std::filesystem::create_directory(dir.report());

    std::vector<Record> written;
    {
        JournalWriter journal(dir.journal());
        for (fuzz::Pieces input(fuzz::text_of(data, size)); !input.at_end();) {
            const auto next = entry(input);
            journal.append(next);
            if (const auto* added = std::get_if<Record>(&next)) written.push_back(*added);
        }
    }
    fuzz::expect(!recover(dir).empty(), "what was broken off is told");

    std::vector<Record> kept;
    const Store store(dir.store(), Store::Mode::read);
    store.each_record([&](const Record& one) { kept.push_back(one); });
    fuzz::expect(kept == written, "every record is in the store, in order");

    std::ostringstream json;
    write_report_json(store, json);
    fuzz::expect(nlohmann::json::parse(json.str())["records"].size() == kept.size(),
                 "report.json is JSON and has every record");
    const fuzz::Printed shown;
    show_report({dir.store(), {}, false});
    fuzz::expect_harmless(shown.text());
    return 0;
}
