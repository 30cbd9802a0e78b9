// The host's own questions: what a verdict needs and no plug-in asks. Every command reads and changes
// nothing.
#pragma once

#include <span>
#include <string_view>

namespace qvhost::ask {

// What calls for a question. Some name several things, each of which is asked about: its number or name
// takes the place of "{n}".
enum class When {
    always,
    bmc,                 // the kernel's IPMI device
    md,                  // /proc/mdstat
    md_array,            // each array in it: "md0"
    zfs,                 // the kernel's ZFS
    multipath,           // configured paths
    plain_drives,        // drives behind no RAID controller
    plain_drive,         // each of those that smartctl found: "sda", "nvme0"
    megaraid,            // a controller for storcli and the like
    controller,          // each that it counts: "0", "1", ...
    first_controller,    // of these number 0, whose drives plug-ins ask about
    further_controller,  // of these all others
    rebuilding,          // each of those that rebuilds a drive
    copying,             // each of those that copies a drive back
    bare_slots,          // each that has drives in no enclosure
    battery,             // each that says it has a BBU
    capacitor,           // each that says it has a CacheVault
    adaptec,             // a controller for arcconf
    adaptec_controller,  // each that it lists: "1", ...
    sas2,                // a host adapter for sas2ircu
    sas2_adapter,        // each that it lists: "0", ...
    sas3,                // the same for sas3ircu
    sas3_adapter,
    smart_array,  // a controller for ssacli
};

// The condition in words: "the kernel's IPMI device is there".
std::string_view words(When when);

enum class Needed {
    by_verdicts,  // asked for each profile
    for_details,  // not asked for --profile health
};

struct Question {
    When when;
    Needed needed;
    std::string_view tool;  // a name of tools.h
    std::string_view arguments;
    std::string_view capture;    // which goes into the log directory
    std::string_view told_by;    // the capture of a plug-in that says the same; empty: none does
    std::string_view subsystem;  // whose verdict lacks something where this cannot be asked
    bool tells_more = false;     // the answer says what there is to ask about further
};

// In the order in which they are asked: what others depend on comes first. Of two rows with the same capture
// the second is asked where the first got no answer.
std::span<const Question> questions();

}  // namespace qvhost::ask
