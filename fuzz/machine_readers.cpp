// The readers of the BMC's and the system's captures, and what joins them.
//     input: the reader's number, then the capture
#include <vector>

#include "check.h"
#include "inventory/capture_lines.h"
#include "inventory/fields.h"
#include "inventory/ipmi/captures.h"
#include "inventory/ipmi/join.h"
#include "inventory/reading.h"
#include "inventory/system/captures.h"
#include "inventory/system/join.h"

namespace {

using namespace qvhost::inventory;

std::vector<CaptureReader> all_readers() {
    std::vector<CaptureReader> readers;
    for (const auto& captures : {ipmi_captures(), system_captures()})
        readers.insert(readers.end(), captures.begin(), captures.end());
    return readers;
}

struct Made {
    Inventory found;
    Understanding how;
    std::size_t events = 0;
    std::size_t entities = 0;
};

void expect_place(const Place& place, std::int64_t lines) {
    fuzz::expect(place.line >= 1 && place.line <= lines,
                 "everything stands in a line of the capture");
}

Made read(const CaptureReader& reader, std::string_view text) {
    Made made;
    std::vector<Place> places;
    CaptureLines lines(text);
    Reading reading{reader.pattern, made.found, [&](Event&& event) {
                        places.push_back(event.place);
                        fuzz::expect(!event.source.empty(), "an event has a source");
                    }};
    reader.read(lines, reading);
    made.how = reading.how;
    made.events = places.size();
    fuzz::expect(made.how.lines == lines.count(), "all lines are counted");
    fuzz::expect(!lines.next(), "a capture is read to its end");
    fuzz::expect(made.how.not_understood <= made.how.lines, "a line is counted once");

    for (const auto& place : places) expect_place(place, made.how.lines);
    each_kind([&](const auto& kind) {
        for (const auto& entity : made.found.*kind.list) expect_place(entity.place, made.how.lines);
    });
    for (const auto& gap : made.how.gaps)
        fuzz::expect(gap.line >= 0 && gap.line <= made.how.lines, "a gap is in the capture");
    join_bmc(made.found);
    join_machine(made.found);
    each_kind([&](const auto& kind) { made.entities += (made.found.*kind.list).size(); });
    return made;
}

std::string with_crlf(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto readers = all_readers();
    fuzz::Pieces input(fuzz::text_of(data, size));
    const auto& reader = readers[input.byte() % readers.size()];
    const auto text = input.rest();

    const auto made = read(reader, text);
    if (text.find('\r') != std::string_view::npos || text.size() > 10'000) return 0;
    const auto windows = read(reader, with_crlf(text));
    fuzz::expect(made.entities == windows.entities && made.events == windows.events,
                 "the kind of line end changes nothing");
    fuzz::expect(made.how.whole() == windows.how.whole(), "the kind of line end changes nothing");
    return 0;
}
