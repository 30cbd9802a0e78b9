// lspci: a line a device. Plain, and with -nn:
//     03:00.0 RAID bus controller: Broadcom / LSI MegaRAID SAS 2008 [Falcon] (rev 03)
//     0000:03:00.0 RAID bus controller [0104]: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] [1000:005d] (rev 02)
// with -mm:
//     03:00.0 "RAID bus controller" "Broadcom / LSI" "MegaRAID SAS-3 3108 [Invader]" -r02 "Dell" "PERC H730"
// and with -vmm:
//     Slot:   03:00.0
//     Class:  RAID bus controller
//     Vendor: Broadcom / LSI
//     Device: MegaRAID SAS-3 3108 [Invader]
// What -v and -k add is indented.
#include <algorithm>
#include <string>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/system/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// "03:00.0", "0000:03:00.0"
bool is_address(std::string_view text) {
    if (text.size() < 7 || text.find('.') != text.size() - 2) return false;
    if (std::count(text.begin(), text.end(), ':') < 1) return false;
    return text.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

// Without the brackets at its end whose content is_number() takes: "[0104]", "[1000:005d]".
std::string_view without_numbers(std::string_view text) {
    text = trimmed(text);
    while (text.ends_with(']')) {
        const auto open = text.rfind('[');
        if (open == std::string_view::npos) return text;
        const auto inside = text.substr(open + 1, text.size() - open - 2);
        if ((inside.size() != 4 && inside.size() != 9) ||
            inside.find_first_not_of("0123456789abcdef:") != std::string_view::npos)
            return text;
        text = trimmed(text.substr(0, open));
    }
    return text;
}

// Without "(rev 03)" and "(prog-if 00 [Normal decode])" at its end.
std::string_view without_revision(std::string_view text) {
    for (const std::string_view mark : {" (prog-if ", " (rev "}) {
        const auto at = text.rfind(mark);
        if (at != std::string_view::npos && trimmed(text).ends_with(')')) text = text.substr(0, at);
    }
    return trimmed(text);
}

// The texts between quotes.
std::vector<std::string_view> quoted(std::string_view text) {
    std::vector<std::string_view> found;
    for (;;) {
        const auto begin = text.find('"');
        if (begin == std::string_view::npos) return found;
        const auto end = text.find('"', begin + 1);
        if (end == std::string_view::npos) return found;
        found.push_back(text.substr(begin + 1, end - begin - 1));
        text.remove_prefix(end + 1);
    }
}

// What stands behind the address.
bool read_device(std::string_view text, PciDevice& device) {
    text = trimmed(text);
    if (text.starts_with('"')) {
        const auto cells = quoted(text);
        if (cells.size() < 3) return false;
        device.device_class = told(without_numbers(cells[0]));
        device.name =
            std::string(without_numbers(cells[1])) + " " + std::string(without_numbers(cells[2]));
        return true;
    }
    const auto pair = key_value(text, ": ");
    if (!pair) return false;
    device.device_class = told(without_numbers(pair->key));
    const auto name = without_revision(pair->value);
    // "Device [1234:1111]": nobody has a name for it.
    const auto plain = without_numbers(name);
    device.name = told(plain.ends_with("Device") ? name : plain);
    return true;
}

}  // namespace

void read_lspci(CaptureLines& lines, Reading& reading) {
    auto& devices = reading.found.pci_devices;
    const auto before = devices.size();
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = line.text;
        if (text.starts_with('\t') || text.starts_with(' ')) return;
        const auto address = text.substr(0, text.find(' '));
        const auto pair = key_value(text, ":");
        PciDevice device;
        device.place = reading.at(line.number);
        if (is_address(address) && address.size() < text.size()) {
            device.address = std::string(address);
            if (!read_device(text.substr(address.size()), device)) {
                add_gap(reading, line.number, "not a device");
                return;
            }
            devices.push_back(std::move(device));
        } else if (pair && pair->key == "Slot" && is_address(pair->value)) {
            device.address = std::string(pair->value);
            devices.push_back(std::move(device));
        } else if (pair && devices.size() > before && pair->key == "Class") {
            devices.back().device_class = told(without_numbers(pair->value));
        } else if (pair && devices.size() > before && pair->key == "Vendor") {
            devices.back().name = std::string(without_numbers(pair->value));
        } else if (pair && devices.size() > before && pair->key == "Device") {
            devices.back().name =
                devices.back().name.value_or("") + " " + std::string(without_numbers(pair->value));
        } else if (!pair || devices.size() == before || is_tool_error(text)) {
            read_aside(line, reading);
        }
        if (!line.ended) add_gap(reading, line.number, "the capture ends in the middle of a line");
    });
}

}  // namespace qvhost::inventory
