#include "verdict/inventory_tables.h"

#include <array>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "inventory/fields.h"
#include "store/typed_value.h"

namespace qvhost {

namespace {

using inventory::Kind;

constexpr const char* kListSeparator = ", ";

TypedValue value(const inventory::Text& text) { return text ? TypedValue(*text) : TypedValue(); }
TypedValue value(const inventory::Integer& number) {
    return number ? TypedValue(*number) : TypedValue();
}
TypedValue value(const inventory::Real& number) {
    return number ? TypedValue(*number) : TypedValue();
}
TypedValue value(const inventory::Flag& flag) {
    return flag ? TypedValue(std::int64_t{*flag ? 1 : 0}) : TypedValue();
}
TypedValue value(const inventory::Texts& texts) {
    if (texts.empty()) return {};
    std::string all;
    for (const auto& text : texts) all += (all.empty() ? "" : kListSeparator) + text;
    return all;
}

void take(inventory::Text& text, const TypedValue& from) {
    if (const auto* told = std::get_if<std::string>(&from)) text = *told;
}
void take(inventory::Integer& number, const TypedValue& from) {
    if (const auto* told = std::get_if<std::int64_t>(&from)) number = *told;
}
void take(inventory::Real& number, const TypedValue& from) {
    if (const auto* told = std::get_if<double>(&from)) number = *told;
}
void take(inventory::Flag& flag, const TypedValue& from) {
    if (const auto* told = std::get_if<std::int64_t>(&from)) flag = *told != 0;
}
void take(inventory::Texts& texts, const TypedValue& from) {
    const auto* told = std::get_if<std::string>(&from);
    if (!told) return;
    const std::string separator = kListSeparator;
    std::size_t begin = 0;
    for (auto end = told->find(separator); end != std::string::npos;
         end = told->find(separator, begin)) {
        texts.push_back(told->substr(begin, end - begin));
        begin = end + separator.size();
    }
    texts.push_back(told->substr(begin));
}

template <class Entity>
ColumnType type_of(const inventory::Member<Entity>& member) {
    constexpr ColumnType kTypes[] = {ColumnType::text, ColumnType::integer, ColumnType::real,
                                     ColumnType::boolean, ColumnType::text};
    return kTypes[member.index()];
}

// A column a field, and where the entity stands.
template <class Entity>
std::vector<TypedColumn> columns_of(const Kind<Entity>& kind) {
    std::vector<TypedColumn> columns;
    for (const auto& field : kind.fields) columns.push_back({field.name, type_of(field.member)});
    columns.push_back({"capture", ColumnType::text});
    columns.push_back({"line", ColumnType::integer});
    return columns;
}

template <class Entity>
std::vector<TypedValue> row_of(const Kind<Entity>& kind, const Entity& entity) {
    std::vector<TypedValue> row;
    for (const auto& field : kind.fields)
        row.push_back(std::visit([&](auto member) { return value(entity.*member); }, field.member));
    row.emplace_back(entity.place.capture);
    row.emplace_back(entity.place.line);
    return row;
}

template <class Entity>
Entity entity_of(const Kind<Entity>& kind, const std::vector<TypedValue>& row) {
    Entity entity;
    std::size_t column = 0;
    for (const auto& field : kind.fields)
        std::visit([&](auto member) { take(entity.*member, row[column++]); }, field.member);
    entity.place.capture = text_of(row[column]);
    entity.place.line = integer_of(row[column + 1]);
    return entity;
}

constexpr auto kEventColumns = std::to_array<TypedColumn>({
    {"source",   ColumnType::text   },
    {"time",     ColumnType::text   },
    {"time_utc", ColumnType::text   },
    {"severity", ColumnType::text   },
    {"subject",  ColumnType::text   },
    {"text",     ColumnType::text   },
    {"capture",  ColumnType::text   },
    {"line",     ColumnType::integer},
});

inventory::Severity severity_of(const TypedValue& value) {
    const auto* told = std::get_if<std::string>(&value);
    for (const auto severity : {inventory::Severity::warning, inventory::Severity::critical}) {
        if (told && *told == word(severity)) return severity;
    }
    return inventory::Severity::info;
}

// Assigns to the text of the event before, whose memory is mostly large enough.
void set(std::string& text, const TypedValue& value) {
    if (const auto* told = std::get_if<std::string>(&value)) {
        text = *told;
    } else {
        text.clear();
    }
}
void set(inventory::Text& text, const TypedValue& value) {
    if (!std::holds_alternative<std::string>(value)) return text.reset();
    if (!text) text.emplace();
    set(*text, value);
}

}  // namespace

void each_event_identity(const Store& store, const TakeEvent& take) {
    constexpr auto kColumns = std::to_array<TypedColumn>({
        {"source", ColumnType::text},
        {"time",   ColumnType::text},
        {"text",   ColumnType::text},
    });
    inventory::Event event;
    each_typed_row_while(store, "events", kColumns, [&](const std::vector<TypedValue>& row) {
        set(event.source, row[0]);
        set(event.time, row[1]);
        set(event.text, row[2]);
        return take(event);
    });
}

void each_event(const Store& store, const TakeEvent& take) {
    inventory::Event event;
    each_typed_row_while(store, "events", kEventColumns, [&](const std::vector<TypedValue>& row) {
        set(event.source, row[0]);
        set(event.time, row[1]);
        set(event.time_utc, row[2]);
        event.severity = severity_of(row[3]);
        set(event.subject, row[4]);
        set(event.text, row[5]);
        set(event.place.capture, row[6]);
        event.place.line = integer_of(row[7]);
        return take(event);
    });
}

std::vector<DeclaredTypedTable> inventory_tables() {
    std::vector<DeclaredTypedTable> tables;
    inventory::each_kind([&](const auto& kind) {
        tables.push_back({kind.name, columns_of(kind)});
    });
    tables.push_back({
        "events", {kEventColumns.begin(), kEventColumns.end()}
    });
    return tables;
}

void write_inventory(Store& store, const inventory::Inventory& inventory) {
    inventory::each_kind([&](const auto& kind) {
        TypedTableWriter table(store, kind.name, columns_of(kind));
        for (const auto& entity : inventory.*kind.list) table.add(row_of(kind, entity));
    });
}

inventory::Inventory read_inventory(const Store& store) {
    inventory::Inventory inventory;
    inventory::each_kind([&](const auto& kind) {
        each_typed_row(store, kind.name, columns_of(kind), [&](const std::vector<TypedValue>& row) {
            (inventory.*kind.list).push_back(entity_of(kind, row));
        });
    });
    return inventory;
}

EventWriter::EventWriter(Store& store)
    : table_(store, "events", kEventColumns), row_(kEventColumns.size()) {}

void EventWriter::add(const inventory::Event& event) {
    row_[0] = event.source;
    row_[1] = value(event.time);
    row_[2] = value(event.time_utc);
    row_[3] = std::string(word(event.severity));
    row_[4] = value(event.subject);
    row_[5] = event.text;
    row_[6] = event.place.capture;
    row_[7] = event.place.line;
    table_.add(row_);
}

}  // namespace qvhost
