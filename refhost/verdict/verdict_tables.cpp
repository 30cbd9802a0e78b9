#include "verdict/verdict_tables.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "store/typed_table.h"
#include "store/typed_value.h"

namespace qvhost {

namespace {

using findings::Finding;
using findings::Health;
using findings::Verdict;

constexpr auto kFindings = std::to_array<TypedColumn>({
    {"id",                 ColumnType::text   },
    {"rule",               ColumnType::text   },
    {"severity",           ColumnType::text   },
    {"subsystem",          ColumnType::text   },
    {"subject",            ColumnType::text   },
    {"says",               ColumnType::text   },
    {"time",               ColumnType::text   },
    {"count",              ColumnType::integer},
    {"acknowledged_until", ColumnType::text   },
    {"acknowledged_by",    ColumnType::text   },
    {"acknowledged_why",   ColumnType::text   },
    {"first_seen",         ColumnType::text   },
});
constexpr auto kEvidence = std::to_array<TypedColumn>({
    {"finding_id", ColumnType::text   },
    {"capture",    ColumnType::text   },
    {"line",       ColumnType::integer},
});
constexpr auto kEntities = std::to_array<TypedColumn>({
    {"finding_id", ColumnType::text   },
    {"kind",       ColumnType::text   }, // the table that the entity stands in
    {"number",     ColumnType::integer}, // its rowid there
});
constexpr auto kGrowth = std::to_array<TypedColumn>({
    {"finding_id",   ColumnType::text   },
    {"field",        ColumnType::text   }, // of an entity that it is about
    {"value_before", ColumnType::integer},
    {"value_now",    ColumnType::integer},
    {"since",        ColumnType::text   }, // when the run started that read the one before
});
// What the next run has to know: which values of the inventory are as they were.
constexpr auto kUnchanged = std::to_array<TypedColumn>({
    {"kind",   ColumnType::text   }, // the table that the entity stands in
    {"number", ColumnType::integer}, // its rowid there
    {"field",  ColumnType::text   },
    {"since",  ColumnType::text   }, // when the run started that first read the same
});
constexpr auto kHealth = std::to_array<TypedColumn>({
    {"subsystem", ColumnType::text},
    {"health",    ColumnType::text},
});
constexpr auto kHealthCaptures = std::to_array<TypedColumn>({
    {"subsystem", ColumnType::text},
    {"capture",   ColumnType::text},
});
constexpr auto kHealthMissing = std::to_array<TypedColumn>({
    {"subsystem", ColumnType::text},
    {"missing",   ColumnType::text},
});

// What write_verdict() writes, in its order, but for what compares the report with earlier ones (`first_seen`,
// the last column of its table, `finding_growth` and `unchanged_values`): who keeps many reports has those.
constexpr struct {
    const char* name;
    std::span<const TypedColumn> columns;
} kTables[] = {
    {"findings",         std::span(kFindings).first<kFindings.size() - 1>()},
    {"finding_evidence", kEvidence                                         },
    {"finding_entities", kEntities                                         },
    {"health",           kHealth                                           },
    {"health_captures",  kHealthCaptures                                   },
    {"health_missing",   kHealthMissing                                    },
};

TypedValue told(const findings::Text& text) { return text ? TypedValue(*text) : TypedValue(); }
TypedValue told(const std::string& text) { return text.empty() ? TypedValue() : TypedValue(text); }

// The one of `all` whose word it is.
template <class Enum, std::size_t Count>
std::optional<Enum> of_word(const Enum (&all)[Count], const TypedValue& value) {
    const auto told = text_of(value);
    for (const Enum one : all) {
        if (told == word(one)) return one;
    }
    return std::nullopt;
}

}  // namespace

std::vector<DeclaredTypedTable> verdict_tables() {
    std::vector<DeclaredTypedTable> tables;
    for (const auto& [name, columns] : kTables)
        tables.push_back({
            name, {columns.begin(), columns.end()}
        });
    return tables;
}

void write_verdict(Store& store, const Verdict& verdict) {
    TypedTableWriter findings(store, "findings", kFindings);
    TypedTableWriter evidence(store, "finding_evidence", kEvidence);
    TypedTableWriter entities(store, "finding_entities", kEntities);
    TypedTableWriter growth(store, "finding_growth", kGrowth);
    const TypedValue none;
    for (const auto& one : verdict.findings) {
        const auto& known_to = one.acknowledged;
        findings.add({one.id, one.rule, std::string(word(one.severity)),
                      std::string(word(one.subsystem)), one.subject, one.says, told(one.time),
                      one.count, known_to ? TypedValue(known_to->until) : none,
                      known_to ? told(known_to->by) : none, known_to ? told(known_to->why) : none,
                      told(one.first_seen)});
        for (const auto& place : one.evidence) evidence.add({one.id, place.capture, place.line});
        for (const auto& entity : one.entities) entities.add({one.id, entity.kind, entity.number});
        for (const auto& [field, before, now, since] : one.growth)
            growth.add({one.id, field, before, now, since});
    }
    TypedTableWriter unchanged(store, "unchanged_values", kUnchanged);
    for (const auto& [entity, field, since] : verdict.unchanged)
        unchanged.add({entity.kind, entity.number, field, since});
    TypedTableWriter health(store, "health", kHealth);
    TypedTableWriter captures(store, "health_captures", kHealthCaptures);
    TypedTableWriter missing(store, "health_missing", kHealthMissing);
    for (const auto& one : verdict.health) {
        const std::string subsystem = word(one.subsystem);
        health.add({subsystem, std::string(word(one.health))});
        for (const auto& capture : one.judged_by) captures.add({subsystem, capture});
        for (const auto& words : one.missing) missing.add({subsystem, words});
    }
}

Verdict read_verdict(const Store& store) {
    Verdict verdict;
    verdict.started = store.meta("started");
    std::map<std::string, std::size_t> by_id;
    each_typed_row(store, "findings", kFindings, [&](const std::vector<TypedValue>& row) {
        const auto severity = of_word(findings::kSeverities, row[2]);
        const auto subsystem = of_word(findings::kSubsystems, row[3]);
        if (!severity || !subsystem) return;
        Finding finding;
        finding.id = text_of(row[0]);
        finding.rule = text_of(row[1]);
        finding.severity = *severity;
        finding.subsystem = *subsystem;
        finding.subject = text_of(row[4]);
        finding.says = text_of(row[5]);
        if (const auto* time = std::get_if<std::string>(&row[6])) finding.time = *time;
        finding.count = integer_of(row[7]);
        if (auto until = text_of(row[8]); !until.empty())
            finding.acknowledged = {std::move(until), text_of(row[9]), text_of(row[10])};
        if (const auto* seen = std::get_if<std::string>(&row[11])) finding.first_seen = *seen;
        by_id.emplace(finding.id, verdict.findings.size());
        verdict.findings.push_back(std::move(finding));
    });
    each_typed_row(store, "finding_evidence", kEvidence, [&](const std::vector<TypedValue>& row) {
        const auto found = by_id.find(text_of(row[0]));
        if (found != by_id.end())
            verdict.findings[found->second].evidence.push_back(
                {text_of(row[1]), integer_of(row[2])});
    });
    each_typed_row(store, "finding_entities", kEntities, [&](const std::vector<TypedValue>& row) {
        const auto found = by_id.find(text_of(row[0]));
        if (found != by_id.end())
            verdict.findings[found->second].entities.push_back(
                {text_of(row[1]), integer_of(row[2])});
    });
    each_typed_row(store, "finding_growth", kGrowth, [&](const std::vector<TypedValue>& row) {
        const auto found = by_id.find(text_of(row[0]));
        if (found != by_id.end())
            verdict.findings[found->second].growth.push_back(
                {text_of(row[1]), integer_of(row[2]), integer_of(row[3]), text_of(row[4])});
    });
    each_typed_row(store, "unchanged_values", kUnchanged, [&](const std::vector<TypedValue>& row) {
        verdict.unchanged.push_back({
            {text_of(row[0]), integer_of(row[1])},
            text_of(row[2]), text_of(row[3])
        });
    });
    std::map<std::string, std::size_t> by_subsystem;
    each_typed_row(store, "health", kHealth, [&](const std::vector<TypedValue>& row) {
        const auto subsystem = of_word(findings::kSubsystems, row[0]);
        const auto health = of_word(findings::kHealthWords, row[1]);
        if (!subsystem || !health) return;
        by_subsystem.emplace(text_of(row[0]), verdict.health.size());
        verdict.health.push_back({*subsystem, *health, {}, {}});
    });
    const auto add_words = [&](const char* table, std::span<const TypedColumn> columns,
                               std::vector<std::string> Health::*list) {
        each_typed_row(store, table, columns, [&](const std::vector<TypedValue>& row) {
            const auto found = by_subsystem.find(text_of(row[0]));
            if (found != by_subsystem.end())
                (verdict.health[found->second].*list).push_back(text_of(row[1]));
        });
    };
    add_words("health_captures", kHealthCaptures, &Health::judged_by);
    add_words("health_missing", kHealthMissing, &Health::missing);
    return verdict;
}

}  // namespace qvhost
