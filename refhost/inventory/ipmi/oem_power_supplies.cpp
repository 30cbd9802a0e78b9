// A maker's own command of ipmiutil: the power supplies. Makers have forms of their own, of which these
// are known. In sentences:
//     Power supply 1: present, AC ok, output on
//       Model: EX PS800, firmware 4.52, serial PS A1 0001
//       Input 231.0 V 1.12 A 246 W, output 12.1 V 19.4 A 235 W
//       Temperature 34 degrees C, fan 5400 RPM
//     Redundancy: full
// a line each:
//     PSU1  Vendor=Example  Watt=1100  In=229V  Out=12.2V  Temp=31°C  Fan=4320rpm  OK
//     Redundancy lost; capping at 550 W; ripple 38 µV
// or a block each:
//     PSU1
//       Present             Yes
//       Model               EX-PS800
//       Input               AC 230 V
//       Status              OK
//     PSU2 : not present
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/power_supply_name.h"
#include "inventory/ipmi/power_supply_states.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

struct SupplyKey {
    std::string_view key;
    Text PowerSupply::*member;  // null: nothing that is kept
};

constexpr auto kSupplyKeys = std::to_array<SupplyKey>({
    {"model",         &PowerSupply::model      },
    {"serial",        &PowerSupply::serial     },
    {"serial number", &PowerSupply::serial     },
    {"part",          &PowerSupply::part       },
    {"part number",   &PowerSupply::part       },
    {"firmware",      &PowerSupply::firmware   },
    {"fw",            &PowerSupply::firmware   },
    {"sn",            &PowerSupply::serial     },
    {"pn",            &PowerSupply::part       },
    {"input",         &PowerSupply::input_state},
    {"status",        &PowerSupply::state      },
    {"output",        nullptr                  },
    {"output power",  nullptr                  },
    {"temperature",   nullptr                  },
    {"temp",          nullptr                  },
    {"fan",           nullptr                  },
    {"vendor",        nullptr                  },
    {"watt",          nullptr                  },
    {"in",            nullptr                  },
    {"out",           nullptr                  },
});

bool is_presence(std::string_view text) {
    return same_word(text, "present") || same_word(text, "yes");
}

bool is_absence(std::string_view text) {
    return same_word(text, "not present") || same_word(text, "absent") || same_word(text, "no");
}

// "AC ok", "AC LOST", "input lost"
bool is_of_input(std::string_view text) {
    const auto first = text.substr(0, text.find(' '));
    return same_word(first, "AC") || same_word(first, "DC") || same_word(first, "input");
}

// "231.0 V 1.12 A 246 W"
Real watts_of(std::string_view text) {
    const auto parts = words(text);
    for (std::size_t i = 1; i < parts.size(); ++i)
        if (parts[i] == "W" || parts[i] == "Watts") return real(parts[i - 1]);
    return std::nullopt;
}

void add_state(PowerSupply& supply, std::string_view text) {
    if (is_presence(text)) {
        supply.present = true;
    } else if (is_absence(text)) {
        supply.present = false;
    } else {
        if (is_of_input(text)) supply.input_state = std::string(text);
        if (!supply.state)
            supply.state = std::string(text);
        else
            supply.state->append(", ").append(text);
    }
}

// Whether the key is one that these forms have.
bool take(PowerSupply& supply, std::string_view key, std::string_view value, const Place& place) {
    if (same_word(key, "present")) {
        add_state(supply, value);
        return true;
    }
    for (const auto& row : kSupplyKeys) {
        if (!same_word(row.key, key)) continue;
        if (same_word(key, "input"))
            if (const auto watts = watts_of(value)) {
                supply.input_watts = watts;
                return true;
            }
        if (row.member != nullptr)
            supply.*row.member =
                row.member == &PowerSupply::serial ? told_identity(value) : told(value);
        for (const auto& [field, state] : kPowerSupplyStates)
            if (row.member == state) supply.elsewhere.push_back({field, place});
        return true;
    }
    return false;
}

// Behind the name, on its line.
void read_heading(std::string_view text, PowerSupply& supply) {
    if (text.starts_with(':')) {
        for (const auto part : fields_between(text.substr(1), ','))
            if (!part.empty()) add_state(supply, part);
        return;
    }
    std::string state;
    for (const auto word : words(text)) {
        const auto pair = key_value(word, "=");
        if (pair) {
            take(supply, pair->key, pair->value, supply.place);
            supply.present = true;
        } else {
            if (!state.empty()) state += ' ';
            state += word;
        }
    }
    if (!state.empty()) add_state(supply, state);
}

// "Model: EX PS800, firmware 4.52, serial PS A1 0001", "Present             Yes"
bool read_detail(std::string_view text, const Place& place, PowerSupply& supply) {
    text = trimmed(text);
    const auto gap = text.find("  ");
    if (gap != std::string_view::npos)
        return take(supply, text.substr(0, gap), trimmed(text.substr(gap)), place);
    bool known = true;
    for (const auto part : fields_between(text, ',')) {
        const auto end = part.find_first_of(": ");
        known = end != std::string_view::npos &&
                take(supply, part.substr(0, end), trimmed(part.substr(end + 1)), place) && known;
    }
    return known;
}

}  // namespace

void read_oem_power_supplies(CaptureLines& lines, Reading& reading) {
    auto& supplies = reading.found.power_supplies;
    const auto before = supplies.size();
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const bool is_indented = text.starts_with(' ') || text.starts_with('\t');
        const auto name = is_indented ? std::string_view() : power_supply_name(text);
        bool known = true;
        if (!name.empty()) {
            PowerSupply supply;
            supply.place = reading.at(line.number);
            supply.slot = std::string(name);
            if (line.ended) read_heading(trimmed(text.substr(name.size())), supply);
            supplies.push_back(std::move(supply));
        } else if (is_indented && supplies.size() > before && !trimmed(text).empty()) {
            known = !line.ended || read_detail(text, reading.at(line.number), supplies.back());
        } else if (text.starts_with("Redundancy") && line.ended) {
            const auto state = text.substr(std::string_view("Redundancy").size());
            reading.found.chassis_states.push_back(
                {reading.at(line.number), "Redundancy",
                 told(state.starts_with(':') ? state.substr(1) : state)});
        } else {
            read_aside(line, reading);
            return;
        }
        if (!line.ended)
            add_gap(reading, line.number, "the capture ends in the middle of a line");
        else if (!known)
            reading.how.unknown_line(line.number);
    });
    if (reading.how.lines > 0 && supplies.size() == before)
        add_gap(reading, reading.how.lines, "no power supply");
}

}  // namespace qvhost::inventory
