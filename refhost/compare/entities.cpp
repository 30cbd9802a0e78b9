#include "compare/entities.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "findings/rules.h"

namespace qvhost::compare {

namespace {

// A pair of rows; one of them alone where the other is null.
struct Pair {
    const Row* from = nullptr;
    const Row* to = nullptr;
};

// The values of a key's fields; nothing if the last one is not known.
std::optional<std::vector<Value>> key_of(const std::vector<std::size_t>& columns, const Row& row) {
    std::vector<Value> key;
    for (const auto column : columns) key.push_back(row.values[column]);
    if (!key.empty() && !is_known(key.back())) return std::nullopt;
    return key;
}

std::vector<std::size_t> columns_of(const std::vector<const char*>& fields, const Table& table) {
    std::vector<std::size_t> columns;
    for (const char* field : fields) columns.push_back(table.column(field));
    return columns;
}

// Rows that stand for a thing, and not for an empty place.
std::vector<const Row*> present_rows(const KindRow& kind, const Table& table) {
    const auto presence = table.column(kind.presence);
    std::vector<const Row*> rows;
    for (const auto& row : table.rows) {
        const auto* there =
            presence < row.values.size() ? std::get_if<bool>(&row.values[presence]) : nullptr;
        if (!there || *there) rows.push_back(&row);
    }
    return rows;
}

// Pairs in the order of the new table; what is gone comes last.
std::vector<Pair> pairs_of(const KindRow& kind, const Table& from, const Table& to) {
    auto left = present_rows(kind, from);
    std::vector<Pair> pairs;
    for (const auto* row : present_rows(kind, to)) pairs.push_back({nullptr, row});
    for (const auto& fields : kind.keys) {
        const auto columns = columns_of(fields, from);
        std::map<std::vector<Value>, std::vector<const Row**>> waiting;
        for (auto& row : left) {
            if (!row) continue;
            if (const auto key = key_of(columns, *row)) waiting[*key].push_back(&row);
        }
        // Those of one key are taken from the first one on.
        std::map<std::vector<Value>, std::size_t> taken;
        for (auto& pair : pairs) {
            if (pair.from) continue;
            const auto key = key_of(columns, *pair.to);
            if (!key) continue;
            const auto found = waiting.find(*key);
            if (found == waiting.end()) continue;
            auto& next = taken[*key];
            if (next >= found->second.size()) continue;
            pair.from = std::exchange(*found->second[next++], nullptr);
        }
    }
    for (const auto* row : left) {
        if (row) pairs.push_back({row, nullptr});
    }
    return pairs;
}

constexpr std::string_view kOwnUnit = "its own unit";  // as the fields of sensors have it

// How bad a row is, the worst first. Of two findings that are as severe, the table of rules has the worse one
// first.
std::pair<findings::Severity, std::size_t> rank_of(const Row& row) {
    const auto rules = findings::all_rules();
    const auto rule = std::find_if(rules.begin(), rules.end(),
                                   [&](const findings::Rule& one) { return one.name == row.rule; });
    return {row.severity, static_cast<std::size_t>(rule - rules.begin())};
}

// What differs between the two rows of a pair.
class Comparison {
public:
    Comparison(const KindRow& kind, const Table& from, const Table& to, const Pair& pair)
        : kind_(kind), from_table_(from), to_table_(to), pair_(pair) {}

    bool is_replaced() const {
        bool differs = false;
        for (const auto& field : kind_.fields) {
            if (field.telling != Telling::identity) continue;
            const auto& [from, to] = values(field);
            if (!is_known(from) || !is_known(to)) continue;
            if (from == to) return false;
            differs = true;
        }
        return differs;
    }

    // Nothing if nothing is to be told.
    std::optional<Change> change() {
        Change change;
        change.kind = kind_.kind;
        change.from = pair_.from->place;
        change.to = pair_.to->place;
        const bool replaced = is_replaced();
        const FieldRow* state = changed_state();
        bool moved = false;
        for (const auto& field : kind_.fields) {
            const auto& [from, to] = values(field);
            if (from == to || !is_told(field.telling, from, to, replaced)) continue;
            if (field.telling == Telling::beside && !state) continue;
            auto& told = change.fields.emplace_back(FieldChange{field.name, from, to, unit(field)});
            if (field.telling == Telling::counter) told.by = growth(from, to);
            moved = moved || field.telling == Telling::place;
        }
        if (change.fields.empty()) return std::nullopt;
        // The fields that say what happened come first.
        if (replaced) {
            bring_forward(change.fields, Telling::identity);
        } else {
            bring_forward(change.fields, Telling::state);
        }
        change.trend = state || replaced ? trend() : Trend::none;
        change.what = word(replaced, state, moved, change.trend);
        change.subject = subject_of(kind_, to_table_, *pair_.to,
                                    replaced ? Identities::left_out : Identities::named);
        if (change.trend == Trend::none && has_grown(change.fields)) change.trend = Trend::worse;
        return change;
    }

    // Fields that only one of the reports tells.
    void add_unread(EntityDifference& difference) const {
        if (is_replaced()) return;
        for (const auto& field : kind_.fields) {
            if (!is_missed(field.telling)) continue;
            const auto& [from, to] = values(field);
            if (is_known(from) == is_known(to)) continue;
            auto& list = is_known(from) ? difference.not_now : difference.not_then;
            auto found = std::find_if(list.begin(), list.end(),
                                      [&](const Unread& one) { return one.field == field.name; });
            if (found == list.end())
                found = list.insert(list.end(), Unread{kind_.kind, field.name, {}});
            found->subjects.push_back(subject_of(kind_, to_table_, *pair_.to));
        }
    }

private:
    struct Values {
        const Value& from;
        const Value& to;
    };

    std::size_t column(const FieldRow& field) const { return to_table_.column(field.name); }
    Values values(const FieldRow& field) const {
        return {pair_.from->values[from_table_.column(field.name)],
                pair_.to->values[column(field)]};
    }

    // Of several the one that the kind names first.
    const FieldRow* changed_state() const {
        for (const auto& field : kind_.fields) {
            const auto& [from, to] = values(field);
            if (field.telling == Telling::state && is_known(from) && is_known(to) && from != to)
                return &field;
        }
        return nullptr;
    }

    // A reading's own unit stands in a field beside it.
    std::string unit(const FieldRow& field) const {
        const auto& unit = to_table_.units[column(field)];
        if (unit != kOwnUnit) return unit;
        const auto own = to_table_.column("unit");
        return own < pair_.to->values.size() && is_known(pair_.to->values[own])
                   ? text_of(pair_.to->values[own])
                   : "";
    }

    // Whether a value that is not known is one that could not be read.
    static bool is_missed(Telling telling) {
        switch (telling) {
            case Telling::identity:
            case Telling::state:
            case Telling::counter:
            case Telling::plain:
            case Telling::reading: return true;
            case Telling::place:
            case Telling::setting:
            case Telling::if_known:
            case Telling::beside:
            case Telling::never: break;
        }
        return false;
    }

    static bool is_told(Telling telling, const Value& from, const Value& to, bool replaced) {
        const bool both = is_known(from) && is_known(to);
        switch (telling) {
            case Telling::identity:
            case Telling::state:
            case Telling::plain: return both;
            // What another drive has counted says nothing of this one; it stands in the same place.
            case Telling::counter:
            case Telling::if_known:
            case Telling::beside: return both && !replaced;
            case Telling::place:
            case Telling::setting: return !replaced;
            case Telling::reading:
            case Telling::never: break;
        }
        return false;
    }

    static Value growth(const Value& from, const Value& to) {
        const auto* before = std::get_if<std::int64_t>(&from);
        const auto* after = std::get_if<std::int64_t>(&to);
        std::int64_t by = 0;
        if (before && after && !__builtin_sub_overflow(*after, *before, &by)) return by;
        const auto* real_before = std::get_if<double>(&from);
        const auto* real_after = std::get_if<double>(&to);
        if (real_before && real_after) return *real_after - *real_before;
        return {};
    }

    void bring_forward(std::vector<FieldChange>& fields, Telling telling) const {
        std::stable_partition(fields.begin(), fields.end(), [&](const FieldChange& change) {
            return std::any_of(kind_.fields.begin(), kind_.fields.end(), [&](const FieldRow& row) {
                return row.telling == telling && change.field == row.name;
            });
        });
    }

    // Errors are counted upwards.
    static bool has_grown(const std::vector<FieldChange>& fields) {
        return std::any_of(fields.begin(), fields.end(), [](const FieldChange& change) {
            const auto* by = std::get_if<std::int64_t>(&change.by);
            return by && *by > 0;
        });
    }

    Trend trend() const {
        const auto from = rank_of(*pair_.from), to = rank_of(*pair_.to);
        if (from == to) return Trend::none;
        return to < from ? Trend::worse : Trend::better;
    }

    std::string word(bool replaced, const FieldRow* state, bool moved, Trend trend) const {
        if (replaced) return "replaced";
        if (state && trend == Trend::worse) {
            for (const auto& row : rule_words()) {
                if (pair_.to->rule == row.rule) return row.word;
            }
            return state->worse;
        }
        if (state && trend == Trend::better)
            return pair_.to->severity == findings::Severity::notice ? "recovered" : "better";
        return moved ? "moved" : "changed";
    }

    const KindRow& kind_;
    const Table& from_table_;
    const Table& to_table_;
    const Pair& pair_;
};

// What stands in one report alone: added or removed, or not read by the other one.
void add_alone(const KindRow& kind, const Table& table, const Row& row, const char* what,
               bool could_be_read, std::vector<Change>& changes, std::vector<Unread>& unread) {
    const auto subject = subject_of(kind, table, row);
    if (could_be_read) {
        Change change;
        change.kind = kind.kind;
        change.subject = subject;
        change.what = what;
        (std::string_view(what) == "added" ? change.to : change.from) = row.place;
        changes.push_back(std::move(change));
        return;
    }
    auto found = std::find_if(unread.begin(), unread.end(),
                              [](const Unread& one) { return one.field.empty(); });
    if (found == unread.end()) found = unread.insert(unread.begin(), Unread{kind.kind, "", {}});
    found->subjects.push_back(subject);
}

// A pattern's text from `at` to its end or to the bracket that closes it; nothing if a field in it,
// outside of further brackets, is not known.
std::optional<std::string> fill(std::string_view pattern, std::size_t& at, const Table& table,
                                const Row& row, const std::vector<std::string_view>& left_out) {
    std::string text;
    bool is_whole = true;
    while (at < pattern.size() && pattern[at] != ']') {
        if (pattern[at] == '[') {
            if (const auto part = fill(pattern, ++at, table, row, left_out)) text += *part;
            ++at;
        } else if (pattern[at] == '{') {
            const auto end = pattern.find('}', at);
            const auto name = pattern.substr(at + 1, end - at - 1);
            const auto& value = row.values[table.column(name)];
            is_whole = is_whole && is_known(value) &&
                       std::find(left_out.begin(), left_out.end(), name) == left_out.end();
            text += text_of(value);
            at = end + 1;
        } else {
            text += pattern[at++];
        }
    }
    return is_whole ? std::optional(text) : std::nullopt;
}

}  // namespace

std::string subject_of(const KindRow& kind, const Table& table, const Row& row,
                       Identities identities) {
    std::vector<std::string_view> left_out;
    if (identities == Identities::left_out) {
        for (const auto& field : kind.fields) {
            if (field.telling == Telling::identity) left_out.emplace_back(field.name);
        }
    }
    std::size_t at = 0;
    return fill(kind.subject, at, table, row, left_out).value_or(kind.one);
}

EntityDifference compare_entities(const KindRow& kind, const Table& from, const Table& to,
                                  const CouldBeRead& by_old, const CouldBeRead& by_new) {
    EntityDifference difference;
    for (const auto& pair : pairs_of(kind, from, to)) {
        if (!pair.from) {
            add_alone(kind, to, *pair.to, "added", by_old(kind, *pair.to), difference.changes,
                      difference.not_then);
        } else if (!pair.to) {
            add_alone(kind, from, *pair.from, "removed", by_new(kind, *pair.from),
                      difference.changes, difference.not_now);
        } else {
            Comparison comparison(kind, from, to, pair);
            comparison.add_unread(difference);
            if (auto change = comparison.change()) difference.changes.push_back(std::move(*change));
        }
    }
    return difference;
}

}  // namespace qvhost::compare
