// Why a table is empty, told from a log and a capture of any text.
//     input: log, NUL, capture
#include "qvhost/finish/reasons.h"

#include "check.h"
#include "scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const qvhost::LogDir dir(scratch.path());
    fuzz::Pieces input(fuzz::text_of(data, size));
    fuzz::write_file(dir.log(), input.until('\0'));
    fuzz::write_file(dir.path() / "selfinfo.txt", input.rest());
    fuzz::write_file(dir.path() / "c0_showall.txt", input.rest());

    const qvhost::Evidence evidence(dir, dir.path() / "qv_tools", {}, {});
    for (const char* table : {"SELFINFO", "FRUINFO", "RAIDINFO", "PMCINFO", "SAS2IRLOG", "unknown"})
        fuzz::expect(!evidence.why_empty(table).empty(), "there is always a reason");
    return 0;
}
