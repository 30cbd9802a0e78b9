// What changed, as JSON for programs. Events and rows are written as they come.
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <type_traits>

#include "compare/words.h"
#include "qvhost/present/diff_view.h"
#include "report/json_text.h"
#include "report/verdict_json.h"
#include "verdict/inventory_tables.h"

namespace qvhost {

namespace {

using nlohmann::ordered_json;

constexpr int kFormat = 1;  // counts the changes of the format that a reader has to know of

ordered_json known(const std::string& text) {
    return text.empty() ? ordered_json() : ordered_json(text);
}
ordered_json known(const inventory::Text& text) {
    return text ? ordered_json(*text) : ordered_json();
}

ordered_json json_of(const compare::Value& value) {
    return std::visit(
        [](const auto& one) -> ordered_json {
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(one)>, std::monostate>) {
                return nullptr;
            } else {
                return one;
            }
        },
        value);
}

ordered_json json_of(const DiffView::Report& report) {
    const auto& systems = report.side.inventory.systems;
    const auto system = systems.empty() ? inventory::System{} : systems.front();
    return {
        {"report",     report.path                             },
        {"host",       known(report.side.collection.host)      },
        {"machine_id", known(report.side.collection.machine_id)},
        {"product",    known(system.product)                   },
        {"serial",     known(system.serial)                    },
        {"finished",   known(report.side.collection.finished)  },
    };
}

ordered_json json_of(const findings::Place& place) {
    if (place.capture.empty()) return nullptr;
    return {
        {"capture", place.capture},
        {"line",    place.line   }
    };
}

ordered_json json_of(const compare::Change& change) {
    auto fields = ordered_json::array();
    for (const auto& field : change.fields) {
        fields.push_back({
            {"field", field.field        },
            {"from",  json_of(field.from)},
            {"to",    json_of(field.to)  },
        });
        if (compare::is_known(field.by)) fields.back()["by"] = json_of(field.by);
    }
    return {
        {"kind",    change.kind         },
        {"subject", change.subject      },
        {"what",    change.what         },
        {"trend",   word(change.trend)  },
        {"fields",  std::move(fields)   },
        {"old",     json_of(change.from)},
        {"new",     json_of(change.to)  },
    };
}

ordered_json json_of(const compare::SeverityChange& change) {
    return {
        {"id",      change.finding.id            },
        {"subject", change.finding.subject       },
        {"from",    word(change.from)            },
        {"to",      word(change.finding.severity)},
    };
}

ordered_json json_of(const compare::HealthChange& change) {
    return {
        {"subsystem", word(change.subsystem)},
        {"from",      word(change.from)     },
        {"to",        word(change.to)       },
    };
}

ordered_json json_of(const compare::Unread& unread) {
    return {
        {"kind",     unread.kind        },
        {"field",    known(unread.field)},
        {"subjects", unread.subjects    },
    };
}

ordered_json json_of(const compare::Lack& lack) {
    return {
        {"subsystem", word(lack.subsystem)},
        {"missing",   lack.words          },
    };
}

ordered_json json_of(const inventory::Event& event) {
    return {
        {"source",   event.source        },
        {"time",     known(event.time)   },
        {"severity", word(event.severity)},
        {"subject",  known(event.subject)},
        {"text",     event.text          },
        {"capture",  event.place.capture },
        {"line",     event.place.line    },
    };
}

ordered_json json_of(const Record& record) {
    auto values = ordered_json::object();
    for (const auto& [id, display, value] : record.properties)
        values[as_utf8(id)] = std::visit([](const auto& one) { return ordered_json(one); }, value);
    return {
        {"name",   record.name      },
        {"values", std::move(values)},
    };
}

ordered_json json_of(const EventTally& tally) {
    auto counts = ordered_json::object();
    for (const auto severity :
         {inventory::Severity::critical, inventory::Severity::warning, inventory::Severity::info})
        counts[word(severity)] = tally.counts[static_cast<std::size_t>(severity)];
    return counts;
}

// A list, one item a line.
class ListPrinter {
public:
    explicit ListPrinter(std::ostream& out) : out_(out) { out_ << '['; }
    void item(const ordered_json& json) {
        out_ << separator_ << json_line(json);
        separator_ = ",\n";
    }
    void end() { out_ << ']'; }

private:
    std::ostream& out_;
    const char* separator_ = "\n";
};

template <class List>
void put_list(std::ostream& out, const List& list) {
    ListPrinter printer(out);
    for (const auto& one : list) printer.item(json_of(one));
    printer.end();
}

void put_findings(std::ostream& out, const compare::Difference& difference) {
    const auto put = [&](const std::vector<findings::Finding>& findings) {
        ListPrinter printer(out);
        for (const auto& one : qvhost::json_of(findings)) printer.item(one);
        printer.end();
    };
    out << R"("findings":{"new":)";
    put(difference.new_findings);
    out << R"(,"gone":)";
    put(difference.gone_findings);
    out << R"(,"severity":)";
    put_list(out, difference.other_severity);
    out << '}';
}

void put_unread(std::ostream& out, const char* name, const std::vector<compare::Unread>& unread,
                const std::vector<compare::Lack>& lacks) {
    out << '"' << name << R"(":{"missing":)";
    put_list(out, lacks);
    out << R"(,"fields":)";
    put_list(out, unread);
    out << '}';
}

void put_events(std::ostream& out, DiffView& view) {
    out << R"("events":{"counts":)"
        << json_line({
               {"new",  json_of(view.new_events) },
               {"gone", json_of(view.gone_events)}
    })
        << R"(,"new":)";
    ListPrinter added(out);
    view.events.each_new([&](const inventory::Event& event) { added.item(json_of(event)); });
    added.end();
    out << R"(,"gone":)";
    ListPrinter gone(out);
    view.events.each_gone([&](const inventory::Event& event) { gone.item(json_of(event)); });
    gone.end();
    out << '}';
}

void put_raw(std::ostream& out, DiffView& view) {
    out << "\"raw\":{";
    const char* separator = "\n";
    for (const auto& table : view.raw_tables) {
        out << separator << json_line(table) << R"(:{"gone":)";
        separator = ",\n";
        RecordDifference rows(view.from.store, view.to.store, table);
        ListPrinter gone(out);
        rows.each_gone([&](const Record& record) {
            view.has_raw_rows = true;
            gone.item(json_of(record));
        });
        gone.end();
        out << R"(,"new":)";
        ListPrinter added(out);
        rows.each_new([&](const Record& record) {
            view.has_raw_rows = true;
            added.item(json_of(record));
        });
        added.end();
        out << '}';
    }
    out << "},\n";
}

}  // namespace

void print_diff_json(std::ostream& out, DiffView& view) {
    const auto& difference = view.difference;
    out << "{\"format\":" << kFormat << ",\n\"machines\":" << json_line(word(difference.machines))
        << ",\n\"old\":" << json_line(json_of(view.from))
        << ",\n\"new\":" << json_line(json_of(view.to)) << ",\n\"health\":";
    put_list(out, difference.health);
    out << ",\n\"changes\":";
    put_list(out, difference.changes);
    out << ",\n";
    put_findings(out, difference);
    out << ",\n";
    put_unread(out, "not_read_now", difference.not_now, difference.lacking_now);
    out << ",\n";
    put_unread(out, "not_read_then", difference.not_then, difference.lacking_then);
    out << R"(,
"not_read_in_either":{"missing":)";
    put_list(out, difference.lacking_both);
    out << "},\n";
    put_events(out, view);
    out << ",\n";
    if (!view.raw_tables.empty()) put_raw(out, view);
    out << "\"same\":" << (view.is_same() ? "true" : "false") << "}\n";
}

}  // namespace qvhost
