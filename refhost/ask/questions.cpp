#include "ask/questions.h"

#include <array>

namespace qvhost::ask {

namespace {

using enum When;
struct Words {
    When when;
    std::string_view words;
};

// clang-format off
constexpr auto kWords = std::to_array<Words>({
    {always,             "always"},
    {bmc,                "the kernel's IPMI device is there"},
    {md,                 "the kernel has software arrays (/proc/mdstat)"},
    {md_array,           "each array in /proc/mdstat"},
    {zfs,                "the kernel has ZFS"},
    {multipath,          "multipath is configured"},
    {plain_drives,       "there are drives behind no RAID controller"},
    {plain_drive,        "each drive behind no RAID controller"},
    {megaraid,           "lspci names a MegaRAID controller, or could not be read"},
    {controller,         "each controller that storcli counts"},
    {first_controller,   "controller 0"},
    {further_controller, "each controller beyond 0"},
    {rebuilding,         "each controller with a drive that rebuilds"},
    {copying,            "each controller with a drive that is copied back"},
    {bare_slots,         "each controller with drives in no enclosure"},
    {battery,            "each controller that says it has a BBU"},
    {capacitor,          "each controller that says it has a CacheVault"},
    {adaptec,            "lspci names an Adaptec controller, or could not be read"},
    {adaptec_controller, "each controller that arcconf lists"},
    {sas2,               "lspci names a SAS2 host adapter, or could not be read"},
    {sas2_adapter,       "each adapter that sas2ircu lists"},
    {sas3,               "lspci names a SAS3 host adapter, or could not be read"},
    {sas3_adapter,       "each adapter that sas3ircu lists"},
    {smart_array,        "lspci names a Smart Array controller, or could not be read"},
});
// clang-format on
static_assert(kWords.size() == static_cast<std::size_t>(smart_array) + 1);

constexpr auto by_verdicts = Needed::by_verdicts;
constexpr auto for_details = Needed::for_details;
constexpr bool tells_more = true;

// clang-format off
constexpr auto kQuestions = std::to_array<Question>({
    // The machine.
    {always,             by_verdicts, "lspci",     "",                              "host_lspci.txt",                    "",                                   "storage", tells_more},
    {always,             by_verdicts, "dmidecode", "",                              "host_dmidecode.txt",                "dmidecode.log",                      "system",  tells_more},
    {always,             by_verdicts, "dmesg",     "",                              "host_dmesg.txt",                    "dmesg.log",                          "system"},
    {always,             for_details, "cat",       "/proc/cpuinfo",                 "host_cpuinfo.txt",                  "cpuinfo.log",                        ""},
    {always,             for_details, "cat",       "/proc/cmdline",                 "host_cmdline.txt",                  "cmdline.log",                        ""},
    {always,             for_details, "cat",       "/etc/os-release",               "host_os_release.txt",               "",                                   ""},
    {always,             for_details, "cat",       "/etc/machine-id",               "host_machine_id.txt",               "",                                   ""},
    {always,             for_details, "cat",       "/proc/uptime",                  "host_uptime.txt",                   "",                                   ""},
    {always,             for_details, "hostname",  "",                              "host_hostname.txt",                 "",                                   ""},
    {always,             for_details, "uname",     "-r",                            "host_uname.txt",                    "",                                   ""},
    // The BMC.
    {bmc,                by_verdicts, "ipmitool",  "sensor",                        "host_ipmitool_sensor.txt",          "sensorinfo.txt",                     "bmc"},
    {bmc,                by_verdicts, "ipmitool",  "sdr elist",                     "host_ipmitool_sdr.txt",             "sdrinfo.txt",                        "bmc"},
    {bmc,                by_verdicts, "ipmitool",  "mc selftest",                   "host_selftest.txt",                 "selfinfo.txt",                       "bmc"},
    {bmc,                by_verdicts, "ipmitool",  "sel info",                      "host_sel_info.txt",                 "",                                   "bmc"},
    {bmc,                by_verdicts, "ipmitool",  "sel elist",                     "host_sel.txt",                      "selinfo.txt",                        "bmc"},
    {bmc,                by_verdicts, "ipmitool",  "chassis status",                "host_chassis_status.txt",           "",                                   "bmc"},
    {bmc,                for_details, "ipmitool",  "mc info",                       "host_mc_info.txt",                  "mcinfo.txt",                         "bmc"},
    {bmc,                for_details, "ipmitool",  "fru",                           "host_ipmitool_fru.txt",             "fruinfo.txt",                        "bmc"},
    // MegaRAID and its renamed builds.
    {megaraid,           by_verdicts, "storcli",   "show",                          "host_storcli_show.txt",             "",                                   "storage", tells_more},
    {megaraid,           by_verdicts, "storcli",   "show ctrlcount",                "host_storcli_show.txt",             "",                                   "storage", tells_more},
    {controller,         by_verdicts, "storcli",   "/c{n} show all",                "host_storcli_c{n}_show.txt",        "c{n}_showall.txt",                   "storage", tells_more},
    {controller,         by_verdicts, "storcli",   "/c{n} show",                    "host_storcli_c{n}_show.txt",        "c{n}_showall.txt",                   "storage", tells_more},
    {first_controller,   by_verdicts, "storcli",   "/c{n}/eall/sall show all",      "host_storcli_c{n}_drives.txt",      "pdlist.txt",                         "storage"},
    {further_controller, by_verdicts, "storcli",   "/c{n}/eall/sall show all",      "host_storcli_c{n}_drives.txt",      "",                                   "storage"},
    {bare_slots,         by_verdicts, "storcli",   "/c{n}/sall show all",           "host_storcli_c{n}_bare_drives.txt", "",                                   "storage"},
    {controller,         for_details, "storcli",   "/c{n}/vall show all",           "host_storcli_c{n}_volumes.txt",     "",                                   "storage"},
    {controller,         for_details, "storcli",   "/c{n}/eall show all",           "host_storcli_c{n}_enclosures.txt",  "",                                   "storage"},
    {rebuilding,         by_verdicts, "storcli",   "/c{n}/eall/sall show rebuild",  "host_storcli_c{n}_rebuild.txt",     "",                                   "storage"},
    {copying,            by_verdicts, "storcli",   "/c{n}/eall/sall show copyback", "host_storcli_c{n}_copyback.txt",    "",                                   "storage"},
    {battery,            by_verdicts, "storcli",   "/c{n}/bbu show all",            "host_storcli_c{n}_bbu.txt",         "",                                   "storage"},
    {capacitor,          by_verdicts, "storcli",   "/c{n}/cv show all",             "host_storcli_c{n}_cv.txt",          "",                                   "storage"},
    {controller,         for_details, "storcli",   "/c{n} show events",             "host_storcli_c{n}_events.txt",      "c{n}_raidevents.txt",                "storage"},
    // Other makers' controllers.
    {adaptec,            by_verdicts, "arcconf",   "list",                          "host_arcconf_list.txt",             "",                                   "storage", tells_more},
    {adaptec_controller, by_verdicts, "arcconf",   "getconfig {n}",                 "host_arcconf_{n}.txt",              "Firmware/Controller {n} Config.txt", "storage"},
    {adaptec_controller, for_details, "arcconf",   "getstatus {n}",                 "host_arcconf_status_{n}.txt",       "",                                   "storage"},
    {sas2,               by_verdicts, "sas2ircu",  "list",                          "host_sas2ircu_list.txt",            "",                                   "storage", tells_more},
    {sas2_adapter,       by_verdicts, "sas2ircu",  "{n} display",                   "host_sas2ircu_{n}_display.txt",     "",                                   "storage"},
    {sas3,               by_verdicts, "sas3ircu",  "list",                          "host_sas3ircu_list.txt",            "",                                   "storage", tells_more},
    {sas3_adapter,       by_verdicts, "sas3ircu",  "{n} display",                   "host_sas3ircu_{n}_display.txt",     "",                                   "storage"},
    {smart_array,        by_verdicts, "ssacli",    "ctrl all show config detail",   "host_ssacli.txt",                   "",                                   "storage"},
    // Arrays and drives of the system itself.
    {md,                 by_verdicts, "cat",       "/proc/mdstat",                  "host_mdstat.txt",                   "",                                   "storage", tells_more},
    {md_array,           by_verdicts, "mdadm",     "--detail /dev/{n}",             "host_mdadm_{n}.txt",                "",                                   "storage"},
    {zfs,                by_verdicts, "zpool",     "status",                        "host_zpool.txt",                    "",                                   "storage"},
    {multipath,          by_verdicts, "multipath", "-ll",                           "host_multipath.txt",                "",                                   "storage"},
    {plain_drives,       by_verdicts, "smartctl",  "--scan -j",                     "host_smartctl_scan.json",           "",                                   "storage"},
    {plain_drive,        by_verdicts, "smartctl",  "-x -j /dev/{n}",                "host_smartctl_{n}.json",            "",                                   "storage"},
    {always,             for_details, "lsblk",     "-J -b -o NAME,TYPE,SIZE,MODEL,SERIAL,WWN,ROTA,TRAN,LOG-SEC","host_lsblk.json",                   "",                                   ""},
});
// clang-format on

// "{n}" stands in the arguments and in the capture, or in neither.
consteval bool well_formed(std::span<const Question> rows) {
    for (const auto& row : rows) {
        const bool several = row.capture.find("{n}") != std::string_view::npos;
        if (row.tool.empty() || !row.capture.starts_with("host_")) return false;
        if (several != (row.arguments.find("{n}") != std::string_view::npos)) return false;
    }
    return true;
}
static_assert(well_formed(kQuestions));

}  // namespace

std::string_view words(When when) {
    for (const auto& row : kWords) {
        if (row.when == when) return row.words;
    }
    return {};
}

std::span<const Question> questions() { return kQuestions; }

}  // namespace qvhost::ask
