#include "redact/store_values.h"

#include <string_view>
#include <unordered_set>
#include <variant>
#include <vector>

#include "inventory/fields.h"
#include "redact/find.h"
#include "redact/redactor.h"
#include "redact/text_file.h"
#include "store/typed_table.h"
#include "text/case.h"

namespace qvhost::redact {

namespace {

constexpr const char* kHost = "host";
constexpr const char* kHostLabel = "hostname";

using Fields = std::map<std::pair<std::string, std::string>, Class>;

const Fields& declared_fields() {
    static const auto all = [] {
        Fields made;
        inventory::each_kind([&](const auto& kind) {
            for (const auto& field : kind.fields) {
                if (field.secret == inventory::Secret::serial)
                    made[{kind.name, field.name}] = Class::serials;
                if (field.secret == inventory::Secret::network)
                    made[{kind.name, field.name}] = Class::network;
            }
        });
        return made;
    }();
    return all;
}

// A field that is declared to hold a value: the part of it that its name calls one ("wwn: 0x5000..."), else all of it.
void gather_declared(const std::string& label, const std::string& value, Class which,
                     Values& values) {
    const auto line = labelled(label, value);
    bool is_found = false;
    find_all(line, [&](const Found& found) {
        is_found = values.add(std::string_view(line).substr(found.at, found.size), found.which,
                              found.form, found.in_own_field) ||
                   is_found;
    });
    if (!is_found) values.add(value, which, form_in_field(which, value), true);
}

// Finds values in fields. Most fields hold none, and say again and again what others said.
class FieldReader {
public:
    explicit FieldReader(Values& values) : values_(values) {}

    void read(const std::string& label, const std::string& value) {
        line_.assign(label).append(": ").append(value);
        if (without_.contains(line_)) return;
        bool has_any = false;
        find_all(line_, [&](const Found& found) {
            has_any = true;
            gather_found(line_, found, values_);
        });
        if (has_any || line_.size() > kLongest) return;
        if (without_.size() >= kMost) without_.clear();
        without_.insert(line_);
    }

private:
    static constexpr std::size_t kMost = 16'384, kLongest = 256;

    Values& values_;
    std::string line_;
    std::unordered_set<std::string> without_;  // fields in which nothing is found
};

void gather_records(const Store& store, Values& values, TablesWithFields& tables) {
    FieldReader fields(values);
    store.each_record([&](const Record& record) {
        const auto told = values.told_by_fields();
        for (const auto& property : record.properties) {
            const auto* const text = std::get_if<std::string>(&property.value);
            if (text == nullptr || text->empty()) continue;
            fields.read(property.display.empty() ? property.id : property.display, *text);
        }
        if (values.told_by_fields() > told) tables.insert(record.table);
    });
}

void gather_typed(const Store& store, const std::string& table, Values& values) {
    FieldReader fields(values);
    const auto columns = stored_columns(store, table);
    if (columns.empty()) return;
    std::vector<std::optional<Class>> classes;
    for (const auto& column : columns) classes.push_back(class_of_field(table, column.name));
    each_stored_row(store, table, [&](const std::vector<TypedValue>& row) {
        for (std::size_t i = 0; i < row.size() && i < classes.size(); ++i) {
            const auto* const text = std::get_if<std::string>(&row[i]);
            if (text == nullptr) continue;
            if (classes[i])
                gather_declared(columns[i].name, *text, *classes[i], values);
            else
                fields.read(columns[i].name, *text);
        }
    });
}

}  // namespace

std::optional<Class> class_of_field(const std::string& table, const std::string& column) {
    const auto found = declared_fields().find({table, column});
    return found == declared_fields().end() ? std::nullopt : std::optional(found->second);
}

std::set<std::string> words_of_reports(const Store& store) {
    std::set<std::string> words;
    inventory::each_kind([&](const auto& kind) {
        words.insert(lowered(kind.name));
        for (const auto& field : kind.fields) words.insert(lowered(field.name));
    });
    for (const auto name : kTypedTables) {
        words.insert(lowered(name));
        for (const auto& column : stored_columns(store, std::string(name)))
            words.insert(lowered(column.name));
    }
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) {
            words.insert(lowered(table.id));
            for (const auto& property : store.properties(table.id))
                words.insert(lowered(property.id));
        }
    }
    return words;
}

TablesWithFields gather_from_store(const Store& store, Values& values) {
    TablesWithFields tables;
    for (const auto name : kTypedTables) {
        const auto told = values.told_by_fields();
        gather_typed(store, std::string(name), values);
        if (values.told_by_fields() > told) tables.insert(std::string(name));
    }
    for (const auto& [key, value] : store.all_meta()) {
        if (key == kHost) gather_declared(kHostLabel, value, Class::network, values);
        gather_from_text(value, values);
    }
    for (const auto& fact : store.facts()) {
        gather_from_text(labelled(fact.label, fact.value), values);
    }
    for (const auto& command : store.commands()) {
        gather_from_text(command.text, values);
        gather_from_text(command.standard_error, values);
    }
    gather_records(store, values, tables);
    return tables;
}

}  // namespace qvhost::redact
