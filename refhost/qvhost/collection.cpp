#include "qvhost/collection.h"

#include <utility>

namespace qvhost {

namespace {

template <class Key>
std::string value_or_empty(const std::map<Key, std::string>& map, const Key& key) {
    const auto found = map.find(key);
    return found == map.end() ? "" : found->second;
}

}  // namespace

void Collection::take(JournalEntry&& entry) {
    std::visit([this](auto&& fields) { take_one(std::move(fields)); }, std::move(entry));
}

std::string Collection::module_title() const { return value_or_empty(titles_, module_); }

std::string Collection::error_of(const std::string& table) const {
    return value_or_empty(errors_, table);
}

void Collection::take_one(ModuleEntry&& entry) {
    store_.add_module(entry.name, entry.display);
    for (const auto& table : entry.tables) store_.add_table(entry.name, table);
    titles_[entry.name] = entry.display;
}

void Collection::take_one(TableStartEntry&& entry) {
    module_ = entry.module;
    table_ = entry.table;
    reached_.insert(entry.table);
}

void Collection::take_one(Record&& record) { store_.add(record); }

void Collection::take_one(TableEndEntry&& entry) {
    store_.set_layout(entry.table, entry.layout);
    if (!entry.error.empty()) errors_[entry.table] = entry.error;
    table_.clear();
}

void Collection::take_one(EndEntry&& entry) { end_ = std::move(entry); }

}  // namespace qvhost
