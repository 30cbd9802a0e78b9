// The kernel's messages, /proc/cpuinfo, lspci and the small files that say which system this is.
#include <gtest/gtest.h>

#include "beside.h"
#include "inventory/forms.h"
#include "inventory/system/join.h"
#include "inventory/system/kernel_messages.h"
#include "inventory/system/readers.h"
#include "reading_text.h"

namespace qvhost::inventory::test {
namespace {

TEST(Dmesg, FormsOfTime) {
    EXPECT_EQ(
        read("[    0.000000] Linux version 6.1.0-28-amd64 (x) (gcc)\n"
             "[   12.345678] blk_update_request: I/O error, dev sda, sector 1024\n"
             "[Sat Nov 21 04:05:06 2026] blk_update_request: I/O error, dev sdb, sector 1024\n"
             "2026-11-21T04:05:06,373652+00:00 I/O error, dev sdc, sector 8\n"
             "<3>[   30.373652][  T123] I/O error, dev sdd, sector 8\n"
             "kern  :err   : [   30.373652] I/O error, dev sde, sector 8\n"
             "[Feb 7 03:34] I/O error, dev sdf, sector 8\n"
             "[  +0.000000] I/O error, dev sdg, sector 8\n"
             " I/O error, dev sdh, sector 8\n"
             "[Thu Jan  1 00:00:10 1970] I/O error, dev sdi, sector 8\n",
             read_dmesg)
            .all(),
        "2 kernel - warning [sda] blk_update_request: I/O error, dev sda, sector 1024\n"
        "3 kernel 2026-11-21T04:05:06 warning [sdb] blk_update_request: I/O error, dev sdb, sector 1024\n"
        "4 kernel 2026-11-21T04:05:06 warning [sdc] I/O error, dev sdc, sector 8\n"
        "5 kernel - warning [sdd] I/O error, dev sdd, sector 8\n"
        "6 kernel - warning [sde] I/O error, dev sde, sector 8\n"
        "7 kernel - warning [sdf] I/O error, dev sdf, sector 8\n"
        "8 kernel - warning [sdg] I/O error, dev sdg, sector 8\n"
        "9 kernel - warning [sdh] I/O error, dev sdh, sector 8\n"
        "10 kernel - warning [sdi] I/O error, dev sdi, sector 8\n");
}

TEST(Dmesg, WhatIsWrongAndWhatOnlyLooksSo) {
    struct Case {
        std::string_view message, severity, subject;
    };
    for (
        const auto& [message, severity, subject] : {
            // memory
            Case{
                "EDAC MC1: 1 CE memory read error on CPU_SrcID#1_Ha#0_Chan#0_DIMM#0 (channel:0 slot:0 page:0x1)",
                "info", "CPU_SrcID#1_Ha#0_Chan#0_DIMM#0"},
            Case{"EDAC MC0: 1 UE memory read error on mc#0csrow#0channel#1 (csrow:0 channel:1)",
                 "critical", "mc#0csrow#0channel#1"},
            Case{"EDAC MC0: UE row 0, channel-a= 0 channel-b= 1 labels \"-\"", "critical", "MC0"},
            Case{"EDAC MC: Ver: 3.0.0", "", ""},
            Case{"EDAC MC0: Giving out device to module sb_edac.c controller Haswell", "", ""},
            Case{"EDAC sbridge: Driver loaded.", "", ""},
            Case{"Memory failure: 0x1234: recovery action for dirty LRU page: Recovered", "warning",
                 "memory"},
            // processor
            Case{"mce: [Hardware Error]: Machine check events logged", "warning", "processor"},
            Case{"mce: [Hardware Error]: CPU 3: Machine Check: 0 Bank 5: be00000000800400",
                 "critical", "processor"},
            Case{"mce: [Hardware Error]: CPU 3: Machine Check: 0 Bank 5: 8c00004000010090", "info",
                 "processor"},
            Case{
                "mce: [Hardware Error]: CPU 3: Machine Check Exception: 5 Bank 5: be00000000800400",
                "critical", "processor"},
            Case{"mce: [Hardware Error]: TSC 0 ADDR 1234 MISC 5678", "", ""},
            Case{"[Hardware Error]: Corrected error, no action required.", "info", "hardware"},
            Case{"[Hardware Error]: System Fatal error.", "critical", "hardware"},
            Case{
                "Memory failure: 0x3f1b2: Sending SIGBUS to vm:12 due to hardware memory corruption",
                "critical", "memory"},
            Case{"rcu: INFO: rcu_preempt detected stalls on CPUs/tasks:", "warning", "processor"},
            Case{"rcu: INFO: rcu_sched self-detected stall on CPU", "warning", "processor"},
            Case{"{1}[Hardware Error]: event severity: fatal", "critical", "hardware"},
            Case{"mce: CPU supports 10 MCE banks", "", ""},
            Case{"CPU0: Thermal monitoring enabled (TM1)", "", ""},
            Case{"CPU3: Core temperature above threshold, cpu clock throttled (total events = 1)",
                 "warning", "CPU3"},
            Case{
                "mce: CPU3: Package temperature above threshold, cpu clock throttled (total events = 1)",
                "warning", "CPU3"},
            Case{"watchdog: BUG: soft lockup - CPU#2 stuck for 23s! [kworker/2:1:123]", "critical",
                 "processor"},
            Case{"ERST: Error Record Serialization Table (ERST) support is initialized.", "", ""},
            // PCI
            Case{"pcieport 0000:00:02.0: AER: Corrected error received: 0000:03:00.0", "info",
                 "0000:00:02.0"},
            Case{"pcieport 0000:00:02.0: AER: Uncorrected (Fatal) error received: 0000:03:00.0",
                 "critical", "0000:00:02.0"},
            Case{"pcieport 0000:00:02.0: AER: Uncorrected (Non-Fatal) error received: 0000:03:00.0",
                 "warning", "0000:00:02.0"},
            Case{"nvme 0000:03:00.0: PCIe Bus Error: severity=Corrected, type=Physical Layer",
                 "info", "0000:03:00.0"},
            Case{"be2net 0000:06:00.0: PCIe error reporting enabled", "", ""},
            // controllers and drives
            Case{"megaraid_sas 0000:03:00.0: FW in FAULT state!!", "critical", "0000:03:00.0"},
            Case{"megaraid_sas 0000:03:00.0: resetting fusion adapter.", "warning", "0000:03:00.0"},
            Case{"megaraid_sas 0000:00:03.0: Online Controller Reset(OCR)\t: Enabled", "", ""},
            Case{
                "megaraid_sas 0000:00:03.0: FW provided TM TaskAbort/Reset timeout\t: 0 secs/0 secs",
                "", ""},
            Case{"nvme nvme0: I/O 12 QID 3 timeout, reset controller", "warning", "nvme0"},
            Case{"nvme nvme0: controller is down; will reset: CSTS=0xffffffff, PCI_STATUS=0x10",
                 "warning", "nvme0"},
            Case{"nvme nvme0: 1/0/0 default/read/poll queues", "", ""},
            Case{"blk_update_request: critical medium error, dev sdc, sector 12 op 0x0:(READ)",
                 "critical", "sdc"},
            Case{"end_request: I/O error, dev sdc, sector 12", "warning", "sdc"},
            Case{"end_request: I/O error, dev fd0, sector 0", "", ""},
            Case{"I/O error, dev fd0, sector 0 op 0x0:(READ) flags 0x0", "", ""},
            Case{"blk_update_request: I/O error, dev sr0, sector 0 op 0x0:(READ)", "", ""},
            Case{"Buffer I/O error on dev sr0, logical block 0, async page read", "", ""},
            Case{"blk_update_request: I/O error, dev loop3, sector 2097144", "info", "image"},
            Case{"operation not supported error, dev sda, sector 0 op 0x9:(WRITE_ZEROES)", "", ""},
            Case{"timeout error, dev nvme0n1, sector 8 op 0x0:(READ)", "warning", "nvme0n1"},
            Case{"I/O error, dev sdb, sector 8 op 0x0:(READ)", "warning", "sdb"},
            Case{
                "nvme0n1: Read(0x2) @ LBA 8, 8 blocks, Unrecovered Read Error (sct 0x2 / sc 0x81) MORE",
                "warning", "nvme0n1"},
            Case{"nvme0: Identify(0x6), Invalid Field in Command (sct 0x0 / sc 0x2)", "", ""},
            Case{"megaraid_sas 0000:81:00.0: 5571 (604800000s/0x0020/CRIT) - Controller was reset",
                 "warning", "0000:81:00.0"},
            Case{
                "megaraid_sas 0000:81:00.0: 5572 (boot + 5s/0x0001/FATAL) - VD 00/0 is now DEGRADED",
                "warning", "0000:81:00.0"},
            Case{"megaraid_sas 0000:81:00.0: 5573 (boot + 5s/0x0020/FATAL) - Controller cache lost",
                 "critical", "0000:81:00.0"},
            Case{"Buffer I/O error on dev dm-0, logical block 12, async page read", "warning",
                 "dm-0"},
            Case{"Buffer I/O error on device sda1, logical block 0", "warning", "sda1"},
            Case{"sd 0:0:1:0: [sdb] tag#3 Sense Key : Medium Error [current]", "critical", "sdb"},
            Case{"sd 0:0:1:0: [sdb] tag#3 FAILED Result: hostbyte=DID_OK driverbyte=DRIVER_SENSE",
                 "", ""},
            Case{"sd 3:0:0:0: [sdb] Asking for cache data failed", "", ""},
            Case{"ata3.00: failed command: READ FPDMA QUEUED", "warning", "ata3.00"},
            Case{"ata3.00: error: { UNC }", "critical", "ata3.00"},
            Case{"ata3: hard resetting link", "warning", "ata3"},
            Case{"ata3: SATA link up 6.0 Gbps (SStatus 133 SControl 300)", "", ""},
            // file systems and the system
            Case{
                "EXT4-fs error (device sda1): ext4_find_entry:1455: inode #2: comm ls: reading directory lblock 0",
                "critical", "sda1"},
            Case{"EXT4-fs (sda1): mounted filesystem with ordered data mode", "", ""},
            Case{"XFS (dm-0): Corruption detected. Unmount and run xfs_repair", "critical", "dm-0"},
            Case{"XFS (dm-0): metadata I/O error in \"xfs_buf\" at daddr 0x1", "critical", "dm-0"},
            Case{"XFS (sdb1): Filesystem has been shut down due to log error (0x2).", "critical",
                 "sdb1"},
            Case{"BTRFS: error (device sda2) in btrfs_commit_transaction:2259: errno=-5 IO failure",
                 "critical", "sda2"},
            Case{"md/raid:md5: read error not correctable (sector 8 on sdc1).", "critical", "md5"},
            Case{"md/raid:md5: Cannot continue operation (2/5 failed).", "critical", "md5"},
            Case{"md/raid1:md0: Disk failure on sdb1, disabling device.", "critical", "md0"},
            Case{"Out of memory: Killed process 123 (java) total-vm:1kB", "warning", "system"},
            Case{"INFO: task kworker/0:1:123 blocked for more than 120 seconds.", "warning",
                 "system"},
            Case{"ACPI Error: Method parse/execution failed [\\_GPE._L24", "info", "firmware"},
            Case{"Linux version 6.1.0", "", ""},
            Case{"", "", ""},
        }) {
        const auto made = read("[    1.000000] " + std::string(message) + "\n", read_dmesg);
        ASSERT_EQ(made.events.size(), severity.empty() ? 0U : 1U) << message;
        if (severity.empty()) continue;
        EXPECT_EQ(word(made.events[0].severity), severity) << message;
        EXPECT_EQ(made.events[0].subject, subject) << message;
        EXPECT_EQ(made.events[0].text, message);
    }
}

// What the firmware reports is told in several lines: how bad it is in the first of them.
TEST(Dmesg, SectionsAreAsBadAsTheirReport) {
    const auto sections_of = [](const char* severity) {
        return read("[    1.0] {1}[Hardware Error]: event severity: " + std::string(severity) +
                        "\n[    1.0] {1}[Hardware Error]:  Error 0, type: " + severity +
                        "\n[    1.0] {1}[Hardware Error]:   section_type: memory error\n",
                    read_dmesg)
            .events;
    };
    for (const auto& [said, severity] :
         {std::pair{"corrected", Severity::info}, std::pair{"recoverable", Severity::critical},
          std::pair{"fatal", Severity::critical}}) {
        const auto events = sections_of(said);
        ASSERT_EQ(events.size(), 2U);
        EXPECT_EQ(events[1].subject, "memory");
        EXPECT_EQ(events[1].severity, severity) << said;
    }
}

// The kernel may be told to print no times.
TEST(Dmesg, WithoutTimesTheNameOfADriveIsNoLevel) {
    const auto made =
        read("sd 0:0:1:0: [sdb] tag#3 Sense Key : Medium Error [current]\n", read_dmesg);
    ASSERT_EQ(made.events.size(), 1U);
    EXPECT_EQ(made.events[0].subject, "sdb");
}

// A row that an earlier one hides says nothing.
TEST(Dmesg, EveryRowOfTheTableCanDecide) {
    for (const auto& row : kernel_forms()) {
        std::string message;
        for (std::size_t i = 0; i < row.form.size(); ++i) {
            if (row.form[i] == '*') {
                message += "0";
            } else if (row.form.substr(i, 2) == "{}") {
                message += "sda";
                ++i;
            } else {
                message += row.form[i];
            }
        }
        const auto judged = judge_kernel_message(message);
        ASSERT_EQ(judged.has_value(), row.severity.has_value()) << message;
        EXPECT_EQ(judged ? judged->form : &row, &row)
            << message << " goes to " << judged->form->form;
        EXPECT_FALSE(row.why.empty()) << row.form;
    }
}

// A drive that is given up has a name or an address, so that two of them are two.
TEST(Dmesg, NamesTheDriveThatIsGivenUp) {
    const std::pair<const char*, const char*> cases[] = {
        {"sd 2:0:0:0: [sdb] tag#3 rejecting I/O to offline device", "sdb"},
        {"sd 2:0:0:0: rejecting I/O to offline device", "2:0:0:0"},
        {"sd 3:0:1:0: Device offlined - not ready after error recovery", "3:0:1:0"},
        {"nvme nvme1: Removing after probe failure status: -19", "nvme1"},
    };
    for (const auto& [text, subject] : cases) {
        const auto judged = judge_kernel_message(text);
        ASSERT_TRUE(judged) << text;
        EXPECT_EQ(judged->subject, subject) << text;
        EXPECT_EQ(judged->form->severity, Severity::critical) << text;
    }
}

TEST(Dmesg, ErrorsAndCuts) {
    EXPECT_EQ(read("dmesg: read kernel buffer failed: Operation not permitted\n", read_dmesg).all(),
              "error 1: dmesg: read kernel buffer failed: Operation not permitted\n");
    EXPECT_EQ(read("[    1.0] fine\n[    2.0] hal", read_dmesg).all(),
              "gap 2: the capture ends in the middle of a line\n");
    const auto made =
        read("[    0.000000] Linux version 5.14.21-150500.55-default (x)\r\n", read_dmesg);
    ASSERT_EQ(made.found.host_facts.size(), 1U);
    EXPECT_EQ(made.found.host_facts[0].kernel, "5.14.21-150500.55-default");
}

TEST(Dmesg, CapturesWithoutAFaultHaveNone) {
    const auto folder = folder_beside("captures/dmesg");
    if (folder.empty()) GTEST_SKIP() << "no captures beside the repository";
    for (const auto& file : files_in(folder, "")) {
        const auto made = read(content(file), read_dmesg);
        const bool has_fault = file.find("errors") != std::string::npos;
        std::size_t bad = 0;
        for (const auto& event : made.events) bad += event.severity != Severity::info;
        EXPECT_EQ(bad, has_fault ? 2U : 0U) << file << "\n" << made.all();
    }
}

std::string processors_of(std::string_view text) {
    Read made;
    made.add(text, read_cpuinfo);
    join_machine(made.found);
    return made.all();
}

TEST(Cpuinfo, SeveralArchitectures) {
    EXPECT_EQ(
        processors_of(
            "processor\t: 0\nmodel name\t: A\nphysical id\t: 1\ncpu cores\t: 8\nflags\t\t: fpu\n\n"
            "processor\t: 1\nmodel name\t: A\nphysical id\t: 0\ncpu cores\t: 8\n\n"
            "processor\t: 2\nmodel name\t: A\nphysical id\t: 1\ncpu cores\t: 8\npower management:\n\n"),
        "processors 7: socket=0 model=A cores=8 threads=1\n"
        "processors 1: socket=1 model=A cores=8 threads=2\n");
    EXPECT_EQ(
        processors_of(
            "processor\t: 0\nBogoMIPS\t: 50.00\nCPU implementer\t: 0x41\n\nprocessor\t: 1\nBogoMIPS\t: 50.00\n\n"),
        "processors 1: threads=2\n");
    EXPECT_EQ(
        processors_of(
            "processor\t: 0\ncpu\t\t: POWER9 (architected), altivec supported\nclock\t\t: 2200MHz\n\n"
            "processor\t: 8\ncpu\t\t: POWER9 (architected), altivec supported\n\ntimebase\t: 512000000\n"),
        "processors 1: model=POWER9 (architected), altivec supported threads=2\n");
    EXPECT_EQ(
        processors_of(
            "cpu             : UltraSparc T5 (Niagara5)\nncpus active    : 24\nCPU0:           online\n"),
        "processors 1: model=UltraSparc T5 (Niagara5) threads=24\n");
    EXPECT_EQ(
        processors_of(
            "vendor_id       : IBM/S390\n# processors    : 4\nprocessor 0: version = FF,  identification = 1\n"),
        "processors 2: threads=4\n");
    EXPECT_EQ(processors_of("processor\t: 0\nphysical id\t: 1"),
              "processors 1:\ngap 2: the capture ends in the middle\n");
    EXPECT_EQ(processors_of("cat: /proc/cpuinfo: No such file or directory\n"),
              "gap 1: no processor\nerror 1: cat: /proc/cpuinfo: No such file or directory\n");
}

std::string devices_of(std::string_view text) {
    const auto made = read(text, read_lspci);
    std::string devices;
    for (const auto& device : made.found.pci_devices)
        devices += std::to_string(device.place.line) + ": " + device.address.value_or("-") + " | " +
                   device.device_class.value_or("-") + " | " + device.name.value_or("-") + "\n";
    return devices + made.all();
}

TEST(Lspci, FourForms) {
    EXPECT_EQ(
        devices_of(
            "03:00.0 RAID bus controller: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] (rev 02)\n"
            "\tSubsystem: Dell PERC H730\n"
            "\tKernel driver in use: megaraid_sas\n"
            "0000:04:00.0 Non-Volatile memory controller: Example NVMe (rev 01) (prog-if 02 [NVM Express])\n"),
        "1: 03:00.0 | RAID bus controller | Broadcom / LSI MegaRAID SAS-3 3108 [Invader]\n"
        "4: 0000:04:00.0 | Non-Volatile memory controller | Example NVMe\n");
    EXPECT_EQ(
        devices_of(
            "03:00.0 RAID bus controller [0104]: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] [1000:005d] (rev 02)\n"
            "00:02.0 VGA compatible controller [0300]: Device [1234:1111] (rev 02)\n"),
        "1: 03:00.0 | RAID bus controller | Broadcom / LSI MegaRAID SAS-3 3108 [Invader]\n"
        "2: 00:02.0 | VGA compatible controller | Device [1234:1111]\n");
    EXPECT_EQ(
        devices_of(
            "03:00.0 \"RAID bus controller\" \"Broadcom / LSI\" \"MegaRAID SAS-3 3108 [Invader]\" -r02 \"Dell\" \"PERC H730\"\n"),
        "1: 03:00.0 | RAID bus controller | Broadcom / LSI MegaRAID SAS-3 3108 [Invader]\n");
    EXPECT_EQ(
        devices_of(
            "Slot:\t03:00.0\nClass:\tRAID bus controller [0104]\nVendor:\tBroadcom / LSI [1000]\n"
            "Device:\tMegaRAID SAS-3 3108 [Invader] [005d]\nRev:\t02\n\n"),
        "1: 03:00.0 | RAID bus controller | Broadcom / LSI MegaRAID SAS-3 3108 [Invader]\n");
    EXPECT_EQ(devices_of("lspci: Cannot open /sys/bus/pci/devices\n"),
              "not understood: 1 from 1\n");
    EXPECT_EQ(devices_of("03:00.0 RAID bus con"), "gap 1: not a device\n");
}

TEST(HostFacts, SmallFiles) {
    Read made;
    made.add("kp220.example.com\n", read_hostname, "host_hostname.txt");
    made.add("0123456789abcdef0123456789abcdef", read_machine_id, "host_machine_id.txt");
    made.add(
        "NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nVERSION_ID=\"12\"\n",
        read_os_release, "host_os_release.txt");
    made.add("350735.47 234388.90\n", read_uptime, "host_uptime.txt");
    made.add("6.1.0-28-amd64\n", read_kernel, "host_uname.txt");
    made.add("BOOT_IMAGE=/vmlinuz root=/dev/sda2 ro\n", read_cmdline, "cmdline.log");
    join_machine(made.found);
    ASSERT_EQ(made.found.host_facts.size(), 1U);
    const auto& facts = made.found.host_facts[0];
    EXPECT_EQ(facts.host, "kp220.example.com");
    EXPECT_EQ(facts.machine_id, "0123456789abcdef0123456789abcdef");
    EXPECT_EQ(facts.os, "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(facts.uptime_seconds, 350735);
    EXPECT_EQ(facts.kernel, "6.1.0-28-amd64");
    EXPECT_EQ(facts.cmdline, "BOOT_IMAGE=/vmlinuz root=/dev/sda2 ro");
}

TEST(HostFacts, OtherFormsAndErrors) {
    const auto seconds = [](std::string_view text) {
        const auto made = read(text, read_uptime);
        return made.found.host_facts.empty() ? Integer() : made.found.host_facts[0].uptime_seconds;
    };
    EXPECT_EQ(seconds(" 10:11:12 up 3 days,  2:04,  1 user,  load average: 0.00, 0.01, 0.05\n"),
              3 * 86400 + 2 * 3600 + 4 * 60);
    EXPECT_EQ(seconds(" 10:11:12 up 5 min,  1 user,  load average: 0.00, 0.01, 0.05\n"), 300);
    EXPECT_EQ(seconds(" 10:11:12 up 1 day, 12 min,  2 users,  load average: 0.00, 0.01, 0.05\n"),
              86400 + 720);
    EXPECT_EQ(seconds("cat: /proc/uptime: Permission denied\n"), std::nullopt);
    EXPECT_EQ(read("Linux version 5.10.0 (x) (gcc) #1\n", read_kernel).found.host_facts[0].kernel,
              "5.10.0");
    EXPECT_EQ(read("NAME=Example\nVERSION=9 (Nine)\n", read_os_release).found.host_facts[0].os,
              "Example 9 (Nine)");
    EXPECT_FALSE(read("hostname: command not found\n", read_hostname).how.whole());
    EXPECT_FALSE(read("not a machine id\n", read_machine_id).how.whole());
}

TEST(Forms, WordsAndWildcards) {
    struct Case {
        std::string_view text, form, subject;
    };
    for (const auto& [text, form, subject] : {
             Case{"ata1: hard resetting link", "{}: hard resetting link", "ata1"},
             Case{"x I/O error, dev sda, sector 8", "*I/O error, dev {}, sector", "sda"},
             Case{"md/raid1:md0: failure", "md/raid*:{}: failure", "md0"},
             Case{"XFS (dm-0): Corruption", "XFS ({}): Corruption", "dm-0"},
             Case{"abcdef", "abc*f", ""},
         }) {
        const auto found = match(text, form);
        ASSERT_TRUE(found) << form;
        EXPECT_EQ(found->subject, subject);
    }
    for (const auto& [text, form, subject] : {
             Case{"ATA1: hard resetting", "{}: hard resetting link", ""},
             Case{": hard resetting link", "{}: hard resetting link", ""},
             Case{"xabc", "abc", ""},
             Case{"", "a", ""},
         })
        EXPECT_FALSE(match(text, form)) << form;
    EXPECT_TRUE(is_like("Device not present (Timeout)", "Device not present (*)"));
    EXPECT_FALSE(is_like("Device not present (Timeout) x", "Device not present (*)"));
    EXPECT_TRUE(is_like("", "*"));
    EXPECT_TRUE(is_like("abab", "*ab"));

    const std::vector<std::string_view> rows = {"second abcd", "*abcd", "*abcde"};
    const Forms forms(rows);
    EXPECT_EQ(forms.find("xx abcdef")->row, 1U);
    EXPECT_EQ(forms.find("second abcd")->row, 0U);
    EXPECT_FALSE(forms.find("abc"));
    EXPECT_THROW(Forms(std::vector<std::string_view>{"*abc*"}), std::logic_error);
}

}  // namespace
}  // namespace qvhost::inventory::test
