#include "inventory/storage/join.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "inventory/fields.h"
#include "inventory/storage/members.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

template <class Value>
bool is_told(const std::optional<Value>& value) {
    return value.has_value();
}
bool is_told(const Texts& value) { return !value.empty(); }

// Fields that are empty take what the other entity tells.
template <class Entity>
void fill(Entity& entity, const Entity& other) {
    for (const auto& field : kind_of<Entity>().fields) {
        std::visit(
            [&](auto member) {
                if (!is_told(entity.*member)) entity.*member = other.*member;
            },
            field.member);
    }
}

// Whose numbers, and which; "" and none where there are none.
struct Numbered {
    std::string tool;
    std::vector<Integer> numbers;
    std::string name;
    bool operator<(const Numbered& other) const {
        return std::tie(tool, numbers, name) < std::tie(other.tool, other.numbers, other.name);
    }
};

using Key = std::optional<Numbered>;

Key key(const std::string& tool, std::vector<Integer> numbers, std::string name = {}) {
    return Numbered{tool, std::move(numbers), std::move(name)};
}

Key key_of(const Controller& c) { return c.number ? key(c.tool, {c.number}) : Key(); }

Key key_of(const Volume& v) {
    if (v.controller && v.number) return key(v.tool, {v.controller, v.number});
    return !v.controller && v.device ? key({}, {}, *v.device) : Key();
}

Key key_of(const Enclosure& e) {
    return e.controller && e.number ? key(e.tool, {e.controller, e.number}) : Key();
}

Key key_of(const Battery& b) {
    return b.controller ? key(b.tool, {b.controller}, b.model.value_or("")) : Key();
}

Key key_of(const TopologyRow& t) {
    if (!t.controller) return std::nullopt;
    return key(t.tool, {t.controller, t.drive_group, t.array}, t.type.value_or(""));
}

Key key_of(const VolumeMember& m) {
    if (m.controller)
        return key(m.tool, {m.controller, m.volume, m.drive_group, m.span, m.position, m.enclosure,
                            m.slot, m.device_id});
    // An array's list of members in /proc/mdstat and in mdadm's own words.
    return m.volume_name && m.device ? key(*m.device, {}, *m.volume_name) : Key();
}

Key key_of(const Drive& d) {
    if (d.controller && d.slot) return key(d.tool, {d.controller, d.enclosure, d.slot});
    return d.controller && d.device_id ? key(d.tool, {d.controller, d.device_id}) : Key();
}

// Two serial numbers are two things, whatever else is alike. A capture that was cut off may end within one: the
// beginning of a serial number is none of its own.
template <class Entity>
bool contradict(const Entity& a, const Entity& b) {
    if constexpr (requires { a.serial; }) {
        return a.serial && b.serial && !a.serial->starts_with(*b.serial) &&
               !b.serial->starts_with(*a.serial);
    }
    return false;
}

// Of two serial numbers that do not contradict each other the whole one.
template <class Entity>
void take_whole_serial(Entity& entity, const Entity& other) {
    if constexpr (requires { entity.serial; }) {
        if (entity.serial && other.serial && other.serial->size() > entity.serial->size())
            entity.serial = other.serial;
    }
}

// Entities of one key become the first of them; those without a key stay as they are.
template <class Entity, class Merge>
void join(std::vector<Entity>& entities, Merge merge) {
    std::map<Numbered, std::size_t> known;
    std::vector<Entity> joined;
    joined.reserve(entities.size());
    for (Entity& entity : entities) {
        const auto key = key_of(entity);
        if (key) {
            const auto [at, is_new] = known.emplace(*key, joined.size());
            if (!is_new && !contradict(joined[at->second], entity)) {
                take_whole_serial(joined[at->second], entity);
                merge(joined[at->second], entity);
                continue;
            }
        }
        joined.push_back(std::move(entity));
    }
    entities = std::move(joined);
}

// The row of a list tells the state; an entity stands there. Where troubles follow the same state, it stands
// with them: "Optimal, temperature: 110 C/ 230 F (Abnormal)".
template <class Entity, class State>
auto merge_by(State state) {
    return [state](Entity& entity, const Entity& other) {
        const auto& [here, there] = std::tie(entity.*state, other.*state);
        if (there && (!here || there->starts_with(*here + ", "))) {
            here = there;
            entity.place = other.place;
            entity.elsewhere = other.elsewhere;
        }
        fill(entity, other);
    };
}

// Troubles stand with the state, whichever of a tool's captures tells them.
template <class Entity, class State>
auto merge_with_troubles(State state) {
    return [state, merge = merge_by<Entity>(state)](Entity& entity, const Entity& other) {
        merge(entity, other);
        auto& words = entity.*state;
        for (const FieldPlace& trouble : other.elsewhere) {
            if (!words || words->find(trouble.field) != std::string::npos) continue;
            *words += ", " + trouble.field;
            entity.elsewhere.push_back(trouble);
        }
    };
}

// /proc/mdstat has no word for an array that lacks too many members.
bool says_failed(const Volume& volume) {
    return !volume.controller && volume.state &&
           volume.state->find(", FAILED") != std::string::npos;
}

void merge_volume(Volume& volume, const Volume& other) {
    const auto tells_operation = [](const FieldPlace& at) { return at.field == "operation"; };
    if (says_failed(other) && !says_failed(volume)) {
        volume.state = other.state;
        volume.place = other.place;
    }
    if (!volume.operation && other.operation) {
        std::erase_if(volume.elsewhere, tells_operation);
        std::copy_if(other.elsewhere.begin(), other.elsewhere.end(),
                     std::back_inserter(volume.elsewhere), tells_operation);
    }
    const auto merge = merge_by<Volume>(&Volume::state);
    merge(volume, other);
}

// A list cuts long models off; the details do not.
void merge_drive(Drive& drive, const Drive& other) {
    const bool is_longer = drive.model && other.model && other.model->starts_with(*drive.model);
    if (is_longer) drive.model = other.model;
    for (const auto& there : other.elsewhere) {
        const bool known =
            std::any_of(drive.elsewhere.begin(), drive.elsewhere.end(),
                        [&](const FieldPlace& here) { return here.field == there.field; });
        if (!known) drive.elsewhere.push_back(there);
    }
    // Its data count, wherever its other partitions serve.
    if (!drive.state || (other.state && other.pool_part.empty())) drive.pool_part = other.pool_part;
    if (!drive.state && other.state) drive.place = other.place;
    if (!drive.nvme_warnings) drive.nvme_warnings = other.nvme_warnings;
    if (!drive.smartctl_status) drive.smartctl_status = other.smartctl_status;
    if (!drive.reallocated_sectors) drive.reallocated_sectors = other.reallocated_sectors;
    if (!drive.temperature_state) drive.temperature_state = other.temperature_state;
    if (!drive.available_spare_threshold)
        drive.available_spare_threshold = other.available_spare_threshold;
    fill(drive, other);
}

// One list tells the state, another one who is a spare.
void merge_member(VolumeMember& member, const VolumeMember& other) {
    if (!member.state && other.state) {
        member.place = other.place;
        member.is_spare = other.is_spare;
    }
    if (!member.drive) member.drive = other.drive;
    fill(member, other);
}

// "0x5000C500A0000000" and "5000c500a0000000" are one.
std::string folded(std::string_view text) {
    if (text.starts_with("0x")) text.remove_prefix(2);
    return lowered(text);
}

// Known drives by what the operating system calls them.
class Known {
public:
    void add(const Drive& drive, std::size_t index) {
        if (drive.serial) serials_.emplace(folded(*drive.serial), index);
        if (drive.device) devices_.emplace(*drive.device, index);
        if (drive.wwn) wwns_.emplace(folded(*drive.wwn), index);
    }

    std::optional<std::size_t> find(const Drive& drive, const std::vector<Drive>& drives) const {
        if (drive.serial) {
            if (const auto index = find_serial(folded(*drive.serial))) return index;
        }
        // One name, two serial numbers: something else was plugged in.
        const auto fits = [&](std::size_t index) { return !contradict(drives[index], drive); };
        if (drive.device) {
            const auto at = devices_.find(*drive.device);
            if (at != devices_.end() && fits(at->second)) return at->second;
        }
        if (drive.wwn) {
            const auto at = wwns_.find(folded(*drive.wwn));
            if (at != wwns_.end() && fits(at->second)) return at->second;
        }
        return std::nullopt;
    }

private:
    using Index = std::map<std::string, std::size_t>;

    // Of some serial numbers one tool prints only the beginning.
    std::optional<std::size_t> find_serial(const std::string& serial) const {
        constexpr std::size_t kEnough = 8, kLongest = 64;  // characters
        auto at = serials_.lower_bound(serial);
        if (at != serials_.end() && at->first == serial) return at->second;
        if (serial.size() < kEnough || serial.size() > kLongest) return std::nullopt;
        if (at != serials_.end() && at->first.starts_with(serial)) return at->second;
        for (auto size = serial.size() - 1; size >= kEnough; --size) {
            at = serials_.find(serial.substr(0, size));
            if (at != serials_.end()) return at->second;
        }
        return std::nullopt;
    }

    Index serials_, devices_, wwns_;
};

// What the operating system sees: behind a controller that a tool of its own told, or behind none.
Known join_devices(Inventory& inventory) {
    std::vector<Drive> joined;
    Known known;
    const auto add = [&](Drive& drive) {
        known.add(drive, joined.size());
        joined.push_back(std::move(drive));
    };
    for (Drive& drive : inventory.drives) {
        if (drive.controller) add(drive);
    }
    for (Drive& drive : inventory.drives) {
        if (drive.controller) continue;
        const auto index = known.find(drive, joined);
        if (!index) {
            add(drive);
            continue;
        }
        Drive& same = joined[*index];
        // A drive may be a member of several arrays: the one that it is out of counts.
        if (same.state == "ONLINE" && drive.state && drive.state != "ONLINE") {
            same.state = drive.state;
            same.place = drive.place;
        }
        merge_drive(same, drive);
        known.add(same, *index);
    }
    // lsblk's rows of RAID volumes and the like, which no tool told to be drives.
    std::erase_if(joined, [&](const Drive& drive) {
        return !drive.controller && !drive.state && !drive.interface && !drive.smart_alert;
    });
    std::set<std::string> volumes;
    for (const Volume& volume : inventory.volumes) {
        if (volume.device) volumes.insert(*volume.device);
    }
    std::erase_if(joined, [&](const Drive& drive) {
        return !drive.controller && !drive.state && !drive.smart_alert && drive.device &&
               volumes.contains(*drive.device);
    });
    inventory.drives = std::move(joined);
    Known listed;
    for (std::size_t i = 0; i < inventory.drives.size(); ++i) listed.add(inventory.drives[i], i);
    return listed;
}

bool has_details(const Drive& drive) {
    return std::any_of(drive.elsewhere.begin(), drive.elsewhere.end(),
                       [](const FieldPlace& at) { return at.field == "media_errors"; });
}

// "/c0/eall/sall show all" tells every drive in an enclosure. One of a list that it does not tell was
// cut off.
std::vector<CaptureGap> missing_details(const std::vector<Drive>& drives) {
    struct Count {
        std::int64_t drives = 0, detailed = 0;
        Place last;
    };
    std::map<std::int64_t, Count> controllers;
    for (const Drive& drive : drives) {
        if (drive.tool != "storcli" || !drive.controller || !drive.enclosure || !drive.slot)
            continue;
        auto& count = controllers[*drive.controller];
        ++count.drives;
        if (!has_details(drive)) continue;
        ++count.detailed;
        const auto& place = drive.elsewhere.front().place;
        if (place.capture != count.last.capture || place.line > count.last.line) count.last = place;
    }
    std::vector<CaptureGap> gaps;
    for (const auto& [number, count] : controllers) {
        if (count.detailed == 0 || count.detailed == count.drives) continue;
        gaps.push_back({
            count.last.capture,
            {count.last.line, std::to_string(count.drives) + " drives of controller " +
                                  std::to_string(number) + ", details of " +
                                  std::to_string(count.detailed)}
        });
    }
    return gaps;
}

}  // namespace

std::vector<CaptureGap> join_storage(Inventory& inventory) {
    join(inventory.controllers, merge_with_troubles<Controller>(&Controller::status));
    join(inventory.volumes, merge_volume);
    join(inventory.enclosures, merge_with_troubles<Enclosure>(&Enclosure::state));
    join(inventory.batteries, merge_with_troubles<Battery>(&Battery::state));
    join(inventory.topology, [](TopologyRow&, const TopologyRow&) {});
    join(inventory.drives, merge_drive);
    const auto known = join_devices(inventory);
    join_members(inventory,
                 [&](const Drive& drive) { return known.find(drive, inventory.drives); });
    join(inventory.volume_members, merge_member);
    return missing_details(inventory.drives);
}

}  // namespace qvhost::inventory
