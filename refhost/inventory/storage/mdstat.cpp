#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "inventory/storage/device_name.h"
#include "inventory/storage/md.h"
#include "inventory/storage/software.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// Personalities : [raid1] [raid6] [raid5] [raid4]
// md0 : active raid1 sdb1[1](F) sda1[0]
//       1046528 blocks super 1.2 [2/1] [U_]
//       [=>...................]  recovery =  5.5% (57600/1046528) finish=0.2min speed=57600K/sec
//
// unused devices: <none>
//
// A firmware's RAID has a container, which is never active, beside the arrays in it:
// md126 : active raid1 sda[1] sdb[0]
//       1046528 blocks super external:/md127/0 [2/2] [UU]
// md127 : inactive sdb[1](S) sda[0](S)
//       5928 blocks super external:imsm
class MdstatReader {
public:
    MdstatReader(CaptureLines& lines, Reading& reading) : lines_(lines), reading_(reading) {}

    void read() {
        while (const auto line = lines_.next()) {
            number_ = line->number;
            ended_ = line->ended;
            const auto text = trimmed(line->text);
            if (!text.empty()) read(text);
        }
        finish();
        // With an array in it that runs a container is no volume; without one its data cannot be reached.
        for (auto& container : containers_) {
            if (!containers_in_use_.contains(*container.array.name))
                file(std::move(container), reading_);
        }
        if (!has_head_ || !has_end_) gap("it has no end or no beginning");
        reading_.how.lines = lines_.count();
    }

private:
    void gap(std::string words) { reading_.how.gap(number_, std::move(words)); }

    void read(std::string_view text) {
        if (text.starts_with("Personalities")) {
            has_head_ = true;
        } else if (text.starts_with("unused devices")) {
            finish();
            has_end_ = ended_;
        } else if (const auto pair = key_value(text, " : "); pair && pair->key.starts_with("md")) {
            array(*pair);
        } else if (md_ && text.find(" blocks") != npos) {
            blocks(text);
        } else if (md_ && (text.starts_with('[') || text.find('=') != npos)) {
            operation(text);
        } else if (!md_ || !text.starts_with("bitmap")) {
            reading_.how.unknown_line(number_);
        }
    }

    // "md0 : active (auto-read-only) raid1 sdb1[1](F) sda1[0]"
    void array(const KeyValue& pair) {
        finish();
        const auto cells = words(pair.value);
        Volume& array = md_.emplace().array;
        array = reading_.entity_at<Volume>(number_);
        array.name = std::string(pair.key);
        array.device = "/dev/" + *array.name;
        is_inactive_ = cells[0] != "active";
        has_blocks_ = false;
        std::string state(cells[0]), faulty;
        for (std::size_t i = 1; i < cells.size(); ++i) {
            const auto cell = cells[i];
            if (cell.starts_with('(')) {
                state += " " + std::string(cell);
            } else if (cell.find('[') != npos) {
                member(cell, faulty);
            } else if (!array.raid && ended_) {
                array.raid = std::string(cell);
            }
        }
        // Half a word is no state.
        if (ended_ || cells.size() > 1) array.state = state + faulty;
    }

    // "sdb1[1](F)"; adds to the array's state who is faulty.
    void member(std::string_view cell, std::string& faulty) {
        const auto device = cell.substr(0, cell.find('['));
        auto member = member_of(md_->array, reading_, number_);
        member.device = drive_of(device);
        if (cell.ends_with("(F)")) {
            member.state = "faulty";
            faulty += ", " + std::string(device) + " faulty";
            add_faulty(reading_, number_, device);
        } else if (cell.ends_with("(S)")) {
            // An array that does not run calls all of its members so.
            if (is_inactive_)
                member.is_spare.reset();
            else
                member.is_spare = true;
        }
        md_->members.push_back(std::move(member));
    }

    // "1046528 blocks super 1.2 [2/1] [U_]"
    void blocks(std::string_view text) {
        has_blocks_ = true;
        Volume& array = md_->array;
        metadata(text);
        if (const auto bytes = bytes_of_blocks(text.substr(0, text.find(' ')), reading_, number_))
            array.capacity_bytes = bytes;
        const auto bracket = text.rfind('[');
        const auto members = bracket == npos ? std::string_view() : text.substr(bracket);
        if (array.state && members.find('_') != npos && members.find_first_not_of("[]U_") == npos) {
            *array.state += ", degraded " + std::string(members);
            array.place.line = number_;
        }
    }

    // "super external:imsm" of a container; "super external:/md127/0" or "-md127/0" of an array in one
    void metadata(std::string_view text) {
        constexpr std::string_view kExternal = " super external:";
        const auto at = text.find(kExternal);
        if (at == npos) return;
        auto metadata = text.substr(at + kExternal.size());
        metadata = metadata.substr(0, metadata.find(' '));
        if (metadata.starts_with('/') || metadata.starts_with('-')) {
            metadata.remove_prefix(1);
            containers_in_use_.emplace(metadata.substr(0, metadata.find('/')));
        } else {
            md_->is_container = true;
            md_->array.raid = "container";
        }
    }

    // "recovery =  5.5% (...)", "resync=DELAYED"
    void operation(std::string_view text) {
        for (const std::string_view operation :
             {"recovery", "resync", "reshape", "check", "repair"}) {
            if (text.find(operation) == npos) continue;
            md_->array.operation = std::string(operation);
            md_->array.progress_percent = percent_in(text);
            md_->array.elsewhere.push_back({"operation", reading_.at(number_)});
            return;
        }
    }

    void finish() {
        if (!md_) return;
        if (!has_blocks_ && !is_inactive_) gap("an array that is cut off");
        if (md_->is_container)
            containers_.push_back(std::move(*md_));
        else
            file(std::move(*md_), reading_);
        md_.reset();
    }

    CaptureLines& lines_;
    Reading& reading_;
    std::int64_t number_ = 0;
    bool ended_ = true;
    bool has_head_ = false, has_end_ = false;

    std::optional<Md> md_;
    bool has_blocks_ = true, is_inactive_ = false;
    std::vector<Md> containers_;
    std::set<std::string> containers_in_use_;
};

}  // namespace

void read_mdstat(CaptureLines& lines, Reading& reading) { MdstatReader(lines, reading).read(); }

}  // namespace qvhost::inventory
