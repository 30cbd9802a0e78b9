#include "qvhost/finish/facts.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "show/visible.h"

namespace qvhost {

namespace {

constexpr std::size_t kMaxBytes = 4 << 20;  // read of each capture

std::vector<std::string> lines_of(const LogDir& dir, const char* capture) {
    std::vector<std::string> lines;
    std::ifstream file(dir.path() / capture, std::ios::binary);
    std::size_t size = 0;
    for (std::string line; size < kMaxBytes && std::getline(file, line);) {
        size += line.size() + 1;
        lines.push_back(std::move(line));
    }
    return lines;
}

// dmidecode: a title without indentation, then "\tName: Value" lines.
struct Structure {
    std::string title;
    std::map<std::string, std::string> values;
};

std::vector<Structure> structures_of(const std::vector<std::string>& lines) {
    std::vector<Structure> all;
    for (const auto& line : lines) {
        if (line.empty()) continue;
        if (line.front() != '\t') {
            all.push_back({trimmed(line), {}});
            continue;
        }
        const auto colon = line.find(": ");
        if (all.empty() || line.starts_with("\t\t") || colon == std::string::npos) continue;
        all.back().values.emplace(line.substr(1, colon - 1), trimmed(line.substr(colon + 2)));
    }
    return all;
}

bool is_filled_in(const std::string& value) {
    for (const char* empty : {"", "(none)", "None", "Not Specified", "Unknown",
                              "To Be Filled By O.E.M.", "Default string", "NO DIMM"}) {
        if (value == empty) return false;
    }
    return true;
}

// The values that are filled in, one after the other.
std::string joined(const Structure& structure, std::initializer_list<const char*> names) {
    std::string text;
    for (const char* name : names) {
        const auto found = structure.values.find(name);
        if (found == structure.values.end() || !is_filled_in(found->second)) continue;
        text += (text.empty() ? "" : " ") + found->second;
    }
    return text;
}

const Structure* first_of(const std::vector<Structure>& all, std::string_view title) {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Structure& one) { return one.title == title; });
    return found == all.end() ? nullptr : &*found;
}

// "16 GB" or "16384 MB", in MiB.
std::optional<long> mebibytes(const std::string& text) {
    long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    const auto unit = trimmed(std::string_view(end, text.data() + text.size()));
    if (unit == "MB") return number;
    if (unit == "GB") return number * 1024;
    if (unit == "TB") return number * 1024 * 1024;
    return std::nullopt;
}

std::string size_text(long mib) {
    return mib % 1024 == 0 ? std::to_string(mib / 1024) + " GB" : std::to_string(mib) + " MB";
}

// "128 GB: 8 x 16 GB, 16 slots empty"
std::string memory_text(const std::vector<Structure>& all) {
    std::map<long, int> modules;
    long total = 0;
    int empty = 0;
    for (const auto& one : all) {
        if (one.title != "Memory Device" || !one.values.contains("Size")) continue;
        if (const auto size = mebibytes(one.values.at("Size"))) {
            ++modules[*size];
            total += *size;
        } else if (one.values.at("Size") == "No Module Installed") {
            ++empty;
        }
    }
    if (total == 0) return "";
    std::string text = size_text(total) + ":";
    const char* separator = " ";
    for (const auto& [size, count] : modules) {
        text += separator + std::to_string(count) + " x " + size_text(size);
        separator = " + ";
    }
    if (empty > 0)
        text += ", " + std::to_string(empty) + (empty == 1 ? " slot" : " slots") + " empty";
    return text;
}

// /proc/cpuinfo: "model name\t: ..." for each processor, "physical id\t: 0" for its socket.
std::string processor_text(const std::vector<std::string>& lines) {
    std::string model;
    std::set<std::string> sockets;
    int threads = 0;
    for (const auto& line : lines) {
        const auto colon = line.find(':');
        if (colon == std::string::npos) continue;
        const auto key = trimmed(line.substr(0, colon));
        const auto value = trimmed(line.substr(colon + 1));
        if (key == "processor") ++threads;
        if (key == "model name" && model.empty()) model = value;
        if (key == "physical id") sockets.insert(value);
    }
    if (model.empty()) return "";
    const auto count = sockets.size() > 1 ? std::to_string(sockets.size()) + " x " : "";
    return count + model + ", " + std::to_string(threads) + (threads == 1 ? " thread" : " threads");
}

// What follows the words in the first line that has them, up to the next blank.
std::string word_behind(const std::vector<std::string>& lines, std::string_view words) {
    for (const auto& line : lines) {
        const auto at = line.find(words);
        if (at == std::string::npos) continue;
        const auto rest = line.substr(at + words.size());
        return rest.substr(0, rest.find_first_of(" \t"));
    }
    return "";
}

// The value of the table's first record whose label begins with these words.
std::string labelled(const Store& store, const char* table, std::string_view words) {
    std::string found;
    bool first = true;
    store.each_record(table, [&](const Record& record) {
        for (const auto& property : record.properties) {
            const auto* text = std::get_if<std::string>(&property.value);
            if (first && text && property.display.starts_with(words)) found = trimmed(*text);
        }
        first = false;
    });
    return found;
}

std::string bmc_text(const Store& store) {
    std::string text;
    const auto add = [&](const char* label, const char* words) {
        const auto value = labelled(store, "MCINFO", words);
        if (!value.empty()) text += (text.empty() ? "" : ", ") + std::string(label) + value;
    };
    add("firmware ", "Firmware Revision");
    add("IPMI ", "IPMI Version");
    add("manufacturer ", "Manufacturer ID");
    add("product ", "Product ID");
    return text;
}

}  // namespace

std::vector<Fact> machine_facts(const Store& store, const LogDir& dir) {
    std::vector<Fact> facts;
    const auto add = [&](const char* label, const std::string& value, const char* source) {
        if (!value.empty()) facts.push_back({label, value, source});
    };
    const auto dmi = structures_of(lines_of(dir, "dmidecode.log"));
    if (const auto* system = first_of(dmi, "System Information")) {
        const auto maker = joined(*system, {"Manufacturer"});
        const auto product = joined(*system, {"Product Name"});
        // Some makers put their name into the product's as well.
        add("Product",
            product.starts_with(maker) ? product
                                       : joined(*system, {"Manufacturer", "Product Name"}),
            "dmidecode.log");
        add("Serial number", joined(*system, {"Serial Number"}), "dmidecode.log");
    }
    if (const auto* bios = first_of(dmi, "BIOS Information"))
        add("Firmware", joined(*bios, {"Vendor", "Version", "Release Date"}), "dmidecode.log");
    add("BMC", bmc_text(store), "mcinfo.txt");
    add("BMC self test", labelled(store, "SELFINFO", ""), "selfinfo.txt");
    // dmesg: "[    2.18] Linux version 5.14.21-150500.55-default (...". After some time the kernel's buffer
    // has lost this line. /proc/cmdline: "BOOT_IMAGE=/boot/vmlinuz-5.14.21-150500.55-default root=..."
    for (const auto& [capture, words] : {
             std::pair{"dmesg.log",   "Linux version "},
             {"cmdline.log", "vmlinuz-"      }
    }) {
        const auto version = word_behind(lines_of(dir, capture), words);
        if (version.empty()) continue;
        add("Kernel", "Linux " + version, capture);
        break;
    }
    add("Processors", processor_text(lines_of(dir, "cpuinfo.log")), "cpuinfo.log");
    add("Memory", memory_text(dmi), "dmidecode.log");
    return facts;
}

}  // namespace qvhost
