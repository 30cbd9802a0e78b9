#include "qvhost/finish/journal_importer.h"

#include <utility>

#include "show/visible.h"

namespace qvhost {

namespace {

template <class... Takers>
struct Overloaded : Takers... {
    using Takers::operator()...;
};
template <class... Takers>
Overloaded(Takers...) -> Overloaded<Takers...>;  // clang 14 does not deduce it

}  // namespace

bool JournalImporter::take_new() {
    // In parts, so that the caller can look for a signal however fast the journal grows.
    constexpr std::size_t kPartBytes = 262144;
    const auto entries =
        journal_.read([this](const JournalEntry& entry) { take(entry); }, kPartBytes);
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
            if (table.records == 0 && !state_.reached.contains(table.id))
                store_.set_reason(table.id, "the collection ended before");
        }
    }
}

void JournalImporter::take(const JournalEntry& entry) {
    std::visit(Overloaded{[&](const ModuleEntry& module) {
                              state_.all_modules.push_back(module.display);
                              titles_[module.name] = module.display;
                              store_.add_module(module.name, module.display);
                              for (const auto& table : module.tables)
                                  store_.add_table(module.name, table);
                          },
                          [&](const TableStartEntry& start) {
                              if (start.module != module_)
                                  state_.modules.push_back(titles_[start.module]);
                              module_ = start.module;
                              state_.table = start.table;
                              state_.reached.insert(start.table);
                          },
                          [&](const Record& record) {
                              ++state_.records;
                              store_.add(record);
                          },
                          [&](const TableEndEntry& end) {
                              state_.table.clear();
                              store_.set_layout(end.table, end.layout);
                              if (end.error.empty()) return;
                              store_.set_reason(end.table, "broken off: " + end.error);
                              state_.errors.push_back(end.table + ": " + end.error);
                          },
                          [&](const EndEntry& end) { state_.end = end; },
                          [&](const QuestionEntry& question) {
                              if (question.lack.empty()) {
                                  state_.question = question.tool;
                              } else {
                                  lacks_ += one_line(question.subsystem) + '\t' +
                                            one_line(question.lack) + '\n';
                                  store_.set_meta("lacks", lacks_);
                              }
                          }},
               entry);
}

}  // namespace qvhost
