#include "qvhost/fill.h"

#include <utility>

namespace qvhost {

namespace {

template <class... Takers>
struct Overloaded : Takers... {
    using Takers::operator()...;
};
template <class... Takers>
Overloaded(Takers...) -> Overloaded<Takers...>;  // clang 14 does not deduce it

}  // namespace

void Filler::take_new() {
    journal_.read([this](JournalEntry&& entry) { take(std::move(entry)); });
    const auto now = std::chrono::steady_clock::now();
    if (now - committed_ < std::chrono::milliseconds(500)) return;
    store_.commit();
    committed_ = now;
}

void Filler::take(JournalEntry&& entry) {
    std::visit(Overloaded{[&](const ModuleEntry& module) {
                              standing_.module = module.display;
                              store_.add_module(module.name, module.display);
                              for (const auto& table : module.tables)
                                  store_.add_table(module.name, table);
                          },
                          [&](const TableStartEntry& start) { standing_.table = start.table; },
                          [&](const Record& record) {
                              if (++standing_.records > known_) store_.add(record);
                          },
                          [&](const TableEndEntry& end) {
                              standing_.table.clear();
                              store_.set_layout(end.table, end.layout);
                              if (end.error.empty()) return;
                              store_.set_reason(end.table, "broken off: " + end.error);
                              standing_.errors.push_back(end.table + ": " + end.error);
                          },
                          [&](const EndEntry& end) { standing_.end = end; }},
               entry);
}

}  // namespace qvhost
