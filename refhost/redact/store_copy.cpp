#include "redact/store_copy.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "store/declared_table.h"
#include "store/typed_table.h"

namespace qvhost::redact {

namespace {

constexpr long kShortestNumber = 10'000;  // of kShortestSearched digits

class Copier {
public:
    Copier(const Store& from, Store& to, const Redactor& redactor, const TablesWithFields& tables)
        : from_(from), to_(to), redactor_(redactor), tables_(tables) {}

    void copy() {
        copy_meta();
        copy_tables();
        from_.each_record([&](const Record& record) { to_.add(redacted(record)); });
        to_.commit();
        for (const auto name : kTypedTables) copy_typed(std::string(name));
        to_.commit();
    }

private:
    std::string text(const std::string& text) const { return redactor_.text(text); }

    void copy_meta() {
        for (const auto& [key, value] : from_.all_meta()) {
            if (key == "host")
                to_.set_meta(key, redactor_.declared("hostname", value, Class::network));
            else if (key == "files" || key == "foreign_files")
                to_.set_meta(key, redacted_names(value, redactor_));
            else
                to_.set_meta(key, text(value));
        }
        auto facts = from_.facts();
        for (auto& fact : facts) {
            fact.value = redactor_.field(fact.label, fact.value);
            fact.source = text(fact.source);
        }
        to_.set_facts(facts);
        auto commands = from_.commands();
        for (auto& command : commands) command = redact::redacted(command, redactor_);
        to_.set_commands(commands);
        if (const auto declared = declared_tables(from_); !declared.empty())
            write_declared_tables(to_, declared);
    }

    void copy_tables() {
        for (const auto& module : from_.modules()) {
            to_.add_module(module.name, module.display);
            for (const auto& table : module.tables) {
                to_.add_table(module.name, table.id);
                if (!std::holds_alternative<std::monostate>(table.layout))
                    to_.set_layout(table.id, table.layout);
                if (!table.reason.empty()) to_.set_reason(table.id, text(table.reason));
            }
        }
    }

    Look look_at(const std::string& table) const {
        return tables_.contains(table) ? Look::fields_too : Look::spellings_alone;
    }

    Record redacted(Record record) const {
        const auto look = look_at(record.table);
        record.name = redactor_.text(record.name, look);
        for (auto& property : record.properties) {
            redact_number(property.value);
            auto* const value = std::get_if<std::string>(&property.value);
            if (value == nullptr || value->empty()) continue;
            *value = redactor_.field(property.display.empty() ? property.id : property.display,
                                     *value, look);
        }
        return record;
    }

    // A serial number of digits alone, filed as a number.
    void redact_number(std::variant<std::string, int>& value) const {
        auto* const number = std::get_if<int>(&value);
        if (number == nullptr || std::abs(static_cast<long>(*number)) < kShortestNumber) return;
        const auto digits = std::to_string(*number);
        auto made = redactor_.text(digits, Look::spellings_alone);
        if (made == digits) return;
        const char* const end = made.data() + made.size();
        if (const auto read = std::from_chars(made.data(), end, *number);
            read.ec != std::errc() || read.ptr != end)
            value = std::move(made);
    }

    void copy_typed(const std::string& table) {
        const auto stored = stored_columns(from_, table);
        if (stored.empty()) return;
        std::vector<TypedColumn> columns;
        std::vector<std::optional<Class>> classes;
        for (const auto& column : stored) {
            columns.push_back({column.name.c_str(), column.type});
            classes.push_back(class_of_field(table, column.name));
        }
        const auto look = look_at(table);
        TypedTableWriter writer(to_, table.c_str(), columns);
        each_stored_row(from_, table, [&](std::vector<TypedValue> row) {
            for (std::size_t i = 0; i < row.size() && i < classes.size(); ++i) {
                if (auto* const value = std::get_if<std::string>(&row[i]))
                    *value = classes[i]
                                 ? redactor_.declared(stored[i].name, *value, *classes[i], look)
                                 : redactor_.field(stored[i].name, *value, look);
            }
            writer.add(row);
        });
    }

    const Store& from_;
    Store& to_;
    const Redactor& redactor_;
    const TablesWithFields& tables_;
};

}  // namespace

CommandInfo redacted(const CommandInfo& command, const Redactor& redactor) {
    auto made = command;
    made.text = redactor.text(command.text);
    made.standard_error = redactor.text(command.standard_error);
    made.remark = redactor.text(command.remark);
    for (auto& capture : made.captures) capture = redactor.text(capture);
    return made;
}

std::string redacted_names(const std::string& names, const Redactor& redactor) {
    std::string made;
    for (std::size_t at = 0; at <= names.size();) {
        const auto end = std::min(names.find('/', at), names.size());
        made += redactor.text(names.substr(at, end - at));
        if (end < names.size()) made += '/';
        at = end + 1;
    }
    return made;
}

void copy_redacted(const Store& from, const std::filesystem::path& file, const Redactor& redactor,
                   const TablesWithFields& tables) {
    Store to(file, Store::Mode::create);
    Copier(from, to, redactor, tables).copy();
}

}  // namespace qvhost::redact
