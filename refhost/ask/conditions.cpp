#include "ask/conditions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string_view>
#include <system_error>

#include "inventory/storage/controller_tools.h"
#include "inventory/text.h"

namespace qvhost::ask {

namespace fs = std::filesystem;

namespace {

const std::string kStorcliList = "host_storcli_show.txt";
const std::string kPciList = "host_lspci.txt";

// Files of the system, one of which is there where the thing is.
struct FileRow {
    When when;
    std::array<const char*, 3> files;
};
constexpr auto kFiles = std::to_array<FileRow>({
    {When::bmc,       {"dev/ipmi0", "dev/ipmi/0", "dev/ipmidev/0"}                        },
    {When::md,        {"proc/mdstat"}                                                     },
    {When::zfs,       {"proc/spl/kstat/zfs", "dev/zfs"}                                   },
    {When::multipath, {"etc/multipath.conf", "etc/multipath/conf.d", "run/multipathd.pid"}},
});

// The tool whose controllers call for a question.
struct PciRow {
    When when;
    std::string_view tool;
};
constexpr auto kPci = std::to_array<PciRow>({
    {When::megaraid,    "storcli" },
    {When::adaptec,     "arcconf" },
    {When::sas2,        "sas2ircu"},
    {When::sas3,        "sas3ircu"},
    {When::smart_array, "ssacli"  },
});

const std::vector<inventory::PciDevice>& pci_devices(const Facts& facts) {
    static const std::vector<inventory::PciDevice> none;
    const auto found = facts.captures().find(kPciList);
    return found == facts.captures().end() ? none : found->second.pci_devices;
}

// Of several tools that will do for a controller each is asked if it is there, and none is missed.
Call by_pci(const PciRow& row, const Facts& facts) {
    auto called = facts.was_read_whole(kPciList) ? Called::no : Called::maybe;
    for (const auto& device : pci_devices(facts)) {
        if (!inventory::is_raid_controller(device)) continue;
        const auto tools = inventory::tools_for(device);
        if (std::find(tools.begin(), tools.end(), row.tool) == tools.end()) continue;
        if (tools.size() == 1) return {Called::yes, {""}};
        called = Called::maybe;
    }
    return {called, {""}};
}

bool is_there(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

Call by_files(const FileRow& row, const Facts& facts, const fs::path& root) {
    for (const char* file : row.files) {
        if (file && is_there(root / file)) return {Called::yes, {""}};
    }
    if (row.when == When::bmc) {
        for (const auto& [capture, found] : facts.captures()) {
            if (!found.ipmi_devices.empty())
                return {Called::yes, {}, "there is a BMC, and no /dev/ipmi0 to reach it by"};
        }
    }
    return {};
}

std::vector<std::string> texts_of(const std::set<std::int64_t>& numbers) {
    std::vector<std::string> texts;
    for (const auto number : numbers) texts.push_back(std::to_string(number));
    return texts;
}

// A number that a tool printed may be any number.
constexpr std::int64_t kMostControllers = 256;

void add_number(const inventory::Integer& number, std::set<std::int64_t>& numbers) {
    if (number && *number >= 0 && *number < kMostControllers) numbers.insert(*number);
}

// What storcli lists. Where there is no list, those that it counts.
std::set<std::int64_t> controllers(const Facts& facts) {
    std::set<std::int64_t> numbers;
    if (const auto list = facts.captures().find(kStorcliList); list != facts.captures().end()) {
        for (const auto& one : list->second.controllers) add_number(one.number, numbers);
    }
    if (!numbers.empty()) return numbers;
    for (const auto& [capture, found] : facts.captures()) {
        for (const auto& counted : found.controller_counts) {
            if (counted.tool != "storcli") continue;
            const auto count = std::min(counted.count.value_or(0), kMostControllers);
            for (std::int64_t number = 0; number < count; ++number) numbers.insert(number);
        }
    }
    return numbers;
}

// What a list names. A recorded server may have the answer of the first controller and no list.
std::set<std::int64_t> listed(const Facts& facts, const std::string& list, bool is_replay,
                              std::int64_t first) {
    std::set<std::int64_t> numbers;
    const auto found = facts.captures().find(list);
    if (found == facts.captures().end()) return is_replay ? std::set{first} : numbers;
    for (const auto& one : found->second.controllers) add_number(one.number, numbers);
    return numbers;
}

template <class Keep>
std::set<std::int64_t> only(std::set<std::int64_t> numbers, Keep keep) {
    std::erase_if(numbers, [&](std::int64_t number) { return !keep(number); });
    return numbers;
}

template <class IsMeant>
bool has_drive(const Facts& facts, std::int64_t controller, IsMeant is_meant) {
    return std::any_of(facts.captures().begin(), facts.captures().end(), [&](const auto& capture) {
        const auto& drives = capture.second.drives;
        return std::any_of(drives.begin(), drives.end(), [&](const inventory::Drive& drive) {
            return drive.controller == controller && is_meant(drive);
        });
    });
}

// "BBU_Info :" and "Cachevault_Info :" stand in a controller's summary where it has one.
bool summary_says(const Facts& facts, std::int64_t controller, std::string_view text) {
    const auto number = std::to_string(controller);
    return facts.has_text(inventory::filled_in("host_storcli_c{n}_show.txt", number), text) ||
           facts.has_text(inventory::filled_in("c{n}_showall.txt", number), text);
}

// "md0", "md127", "md_d0"
std::vector<std::string> arrays(const Facts& facts) {
    std::vector<std::string> names;
    const auto found = facts.captures().find("host_mdstat.txt");
    if (found == facts.captures().end()) return names;
    for (const auto& volume : found->second.volumes) {
        const auto device = volume.device.value_or("");
        const auto name = device.substr(device.starts_with("/dev/") ? 5 : 0);
        const bool is_plain =
            name.starts_with("md") && std::all_of(name.begin(), name.end(), [](char c) {
                return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
            });
        if (is_plain) names.push_back(name);
    }
    return names;
}

// Whether the block device lies behind a RAID controller or on USB, as its place in /sys tells:
// ".../devices/pci0000:00/0000:00:02.0/0000:02:00.0/host0/.../block/sda"
bool is_plain(const std::string& device, const Facts& facts) {
    if (device.find("/usb") != std::string::npos) return false;
    for (const auto& one : pci_devices(facts)) {
        if (one.address && one.device_class &&
            one.device_class->starts_with("RAID bus controller") &&
            inventory::is_raid_controller(one) &&
            device.find(":" + *one.address + "/") != std::string::npos)
            return false;
    }
    return true;
}

// "sda", "nvme0n1"; virtual disks, loops and the like have no drive of their own.
std::vector<std::string> plain_drives(const Facts& facts, const fs::path& root) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(root / "sys/block", error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        if (!name.starts_with("sd") && !name.starts_with("hd") && !name.starts_with("nvme"))
            continue;
        std::error_code ignored;
        if (is_plain(fs::canonical(entry->path(), ignored).string(), facts)) names.push_back(name);
    }
    return names;
}

// Of the drives that smartctl has found: "nvme0" is the drive of "nvme0n1".
std::vector<std::string> scanned_plain_drives(const Facts& facts, const fs::path& root) {
    auto drives = facts.scanned_drives();
    if (root.empty()) return drives;
    const auto plain = plain_drives(facts, root);
    std::erase_if(drives, [&](const std::string& drive) {
        return std::none_of(plain.begin(), plain.end(), [&](const std::string& one) {
            return one == drive || (drive.starts_with("nvme") && one.starts_with(drive + "n"));
        });
    });
    return drives;
}

Call each_of(std::vector<std::string> texts) { return {Called::yes, std::move(texts)}; }

}  // namespace

Call called_for(When when, const Facts& facts, const fs::path& root) {
    const bool is_replay = root.empty();
    for (const auto& row : kFiles) {
        if (row.when == when) return is_replay ? each_of({""}) : by_files(row, facts, root);
    }
    for (const auto& row : kPci) {
        if (row.when == when) return is_replay ? each_of({""}) : by_pci(row, facts);
    }
    const auto all = [&] { return controllers(facts); };
    const auto those = [&](auto keep) { return each_of(texts_of(only(all(), keep))); };
    using inventory::Drive;
    const auto those_with_drive = [&](const char* state) {
        return those([&](std::int64_t n) {
            return has_drive(facts, n, [&](const Drive& drive) { return drive.state == state; });
        });
    };
    switch (when) {
        case When::controller: return each_of(texts_of(all()));
        case When::first_controller: return those([](std::int64_t n) { return n == 0; });
        case When::further_controller: return those([](std::int64_t n) { return n > 0; });
        case When::rebuilding: return those_with_drive("Rbld");
        case When::copying: return those_with_drive("Cpybck");
        case When::bare_slots:
            return those([&](std::int64_t n) {
                return has_drive(facts, n, [](const Drive& drive) { return !drive.enclosure; });
            });
        case When::battery:
            return those([&](std::int64_t n) { return summary_says(facts, n, "BBU_Info"); });
        case When::capacitor:
            return those([&](std::int64_t n) { return summary_says(facts, n, "Cachevault_Info"); });
        case When::adaptec_controller:
            return each_of(texts_of(listed(facts, "host_arcconf_list.txt", is_replay, 1)));
        case When::sas2_adapter:
            return each_of(texts_of(listed(facts, "host_sas2ircu_list.txt", is_replay, 0)));
        case When::sas3_adapter:
            return each_of(texts_of(listed(facts, "host_sas3ircu_list.txt", is_replay, 0)));
        case When::md_array: return each_of(arrays(facts));
        case When::plain_drive: return each_of(scanned_plain_drives(facts, root));
        case When::plain_drives:
            return is_replay || !plain_drives(facts, root).empty() ? each_of({""}) : Call{};
        default: return each_of({""});  // always
    }
}

}  // namespace qvhost::ask
