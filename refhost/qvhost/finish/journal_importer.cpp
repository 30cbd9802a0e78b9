#include "qvhost/finish/journal_importer.h"

#include <utility>

#include "qvhost/finish/commands.h"
#include "show/visible.h"

namespace qvhost {

namespace {

// In parts, so that the caller can look for a signal however fast a journal grows.
constexpr std::size_t kPartBytes = 262144;

template <class... Takers>
struct Overloaded : Takers... {
    using Takers::operator()...;
};
template <class... Takers>
Overloaded(Takers...) -> Overloaded<Takers...>;  // clang 14 does not deduce it

}  // namespace

void CollectionState::take(const JournalEntry& entry) {
    std::visit(Overloaded{[&](const ModuleEntry& next) { known_[next.name] = next; },
                          [&](const TableStartEntry& start) {
                              if (start.module != module)
                                  modules.push_back(known_[start.module].display);
                              module = start.module;
                              table = start.table;
                          },
                          [&](const Record&) { ++records; },
                          [&](const TableEndEntry& of_table) {
                              table.clear();
                              const auto& tables = known_[of_table.module].tables;
                              if (!tables.empty() && tables.back() == of_table.table)
                                  module.clear();
                              if (of_table.error.empty()) return;
                              errors.push_back(of_table.table + ": " + of_table.error);
                              if (of_table.error != kRecordsCut) threw.insert(of_table.module);
                          },
                          [&](const EndEntry& last) { end = last; },
                          [&](const QuestionEntry& asked) {
                              if (asked.lack.empty()) question = asked.tool;
                          },
                          [&](const ModulesEndEntry& all) {
                              modules_ended = true;
                              device_is_left = all.device_is_left;
                          }},
               entry);
}

std::set<std::string> CollectionState::broken_off() const {
    auto found = threw;
    if (!module.empty()) found.insert(module);
    const bool ended_well = end ? end->error.empty() : modules_ended;
    if (!ended_well) found.insert(std::string(kAlsoMark));
    return found;
}

bool LaneJournal::follow() {
    return reader.read([this](const JournalEntry& entry) { state.take(entry); }, kPartBytes) > 0;
}

bool JournalImporter::take_new(LaneJournal& lane) {
    const auto entries = lane.reader.read(
        [&](const JournalEntry& entry) {
            lane.state.take(entry);
            take(entry);
        },
        kPartBytes);
    const auto now = std::chrono::steady_clock::now();
    if (now - committed_ >= std::chrono::milliseconds(500)) {
        store_.commit();
        committed_ = now;
    }
    return entries > 0;
}

void JournalImporter::explain_unreached() {
    for (const auto& module : store_.modules()) {
        for (const auto& table : module.tables) {
            if (table.records == 0 && !reached_.contains(table.id))
                store_.set_reason(table.id, "the collection ended before");
        }
    }
}

void JournalImporter::take(const JournalEntry& entry) {
    std::visit(Overloaded{[&](const ModuleEntry& module) {
                              store_.add_module(module.name, module.display);
                              for (const auto& table : module.tables)
                                  store_.add_table(module.name, table);
                          },
                          [&](const TableStartEntry& start) { reached_.insert(start.table); },
                          [&](const Record& record) { store_.add(record); },
                          [&](const TableEndEntry& end) {
                              store_.set_layout(end.table, end.layout);
                              if (!end.error.empty())
                                  store_.set_reason(end.table, "broken off: " + end.error);
                          },
                          [&](const QuestionEntry& question) {
                              if (question.lack.empty()) return;
                              lacks_ += one_line(question.subsystem) + '\t' +
                                        one_line(question.lack) + '\n';
                              store_.set_meta("lacks", lacks_);
                          },
                          [](const EndEntry&) {}, [](const ModulesEndEntry&) {}},
               entry);
}

}  // namespace qvhost
