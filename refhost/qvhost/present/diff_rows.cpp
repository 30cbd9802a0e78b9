#include "qvhost/present/diff_rows.h"

#include <string_view>
#include <variant>

#include "verdict/inventory_tables.h"

namespace qvhost {

namespace {

// A text with its length before it, so that no two rows give the same bytes.
void put(std::string_view text, std::string& bytes) {
    const auto size = text.size();
    bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    bytes += text;
}

void identify_event(const inventory::Event& event, std::string& bytes) {
    put(event.source, bytes);
    bytes += event.time ? 't' : '-';
    put(event.time ? std::string_view(*event.time) : std::string_view(), bytes);
    put(event.text, bytes);
}

void identify_record(const Record& record, std::string& bytes) {
    put(record.name, bytes);
    for (const auto& property : record.properties) {
        put(property.id, bytes);
        if (const auto* text = std::get_if<std::string>(&property.value)) {
            bytes += 't';
            put(*text, bytes);
        } else {
            bytes += 'i';
            bytes += std::to_string(std::get<int>(property.value));
        }
    }
}

EventDifference::Source events_of(const Store& store) {
    return {
        [&store](const EventDifference::TakeWhile& take) { each_event(store, take); },
        [&store](const EventDifference::TakeWhile& take) { each_event_identity(store, take); },
    };
}

RecordDifference::Source records_of(const Store& store, const std::string& table) {
    const auto rows = [&store, table](const RecordDifference::TakeWhile& take) {
        bool goes_on = true;
        store.each_record(table, [&](const Record& record) { goes_on = goes_on && take(record); });
    };
    return {rows, rows};
}

}  // namespace

EventDifference::EventDifference(const Store& from, const Store& to)
    : RowDifference(events_of(from), events_of(to), identify_event) {}

RecordDifference::RecordDifference(const Store& from, const Store& to, const std::string& table)
    : RowDifference(records_of(from, table), records_of(to, table), identify_record) {}

}  // namespace qvhost
