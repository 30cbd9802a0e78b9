#include "journal/codec.h"

#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "text/keyed_hash.h"

namespace qvhost::journal {

namespace {

// The kinds of entries. A journal that an older program has left is read, so a number keeps its meaning and a new
// kind gets a new one. Some builds after 1.0.0 wrote 5 for a question, never right behind a record, and 6 for a
// record like the one before; 7 is left out for the same reason.
constexpr std::uint8_t kModule = 0;
constexpr std::uint8_t kTableStart = 1;
constexpr std::uint8_t kRecord = 2;
constexpr std::uint8_t kTableEnd = 3;
constexpr std::uint8_t kEnd = 4;
constexpr std::uint8_t kLikeBefore = 5;
constexpr std::uint8_t kOldLikeBefore = 6;
constexpr std::uint8_t kQuestion = 8;
constexpr std::uint8_t kModulesEnd = 9;

// Added to the kind: a sum of the entry's other bytes stands at its end. After a power cut a journal may have pages
// that the disk never got, which are zeros.
constexpr std::uint8_t kHasSum = 0x80;

std::uint32_t sum_of(std::string_view bytes) {
    constexpr KeyedHash kSum(KeyedHash::Key{0x6a6f75726e616c, 0x656e747279});
    return static_cast<std::uint32_t>(kSum(bytes));
}

std::uint8_t kind_of(const ModuleEntry&) { return kModule; }
std::uint8_t kind_of(const TableStartEntry&) { return kTableStart; }
std::uint8_t kind_of(const TableEndEntry&) { return kTableEnd; }
std::uint8_t kind_of(const EndEntry&) { return kEnd; }
std::uint8_t kind_of(const QuestionEntry&) { return kQuestion; }
std::uint8_t kind_of(const ModulesEndEntry&) { return kModulesEnd; }

template <class T>
void put_number(T number, std::string& bytes) {
    static_assert(std::is_trivially_copyable_v<T>);
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

std::uint32_t size_of(std::size_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("a journal entry of more than 4 GiB");
    return static_cast<std::uint32_t>(size);
}

void put(const std::string& text, std::string& bytes) {
    put_number(size_of(text.size()), bytes);
    bytes += text;
}

void put(const std::vector<std::string>& texts, std::string& bytes) {
    put_number(size_of(texts.size()), bytes);
    for (const auto& text : texts) put(text, bytes);
}

void put(const Layout& layout, std::string& bytes) {
    put_number(static_cast<std::uint8_t>(layout.index()), bytes);
    if (const auto* columns = std::get_if<ColumnLayout>(&layout)) {
        put(columns->headers, bytes);
        put_number(columns->width, bytes);
        put_number(columns->count, bytes);
    } else if (const auto* rows = std::get_if<RowLayout>(&layout)) {
        put(rows->headers, bytes);
        put_number(size_of(rows->widths.size()), bytes);
        for (const auto width : rows->widths) put_number(width, bytes);
        put_number(rows->flag, bytes);
    }
}

void put(const ModuleEntry& entry, std::string& bytes) {
    put(entry.name, bytes);
    put(entry.display, bytes);
    put(entry.tables, bytes);
}

void put(const TableStartEntry& entry, std::string& bytes) {
    put(entry.module, bytes);
    put(entry.table, bytes);
}

void put_head(const Record& record, std::string& bytes) {
    put(record.table, bytes);
    put(record.name, bytes);
    put_number(record.index, bytes);
    put_number(size_of(record.properties.size()), bytes);
    for (const auto& property : record.properties) {
        put(property.id, bytes);
        put(property.display, bytes);
    }
}

bool same_head(const Record& a, const Record& b) {
    return a.table == b.table && a.name == b.name && a.index == b.index &&
           same_kinds(a.properties, b.properties);
}

void put_values(const Record& record, std::string& bytes) {
    for (const auto& property : record.properties) {
        put_number(static_cast<std::uint8_t>(property.value.index()), bytes);
        if (const auto* text = std::get_if<std::string>(&property.value)) {
            put(*text, bytes);
        } else {
            put_number(std::get<int>(property.value), bytes);
        }
    }
}

void put(const TableEndEntry& entry, std::string& bytes) {
    put(entry.module, bytes);
    put(entry.table, bytes);
    put(entry.layout, bytes);
    put(entry.error, bytes);
}

void put(const EndEntry& entry, std::string& bytes) { put(entry.error, bytes); }

void put(const QuestionEntry& entry, std::string& bytes) {
    put(entry.tool, bytes);
    put(entry.subsystem, bytes);
    put(entry.lack, bytes);
}

void put(const ModulesEndEntry& entry, std::string& bytes) {
    put_number(static_cast<std::uint8_t>(entry.device_is_left), bytes);
}

class Fields {
public:
    explicit Fields(std::string_view bytes) : rest_(bytes) {}

    template <class T>
    T number() {
        T value;
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
        return value;
    }

    // What kind of entry it is. A sum at its end is looked at and taken off.
    std::uint8_t kind() {
        const auto whole = rest_;
        const auto kind = number<std::uint8_t>();
        if ((kind & kHasSum) == 0) return kind;
        std::uint32_t sum = 0;
        if (rest_.size() < sizeof sum) damaged();
        rest_.remove_suffix(sizeof sum);
        std::memcpy(&sum, rest_.data() + rest_.size(), sizeof sum);
        if (sum != sum_of(whole.substr(0, whole.size() - sizeof sum))) damaged();
        return kind & static_cast<std::uint8_t>(~kHasSum);
    }

    std::string_view text() { return take(number<std::uint32_t>()); }

    // A count of fields of at least `least` bytes each, which must have room in what is left.
    std::size_t count(std::size_t least) {
        const auto n = number<std::uint32_t>();
        if (n > rest_.size() / least) damaged();
        return n;
    }

    void expect_end() const {
        if (!rest_.empty()) damaged();
    }

    [[noreturn]] static void damaged() {
        throw std::runtime_error("a damaged entry in the journal");
    }

private:
    std::string_view take(std::size_t size) {
        if (size > rest_.size()) damaged();
        const auto bytes = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return bytes;
    }

    std::string_view rest_;
};

std::vector<std::string> get_texts(Fields& fields) {
    std::vector<std::string> texts(fields.count(sizeof(std::uint32_t)));
    for (auto& text : texts) text = fields.text();
    return texts;
}

Layout get_layout(Fields& fields) {
    switch (fields.number<std::uint8_t>()) {
        case 0: return {};
        case 1: {
            ColumnLayout layout;
            layout.headers = get_texts(fields);
            layout.width = fields.number<unsigned>();
            layout.count = fields.number<unsigned>();
            return layout;
        }
        case 2: {
            RowLayout layout;
            layout.headers = get_texts(fields);
            layout.widths.resize(fields.count(sizeof(unsigned)));
            for (auto& width : layout.widths) width = fields.number<unsigned>();
            layout.flag = fields.number<std::uint8_t>() != 0;
            return layout;
        }
        default: Fields::damaged();
    }
}

void set_text(std::variant<std::string, int>& value, std::string_view text) {
    if (auto* before = std::get_if<std::string>(&value)) {
        *before = text;
    } else {
        value = std::string(text);
    }
}

void get_head(Fields& fields, Record& record) {
    constexpr std::size_t kLeastProperty = 2 * sizeof(std::uint32_t);
    record.table = fields.text();
    record.name = fields.text();
    record.index = fields.number<int>();
    record.properties.resize(fields.count(kLeastProperty));
    for (auto& property : record.properties) {
        property.id = fields.text();
        property.display = fields.text();
    }
}

void get_values(Fields& fields, Record& record) {
    for (auto& property : record.properties) {
        switch (fields.number<std::uint8_t>()) {
            case 0: set_text(property.value, fields.text()); break;
            case 1: property.value = fields.number<int>(); break;
            default: Fields::damaged();
        }
    }
}

QuestionEntry get_question(Fields& fields) {
    QuestionEntry question;
    question.tool = fields.text();
    question.subsystem = fields.text();
    question.lack = fields.text();
    return question;
}

void get_entry(Fields& fields, JournalEntry& entry) {
    const bool is_behind_record = std::holds_alternative<Record>(entry);
    switch (fields.kind()) {
        case kModule: {
            ModuleEntry module;
            module.name = fields.text();
            module.display = fields.text();
            module.tables = get_texts(fields);
            entry = std::move(module);
            break;
        }
        case kTableStart: {
            TableStartEntry start;
            start.module = fields.text();
            start.table = fields.text();
            entry = std::move(start);
            break;
        }
        case kRecord:
            if (!is_behind_record) entry = Record();
            get_head(fields, std::get<Record>(entry));
            get_values(fields, std::get<Record>(entry));
            break;
        case kLikeBefore:
            if (is_behind_record) {
                get_values(fields, std::get<Record>(entry));
            } else {
                entry = get_question(fields);
            }
            break;
        case kOldLikeBefore:
            if (!is_behind_record) Fields::damaged();
            get_values(fields, std::get<Record>(entry));
            break;
        case kTableEnd: {
            TableEndEntry end;
            end.module = fields.text();
            end.table = fields.text();
            end.layout = get_layout(fields);
            end.error = fields.text();
            entry = std::move(end);
            break;
        }
        case kEnd: entry = EndEntry{std::string(fields.text())}; break;
        case kQuestion: entry = get_question(fields); break;
        case kModulesEnd: entry = ModulesEndEntry{fields.number<std::uint8_t>() != 0}; break;
        default: Fields::damaged();
    }
}

// Appends what `put_fields` puts, with the length and the kind before it.
template <class PutFields>
void put_entry(std::uint8_t kind, std::string& bytes, PutFields put_fields) {
    const auto start = bytes.size();
    put_number(std::uint32_t{0}, bytes);
    put_number(static_cast<std::uint8_t>(kind | kHasSum), bytes);
    put_fields();
    put_number(sum_of(std::string_view(bytes).substr(start + kHeadSize)), bytes);
    const auto size = size_of(bytes.size() - start - kHeadSize);
    std::memcpy(bytes.data() + start, &size, sizeof size);
}

}  // namespace

void Encoder::encode(const JournalEntry& entry, std::string& bytes) {
    if (const auto* record = std::get_if<Record>(&entry)) return encode(*record, bytes);
    forget();
    std::visit(
        [&](const auto& fields) {
            if constexpr (!std::is_same_v<decltype(fields), const Record&>)
                put_entry(kind_of(fields), bytes, [&] { put(fields, bytes); });
        },
        entry);
}

void Encoder::encode(const Record& record, std::string& bytes) {
    const bool like_before = before_ && same_head(*before_, record);
    put_entry(like_before ? kLikeBefore : kRecord, bytes, [&] {
        if (!like_before) put_head(record, bytes);
        put_values(record, bytes);
    });
    if (!like_before) before_ = record;
}

void decode(std::string_view body, JournalEntry& entry) {
    Fields fields(body);
    get_entry(fields, entry);
    fields.expect_end();
}

}  // namespace qvhost::journal
