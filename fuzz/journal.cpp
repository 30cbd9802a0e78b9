// A journal of any bytes: it is read up to where it is damaged, and what was read is written again as
// the same entries.
#include "journal/journal.h"

#include "check.h"
#include "journal/codec.h"
#include "outcome.h"
#include "scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    const std::string path = scratch / "journal";
    fuzz::write_file(path, fuzz::text_of(data, size));

    std::size_t entries = 0;
    fuzz::told([&] {
        qvhost::JournalReader reader(path);
        qvhost::journal::Encoder encoder;
        qvhost::JournalEntry again;
        reader.read([&](const qvhost::JournalEntry& entry) {
            ++entries;
            std::string bytes;
            encoder.encode(entry, bytes);
            qvhost::journal::decode(bytes.substr(qvhost::journal::kHeadSize), again);
            fuzz::expect(again == entry, "an entry is read as it was written");
        });
        fuzz::expect(
            reader.read([](const auto&) { fuzz::expect(false, "an entry is read once"); }) == 0,
            "there is nothing new");
    });
    fuzz::expect(entries <= size / qvhost::journal::kHeadSize, "an entry has a length");
    return 0;
}
