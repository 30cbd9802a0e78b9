#include <array>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "inventory/storage/device_name.h"
#include "inventory/storage/keys.h"
#include "inventory/storage/md.h"
#include "inventory/storage/software.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// Whether the member of each position is in sync.
std::map<std::int64_t, bool> positions_of(const std::vector<VolumeMember>& members) {
    std::map<std::int64_t, bool> positions;
    for (const auto& member : members) {
        if (!member.position) continue;
        auto& is_in_sync = positions[*member.position];
        is_in_sync = is_in_sync || (member.state && member.state->starts_with("active sync"));
    }
    return positions;
}

// "clean, degraded [U_], recovering": shows which members are there, as /proc/mdstat does.
void show_members(std::string& state, const std::map<std::int64_t, bool>& positions) {
    constexpr std::string_view kDegraded = ", degraded";
    const auto at = state.find(kDegraded);
    if (at == npos) return;
    std::string shown;
    for (const auto& [position, is_in_sync] : positions) shown += is_in_sync ? 'U' : '_';
    state.insert(at + kDegraded.size(), " [" + shown + "]");
}

// /dev/md0:
//            Version : 1.2
//         Raid Level : raid1
//         Array Size : 1046528 (1022.00 MiB 1071.64 MB)
//              State : clean, degraded, recovering
//     Rebuild Status : 5% complete
//
//     Number   Major   Minor   RaidDevice State
//        0       8        1        0      active sync   /dev/sda1
//        -       0        0        1      removed
//        1       8       17        -      faulty   /dev/sdb1
constexpr auto kArray = std::to_array<Key<Volume>>({
    {"Raid Level", as_text<&Volume::raid> },
    {"State",      as_text<&Volume::state>},
});

class MdadmReader {
public:
    MdadmReader(CaptureLines& lines, Reading& reading) : lines_(lines), reading_(reading) {}

    void read() {
        while (const auto line = lines_.next()) {
            number_ = line->number;
            ended_ = line->ended;
            const auto text = trimmed(line->text);
            if (!text.empty()) read(text);
        }
        finish();
        if (arrays_ == 0 && reading_.how.errors.empty()) gap("no array is in it");
        reading_.how.lines = lines_.count();
    }

private:
    void gap(std::string words) { reading_.how.gap(number_, std::move(words)); }

    void read(std::string_view text) {
        if (text.starts_with("/dev/") && text.ends_with(':') && text.find_first_of(" \t") == npos) {
            begin(text.substr(0, text.size() - 1));
        } else if (text.starts_with("Number ") && md_) {
            in_members_ = true;
        } else if (in_members_ && (is_digit(text.front()) || text.starts_with("- "))) {
            member(text);
        } else if (const auto pair = key_value(text, " : "); pair && md_) {
            key(*pair);
        } else if (text.starts_with("mdadm:")) {
            reading_.how.errors.push_back({number_, std::string(text)});
        } else {
            reading_.how.unknown_line(number_);
        }
    }

    void begin(std::string_view device) {
        finish();
        Volume& array = md_.emplace().array;
        array = reading_.entity_at<Volume>(number_);
        array.device = std::string(device);
        array.name = told(device.substr(device.rfind('/') + 1));
        ++arrays_;
    }

    // "0       8        1        0      active sync   /dev/sda1"
    void member(std::string_view text) {
        const auto cells = words(text);
        constexpr std::size_t kRaidDevice = 3, kState = 4;
        if (cells.size() <= kRaidDevice || !ended_)
            return gap("a row that does not fit its heading");
        auto member = member_of(md_->array, reading_, number_);
        member.position = integer(cells[kRaidDevice]);
        std::string state;
        for (auto i = kState; i < cells.size() && !cells[i].starts_with("/dev/"); ++i)
            state += (state.empty() ? "" : " ") + std::string(cells[i]);
        member.state = told(state);
        member.is_spare = !member.position && state.starts_with("spare");
        const auto device = text.rfind("/dev/");
        if (device != npos) member.device = drive_of(text.substr(device));
        if (device != npos && state.find("faulty") != npos)
            add_faulty(reading_, number_, text.substr(device));
        md_->members.push_back(std::move(member));
    }

    void key(const KeyValue& pair) {
        constexpr std::string_view kStatus = " Status";
        Volume& array = md_->array;
        set_by_key(std::span<const Key<Volume>>(kArray), pair.key, pair.value, array);
        if (pair.key == "State") array.place.line = number_;
        if (pair.key == "Raid Devices") places_ = integer(pair.value);
        if (pair.key == "Array Size") {
            const auto blocks = pair.value.substr(0, pair.value.find(' '));
            if (const auto bytes = bytes_of_blocks(blocks, reading_, number_))
                array.capacity_bytes = bytes;
        }
        if (pair.key.ends_with(kStatus) && pair.value.ends_with("complete")) {
            array.operation = told(pair.key.substr(0, pair.key.size() - kStatus.size()));
            array.progress_percent = percent_in(pair.value);
            array.elsewhere.push_back({"operation", reading_.at(number_)});
        }
    }

    void finish() {
        if (!md_) return;
        // A container has no state: /proc/mdstat tells whether its arrays run.
        const bool is_container = md_->array.raid == "container";
        if ((!md_->array.state && !is_container) || !in_members_) gap("an array that is cut off");
        const auto positions = positions_of(md_->members);
        const auto rows = static_cast<std::int64_t>(positions.size());
        if (in_members_ && places_ && rows < *places_)
            gap(std::to_string(*places_) + " members announced, " + std::to_string(rows) + " read");
        if (places_ && rows == *places_ && md_->array.state)
            show_members(*md_->array.state, positions);
        if (!is_container) file(std::move(*md_), reading_);
        md_.reset();
        places_.reset();
        in_members_ = false;
    }

    CaptureLines& lines_;
    Reading& reading_;
    std::int64_t number_ = 0;
    bool ended_ = true;
    std::int64_t arrays_ = 0;

    std::optional<Md> md_;
    Integer places_;  // "Raid Devices": each has a row
    bool in_members_ = false;
};

}  // namespace

void read_mdadm(CaptureLines& lines, Reading& reading) { MdadmReader(lines, reading).read(); }

}  // namespace qvhost::inventory
