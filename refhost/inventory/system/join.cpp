#include "inventory/system/join.h"

#include "inventory/merge.h"

namespace qvhost::inventory {

namespace {

void join_processors(Inventory& found) {
    auto& told = found.processors;
    auto& seen = found.kernel_processors;
    if (told.empty()) {
        told = std::move(seen);
    } else if (told.size() <= seen.size()) {
        // The kernel counts in the sockets' order, and its own names of them are mere numbers.
        for (std::size_t i = 0; i < seen.size(); ++i) {
            if (i < told.size()) {
                seen[i].socket.reset();
                complete(told[i], seen[i]);
            } else {
                told.push_back(std::move(seen[i]));
            }
        }
    } else if (!seen.empty() && seen.front().socket) {
        // It does not see those that the firmware has switched off.
        auto next = seen.begin();
        for (auto& processor : told) {
            const bool is_off =
                processor.state && processor.state->find("Disabled") != std::string::npos;
            if (is_off || next == seen.end()) continue;
            next->socket.reset();
            complete(processor, *next++);
        }
    }
    seen.clear();
}

void join_host_facts(std::vector<HostFacts>& facts) {
    if (facts.empty()) return;
    auto& first = facts.front();
    for (const auto& other : facts) {
        for (const auto member : {&HostFacts::host, &HostFacts::machine_id, &HostFacts::os,
                                  &HostFacts::kernel, &HostFacts::cmdline})
            if (!(first.*member)) first.*member = other.*member;
        if (!first.uptime_seconds) first.uptime_seconds = other.uptime_seconds;
    }
    facts.resize(1);
}

}  // namespace

void join_machine(Inventory& found) {
    merge_all(found.systems);
    keep_one_list(found.memory_modules);
    keep_one_list(found.empty_memory_slots);
    keep_one_list(found.processors);
    keep_one_list(found.kernel_processors);
    keep_one_list(found.firmware_power_supplies);
    keep_one_list(found.ipmi_devices);
    keep_one_list(found.pci_devices);
    join_processors(found);
    join_host_facts(found.host_facts);
}

}  // namespace qvhost::inventory
