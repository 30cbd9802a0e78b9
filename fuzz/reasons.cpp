// Why a table is empty, told from a log and a capture of any text.
//     input: log, NUL, capture
#include "qvhost/finish/reasons.h"

#include "check.h"
#include "scratch.h"

namespace {

// A store with tables that are filled in each of the ways.
const qvhost::Store& store() {
    static const fuzz::Scratch scratch;
    static const qvhost::Store store = [] {
        qvhost::Store made((scratch.path() / "store").string(), qvhost::Store::Mode::create);
        const std::vector<qvhost::DeclaredTable> tables = {
            {.id = "SELFINFO",
             .title = "",
             .filled = "always",
             .tool = "ipmitool",
             .command = "ipmitool mc selftest",
             .capture = "selfinfo.txt",
             .log_label = "selftest",
             .not_asked = ""},
            {.id = "FRUINFO",
             .title = "",
             .filled = "always",
             .tool = "ipmitool",
             .command = "ipmitool fru",
             .capture = "fruinfo.txt",
             .log_label = "FRU",
             .not_asked = ""},
            {.id = "RAIDINFO",
             .title = "",
             .filled = "always",
             .tool = "storcli",
             .in_qv_tools = true,
             .command = "'{P}storcli' >'{L}c0_showall.txt'",
             .capture = "c0_showall.txt",
             .log_label = "",
             .not_asked = ""},
            {.id = "PMCINFO",
             .title = "",
             .filled = "pmc",
             .tool = "",
             .command = "",
             .capture = "",
             .log_label = "",
             .not_asked = ""},
        };
        qvhost::write_declared_tables(made, tables);
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
    fuzz::write_file(dir.path() / "selfinfo.txt", input.rest());
    fuzz::write_file(dir.path() / "c0_showall.txt", input.rest());

    const qvhost::Evidence evidence(dir, dir.path() / "qv_tools", {}, store());
    for (const char* table : {"SELFINFO", "FRUINFO", "RAIDINFO", "PMCINFO", "SAS2IRLOG", "unknown"})
        fuzz::expect(!evidence.why_empty(table).empty(), "there is always a reason");
    return 0;
}
