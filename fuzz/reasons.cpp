// Why a table is empty or partial and a module failed, told from a log, captures and commands of any text.
//     input: log, NUL, capture, NUL, command log
#include "qvhost/finish/reasons.h"

#include "check.h"
#include "declared.h"
#include "scratch.h"

namespace {

// A store with tables that are filled in each of the ways.
const qvhost::Store& store() {
    static const fuzz::Scratch scratch;
    static const qvhost::Store store = [] {
        qvhost::Store made((scratch.path() / "store").string(), qvhost::Store::Mode::create);
        qvhost::write_declared_tables(made, fuzz::declared_tables());
        made.commit();
        return made;
    }();
    return store;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const qvhost::LogDir dir(scratch.path());
    fuzz::Pieces input(fuzz::text_of(data, size));
    fuzz::write_file(dir.log(), input.until('\0'));
    const auto capture = input.until('\0');
    for (const char* name : {"selfinfo.txt", "c0_showall.txt"})
        fuzz::write_file(dir.path() / name, capture);
    const auto commands = dir.path() / "commands";
    fuzz::write_file(commands, input.rest());

    const auto log = qvhost::read_commands(commands, dir.path(), "user");
    for (const std::set<std::string>& broken_off : {
             std::set<std::string>{                              },
             { "M", std::string(qvhost::kAlsoMark)}
    }) {
        const qvhost::Reasons reasons(dir, {dir.path() / "qv_tools", "/usr/bin"}, log, store(),
                                      broken_off);
        qvhost::ModuleInfo module{.name = "M", .display = "", .tables = {}};
        for (const char* table :
             {"SELFINFO", "FRUINFO", "RAIDINFO", "PMCINFO", "SAS2IRLOG", "unknown"}) {
            fuzz::expect(!reasons.why_empty("M", table).empty(), "there is always a reason");
            reasons.why_partial("M", table);
            module.tables.push_back({table, "", {}, 0, ""});
        }
        for (const bool has_no_bmc : {false, true}) reasons.why_failed(module, has_no_bmc);
    }
    return 0;
}
