#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "inventory/storage/device_name.h"
#include "inventory/storage/software.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// "sda", "/dev/sda1", or a name of /dev/disk/by-id: "wwn-0x5000c500a0000000-part1",
// "ata-ST1000NM0045_Z1X00000".
template <class Entity>
void name_drive(Entity& drive, std::string_view name) {
    if (const auto slash = name.rfind('/'); slash != npos) name.remove_prefix(slash + 1);
    const auto part = name.rfind("-part");
    if (part != npos) name = name.substr(0, part);
    if (name.starts_with("wwn-0x")) {
        drive.wwn = told(name.substr(6));
    } else if (name.starts_with("ata-") || name.starts_with("nvme-") || name.starts_with("scsi-")) {
        const auto mark = name.rfind('_');
        if (mark != npos) drive.serial = told(name.substr(mark + 1));
        if (!drive.serial) drive.device = "/dev/disk/by-id/" + std::string(name);
    } else {
        drive.device = drive_of(name);
    }
}

// The name of a pool's device. One that is missing has a number, and what it was called: "1234567890123
// UNAVAIL  0  0  0  was /dev/sdb1". Another drive may be /dev/sdb now; a name made of a serial number or a
// WWN stays.
template <class Entity>
void name_device(Entity& entity, const std::vector<std::string_view>& cells) {
    if (cells[0].find_first_not_of("0123456789") != npos) return name_drive(entity, cells[0]);
    const auto was = std::find(cells.begin(), cells.end(), "was");
    if (was == cells.end() || was + 1 == cells.end()) return;
    name_drive(entity, *(was + 1));
    entity.device.reset();
}

template <class Entity>
bool has_name(const Entity& entity) {
    return entity.device || entity.serial || entity.wwn;
}

// A spare of a pool has a state and no counters: "sdz  INUSE     currently in use"
void add_spare(const Volume& pool, const std::vector<std::string_view>& cells, Reading& reading,
               std::int64_t number) {
    auto member = member_of(pool, reading, number);
    name_device(member, cells);
    member.state = std::string(cells[1]);
    member.is_spare = true;
    reading.found.volume_members.push_back(std::move(member));
    if (cells[1] == "AVAIL" || cells[1] == "INUSE") return;
    auto drive = reading.entity_at<Drive>(number);
    name_device(drive, cells);
    drive.state = std::string(cells[1]);
    if (has_name(drive)) reading.found.drives.push_back(std::move(drive));
}

// "3", "1.2K"; more than 2^50 is no count of errors.
Integer count_of_errors(std::string_view cell) {
    const auto value = leading_real(cell);
    if (!value) return std::nullopt;
    const auto unit = std::string_view("KMGT").find(cell.back());
    double scaled = *value;
    for (std::size_t i = 0; unit != npos && i <= unit; ++i) scaled *= 1000;
    if (scaled < 0 || scaled > 0x1p50) return std::nullopt;
    return static_cast<std::int64_t>(scaled);
}

//   pool: tank
//  state: DEGRADED
// status: One or more devices could not be used because the label is missing or
//         invalid.
//   scan: resilver in progress since Mon Nov 16 10:00:00 2026
//         1.20T scanned at 1.02G/s, 400G issued, 12.34% done, 01:02:03 to go
// config:
//
//         NAME        STATE     READ WRITE CKSUM
//         tank        DEGRADED     0     0     0
//           mirror-0  DEGRADED     0     0     0
//             sda     ONLINE       0     0     0
//             sdb     UNAVAIL      0     0     0  cannot open
//         logs
//           nvme0n1   ONLINE       0     0     0
//
// errors: No known data errors
class ZpoolReader {
public:
    ZpoolReader(CaptureLines& lines, Reading& reading) : lines_(lines), reading_(reading) {}

    void read() {
        while (const auto line = lines_.next()) {
            number_ = line->number;
            ended_ = line->ended;
            const auto text = trimmed(line->text);
            if (!text.empty()) read(text, line->text.find_first_not_of(" \t"));
        }
        finish();
        if (!has_answer_) gap("no pool is in it");
        reading_.how.lines = lines_.count();
    }

private:
    void gap(std::string words) { reading_.how.gap(number_, std::move(words)); }

    void read(std::string_view text, std::size_t indent) {
        const auto pair = key_value(text, ":");
        if (text == "no pools available") {
            has_answer_ = true;
        } else if (pair && !in_config_ && pair->key == "pool") {
            finish();
            has_answer_ = true;
            pool_ = reading_.entity_at<Volume>(number_);
            pool_->name = told(pair->value);
        } else if (!pool_) {
            reading_.how.unknown_line(number_);
        } else if (text.starts_with("errors:")) {
            errors(trimmed(text.substr(7)));
        } else if (in_config_) {
            row(text, indent);
        } else if (pair && pair->key == "state") {
            pool_->state = told(pair->value);
            pool_->place.line = number_;
        } else if (pair && pair->key == "scan") {
            scan(pair->value);
        } else if (pair && pair->key == "config") {
            in_config_ = true;
            pool_indent_ = 0;
            section_.clear();
            end_span();
        } else if (pool_->operation && text.find("% done") != npos) {
            pool_->progress_percent = percent_in(text);
        }
    }

    void errors(std::string_view errors) {
        has_errors_ = true;
        in_config_ = false;
        if (errors == "No known data errors") return;
        const bool is_whole = ended_ || errors.ends_with("data errors, use '-v' for a list");
        if (!is_whole || errors.empty()) return gap("a line that is cut off");
        if (pool_->state) *pool_->state += ", " + std::string(errors);
    }

    // "resilver in progress since Mon Nov 16 10:00:00 2026"
    void scan(std::string_view words) {
        const auto in_progress = words.find(" in progress");
        if (in_progress == npos) return;
        pool_->operation = told(words.substr(0, in_progress));
        pool_->elsewhere.push_back({"operation", reading_.at(number_)});
    }

    void row(std::string_view text, std::size_t indent) {
        constexpr std::size_t kCells = 5;  // NAME STATE READ WRITE CKSUM
        // At the line's beginning stand another program's words, which end no group.
        if (indent == 0) return gap("a row that does not fit its heading");
        const auto cells = words(text);
        if (cells.size() == 1) {  // "logs", "spares", "cache"
            section_ = cells[0];
            end_span();
            return;
        }
        if (cells[0] == "NAME") return;
        if (section_ == "spares") return add_spare(*pool_, cells, reading_, number_);
        if (cells.size() < kCells) return gap("a row that does not fit its heading");
        if (indent <= span_indent_) end_span();
        if (cells[0] == pool_->name && pool_indent_ == 0) {
            pool_indent_ = indent;
        } else if (is_group(cells[0])) {
            group(cells[0], indent);
        } else {
            device(cells);
        }
    }

    static bool is_group(std::string_view name) {
        return name.starts_with("mirror") || name.starts_with("raidz") ||
               name.starts_with("draid") || name.starts_with("spare-") ||
               name.starts_with("replacing");
    }

    bool has_data() const { return section_ != "logs" && section_ != "cache"; }

    // "raidz2-0"; "spare-1" and "replacing-1" stand within one.
    void group(std::string_view name, std::size_t indent) {
        const bool has_raid = !name.starts_with("spare-") && !name.starts_with("replacing");
        const auto kind = has_raid ? name.substr(0, name.find('-')) : "mirror";
        if (!has_data()) return;
        if (!pool_->raid && has_raid) pool_->raid = std::string(kind);
        if (span_) return;
        span_ = integer(name.substr(name.rfind('-') + 1));
        span_indent_ = indent;
        group_ = kind;
    }

    void device(const std::vector<std::string_view>& cells) {
        const auto reads = count_of_errors(cells[2]), writes = count_of_errors(cells[3]),
                   sums = count_of_errors(cells[4]);
        if (!reads || !writes || !sums) return gap("a row that does not fit its heading");
        auto drive = reading_.entity_at<Drive>(number_);
        name_device(drive, cells);
        drive.state = std::string(cells[1]);
        drive.other_errors = *reads + *writes + *sums;
        if (!has_data()) drive.pool_part = section_ == "logs" ? "log" : section_;
        if (section_ != "cache") {
            auto member = member_of(*pool_, reading_, number_);
            name_device(member, cells);
            member.state = drive.state;
            member.span = span_;
            member.group = section_ == "logs" ? "log" : group_;
            reading_.found.volume_members.push_back(std::move(member));
        }
        // One without a name is told by the pool's state and its member.
        if (has_name(drive)) reading_.found.drives.push_back(std::move(drive));
    }

    void end_span() {
        group_.clear();
        span_.reset();
        span_indent_ = 0;
    }

    void finish() {
        if (!pool_) return;
        if (!pool_->state || !has_errors_) gap("a pool that is cut off");
        reading_.found.volumes.push_back(std::move(*pool_));
        pool_.reset();
        in_config_ = has_errors_ = false;
    }

    CaptureLines& lines_;
    Reading& reading_;
    std::int64_t number_ = 0;
    bool ended_ = true;
    bool has_answer_ = false;

    std::optional<Volume> pool_;
    bool in_config_ = false, has_errors_ = false;
    std::string section_;  // of the pool: "logs", "cache", "spares", "special"
    std::size_t pool_indent_ = 0;
    std::string group_;  // of the span: "mirror", "raidz2"
    Integer span_;
    std::size_t span_indent_ = 0;
};

}  // namespace

void read_zpool(CaptureLines& lines, Reading& reading) { ZpoolReader(lines, reading).read(); }

}  // namespace qvhost::inventory
