// ipmitool fru: a block a field-replaceable unit. Its product area names it, else its board area.
//     FRU Device Description : PSU1 FRU (ID 1)
//      Product Manufacturer  : Example Systems
//      Product Name          : PSU 800W Platinum
//      Product Part Number   : EX-PS800
//      Product Serial        : PS-A1-0001
//
//     FRU Device Description : PS2 (ID 2)
//      Device not present (Timeout)
// `fru print 0` has no heading.
#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct FruKey {
    std::string_view key;
    Text Fru::*member;
    bool is_identity;
};

// Of two keys for one field the earlier row wins, whichever is printed first.
constexpr auto kFruKeys = std::to_array<FruKey>({
    {"Product Manufacturer", &Fru::manufacturer, false},
    {"Board Mfg",            &Fru::manufacturer, false},
    {"Manufacturer",         &Fru::manufacturer, false},
    {"Product Name",         &Fru::product,      false},
    {"Board Product",        &Fru::product,      false},
    {"Product Part Number",  &Fru::part,         false},
    {"Board Part Number",    &Fru::part,         false},
    {"Part Number",          &Fru::part,         false},
    {"Product Serial",       &Fru::serial,       true },
    {"Board Serial",         &Fru::serial,       true },
    {"Serial Number",        &Fru::serial,       true },
});

// Keys of which nothing is kept; '*' stands for any characters.
constexpr auto kOtherKeys = std::to_array<std::string_view>({
    "Chassis *",
    "Board *",
    "Product *",
    "Memory *",
    "SDRAM *",
    "Primary Bus Width",
    "* Nominal Op",
    "Voltage Intf",
    "Error Detect/Cor",
    "Manufacture Date",
    "Power Supply *",
    "Max Power Capacity",
    "Peak Power *",
    "Max Capacity",
    "Max Inrush Current",
    "Input Voltage Range *",
    "Input Frequency Range",
    "A/C Dropout Tolerance",
    "Flags",
    "Output *",
    "DC Output *",
    "DC Load *",
    "Nominal *",
    "Max *",
    "Min *",
    "Standby *",
    "Peak *",
    "Combined *",
    "Hold-up Time",
    "Predictive *",
    "Tach *",
    "Hot Swap *",
    "Autoswitch *",
    "Tachometer *",
    "Power Factor *",
    "OEM *",
    "Unknown *",
    "Ripple *",
    "Ripple and *",
    "Module *",
    "FRU *",
    "SPD *",
    "Number of *",
    "Row *",
    "Rank *",
    "Registered",
    "Supply *",
});

// The keys are printed so wide.
constexpr std::size_t kKeyWidth = 23;

// Instead of a unit's fields
constexpr auto kEmpty = std::to_array<std::string_view>({
    "Device not present (*)",
    "Device not present",
});
constexpr auto kUnreadable = std::to_array<std::string_view>({
    "Unknown FRU header version 0x*",
    "Invalid FRU size *",
    "Not a standard FRU *",
    "Built-in FRU*",
});

struct Block {
    Fru fru;
    std::array<std::size_t, 4> rank{};  // of the row that told each field
    bool is_absent = false;

    std::size_t& rank_of(Text Fru::*member) {
        const auto index = member == &Fru::manufacturer ? 0U
                           : member == &Fru::product    ? 1U
                           : member == &Fru::part       ? 2U
                                                        : 3U;
        return rank[index];
    }
    void take(std::size_t row, std::string_view value) {
        const auto& key = kFruKeys[row];
        auto found = key.is_identity ? told_identity(value) : told(value);
        if (!found || found->starts_with("Unknown (0x")) return;
        auto& rank_now = rank_of(key.member);
        if (fru.*key.member && rank_now <= row) return;
        fru.*key.member = std::move(found);
        rank_now = row;
    }
};

}  // namespace

void read_fru(CaptureLines& lines, Reading& reading) {
    std::optional<Block> block;
    bool any = false;
    FirstLine first(':', kKeyWidth);
    bool is_of_unknown_unit = false;  // its heading is overwritten
    const auto finish = [&] {
        if (block && !block->is_absent) reading.found.frus.push_back(std::move(block->fru));
        any = any || block;
        block.reset();
    };
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto pair = key_value(text, ":");
        const auto begin = [&] {
            finish();
            block.emplace();
            block->fru.place = reading.at(line.number);
        };
        if (pair && pair->key == "FRU Device Description") {
            is_of_unknown_unit = false;
            begin();
            block->fru.device = told(pair->value);
            if (!line.ended && !pair->value.ends_with(')'))
                add_gap(reading, line.number, "the capture ends in the middle of a line");
            return;
        }
        if (pair && !is_tool_error(text) && first.is_overwritten(line, text, reading))
            is_of_unknown_unit = true;
        if (is_of_unknown_unit) return;
        if (is_like_any(trimmed(text), kEmpty)) {
            if (block) block->is_absent = true;
            return;
        }
        if (is_like_any(trimmed(text), kUnreadable)) return;
        const auto key = std::find_if(kFruKeys.begin(), kFruKeys.end(), [&](const FruKey& row) {
            return pair && row.key == pair->key;
        });
        if (key != kFruKeys.end()) {
            if (!block) begin();
            if (line.ended)
                block->take(static_cast<std::size_t>(key - kFruKeys.begin()), pair->value);
            else
                add_gap(reading, line.number, "the capture ends in the middle of a value");
            return;
        }
        if (pair && is_like_any(pair->key, kOtherKeys)) {
            if (!block) begin();
            return;
        }
        read_aside(line, reading);
        first.message_before();
    });
    finish();
    if (!any && reading.how.lines > 0) add_gap(reading, reading.how.lines, "no FRU");
}

}  // namespace qvhost::inventory
