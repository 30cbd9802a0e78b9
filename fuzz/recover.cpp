// A collection that was broken off: whatever stands in the journals of its lanes, all of their records come into the
// store, in order, and the report can be shown.
#include "qvhost/finish/recover.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "any_record.h"
#include "check.h"
#include "journal/journal.h"
#include "outcome.h"
#include "qvhost/present/show.h"
#include "report/report_json.h"
#include "scratch.h"
#include "store/store.h"

using namespace qvhost;

namespace {

JournalEntry entry(fuzz::Pieces& input) {
    using namespace fuzz;
    switch (input.byte() % 7) {
        case 0: return ModuleEntry{text(input), text(input), texts(input)};
        case 1: return TableStartEntry{text(input), text(input)};
        case 2: return TableEndEntry{text(input), text(input), layout(input), text(input)};
        case 3: return EndEntry{text(input)};
        case 4: return QuestionEntry{text(input), text(input), text(input)};
        case 5: return ModulesEndEntry{input.byte() % 2 == 1};
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
        unsigned lane = 1;
        auto journal = std::make_unique<JournalWriter>(dir.journal());
        for (fuzz::Pieces input(fuzz::text_of(data, size)); !input.at_end();) {
            const auto next = entry(input);
            journal->append(next);
            if (const auto* added = std::get_if<Record>(&next)) written.push_back(*added);
            const bool is_last = std::holds_alternative<ModulesEndEntry>(next);
            if (is_last && lane < kMostLanes)
                journal = std::make_unique<JournalWriter>(dir.journal(++lane));
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
