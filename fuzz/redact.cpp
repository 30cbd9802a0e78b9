// A text that is handed on: its values are replaced, and it stays as long as it was.
//     input: a capture
#include <algorithm>

#include "check.h"
#include "redact/read_back.h"
#include "redact/redactor.h"
#include "redact/text_file.h"

namespace {

using namespace qvhost::redact;

std::size_t lines_of(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

// What a text is redacted to by itself, always with the same key.
struct Redacted {
    explicit Redacted(std::string_view text) {
        gather_from_text(text, values);
        substitutes.assign(values);
    }
    std::string operator()(std::string_view text, Look look) const {
        return Redactor(classes_of("all"), values, substitutes).text(text, look);
    }
    // Whether a value could be given no replacement: of one digit, say, there are too few others.
    bool lacks_replacement() const {
        const auto& all = values.all();
        return std::any_of(all.begin(), all.end(), [&](const auto& one) {
            const auto& [value, use] = one;
            return substitutes.has(value) && substitutes.of(value) == value.canonical;
        });
    }
    Values values;
    Substitutes substitutes{std::string(64, 'a'), {}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzz::text_of(data, size);
    const Redacted redacted(text);
    const auto made = redacted(text, Look::fields_too);
    fuzz::expect(made.size() == text.size(), "a text is as long as before");
    fuzz::expect(lines_of(made) == lines_of(text), "a text has as many lines as before");
    fuzz::expect_same(Redacted(text)(text, Look::fields_too), made,
                      "one key, one replacement for a value");
    if (redacted.values.told_by_fields() == 0)
        fuzz::expect_same(redacted(text, Look::spellings_alone), made,
                          "what no field alone tells is found by its spellings");

    const Redactor redactor(classes_of("all"), redacted.values, redacted.substitutes);
    ReadBack read(redactor.search());
    read.begin("text");
    read.add(made);
    read.end();
    fuzz::expect(read.found_in().empty() || redacted.lacks_replacement(), "no value is left");
    return 0;
}
