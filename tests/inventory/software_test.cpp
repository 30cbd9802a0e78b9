// What the operating system's own tools tell of arrays and drives.
#include "inventory/storage/software.h"
#include "inventory/storage/device_name.h"

#include <gtest/gtest.h>

#include "describe.h"
#include "inventory/storage/block_devices.h"
#include "inventory/storage/ssacli.h"

namespace qvhost::inventory {
namespace {

struct Case {
    std::string text;
    std::string found;
    std::string how;
};

void expect(Reader reader, const std::vector<Case>& cases) {
    for (const auto& c : cases) {
        const auto read = read_text(reader, c.text);
        EXPECT_EQ(describe(read.found), c.found) << c.text;
        EXPECT_EQ(describe(read.how), c.how) << c.text;
    }
}

// A text that is whole says all that the whole text says.
void expect_cuts_seen(Reader reader, const std::string& text) {
    const auto all = read_text(reader, text);
    EXPECT_TRUE(all.how.whole()) << describe(all.how);
    for (std::size_t size = 0; size < text.size(); ++size) {
        const auto read = read_text(reader, text.substr(0, size));
        if (read.how.whole()) {
            EXPECT_EQ(describe(read.found), describe(all.found)) << "cut at byte " << size;
        }
    }
}

const std::string kMdstat =
    "Personalities : [raid1] [raid6] [raid5] [raid4] \n"
    "md0 : active raid1 sdb1[1](F) sda1[0]\n"
    "      1046528 blocks super 1.2 [2/1] [U_]\n"
    "      [=>...................]  recovery =  5.5% (57600/1046528) finish=0.2min speed=57600K/sec\n"
    "      bitmap: 0/8 pages [0KB], 65536KB chunk\n"
    "\n"
    "md127 : active (auto-read-only) raid5 sdc[0] nvme0n1p2[1] sde[2](S)\n"
    "      2093056 blocks super 1.2 level 5, 512k chunk, algorithm 2 [3/3] [UUU]\n"
    "        resync=PENDING\n"
    "\n"
    "md2 : inactive sdf1[0](S)\n"
    "unused devices: <none>\n";

TEST(Mdstat, is_read) {
    expect(read_mdstat,
           {
               {kMdstat,
                "volumes 3: raid=raid1 state=active, sdb1 faulty, degraded [U_] "
                "capacity_bytes=1071644672 name=md0 device=/dev/md0 operation=recovery "
                "progress_percent=5.5\n"
                "volumes 7: raid=raid5 state=active (auto-read-only) capacity_bytes=2143289344 "
                "name=md127 device=/dev/md127 operation=resync\n"
                "volumes 11: state=inactive name=md2 device=/dev/md2\n"
                "drives 2: state=faulty device=/dev/sdb\n"
                "volume_members 2: volume_name=md0 is_spare=no state=faulty device=/dev/sdb\n"
                "volume_members 2: volume_name=md0 is_spare=no device=/dev/sda\n"
                "volume_members 7: volume_name=md127 is_spare=no device=/dev/sdc\n"
                "volume_members 7: volume_name=md127 is_spare=no device=/dev/nvme0n1\n"
                "volume_members 7: volume_name=md127 is_spare=yes device=/dev/sde\n"
                "volume_members 11: volume_name=md2 device=/dev/sdf\n",
                "12 lines\n"},
               {"Personalities : \nunused devices: <none>\n", "", "2 lines\n"},
               {"Personalities : \nunused devices: <non", "",
                "2 lines\ngap 2: it has no end or no beginning\n"},
               // half a word is no state
               {"Personalities : \nmd0 : activ", "volumes 2: name=md0 device=/dev/md0\n",
                "2 lines\ngap 2: it has no end or no beginning\n"},
               // a firmware's RAID: containers are never active
               {"Personalities : [raid1]\nmd127 : inactive sdb[1](S) sda[0](S)\n"
                "      5928 blocks super external:imsm\n"
                "md126 : active raid1 sda[1] sdb[0]\n"
                "      1046528 blocks super external:/md127/0 [2/2] [UU]\n"
                "md125 : active (read-only) raid1 sdc[0]\n"
                "      1046528 blocks super external:-md124/0 [2/1] [U_]\n"
                "md124 : inactive sdc[0](S)\n      5928 blocks super external:ddf\n"
                "md123 : inactive sdd[0](S)\n      5928 blocks super external:imsm\n"
                "unused devices: <none>\n",
                "volumes 4: raid=raid1 state=active capacity_bytes=1071644672 name=md126 "
                "device=/dev/md126\n"
                "volumes 7: raid=raid1 state=active (read-only), degraded [U_] "
                "capacity_bytes=1071644672 name=md125 device=/dev/md125\n"
                "volumes 10: raid=container state=inactive capacity_bytes=6070272 name=md123 "
                "device=/dev/md123\n"
                "volume_members 4: volume_name=md126 is_spare=no device=/dev/sda\n"
                "volume_members 4: volume_name=md126 is_spare=no device=/dev/sdb\n"
                "volume_members 6: volume_name=md125 is_spare=no device=/dev/sdc\n"
                "volume_members 10: volume_name=md123 device=/dev/sdd\n",
                "12 lines\n"},
               {"cat: /proc/mdstat: No such file or directory\n", "",
                "1 lines, 1 not understood (1)\ngap 1: it has no end or no beginning\n"},
           });
    expect_cuts_seen(read_mdstat, kMdstat);
}

TEST(Mdadm, is_read) {
    const std::string text =
        "/dev/md0:\n           Version : 1.2\n     Creation Time : Mon Nov 16 10:00:00 2026\n"
        "        Raid Level : raid1\n        Array Size : 1046528 (1022.00 MiB 1071.64 MB)\n"
        "             State : clean, degraded, recovering \n    Rebuild Status : 5% complete\n\n"
        "    Number   Major   Minor   RaidDevice State\n"
        "       0       8        1        0      active sync   /dev/sda1\n"
        "       -       0        0        1      removed\n\n"
        "       1       8       17        -      faulty   /dev/sdb1\n";
    expect(
        read_mdadm,
        {
            {text,
             "volumes 6: raid=raid1 state=clean, degraded, recovering "
             "capacity_bytes=1071644672 name=md0 device=/dev/md0 operation=Rebuild "
             "progress_percent=5\n"
             "drives 13: state=faulty device=/dev/sdb\n"
             "volume_members 10: volume_name=md0 position=0 is_spare=no state=active sync "
             "device=/dev/sda\n"
             "volume_members 11: volume_name=md0 position=1 is_spare=no state=removed\n"
             "volume_members 13: volume_name=md0 is_spare=no state=faulty device=/dev/sdb\n",
             "13 lines\n"},
            // Each place has a row: with all of them read the state shows which members are there.
            {"/dev/md2:\n    Raid Level : raid6\n  Raid Devices : 4\n         State : clean, degraded, recovering\n"
             "    Number   Major   Minor   RaidDevice State\n"
             "       -       0        0        0      removed\n"
             "       4       8       17        1      spare rebuilding   /dev/sdb1\n"
             "       2       8       33        2      active sync   /dev/sdc1\n"
             "       3       8       49        3      active sync   /dev/sdd1\n",
             "volumes 4: raid=raid6 state=clean, degraded [__UU], recovering name=md2 device=/dev/md2\n"
             "volume_members 6: volume_name=md2 position=0 is_spare=no state=removed\n"
             "volume_members 7: volume_name=md2 position=1 is_spare=no state=spare rebuilding device=/dev/sdb\n"
             "volume_members 8: volume_name=md2 position=2 is_spare=no state=active sync device=/dev/sdc\n"
             "volume_members 9: volume_name=md2 position=3 is_spare=no state=active sync device=/dev/sdd\n",
             "9 lines\n"},
            {"/dev/md3:\n    Raid Level : raid1\n  Raid Devices : 2\n         State : clean, degraded\n"
             "    Number   Major   Minor   RaidDevice State\n"
             "       0       8       17        0      active sync   /dev/sdb1\n",
             "volumes 4: raid=raid1 state=clean, degraded name=md3 device=/dev/md3\n"
             "volume_members 6: volume_name=md3 position=0 is_spare=no state=active sync device=/dev/sdb\n",
             "6 lines\ngap 6: 2 members announced, 1 read\n"},
            {"/dev/md1:\n     State : clean, degraded, recovering\n"
             "    Number   Major   Minor   RaidDevice State\n"
             "       3       8       33        0      spare rebuilding   /dev/sdc1\n"
             "       4       8       49        -      spare   /dev/sdd1\n"
             "foreign words\n       5       8   \n       6       8       65        1      act",
             "volumes 2: state=clean, degraded, recovering name=md1 device=/dev/md1\n"
             "volume_members 4: volume_name=md1 position=0 is_spare=no state=spare rebuilding "
             "device=/dev/sdc\n"
             "volume_members 5: volume_name=md1 is_spare=yes state=spare device=/dev/sdd\n",
             "8 lines, 1 not understood (6)\n"
             "gap 7: a row that does not fit its heading\n"
             "gap 8: a row that does not fit its heading\n"},
            {"/dev/md127:\n           Version : imsm\n        Raid Level : container\n"
             "     Total Devices : 2\n   Working Devices : 2\n     Member Arrays : /dev/md126\n\n"
             "    Number   Major   Minor   RaidDevice\n\n"
             "       -       8        0        -        /dev/sda\n"
             "       -       8       16        -        /dev/sdb\n",
             "", "11 lines\n"},
            {"mdadm: cannot open /dev/md0: No such file or directory\n", "",
             "1 lines\nerror 1: mdadm: cannot open /dev/md0: No such file or directory\n"},
            {"/dev/md0:\n    Raid Level : raid1\n",
             "volumes 1: raid=raid1 name=md0 device=/dev/md0\n",
             "2 lines\ngap 2: an array that is cut off\n"},
        });
}

const std::string kZpool =
    "  pool: tank\n state: DEGRADED\nstatus: One or more devices could not be used because the\n"
    "        label is missing or invalid.\naction: Replace the device using 'zpool replace'.\n"
    "  scan: resilver in progress since Mon Nov 16 10:00:00 2026\n"
    "        1.20T scanned at 1.02G/s, 400G issued, 12.34% done, 01:02:03 to go\nconfig:\n\n"
    "        NAME                        STATE     READ WRITE CKSUM\n"
    "        tank                        DEGRADED     0     0     0\n"
    "          mirror-0                  DEGRADED     0     0     0\n"
    "            sda                     ONLINE       0     0     0\n"
    "            sdb1                    UNAVAIL      3  1.2K     0  cannot open\n"
    "            wwn-0x5000c500a1-part1  ONLINE       0     0     1\n"
    "            ata-EX1000_Z1X00001     ONLINE       0     0     0\n"
    "        logs\n          nvme0n1                   ONLINE       0     0     0\n"
    "        spares\n          sdz                       AVAIL\n\n"
    "errors: No known data errors\n";

TEST(Zpool, is_read) {
    expect(
        read_zpool,
        {
            {"  pool: tank\n state: ONLINE\nconfig:\n        NAME  STATE READ WRITE CKSUM\n"
             "        tank  ONLINE 0 0 0\n          sda   ONLINE 0 9999999999T 0\nerrors:\n",
             "volumes 2: state=ONLINE name=tank\n",
             "7 lines\ngap 6: a row that does not fit its heading\ngap 7: a line that is cut "
             "off\n"},
            {kZpool,
             "volumes 2: raid=mirror state=DEGRADED name=tank operation=resilver "
             "progress_percent=12.34\n"
             "drives 13: state=ONLINE device=/dev/sda other_errors=0\n"
             "drives 14: state=UNAVAIL device=/dev/sdb other_errors=1203\n"
             "drives 15: state=ONLINE wwn=5000c500a1 other_errors=1\n"
             "drives 16: state=ONLINE serial=Z1X00001 other_errors=0\n"
             "drives 18: state=ONLINE device=/dev/nvme0n1 other_errors=0\n"
             "volume_members 13: volume_name=tank span=0 is_spare=no state=ONLINE device=/dev/sda\n"
             "volume_members 14: volume_name=tank span=0 is_spare=no state=UNAVAIL device=/dev/sdb\n"
             "volume_members 15: volume_name=tank span=0 is_spare=no state=ONLINE\n"
             "volume_members 16: volume_name=tank span=0 is_spare=no state=ONLINE serial=Z1X00001\n"
             "volume_members 18: volume_name=tank is_spare=no state=ONLINE device=/dev/nvme0n1\n"
             "volume_members 20: volume_name=tank is_spare=yes state=AVAIL device=/dev/sdz\n",
             "22 lines\n"},
            {"no pools available\n", "", "1 lines\n"},
            {"  pool: a\n state: ONLINE\nconfig:\n\n  NAME STATE READ WRITE CKSUM\n"
             "  a ONLINE 0 0 0\n    sda ONLINE 0 0 0\n\nerrors: 2 data errors, use '-v' for a "
             "list\n",
             "volumes 2: state=ONLINE, 2 data errors, use '-v' for a list name=a\n"
             "drives 7: state=ONLINE device=/dev/sda other_errors=0\n"
             "volume_members 7: volume_name=a is_spare=no state=ONLINE device=/dev/sda\n",
             "9 lines\n"},
            // Only the line's end is missing.
            {"  pool: a\n state: ONLINE\nconfig:\n\n  NAME STATE READ WRITE CKSUM\n"
             "  a ONLINE 0 0 0\n    sda ONLINE 0 0 0\n\nerrors: 2 data errors, use '-v' for a list",
             "volumes 2: state=ONLINE, 2 data errors, use '-v' for a list name=a\n"
             "drives 7: state=ONLINE device=/dev/sda other_errors=0\n"
             "volume_members 7: volume_name=a is_spare=no state=ONLINE device=/dev/sda\n",
             "9 lines\n"},
            {"  pool: b\n state: DEGRADED\nconfig:\n  NAME STATE READ WRITE CKSUM\n"
             "  b DEGRADED 0 0 0\n    raidz1-1 DEGRADED 0 0 0\n      spare-0 DEGRADED 0 0 0\n"
             "        sda UNAVAIL 0 0 0\n        sdc ONLINE 0 0 0\n      sdb ONLINE 0 0 0\n"
             "    sdd ONLINE 0 0 0\n  cache\n    sde ONLINE 0 0 0\n  spares\n    sdc INUSE\n"
             "errors: No known data errors\n",
             "volumes 2: raid=raidz1 state=DEGRADED name=b\n"
             "drives 8: state=UNAVAIL device=/dev/sda other_errors=0\n"
             "drives 9: state=ONLINE device=/dev/sdc other_errors=0\n"
             "drives 10: state=ONLINE device=/dev/sdb other_errors=0\n"
             "drives 11: state=ONLINE device=/dev/sdd other_errors=0\n"
             "drives 13: state=ONLINE device=/dev/sde other_errors=0\n"
             "volume_members 8: volume_name=b span=1 is_spare=no state=UNAVAIL device=/dev/sda\n"
             "volume_members 9: volume_name=b span=1 is_spare=no state=ONLINE device=/dev/sdc\n"
             "volume_members 10: volume_name=b span=1 is_spare=no state=ONLINE device=/dev/sdb\n"
             "volume_members 11: volume_name=b is_spare=no state=ONLINE device=/dev/sdd\n"
             "volume_members 15: volume_name=b is_spare=yes state=INUSE device=/dev/sdc\n",
             "16 lines\n"},
            // spares that are used, and that cannot be
            {"  pool: c\n state: ONLINE\nconfig:\n  NAME STATE READ WRITE CKSUM\n"
             "  c ONLINE 0 0 0\n    sda ONLINE 0 0 0\n    sdb ONLINE\n  spares\n"
             "    sdc  INUSE     currently in use\n    sdd  UNAVAIL   cannot open\n"
             "    sde  FAULTED   corrupted data\n    sdf  AVAIL\n"
             "errors: No known data errors\n",
             "volumes 2: state=ONLINE name=c\n"
             "drives 6: state=ONLINE device=/dev/sda other_errors=0\n"
             "drives 10: state=UNAVAIL device=/dev/sdd\n"
             "drives 11: state=FAULTED device=/dev/sde\n"
             "volume_members 6: volume_name=c is_spare=no state=ONLINE device=/dev/sda\n"
             "volume_members 9: volume_name=c is_spare=yes state=INUSE device=/dev/sdc\n"
             "volume_members 10: volume_name=c is_spare=yes state=UNAVAIL device=/dev/sdd\n"
             "volume_members 11: volume_name=c is_spare=yes state=FAULTED device=/dev/sde\n"
             "volume_members 12: volume_name=c is_spare=yes state=AVAIL device=/dev/sdf\n",
             "13 lines\ngap 7: a row that does not fit its heading\n"},
            // another program's words end no group, and are no spare
            {"  pool: d\n state: DEGRADED\nconfig:\n  NAME STATE READ WRITE CKSUM\n"
             "  d DEGRADED 0 0 0\n    mirror-0 DEGRADED 0 0 0\n      sda ONLINE 0 0 0\n"
             "perl: warning: Setting locale failed.\n      sdb REMOVED 0 0 0\n  spares\n"
             "perl: warning: Setting locale failed.\n    sdc AVAIL\n"
             "errors: No known data errors\n",
             "volumes 2: raid=mirror state=DEGRADED name=d\n"
             "drives 7: state=ONLINE device=/dev/sda other_errors=0\n"
             "drives 9: state=REMOVED device=/dev/sdb other_errors=0\n"
             "volume_members 7: volume_name=d span=0 is_spare=no state=ONLINE device=/dev/sda\n"
             "volume_members 9: volume_name=d span=0 is_spare=no state=REMOVED device=/dev/sdb\n"
             "volume_members 12: volume_name=d is_spare=yes state=AVAIL device=/dev/sdc\n",
             "13 lines\ngap 8: a row that does not fit its heading\n"
             "gap 11: a row that does not fit its heading\n"},
            // missing ones have a number: /dev/sdb may be another drive now. Names that nothing is known of
            {"  pool: e\n state: DEGRADED\nconfig:\n  NAME STATE READ WRITE CKSUM\n"
             "  e DEGRADED 0 0 0\n    mirror-0 DEGRADED 0 0 0\n"
             "      10598392047610938 UNAVAIL 0 0 0  was /dev/sdb1\n"
             "      20598392047610938 UNAVAIL 0 0 0  was /dev/disk/by-id/ata-EX_Z1X9-part1\n"
             "      scsi-35000c500a1 ONLINE 0 0 0\n  logs\n    mirror-1 ONLINE 0 0 0\n"
             "      sdd ONLINE 0 0 0\n  cache\n    30598392047610938 FAULTED 0 0 0  was /dev/sde\n"
             "  spares\n    40598392047610938 UNAVAIL   was /dev/sdf\n"
             "errors: No known data errors\n",
             "volumes 2: raid=mirror state=DEGRADED name=e\n"
             "drives 8: state=UNAVAIL serial=Z1X9 other_errors=0\n"
             "drives 9: state=ONLINE device=/dev/disk/by-id/scsi-35000c500a1 other_errors=0\n"
             "drives 12: state=ONLINE device=/dev/sdd other_errors=0\n"
             "volume_members 7: volume_name=e span=0 is_spare=no state=UNAVAIL\n"
             "volume_members 8: volume_name=e span=0 is_spare=no state=UNAVAIL serial=Z1X9\n"
             "volume_members 9: volume_name=e span=0 is_spare=no state=ONLINE "
             "device=/dev/disk/by-id/scsi-35000c500a1\n"
             "volume_members 12: volume_name=e is_spare=no state=ONLINE device=/dev/sdd\n"
             "volume_members 16: volume_name=e is_spare=yes state=UNAVAIL\n",
             "17 lines\n"},
            {"The ZFS modules are not loaded.\n", "",
             "1 lines, 1 not understood (1)\ngap 1: no pool is in it\n"},
        });
    expect_cuts_seen(read_zpool, kZpool);

    const auto parts = read_text(read_zpool,
                                 "pool: f\n state: ONLINE\nconfig:\n NAME STATE READ WRITE CKSUM\n"
                                 " f ONLINE 0 0 0\n  raidz2-0 ONLINE 0 0 0\n   sda ONLINE 0 0 0\n"
                                 "   replacing-1 ONLINE 0 0 0\n    sdb ONLINE 0 0 0\n special\n"
                                 "  mirror-1 ONLINE 0 0 0\n   sdc ONLINE 0 0 0\n logs\n"
                                 "  sdd ONLINE 0 0 0\n cache\n  sde ONLINE 0 0 0\n"
                                 "errors: No known data errors\n")
                           .found;
    std::string groups, of_drives;
    for (const auto& member : parts.volume_members) groups += member.group + ",";
    for (const auto& drive : parts.drives) of_drives += drive.pool_part + ",";
    EXPECT_EQ(groups, "raidz2,raidz2,mirror,log,");
    EXPECT_EQ(of_drives, ",,,log,cache,");
}

TEST(Multipath, is_read) {
    const std::string text =
        "mpatha (360050764008100dac000000000000100) dm-2 IBM,2145\n"
        "size=20G features='0' hwhandler='0' wp=rw\n"
        "|-+- policy='service-time 0' prio=50 status=active\n"
        "| `- 3:0:0:1 sdb 8:16 active ready running\n"
        "`-+- policy='service-time 0' prio=10 status=enabled\n"
        "  `- 4:0:0:1 sdc 8:32 failed faulty offline\n"
        "mpathb (3600) dm-3 IBM,2145\nsize=1.5T features='0' wp=rw\n"
        "`-+- policy='service-time 0' prio=50 status=active\n"
        "  |- 3:0:0:2 sdd 8:48 active ready running\n"
        "  `- 4:0:0:2 sde 8:64 active ready running\n";
    expect(
        read_multipath,
        {
            {text,
             "volumes 6: raid=multipath state=degraded, 1 of 2 paths failed "
             "capacity_bytes=21474836480 name=mpatha device=/dev/mapper/mpatha\n"
             "volumes 7: raid=multipath state=active capacity_bytes=1649267441664 name=mpathb "
             "device=/dev/mapper/mpathb\n",
             "11 lines\n"},
            {"mpatha (36) dm-2 IBM,2145\n`- 4:0:0:1 sdc 8:32 failed faulty offline\n",
             "volumes 2: raid=multipath state=failed, no path is left name=mpatha "
             "device=/dev/mapper/mpatha\n",
             "2 lines\n"},
            {"mpatha (36) dm-2 IBM,2145\n"
             "|- 3:0:0:1 sdb 8:16 active ready running\n"
             "|- 4:0:0:1 sdc 8:32 active ghost running\n"
             "|- 5:0:0:1 sdd 8:48 active ready offline\n"
             "`- #:#:#:# -   #:#  failed undef unknown\n",
             "volumes 4: raid=multipath state=partially degraded, 2 of 4 paths failed "
             "name=mpatha device=/dev/mapper/mpatha\n",
             "5 lines\n"},
            {"mpatha (36) dm-2 ##,##\nsize=20G features='1 queue_if_no_path'\n",
             "volumes 1: raid=multipath state=failed, no path is left capacity_bytes=21474836480 "
             "name=mpatha device=/dev/mapper/mpatha\n",
             "2 lines\n"},
            {"Nov 16 12:19:33 | dm-5: no usable paths found\n"
             "mpatha (eui.01) dm-2 NVME,EXS NV960\n"
             "`- 0:1:1:1 nvme0n1 259:0 active ready running\n"
             "uuid.0001 [nvme]:nvme1n1 NVMe,EXS NV960,1.0\n"
             "size=1875385008 features='n/a' hwhandler='ANA' wp=rw\n"
             "|- 1:1:1 nvme1c1n1 0:0 n/a optimized live\n"
             "`- 1:2:1 nvme1c2n1 0:0 n/a inaccessible live\n",
             "volumes 2: raid=multipath state=active name=mpatha device=/dev/mapper/mpatha\n"
             "volumes 7: raid=multipath state=degraded, 1 of 2 paths failed name=uuid.0001 "
             "device=/dev/nvme1n1\n",
             "7 lines, 1 not understood (1)\n"},
            {"mpatha (36) dm-2 IBM,2145\nsize=20G\n",
             "volumes 1: raid=multipath state=active capacity_bytes=21474836480 name=mpatha "
             "device=/dev/mapper/mpatha\n",
             "2 lines\ngap 2: a map without paths\n"},
            {"", "", "0 lines\n"},
        });
}

const std::string kAta = R"({
  "smartctl": {"version": [7, 3], "exit_status": 64},
  "device": {"name": "/dev/sda", "info_name": "/dev/sda [SAT]", "type": "sat", "protocol": "ATA"},
  "model_name": "EX1000NM0045",
  "serial_number": "Z1X00000",
  "wwn": {"naa": 5, "oui": 3152, "id": 11111111111},
  "firmware_version": "TN05",
  "user_capacity": {"blocks": 1953525168, "bytes": 1000204886016},
  "logical_block_size": 512,
  "rotation_rate": 7200,
  "smart_support": {"available": true, "enabled": true},
  "smart_status": {
    "passed": false
  },
  "ata_smart_attributes": {"table": [
    {"id": 5, "name": "Reallocated_Sector_Ct", "raw": {"value": 77}},
    {"id": 197, "name": "Current_Pending_Sector", "raw": {"value": 8}},
    {"id": 198, "name": "Offline_Uncorrectable", "raw": {"value": 4294967300}}
  ]},
  "power_on_time": {"hours": 12345},
  "temperature": {"current": 31}
}
)";

TEST(Smartctl, is_read) {
    expect(
        read_smartctl,
        {
            {kAta,
             "drives 3: capacity_bytes=1000204886016 interface=SATA media=HDD sector_bytes=512 "
             "model=EX1000NM0045 serial=Z1X00000 wwn=5000c502964619c7 firmware=TN05 "
             "device=/dev/sda temperature_celsius=31 media_errors=8 smart_alert=yes "
             "power_on_hours=12345\n",
             "22 lines\n"},
            {R"({"smartctl": {"exit_status": 0},
                    "device": {"name": "/dev/nvme0", "type": "nvme", "protocol": "NVMe"},
                    "model_name": "EXNVME", "serial_number": "S64", "smart_status": {"passed": true},
                    "nvme_total_capacity": 1000204886016,
                    "nvme_smart_health_information_log": {"critical_warning": 4, "temperature": 40,
                      "available_spare": 98, "percentage_used": 83, "media_errors": 2}})",
             "drives 2: capacity_bytes=1000204886016 interface=NVMe media=SSD model=EXNVME "
             "serial=S64 device=/dev/nvme0 media_errors=2 smart_alert=yes percentage_used=83 "
             "available_spare_percent=98\n",
             "6 lines\n"},
            {R"({"smartctl": {"exit_status": 0}, "device": {"name": "/dev/bus/0",
                    "type": "megaraid,8", "protocol": "SCSI"}, "scsi_model_name": "SEAGATE X",
                    "rotation_rate": 0, "smart_status": {"passed": true}, "scsi_error_counter_log":
                    {"read": {"total_uncorrected_errors": 3}, "write": {"total_uncorrected_errors": 1}},
                    "scsi_percentage_used_endurance_indicator": 7})",
             "drives 1: interface=SAS media=SSD model=SEAGATE X media_errors=4 smart_alert=no "
             "percentage_used=7\n",
             "5 lines\n"},
            {R"({"smartctl": {"exit_status": 0}, "device": {"name": "/dev/sda", "protocol": "SCSI"},
                    "scsi_model_name": "RAID VOLUME", "smart_support": {"available": false}})",
             "", "2 lines\n"},
            {R"({"smartctl": {"exit_status": 2, "messages": [{"string": "No such device",
                    "severity": "error"}]}, "device": {"name": "/dev/sdx"}})",
             "", "2 lines\nerror 1: No such device\n"},
            {R"({"smartctl": {"exit_status": 0}, "device": {"name": "/dev/sda"}})",
             "drives 1: device=/dev/sda\n", "1 lines\ngap 1: the SMART status is missing\n"},
            {"smartctl: not found\n", "",
             "1 lines, 1 not understood (1)\ngap 1: no JSON is in it\n"},
            {"{}", "", "1 lines\ngap 1: it is not smartctl's\n"},
            {"{\"a\": [1, 2", "", "1 lines\ngap 1: its JSON cannot be read\n"},
            {"x\n{\n\"smartctl\": {\"exit_status\": 0}, \"smart_status\": {\"passed\": true}\n}\ny\n",
             "drives 2: smart_alert=no\n", "5 lines, 2 not understood (1)\n"},
            {std::string(100000, '['), "",
             "1 lines, 1 not understood (1)\ngap 1: no JSON is in it\n"},
            {"{\"a\":" + std::string(100000, '['), "",
             "1 lines\ngap 1: its JSON is nested too deeply\n"},
        });
    const auto read = read_text(read_smartctl, kAta);
    ASSERT_FALSE(read.found.drives.empty());
    EXPECT_EQ(place_of(read.found.drives[0], "smart_alert").line, 13);
    for (std::size_t size = 0; size + 2 < kAta.size(); ++size)
        EXPECT_FALSE(read_text(read_smartctl, kAta.substr(0, size)).how.whole()) << size;
}

// What smartctl's exit status and its limits say, which the SMART status does not.
TEST(Smartctl, tells_more_than_its_status) {
    const auto drive_of = [](const std::string& status, const std::string& temperature) {
        return read_text(read_smartctl,
                         "{\n\"smartctl\": {\n\"exit_status\": " + status +
                             "},\n\"smart_status\": {\"passed\": true},\n\"temperature\": {" +
                             temperature + "}}")
            .found.drives.at(0);
    };
    const auto failing = drive_of("16", "\"current\": 60, \"drive_trip\": 60");
    EXPECT_EQ(failing.smartctl_status, 16);
    EXPECT_EQ(place_of(failing, "smartctl_status").line, 3);
    EXPECT_FALSE(failing.temperature_state);
    EXPECT_EQ(drive_of("0", "\"current\": 61, \"drive_trip\": 60").temperature_state,
              "above its limit, 60 C");
    EXPECT_EQ(drive_of("0", "\"current\": 71, \"limit_max\": 70").temperature_state,
              "above its limit, 70 C");
    EXPECT_FALSE(drive_of("0", "\"current\": 31, \"drive_trip\": 0").temperature_state);
}

// Sectors that a drive gave up or cannot read stand at the line that counts them.
TEST(Smartctl, counts_sectors) {
    struct Count {
        Integer drive_has;
        std::int64_t line;
        bool operator==(const Count&) const = default;
    };
    const auto counts_of = [](const Drive& drive) {
        return std::vector<Count>{
            {drive.reallocated_sectors, place_of(drive, "reallocated_sectors").line},
            {drive.media_errors, place_of(drive, "media_errors").line}};
    };
    const auto ata = [&](const std::vector<std::string>& attributes) {
        std::string text =
            "{\"smartctl\": {\"exit_status\": 0},\n\"smart_status\": {\"passed\": true},"
            "\n\"device\": {},\n\"ata_smart_attributes\": {\"table\": [\n";
        for (const auto& one : attributes) text += one + (&one == &attributes.back() ? "" : ",\n");
        return counts_of(read_text(read_smartctl, text + "]}}").found.drives.at(0));
    };
    const auto attribute = [](int id, const std::string& name, const std::string& value,
                              const std::string& string) {
        return "{\"id\": " + std::to_string(id) + ", \"name\": \"" + name +
               "\",\n\"raw\": {\n\"value\": " + value + ", \"string\": \"" + string + "\"}}";
    };
    EXPECT_EQ(ata({attribute(5, "Reallocated_Sector_Ct", "327757", "77 (0 5)"),
                   attribute(197, "Current_Pending_Sector", "8", "8"),
                   attribute(198, "Offline_Uncorrectable", "9", "9")}),
              (std::vector<Count>{{77, 7}, {9, 13}}));
    EXPECT_EQ(ata({attribute(5, "Retired_Block_Count", "3", "3"),
                   attribute(187, "Reported_Uncorrect", "2", "2"),
                   attribute(197, "Current_Pending_ECC_Cnt", "0", "0")}),
              (std::vector<Count>{{3, 7}, {2, 10}}));
    // Numbers that a maker uses for something else.
    EXPECT_EQ(ata({attribute(5, "Retried_Blk_Ct", "3", "3"), attribute(197, "Not_In_Use", "7", "7"),
                   attribute(198, "Host_Reads_GiB", "93410", "93410"),
                   attribute(198, "Read_Sectors_Tot_Ct", "93410", "93410")}),
              (std::vector<Count>{{std::nullopt, 3}, {std::nullopt, 3}}));
    const auto scsi = [&](const std::string& written) {
        return counts_of(
            read_text(
                read_smartctl,
                "{\"smartctl\": {\"exit_status\": 0}, \"device\": {},\n"
                "\"smart_status\": {\"passed\": true},\n\"scsi_grown_defect_list\": 312,\n"
                "\"scsi_error_counter_log\": {\n\"read\": {\n\"total_uncorrected_errors\": 0},\n"
                "\"write\": {\n\"total_uncorrected_errors\": " +
                    written + "}}}")
                .found.drives.at(0));
    };
    EXPECT_EQ(scsi("0"), (std::vector<Count>{{312, 3}, {0, 6}}));
    EXPECT_EQ(scsi("4"), (std::vector<Count>{{312, 3}, {4, 8}}));
}

TEST(Lsblk, is_read) {
    expect(read_lsblk,
           {
               {R"({"blockdevices": [
  {"name":"sda","type":"disk","size":1000204886016,"model":"EX 1000","serial":"Z1X00000",
   "wwn":"0x5000c500a0000000","rota":true,"tran":"sata","log-sec":512,
   "children":[{"name":"sda1","type":"part"}]},
  {"name":"nvme0n1","type":"disk","size":"2000","serial":"S64","rota":"0","tran":"nvme"},
  {"name":"sdb","type":"disk","size":5,"model":"RAID","serial":"0062","rota":true,"tran":null},
  {"name":"sdc","type":"disk","serial":"U1","tran":"usb"},
  {"name":"loop0","type":"loop"}
]})",
                "drives 2: capacity_bytes=1000204886016 interface=SATA media=HDD sector_bytes=512 "
                "model=EX 1000 serial=Z1X00000 wwn=5000c500a0000000 device=/dev/sda\n"
                "drives 5: capacity_bytes=2000 interface=NVMe media=SSD serial=S64 "
                "device=/dev/nvme0n1\n"
                "drives 6: capacity_bytes=5 model=RAID serial=0062 device=/dev/sdb\n",
                "9 lines\n"},
               {"{\"blockdevices\": 1}", "", "1 lines\ngap 1: it is not lsblk's\n"},
           });
}

TEST(Ssacli, is_read) {
    const std::string text =
        "\nSmart Array P440ar in Slot 0 (Embedded)\n   Bus Interface: PCI\n   Slot: 0\n"
        "   Serial Number: PDNLH0\n   Controller Status: OK\n   Firmware Version: 4.52-0\n"
        "   Battery/Capacitor Count: 1\n   Battery/Capacitor Status: Failed\n"
        "   Capacitor Temperature  (C): 38\n\n"
        "   Internal Drive Cage at Port 1I, Box 1, OK\n      Drive Bays: 4\n      Port: 1I\n\n"
        "   Physical Drives\n"
        "      physicaldrive 1I:1:1 (port 1I:box 1:bay 1, SAS HDD, 300 GB, OK)\n"
        "      physicaldrive 1I:1:2 (port 1I:box 1:bay 2, SATA SSD, 1.9 TB, Predictive Failure)\n\n"
        "   Array: A\n      Interface Type: SAS\n      Status: OK\n\n"
        "      Logical Drive: 1\n         Size: 279.37 GB\n         Fault Tolerance: 1+0\n"
        "         Status: Recovering, 12% complete\n         Caching:  Enabled\n"
        "         Disk Name: /dev/sda\n         Logical Drive Label: boot disk\n\n"
        "      physicaldrive 1I:1:1\n         Port: 1I\n         Box: 1\n         Bay: 1\n"
        "         Status: OK\n         Drive Type: Data Drive\n         Interface Type: SAS\n"
        "         Size: 300 GB\n         Logical/Physical Block Size: 512/512\n"
        "         Firmware Revision: HPD5\n         Serial Number: 6SE3DCPX\n"
        "         WWID: 5000C5009D7CA3E1\n         Model: HP      EG0300FBVFL\n"
        "         Current Temperature (C): 29\n\n"
        "      physicaldrive 1I:1:2\n         Box: 1\n         Bay: 2\n"
        "         Status: Predictive Failure\n         Drive Type: Spare Drive\n"
        "         Interface Type: Solid State SATA\n         Size: 1.9 TB\n"
        "         Usage remaining: 99.90%\n";
    expect(
        read_ssacli,
        {{text,
          "controllers 6: number=0 model=Smart Array P440ar serial=PDNLH0 firmware=4.52-0 "
          "status=OK\n"
          "batteries 9: controller=0 state=Failed temperature_celsius=38\n"
          "enclosures 12: controller=0 number=1 slots=4 state=OK model=Internal Drive Cage\n"
          "volumes 27: controller=0 number=1 raid=1+0 state=Recovering, 12% complete "
          "cache=Enabled capacity_bytes=299971253371 name=boot disk device=/dev/sda "
          "operation=Recovering progress_percent=12\n"
          "drives 36: controller=0 enclosure=1 slot=1 state=OK capacity_bytes=300000000000 "
          "interface=SAS media=HDD sector_bytes=512 model=EG0300FBVFL serial=6SE3DCPX "
          "wwn=5000C5009D7CA3E1 firmware=HPD5 temperature_celsius=29 smart_alert=no\n"
          "drives 50: controller=0 enclosure=1 slot=2 state=Predictive Failure spare=dedicated "
          "capacity_bytes=1900000000000 interface=SATA media=SSD smart_alert=yes "
          "percentage_used=0.1\n"
          "volume_members 36: controller=0 volume=1 is_spare=no enclosure=1 slot=1 "
          "serial=6SE3DCPX\n"
          "volume_members 50: controller=0 volume=1 is_spare=yes enclosure=1 slot=2\n",
          "54 lines\n"},
         {"Error: No controllers detected.\n", "", "1 lines\nerror 1: No controllers detected.\n"},
         {"", "", "0 lines\ngap 0: no controller is in it\n"}});
    const auto cut_before = [&](const char* words) {
        return describe(read_text(read_ssacli, text.substr(0, text.find(words))).how);
    };
    EXPECT_EQ(cut_before("      physicaldrive 1I:1:2\n"),
              "46 lines\ngap 46: the details of 1I:1:2 are missing\n");
    EXPECT_EQ(cut_before("   Physical Drives\n"),
              "15 lines\ngap 15: it ends before the lists of drives\n");
    // Troubles that stand in no status.
    EXPECT_EQ(describe(read_text(read_ssacli,
                                 "Smart Array P440ar in Slot 0\n   Controller Status: OK\n"
                                 "   Cache Status: Permanently Disabled\n\n   Array: A\n"
                                 "      Logical Drive: 1\n         Status: OK\n"
                                 "         Unrecoverable Media Errors: Detected\n"
                                 "      Logical Drive: 2\n         Status: OK\n"
                                 "         Unrecoverable Media Errors: None\n")
                           .found),
              "controllers 2: number=0 model=Smart Array P440ar status=OK, Cache Status: "
              "Permanently Disabled\n"
              "volumes 7: controller=0 number=1 state=OK, Unrecoverable Media Errors: Detected\n"
              "volumes 10: controller=0 number=2 state=OK\n");
}

TEST(Ssacli, an_array_and_a_worn_drive_have_troubles_of_their_own) {
    const auto read = read_text(
        read_ssacli,
        "Smart Array P408i-a in Slot 0\n   Controller Status: OK\n\n   Array: A\n"
        "      Status: Failed Physical Drive\n"
        "      Logical Drive: 1\n         Status: OK\n"
        "      physicaldrive 1I:1:2\n         Bay: 2\n         SSD Smart Trip Wearout: True\n"
        "         Status: OK\n\n"
        "   Array: B\n      Status: OK\n      Logical Drive: 2\n         Status: OK\n"
        "      physicaldrive 1I:1:3\n         Bay: 3\n         Status: OK\n"
        "         SSD Smart Trip Wearout: False\n");
    EXPECT_EQ(describe(read.found),
              "controllers 2: number=0 model=Smart Array P408i-a status=OK\n"
              "volumes 7: controller=0 number=1 state=OK, Status of the array: Failed Physical "
              "Drive\n"
              "volumes 16: controller=0 number=2 state=OK\n"
              "drives 11: controller=0 slot=2 state=OK smart_alert=yes\n"
              "drives 19: controller=0 slot=3 state=OK smart_alert=no\n"
              "volume_members 11: controller=0 volume=1 is_spare=no slot=2\n"
              "volume_members 19: controller=0 volume=2 is_spare=no slot=3\n");
    EXPECT_EQ(place_of(read.found.volumes[0], "Status of the array: Failed Physical Drive").line,
              5);
    EXPECT_EQ(place_of(read.found.drives[0], "smart_alert").line, 10);
}

TEST(Ssacli, what_follows_the_drives_changes_none) {
    const std::string drives =
        "Smart Array P408i-a in Slot 0\n   Controller Status: OK\n   Firmware Version: 4.11\n\n"
        "   Unassigned\n\n      physicaldrive 1I:1:3\n         Bay: 3\n         Status: OK\n"
        "         WWID: 5000C50000000003\n         Model: HP      EG0300FBVFL\n\n";
    for (const char* heading :
         {"SEP (Vendor ID EXAMPLE, Model Smart Adapter) 379", "Expander 378 (WWID: 5001, Box: 1)",
          "Enclosure SEP (Vendor ID EXAMPLE, Model D2600) 243 (Port: 1E, Box: 1)"})
        EXPECT_EQ(describe(read_text(read_ssacli,
                                     drives + "   " + heading +
                                         "\n      Device Number: 379\n"
                                         "      Firmware Version: 9.99\n      Status: Odd\n"
                                         "      WWID: 51402EC000000000\n      Model: Smart\n")
                               .found),
                  describe(read_text(read_ssacli, drives).found))
            << heading;
}

TEST(DriveOf, a_partition_is_its_drive) {
    EXPECT_EQ(drive_of("sdb1"), "/dev/sdb");
    EXPECT_EQ(drive_of("/dev/sdaa12"), "/dev/sdaa");
    EXPECT_EQ(drive_of("nvme0n1p2"), "/dev/nvme0n1");
    EXPECT_EQ(drive_of("nvme0n1"), "/dev/nvme0n1");
    EXPECT_EQ(drive_of("dm-3"), "/dev/dm-3");
}

}  // namespace
}  // namespace qvhost::inventory
