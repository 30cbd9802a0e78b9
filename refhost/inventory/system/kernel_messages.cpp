#include "inventory/system/kernel_messages.h"

#include <array>
#include <vector>

#include "inventory/forms.h"

namespace qvhost::inventory {

namespace {

constexpr auto kInfo = Severity::info;
constexpr auto kWarning = Severity::warning;
constexpr auto kCritical = Severity::critical;
constexpr std::nullopt_t kHarmless = std::nullopt;

// clang-format off
constexpr auto kForms = std::to_array<KernelForm>({
    // Look alike and mean no harm
    {"EDAC MC: Ver:",                                          kHarmless, "",            "the driver's version"},
    {"EDAC MC*: Giving out device to",                         kHarmless, "",            "the driver found a memory controller"},
    {"*mce: CPU supports",                                     kHarmless, "",            "said at every start"},
    {"*mce: Using",                                            kHarmless, "",            "said at every start"},
    {"*mce: [Hardware Error]: TSC",                            kHarmless, "",            "a further line of an error"},
    {"*mce: [Hardware Error]: PROCESSOR",                      kHarmless, "",            "a further line of an error"},
    {"*mce: [Hardware Error]: RIP",                            kHarmless, "",            "a further line of an error"},
    {"*mce: [Hardware Error]: Run the above through",          kHarmless, "",            "a further line of an error"},
    {"*[Hardware Error]: ----",                                kHarmless, "",            "a further line of an error"},
    {"*ERST: Error Record Serialization Table",                kHarmless, "",            "said at every start"},
    {"*ERST: Failed to get Error Log Address Range",           kHarmless, "",            "the firmware keeps no error records"},
    {"*PCIe error reporting enabled",                          kHarmless, "",            "said at every start"},
    {"*AER enabled with IRQ",                                  kHarmless, "",            "said at every start"},
    {"*AER: enabled with IRQ",                                 kHarmless, "",            "said at every start"},
    {"*Thermal monitoring enabled",                            kHarmless, "",            "said at every start"},
    {"*perf: interrupt took too long",                         kHarmless, "",            "the profiler slows itself down"},
    {"*Online Controller Reset(OCR)",                          kHarmless, "",            "whether the driver may reset the controller"},
    {"*TM TaskAbort/Reset timeout",                            kHarmless, "",            "a setting of the controller"},
    {"*Asking for cache data failed",                          kHarmless, "",            "USB sticks and virtual drives have no cache to ask for"},
    {"*mperf: module verification failed",                     kHarmless, "",            "a module without a signature"},

    // Memory: the kernel's EDAC and the firmware's reports
    {"EDAC *: * UE * on {} (",                                 kCritical, "",            "an uncorrectable memory error: data was lost"},
    {"EDAC *: * UE * on {}",                                   kCritical, "",            "an uncorrectable memory error: data was lost"},
    {"EDAC *: * CE * on {} (",                                 kInfo,     "",            "a corrected memory error"},
    {"EDAC *: * CE * on {}",                                   kInfo,     "",            "a corrected memory error"},
    {"EDAC {}: UE ",                                           kCritical, "",            "an uncorrectable memory error: data was lost"},
    {"EDAC {}: CE ",                                           kInfo,     "",            "a corrected memory error"},
    {"EDAC {}: * UE ",                                         kCritical, "",            "an uncorrectable memory error: data was lost"},
    {"EDAC {}: * CE ",                                         kInfo,     "",            "a corrected memory error"},
    {"EDAC *: HANDLING MCE MEMORY ERROR",                      kInfo,     "memory",      "the decoder's own lines say how bad it is"},
    {"EDAC PCI*: * Parity Error on {}",                        kCritical, "",            "a parity error on a PCI bus"},
    {"EDAC PCI*Signaled System Error on {}",                   kCritical, "",            "a system error on a PCI bus"},
    {"EDAC {}: * Error",                                       kWarning,  "",            "an error that EDAC saw"},
    {"Memory failure: * recovery action for * Ignored",        kCritical, "memory",      "memory that cannot be taken out of use"},
    {"Memory failure: * recovery action for * Failed",         kCritical, "memory",      "memory that cannot be taken out of use"},
    {"Memory failure: * recovery action for * Recovered",      kWarning,  "memory",      "memory was taken out of use after an uncorrected error"},
    {"Memory failure: * due to hardware memory corruption",    kCritical, "memory",      "a process was killed, since its memory had an uncorrected error"},
    {"*Uncorrected hardware memory error in user-access",      kCritical, "memory",      "an uncorrectable memory error"},
    {"*soft offline: 0x",                                      kWarning,  "memory",      "memory is taken out of use after many corrected errors"},
    {"*memory read error*",                                    kWarning,  "memory",      "memory could not be read"},

    // Processor: machine checks and what the firmware reports with them
    {"*[Hardware Error]: event severity: fatal",               kCritical, "hardware",    "the firmware reports a fatal error"},
    {"*[Hardware Error]: event severity: recoverable",         kCritical, "hardware",    "the firmware reports an uncorrected error"},
    {"*[Hardware Error]: event severity: corrected",           kInfo,     "hardware",    "the firmware reports a corrected error"},
    {"*[Hardware Error]: event severity: info",                kInfo,     "hardware",    "the firmware reports something"},
    {"*[Hardware Error]: *section_type: memory error",         kInfo,     "memory",      "as bad as the report says that it stands in"},
    {"*[Hardware Error]: *section_type: PCIe error",           kInfo,     "PCI",         "as bad as the report says that it stands in"},
    {"*[Hardware Error]: *section_type: general processor error", kInfo, "processor", "as bad as the report says that it stands in"},
    {"*[Hardware Error]: *section_type: IA32/X64 processor",   kInfo,     "processor",   "as bad as the report says that it stands in"},
    {"*[Hardware Error]: *section_type: ARM processor error",  kInfo,     "processor",   "as bad as the report says that it stands in"},
    {"*[Hardware Error]: Corrected error, no action required", kInfo,     "hardware",    "a corrected machine check"},
    {"*[Hardware Error]: Uncorrected",                         kCritical, "hardware",    "an uncorrected machine check"},
    {"*[Hardware Error]: System Fatal error",                  kCritical, "hardware",    "an uncorrected machine check"},
    {"*[Hardware Error]: Deferred error",                      kWarning,  "hardware",    "bad data that nobody has used yet"},
    {"*[Hardware Error]: Machine check events logged",         kWarning,  "processor",   "machine checks of which this does not say how bad they are"},
    {"*[Hardware Error]: CPU *: Machine Check Exception",      kCritical, "processor",   "an uncorrected machine check"},
    {"*[Hardware Error]: Machine check: Processor context corrupt", kCritical, "processor", "an uncorrected machine check"},
    {"*[Hardware Error]: CPU *: Machine Check:",               kWarning,  "processor",   "a machine check; its status says how bad it is"},
    {"*Kernel panic - not syncing: Fatal machine check",       kCritical, "processor",   "an uncorrected machine check stopped the system"},
    {"*Kernel panic - not syncing: Fatal hardware error",      kCritical, "hardware",    "an uncorrected error stopped the system"},
    {"*Machine check events logged",                           kWarning,  "processor",   "machine checks of which this does not say how bad they are"},
    {"*Machine Check Exception",                               kCritical, "processor",   "an uncorrected machine check"},
    {"{}: Core temperature above threshold",                   kWarning,  "",            "the processor slows itself down"},
    {"{}: Package temperature above threshold",                kWarning,  "",            "the processor slows itself down"},
    {"*mce: {}: Core temperature above threshold",             kWarning,  "",            "the processor slows itself down"},
    {"*mce: {}: Package temperature above threshold",          kWarning,  "",            "the processor slows itself down"},
    {"*mce: {}: Core temperature/speed normal",                kInfo,     "",            "the processor is cool again"},
    {"*mce: {}: Package temperature/speed normal",             kInfo,     "",            "the processor is cool again"},
    {"*critical temperature reached*",                         kCritical, "temperature", "the system shuts itself down"},
    {"*Uhhuh. NMI received for unknown reason",                kWarning,  "processor",   "an interrupt that often comes from failing hardware"},
    {"*NMI: PCI system error (SERR)",                          kCritical, "PCI",         "a system error on a PCI bus"},
    {"*NMI: IOCK error",                                       kCritical, "PCI",         "an error on an I/O channel"},

    // PCI Express
    {"pcieport {}: AER: * Fatal error",                        kCritical, "",            "a fatal error on PCI Express"},
    {"*pcieport {}: AER: Uncorrected (Fatal)",                 kCritical, "",            "a fatal error on PCI Express"},
    {"*pcieport {}: AER: Multiple Uncorrected (Fatal)",        kCritical, "",            "a fatal error on PCI Express"},
    {"*pcieport {}: AER: Uncorrected (Non-Fatal)",             kWarning,  "",            "an uncorrected error on PCI Express"},
    {"*pcieport {}: AER: Multiple Uncorrected (Non-Fatal)",    kWarning,  "",            "an uncorrected error on PCI Express"},
    {"*pcieport {}: AER: Uncorrectable (Fatal)",               kCritical, "",            "a fatal error on PCI Express"},
    {"*pcieport {}: AER: Uncorrectable (Non-Fatal)",           kWarning,  "",            "an uncorrected error on PCI Express"},
    {"*pcieport {}: AER: Corrected error",                     kInfo,     "",            "a corrected error on PCI Express"},
    {"*pcieport {}: AER: Correctable error",                   kInfo,     "",            "a corrected error on PCI Express"},
    {"*pcieport {}: AER: Multiple Correct",                    kInfo,     "",            "corrected errors on PCI Express"},
    {"* {}: PCIe Bus Error: severity=Uncorrected (Fatal)",     kCritical, "",            "a fatal error on PCI Express"},
    {"* {}: PCIe Bus Error: severity=Uncorrectable (Fatal)",   kCritical, "",            "a fatal error on PCI Express"},
    {"* {}: PCIe Bus Error: severity=Uncorrect",               kWarning,  "",            "an uncorrected error on PCI Express"},
    {"* {}: PCIe Bus Error: severity=Correct",                 kInfo,     "",            "a corrected error on PCI Express"},
    {"* {}: AER: PCIe Bus Error: severity=Correct",            kInfo,     "",            "a corrected error on PCI Express"},
    {"* {}: AER: aer_status:",                                 kHarmless, "",            "a further line of an error"},
    {"* {}: AER: device recovery failed",                      kCritical, "",            "a PCI Express device did not come back"},
    {"pciehp {}: Slot(*): Link Down",                          kWarning,  "",            "a PCI Express link went down"},
    {"*pciehp: Slot({}): Link Down",                           kWarning,  "",            "a PCI Express link went down"},

    // Controllers
    {"megaraid_sas {}: *in FAULT state",                       kCritical, "",            "the controller's firmware stopped"},
    {"megaraid_sas {}: FW in FAULT",                           kCritical, "",            "the controller's firmware stopped"},
    {"megaraid_sas {}: *Adapter is OPERATIONAL",               kHarmless, "",            "the controller is back"},
    {"megaraid_sas {}: * ERROR",                               kWarning,  "",            "the controller's driver reports an error"},
    {"megaraid_sas {}: resetting fusion adapter",              kWarning,  "",            "the driver resets the controller"},
    {"megaraid_sas {}: Reset not supported, killing adapter",  kCritical, "",            "the controller is given up"},
    {"megaraid_sas {}: *(* - CRIT - *)",                       kWarning,  "",            "a critical event of the controller"},
    {"megaraid_sas {}: *(* - DEAD - *)",                       kCritical, "",            "a fatal event of the controller"},
    {"megaraid_sas {}: *(* - FATAL - *)",                      kCritical, "",            "a fatal event of the controller"},
    {"megaraid_sas {}: * (*/CRIT) - ",                         kWarning,  "",            "a critical event of the controller"},
    {"megaraid_sas {}: * (*/FATAL) - VD ",                     kWarning,  "",            "what a volume or drive is now is in its state"},
    {"megaraid_sas {}: * (*/FATAL) - PD ",                     kWarning,  "",            "what a volume or drive is now is in its state"},
    {"megaraid_sas {}: * (*/FATAL) - ",                        kCritical, "",            "a fatal event of the controller"},
    {"megaraid_sas {}: * (*/DEAD) - ",                         kCritical, "",            "a fatal event of the controller"},
    {"megaraid_sas {}: *scanning for scsi",                    kHarmless, "",            "a drive came or went"},
    {"megaraid_sas {}: *waiting for * commands to complete",   kWarning,  "",            "the controller does not answer"},
    {"mpt*sas_cm*: fault_state(",                              kCritical, "controller",  "the controller's firmware stopped"},
    {"*: sending diag reset !!",                               kWarning,  "controller",  "the driver resets the controller"},
    {"*_cm*: issue target reset",                              kWarning,  "controller",  "a drive does not answer"},
    {"aacraid: Host adapter abort request",                    kWarning,  "aacraid",     "the controller does not answer"},
    {"aacraid: Host bus reset request",                        kWarning,  "aacraid",     "the driver resets the controller"},
    {"aacraid {}: Host adapter dead",                          kCritical, "",            "the controller is given up"},
    {"aacraid*: Adapter health - ",                            kCritical, "aacraid",     "the controller's firmware stopped"},
    {"hpsa {}: Controller lockup detected",                    kCritical, "",            "the controller's firmware stopped"},
    {"hpsa {}: scsi * resetting",                              kWarning,  "",            "a drive does not answer"},
    {"smartpqi {}: resetting scsi",                            kWarning,  "",            "a drive does not answer"},
    {"smartpqi {}: controller is offline",                     kCritical, "",            "the controller is given up"},
    {"*resetting controller",                                  kWarning,  "controller",  "the driver resets the controller"},

    // NVMe
    {"nvme {}: I/O * timeout, reset controller",               kWarning,  "",            "the drive does not answer"},
    {"nvme {}: I/O * timeout, aborting",                       kWarning,  "",            "the drive does not answer"},
    {"nvme {}: I/O * timeout, disable controller",             kCritical, "",            "the drive does not answer"},
    {"nvme {}: I/O tag * timeout",                             kWarning,  "",            "the drive does not answer"},
    {"nvme {}: I/O * timeout",                                 kWarning,  "",            "the drive does not answer"},
    {"nvme {}: controller is down; will reset",                kWarning,  "",            "the drive's controller stopped"},
    {"nvme {}: Device not ready",                              kCritical, "",            "the drive did not come back"},
    {"nvme {}: Removing after probe failure",                  kCritical, "",            "the drive is given up"},
    {"nvme {}: Disabling device after reset failure",          kCritical, "",            "the drive is given up"},
    {"nvme {}: failed to set APST feature",                    kHarmless, "",            "a power setting that the drive does not have"},

    // Drives
    {"*operation not supported error, dev ",                   kHarmless, "",            "the drive does not know the command, and need not"},
    {"*error, dev fd",                                         kHarmless, "",            "no floppy disk"},
    {"*error, dev sr",                                         kHarmless, "",            "an optical disc that cannot be read, or none"},
    {"*error, dev loop",                                       kInfo,     "image",       "an image could not be read or written"},
    {"*error, dev zram",                                       kInfo,     "swap",        "memory ran out"},
    {"*Buffer I/O error on dev* fd",                           kHarmless, "",            "no floppy disk"},
    {"*Buffer I/O error on dev* sr",                           kHarmless, "",            "an optical disc that cannot be read, or none"},
    {"*Buffer I/O error on dev* loop",                         kInfo,     "image",       "an image could not be read or written"},
    {"*Buffer I/O error on dev* zram",                         kInfo,     "swap",        "memory ran out"},
    {"*blk_update_request: critical medium error, dev {},",    kCritical, "",            "a sector that cannot be read"},
    {"*blk_update_request: critical target error, dev {},",    kWarning,  "",            "the drive refused a command"},
    {"*blk_update_request: * error, dev {},",                  kWarning,  "",            "a read or write failed"},
    {"*critical medium error, dev {},",                        kCritical, "",            "a sector that cannot be read"},
    {"critical target error, dev {},",                         kWarning,  "",            "the drive refused a command"},
    {"*error, dev {}, sector",                                 kWarning,  "",            "a read or write failed"},
    {"{}: * (sct 0x2 / sc 0x",                                 kWarning,  "",            "a read or write failed"},
    {"*Buffer I/O error on dev* {}, logical block",            kWarning,  "",            "a read or write failed"},
    {"*lost page write due to I/O error on {}",                kCritical, "",            "data was not written"},
    {"*lost async page write*",                                kCritical, "drive",       "data was not written"},
    {"sd *[{}] * Medium Error",                                kCritical, "",            "a sector that cannot be read"},
    {"sd *[{}] * Hardware Error",                              kCritical, "",            "the drive reports a fault of its own"},
    {"sd *[{}] *Add. Sense: Unrecovered read error",           kCritical, "",            "a sector that cannot be read"},
    {"sd *[{}] *Add. Sense: Failure prediction threshold",     kWarning,  "",            "the drive expects to fail"},
    {"sd *[{}] * FAILED Result: hostbyte=DID_OK driverbyte=DRIVER_SENSE", kHarmless, "", "the sense that follows says what it was"},
    {"sd *[{}] * FAILED Result:",                              kWarning,  "",            "a command failed"},
    {"sd *[{}] Synchronize Cache(10) failed",                  kWarning,  "",            "the drive went away"},
    {"sd *[{}] *rejecting I/O to offline device",              kCritical, "",            "the drive is given up"},
    {"sd {}: rejecting I/O to offline device",                 kCritical, "",            "the drive is given up"},
    {"sd {}: Device offlined",                                 kCritical, "",            "the drive is given up"},
    {"sd {}: timing out command",                              kWarning,  "",            "the drive does not answer"},
    {"* Sense Key : Medium Error",                             kCritical, "drive",       "a sector that cannot be read"},
    {"* Sense Key : Hardware Error",                           kCritical, "drive",       "the drive reports a fault of its own"},
    {"*Add. Sense: Failure prediction threshold exceeded",     kWarning,  "drive",       "the drive expects to fail"},
    {"{}: hard resetting link",                                kWarning,  "",            "the link to the drive broke"},
    {"{}: failed command:",                                    kWarning,  "",            "the drive failed a command"},
    {"{}: exception Emask 0x0 SAct 0x0 SErr 0x0 action 0x0",   kHarmless, "",            "an event without an error"},
    {"{}: exception Emask",                                    kWarning,  "",            "the drive or its link reports an error"},
    {"{}: error: { UNC",                                       kCritical, "",            "a sector that cannot be read"},
    {"{}: error: { ICRC",                                      kWarning,  "",            "the cable to the drive disturbs data"},
    {"{}: SError: {",                                          kHarmless, "",            "a further line of an error"},
    {"{}: link is slow to respond",                            kWarning,  "",            "the drive is slow to start"},
    {"{}: COMRESET failed",                                    kWarning,  "",            "the link to the drive does not come up"},
    {"{}: reset failed, giving up",                            kCritical, "",            "the drive is given up"},
    {"{}: limiting SATA link speed",                           kWarning,  "",            "the link to the drive disturbs data"},
    {"{}: disabled",                                           kHarmless, "",            "too short to say what"},
    {"{}: qc timeout",                                         kWarning,  "",            "the drive does not answer"},

    // Software storage
    {"md/raid*:{}: Disk failure on",                           kCritical, "",            "a drive left its array"},
    {"md/raid*: Disk failure on {},",                          kCritical, "",            "a drive left its array"},
    {"md: super_written gets error",                           kWarning,  "md",          "an array's record could not be written"},
    {"md/raid*:{}: not enough operational",                    kCritical, "",            "an array cannot start"},
    {"md/raid*:{}: Cannot continue operation",                 kCritical, "",            "an array lost more drives than it can"},
    {"md/raid*:{}: not clean -- starting background",          kInfo,     "",            "an array is made consistent"},
    {"md/raid*:{}: read error not correctable",                kCritical, "",            "a sector that cannot be read"},
    {"md/raid*:{}: read error corrected",                      kWarning,  "",            "a sector that could not be read was rewritten"},
    {"device-mapper: multipath*: Failing path {}",             kWarning,  "",            "a path to storage was lost"},
    {"bcache: * error on {}",                                  kWarning,  "",            "a read or write failed"},

    // File systems
    {"EXT4-fs error (device {})",                              kCritical, "",            "the file system is damaged"},
    {"EXT3-fs error (device {})",                              kCritical, "",            "the file system is damaged"},
    {"EXT4-fs ({}): Remounting filesystem read-only",          kCritical, "",            "the file system takes no more writes"},
    {"EXT4-fs ({}): previous I/O error",                       kWarning,  "",            "a read or write failed"},
    {"EXT4-fs ({}): error count since last fsck",              kWarning,  "",            "the file system was damaged earlier"},
    {"EXT4-fs warning (device {})",                            kWarning,  "",            "the file system reports a problem"},
    {"Aborting journal on device {}",                          kCritical, "",            "the file system takes no more writes"},
    {"JBD2: Detected IO errors while flushing file data on {}", kCritical, "",           "data was not written"},
    {"XFS ({}): Corruption",                                   kCritical, "",            "the file system is damaged"},
    {"XFS ({}): *corruption*",                                 kCritical, "",            "the file system is damaged"},
    {"XFS ({}): metadata I/O error",                           kCritical, "",            "the file system could not read or write"},
    {"XFS ({}): log I/O error",                                kCritical, "",            "the file system could not write"},
    {"XFS ({}): * Shutting down filesystem",                   kCritical, "",            "the file system takes no more writes"},
    {"XFS ({}): Filesystem has been shut down",                kCritical, "",            "the file system takes no more writes"},
    {"XFS ({}): I/O Error Detected",                           kCritical, "",            "the file system takes no more writes"},
    {"BTRFS error (device {}",                                 kCritical, "",            "the file system reports an error"},
    {"BTRFS: error (device {})",                               kCritical, "",            "the file system reports an error"},
    {"BTRFS critical (device {}",                              kCritical, "",            "the file system is damaged"},
    {"BTRFS warning (device {}",                               kWarning,  "",            "the file system reports a problem"},

    // The system
    {"Out of memory: Kill",                                    kWarning,  "system",      "a process was killed, since memory ran out"},
    {"Memory cgroup out of memory",                            kWarning,  "system",      "a process was killed at its own limit"},
    {"*invoked oom-killer",                                    kWarning,  "system",      "memory ran out"},
    {"INFO: task * blocked for more than",                     kWarning,  "system",      "a process waits for a drive or a lock"},
    {"*BUG: soft lockup",                                      kCritical, "processor",   "a processor hangs in the kernel"},
    {"*Watchdog detected hard LOCKUP",                         kCritical, "processor",   "a processor hangs"},
    {"*rcu*detected stall",                                    kWarning,  "processor",   "a processor does not answer"},
    {"Kernel panic - not syncing",                             kCritical, "system",      "the kernel stopped"},
    {"BUG: unable to handle",                                  kCritical, "system",      "an error in the kernel"},
    {"general protection fault",                               kCritical, "system",      "an error in the kernel"},
    {"Oops: ",                                                 kCritical, "system",      "an error in the kernel"},
    {"NETDEV WATCHDOG: {}",                                    kWarning,  "",            "a network card does not answer"},
    {"watchdog: watchdog0: watchdog did not stop!",            kWarning,  "system",      "the watchdog will reset the system"},
    {"*IPMI message handler: BMC returned incorrect response", kWarning,  "bmc",         "the BMC answers wrongly"},
    {"ipmi_si *: Could not set up",                            kWarning,  "bmc",         "the BMC cannot be reached"},
    {"ipmi_si *KCS in invalid state",                          kWarning,  "bmc",         "the BMC answers wrongly"},
    {"ACPI Error: ",                                           kInfo,     "firmware",    "the firmware's tables have a mistake"},
    {"ACPI BIOS Error ",                                       kInfo,     "firmware",    "the firmware's tables have a mistake"},
    {"*[Firmware Bug]:",                                       kInfo,     "firmware",    "the firmware has a mistake"},
});
// clang-format on

const Forms& forms() {
    static const auto texts = [] {
        std::vector<std::string_view> found;
        for (const auto& row : kForms) found.push_back(row.form);
        return found;
    }();
    static const Forms all(texts);
    return all;
}

}  // namespace

std::span<const KernelForm> kernel_forms() { return kForms; }

std::optional<KernelMessage> judge_kernel_message(std::string_view text) {
    const auto found = forms().find(text);
    if (!found) return std::nullopt;
    const auto& row = kForms[found->row];
    if (!row.severity) return std::nullopt;
    return KernelMessage{&row, found->subject.empty() ? row.subject : found->subject};
}

}  // namespace qvhost::inventory
