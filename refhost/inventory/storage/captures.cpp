#include "inventory/storage/captures.h"

#include <array>

#include "inventory/storage/arcconf.h"
#include "inventory/storage/block_devices.h"
#include "inventory/storage/ircu.h"
#include "inventory/storage/software.h"
#include "inventory/storage/ssacli.h"
#include "inventory/storage/storcli.h"
#include "inventory/storage/storcli_events.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// The first number in the capture's name: of "c12_raidevents.txt", "host_arcconf_1.txt",
// "Firmware/Controller 1 Config.txt".
Integer number_in(std::string_view name) {
    const auto begin = name.find_first_of("0123456789");
    if (begin == std::string_view::npos) return std::nullopt;
    const auto end = name.find_first_not_of("0123456789", begin);
    return integer(name.substr(begin, end - begin));
}

// The plug-in asks controller 0 for the file without a number.
void read_events(CaptureLines& lines, Reading& reading) {
    read_storcli_events(lines, reading, number_in(reading.capture).value_or(0));
}

void read_arcconf_of(CaptureLines& lines, Reading& reading) {
    read_arcconf(lines, reading, number_in(reading.capture));
}

void read_arcconf_list(CaptureLines& lines, Reading& reading) {
    read_arcconf(lines, reading, std::nullopt);
}

// clang-format off
constexpr auto kCaptures = std::to_array<CaptureReader>({
    // The plug-in's.
    {"ctrlcount.txt",                    read_storcli},                                     // how many controllers there are
    {"c*_showall.txt",                   read_storcli},                                     // a controller, its volumes and drives
    {"c*_pdlist.txt",                    read_storcli, nullptr, true},                      // controller 0's drives in detail, whatever the number
    {"pdlist.txt",                       read_storcli, nullptr, true},                      // controller 0's drives in detail
    {"c*_raidevents.txt",                read_events, nullptr, true, kOwnLog},              // a controller's events
    {"raidevents.txt",                   read_events, "c0_raidevents.txt", true, kOwnLog},  // controller 0's events
    {"c*_fwtermlog.txt",                 read_storcli_termlog, nullptr, false, kOwnLog},    // a controller's firmware log
    {"fwtermlog.txt",                    read_storcli_termlog, nullptr, false, kOwnLog},    // controller 0's firmware log
    {"Firmware/Controller * Config.txt", read_arcconf_of},                                  // an arcconf controller, its volumes and drives
    {"ir.txt",                           read_ir_log, nullptr, false, kOwnLog},             // the integrated RAID's events
    // The host's own; N is a controller's number.
    {"host_storcli_show.txt",            read_storcli},                                     // storcli show: all controllers and their health
    {"host_storcli_c*_show.txt",         read_storcli},                                     // /cN show all: controllers behind the ninth as well
    {"host_storcli_c*_drives.txt",       read_storcli, nullptr, true},                      // /cN/eall/sall show all, /cN/sall show all
    {"host_storcli_c*_volumes.txt",      read_storcli, nullptr, true},                      // /cN/vall show all: device names, what runs
    {"host_storcli_c*_rebuild.txt",      read_storcli, nullptr, true},                      // /cN/eall/sall show rebuild
    {"host_storcli_c*_copyback.txt",     read_storcli, nullptr, true},                      // /cN/eall/sall show copyback
    {"host_storcli_c*_enclosures.txt",   read_storcli, nullptr, true},                      // /cN/eall show all: slots
    {"host_storcli_c*_bbu.txt",          read_storcli, nullptr, true},                      // /cN/bbu show all
    {"host_storcli_c*_cv.txt",           read_storcli, nullptr, true},                      // /cN/cv show all
    {"host_storcli_c*_events.txt",       read_events, nullptr, true, kOwnLog},              // /cN show events
    {"host_arcconf_list.txt",            read_arcconf_list},                                // arcconf list
    {"host_arcconf_status_*.txt",        read_arcconf_of},                                  // arcconf getstatus N: what runs
    {"host_arcconf_*.txt",               read_arcconf_of},                                  // arcconf getconfig N
    {"host_sas*ircu_*.txt",              read_ircu},                                        // sas2ircu, sas3ircu: list, N display, N status
    {"host_ssacli.txt",                  read_ssacli},                                      // ssacli ctrl all show config detail
    {"host_mdstat.txt",                  read_mdstat},                                      // /proc/mdstat
    {"host_mdadm*.txt",                  read_mdadm},                                       // mdadm --detail /dev/mdN
    {"host_zpool.txt",                   read_zpool},                                       // zpool status
    {"host_multipath.txt",               read_multipath},                                   // multipath -ll
    {"host_smartctl_scan.json",          read_smartctl_scan},                               // smartctl --scan -j
    {"host_smartctl_*.json",             read_smartctl},                                    // smartctl -x -j DEVICE
    {"host_lsblk.json",                  read_lsblk},                                       // lsblk -J -b -o NAME,TYPE,SIZE,MODEL,SERIAL,WWN,ROTA,TRAN,LOG-SEC
});
// clang-format on

}  // namespace

std::span<const CaptureReader> storage_captures() { return kCaptures; }

bool events_are_whole(std::string_view tail) { return storcli_events_end(tail).is_whole; }

}  // namespace qvhost::inventory
