#include "qvhost/finish/facts.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

namespace qvhost {

namespace {

using inventory::Inventory;
using inventory::Text;

// The texts that are told, one after the other.
std::string joined(std::initializer_list<Text> texts, const char* separator) {
    std::string all;
    for (const auto& text : texts) {
        if (text) all += (all.empty() ? "" : separator) + *text;
    }
    return all;
}

Text labelled(const char* label, const Text& value) {
    return value ? Text(label + *value) : std::nullopt;
}

// Memory modules are sold by 2^30 bytes as "GB".
std::string memory_size(std::int64_t bytes) {
    constexpr std::int64_t kMega = 1 << 20;
    constexpr std::int64_t kGiga = 1 << 30;
    return bytes % kGiga == 0 ? std::to_string(bytes / kGiga) + " GB"
                              : std::to_string(bytes / kMega) + " MB";
}

std::string counted(std::int64_t count, const std::string& word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

// "128 GB: 8 x 16 GB, 8 slots empty"
std::string memory_text(const Inventory& inventory) {
    std::map<std::int64_t, int> sizes;
    std::int64_t total = 0;
    for (const auto& module : inventory.memory_modules) {
        if (!module.capacity_bytes) continue;
        ++sizes[*module.capacity_bytes];
        total += *module.capacity_bytes;
    }
    if (total == 0) return "";
    std::string text = memory_size(total) + ":";
    const char* separator = " ";
    for (const auto& [size, count] : sizes) {
        text += separator + std::to_string(count) + " x " + memory_size(size);
        separator = " + ";
    }
    const auto empty = static_cast<std::int64_t>(inventory.empty_memory_slots.size());
    return empty > 0 ? text + ", " + counted(empty, "slot") + " empty" : text;
}

// "2 x MODEL + 1 x ANOTHER, 32 threads"
std::string processor_text(const Inventory& inventory) {
    std::map<std::string, int> models;
    std::int64_t threads = 0;
    bool all_told = true;
    for (const auto& processor : inventory.processors) {
        if (processor.model) ++models[*processor.model];
        threads += processor.threads.value_or(0);
        all_told = all_told && processor.threads;
    }
    std::string text;
    for (const auto& [model, count] : models) {
        text += text.empty() ? "" : " + ";
        if (count > 1 || models.size() > 1) text += std::to_string(count) + " x ";
        text += model;
    }
    return text.empty() || !all_told ? text : text + ", " + counted(threads, "thread");
}

// The kernel's own name; where its first messages are lost, that of the file it was started from:
// "BOOT_IMAGE=/boot/vmlinuz-5.14.21-150500.55-default root=..."
Text kernel_of(const inventory::HostFacts& host) {
    if (host.kernel) return host.kernel;
    constexpr std::string_view kFile = "vmlinuz-";
    const auto at = host.cmdline ? host.cmdline->find(kFile) : std::string::npos;
    if (at == std::string::npos) return std::nullopt;
    const auto rest = host.cmdline->substr(at + kFile.size());
    return rest.substr(0, rest.find_first_of(" \t"));
}

}  // namespace

std::vector<Fact> machine_facts(const Inventory& inventory) {
    std::vector<Fact> facts;
    const auto add = [&](const char* label, const std::string& value, const std::string& source) {
        if (!value.empty()) facts.push_back({label, value, source});
    };
    if (!inventory.systems.empty()) {
        const auto& system = inventory.systems.front();
        const auto& source = system.place.capture;
        // Some makers put their name into the product's as well.
        const bool is_named = system.product && system.manufacturer &&
                              system.product->starts_with(*system.manufacturer);
        add("Product", joined({is_named ? std::nullopt : system.manufacturer, system.product}, " "),
            source);
        add("Serial number", system.serial.value_or(""), source);
        add("Firmware", system.firmware.value_or(""), source);
    }
    if (!inventory.bmcs.empty()) {
        const auto& bmc = inventory.bmcs.front();
        add("BMC", joined({labelled("firmware ", bmc.firmware), labelled("IPMI ", bmc.ipmi)}, ", "),
            bmc.place.capture);
        const auto self_test = std::find_if(bmc.elsewhere.begin(), bmc.elsewhere.end(),
                                            [](const auto& at) { return at.field == "self_test"; });
        add("BMC self test", bmc.self_test.value_or(""),
            self_test == bmc.elsewhere.end() ? bmc.place.capture : self_test->place.capture);
    }
    if (!inventory.host_facts.empty()) {
        const auto& host = inventory.host_facts.front();
        add("Kernel", joined({labelled("Linux ", kernel_of(host))}, ""), host.place.capture);
    }
    if (!inventory.processors.empty())
        add("Processors", processor_text(inventory), inventory.processors.front().place.capture);
    if (!inventory.memory_modules.empty())
        add("Memory", memory_text(inventory), inventory.memory_modules.front().place.capture);
    return facts;
}

}  // namespace qvhost
