#include "describe.h"

#include <sstream>

#include "inventory/fields.h"

namespace qvhost::inventory {

namespace {

constexpr int kDigits = 16;  // of a number, at most

template <class Value>
void put(std::ostream& out, const char* name, const std::optional<Value>& value) {
    if (!value) return;
    out << ' ' << name << '=';
    if constexpr (std::is_same_v<Value, bool>) {
        out << (*value ? "yes" : "no");
    } else {
        out << *value;
    }
}

void put(std::ostream& out, const char* name, const Texts& values) {
    if (values.empty()) return;
    out << ' ' << name << '=';
    for (const auto& value : values) out << '[' << value << ']';
}

template <class Entity>
void put_fields(std::ostream& out, const Entity& entity) {
    for (const auto& field : kind_of<Entity>().fields)
        std::visit([&](auto member) { put(out, field.name, entity.*member); }, field.member);
}

void put_place(std::ostream& out, const char* name, const Place& place, bool captures) {
    out << name << ' ';
    if (captures) out << place.capture << ' ';
    out << place.line << ':';
}

}  // namespace

ReadText read_text(Reader reader, std::string_view text, const std::string& capture) {
    ReadText read;
    read.how = read_into(read.found, read.events, reader, text, capture);
    return read;
}

Understanding read_into(Inventory& found, std::vector<Event>& events, Reader reader,
                        std::string_view text, const std::string& capture) {
    CaptureLines lines(text);
    Reading reading{capture, found, [&](Event&& event) { events.push_back(std::move(event)); }, {}};
    reader(lines, reading);
    return reading.how;
}

std::string describe(const Inventory& inventory, bool captures) {
    std::ostringstream out;
    out.precision(kDigits);
    each_kind([&](const auto& kind) {
        for (const auto& entity : inventory.*kind.list) {
            put_place(out, kind.name, entity.place, captures);
            put_fields(out, entity);
            out << '\n';
        }
    });
    for (const auto& row : inventory.topology) {
        put_place(out, "topology", row.place, captures);
        put(out, "controller", row.controller);
        put(out, "drive_group", row.drive_group);
        put(out, "array", row.array);
        put(out, "type", row.type);
        put(out, "state", row.state);
        out << '\n';
    }
    for (const auto& count : inventory.controller_counts) {
        put_place(out, "controller_count", count.place, captures);
        put(out, "tool", count.tool);
        put(out, "count", count.count);
        out << '\n';
    }
    for (const auto& clock : inventory.clocks) {
        put_place(out, "clock", clock.place, captures);
        out << ' ' << clock.source;
        put(out, "time", clock.time);
        put(out, "system_time", clock.system_time);
        out << '\n';
    }
    return out.str();
}

std::string describe(const Understanding& how) {
    std::ostringstream out;
    out << how.lines << " lines";
    if (how.not_understood > 0)
        out << ", " << how.not_understood << " not understood (" << how.first_not_understood << ')';
    out << '\n' << describe_gaps(how);
    return out.str();
}

std::string describe_gaps(const Understanding& how) {
    std::ostringstream out;
    for (const auto& gap : how.gaps) out << "gap " << gap.line << ": " << gap.words << '\n';
    for (const auto& error : how.errors)
        out << "error " << error.line << ": " << error.words << '\n';
    return out.str();
}

template <class Entity>
std::string describe_one(const Entity& entity) {
    std::ostringstream out;
    out.precision(kDigits);
    out << entity.place.line << ':';
    put_fields(out, entity);
    return out.str();
}
template std::string describe_one(const Sensor&);
template std::string describe_one(const PowerSupply&);
template std::string describe_one(const System&);

std::string describe(const std::vector<Event>& events) {
    constexpr const char* kSeverities[] = {"info", "warning", "critical"};
    std::ostringstream out;
    for (const auto& event : events) {
        out << event.place.line << ' ' << event.source << ' ' << event.time.value_or("-") << ' '
            << kSeverities[static_cast<int>(event.severity)] << " [" << event.subject.value_or("")
            << "] " << event.text << '\n';
    }
    return out.str();
}

}  // namespace qvhost::inventory
