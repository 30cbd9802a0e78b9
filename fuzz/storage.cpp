// The host's readers of storage captures, and what joins their entities.
//     input: a byte that chooses the reader, the capture's text
#include "inventory/storage/captures.h"

#include <fcntl.h>

#include <algorithm>
#include <sstream>

#include "check.h"
#include "inventory/fields.h"
#include "inventory/storage/join.h"
#include "scratch.h"

using namespace qvhost::inventory;

namespace {

void expect_told(const Text& text) {
    if (!text) return;
    fuzz::expect(!text->empty(), "a text that is told says something");
    const auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    fuzz::expect(!is_blank(text->front()) && !is_blank(text->back()), "texts are trimmed");
}
template <class Value>
void expect_told(const Value&) {}

template <class Value>
void put(std::ostream& out, const std::optional<Value>& value) {
    if (value) out << *value;
    out << '|';
}
void put(std::ostream& out, const Texts& values) {
    for (const auto& value : values) out << value << ',';
}

// All that was read, as a text.
std::string told(Inventory& found, const Understanding& how, const std::string& events) {
    std::ostringstream out;
    each_kind([&](const auto& kind) {
        for (const auto& entity : found.*kind.list) {
            fuzz::expect(entity.place.capture == "capture" && entity.place.line >= 1 &&
                             entity.place.line <= how.lines,
                         "an entity stands in its capture");
            out << kind.name << entity.place.line;
            for (const auto& field : kind.fields) {
                std::visit(
                    [&](auto member) {
                        expect_told(entity.*member);
                        put(out, entity.*member);
                    },
                    field.member);
            }
        }
    });
    for (const auto& gap : how.gaps) out << gap.line << gap.words;
    for (const auto& error : how.errors) out << error.line << error.words;
    out << how.lines << ' ' << how.not_understood << ' ' << events;
    return out.str();
}

std::string read(const CaptureReader& capture, CaptureLines& lines) {
    Inventory found;
    std::string events;
    Reading reading{"capture",
                    found,
                    [&](Event&& event) {
                        events += event.source + event.time.value_or("") + event.text;
                        fuzz::expect(event.place.line >= 1, "an event stands somewhere");
                    },
                    {}};
    capture.read(lines, reading);
    fuzz::expect(reading.how.not_understood <= reading.how.lines, "no line is counted twice");
    auto text = told(found, reading.how, events);

    join_storage(found);
    const auto once = told(found, reading.how, "");
    join_storage(found);
    fuzz::expect_same(told(found, reading.how, ""), once, "what is joined stays as it is");
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    fuzz::Pieces input(fuzz::text_of(data, size));
    const auto captures = storage_captures();
    const auto& capture = captures[input.byte() % captures.size()];
    const auto text = input.rest();

    CaptureLines in_memory(text);
    const auto from_memory = read(capture, in_memory);
    const std::string file = scratch / "capture";
    fuzz::write_file(file, text);
    CaptureLines in_file(::open(file.c_str(), O_RDONLY));
    fuzz::expect_same(read(capture, in_file), from_memory, "a file says what its text says");
    fuzz::expect(in_file.count() ==
                     static_cast<std::int64_t>(std::count(text.begin(), text.end(), '\n') +
                                               (text.empty() || text.ends_with('\n') ? 0 : 1)),
                 "all lines are read");
    return 0;
}
