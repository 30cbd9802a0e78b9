// The controllers' parsers on small reports.
#include <algorithm>

#include "bench.h"
#include "rsamplemodule1/captures.h"
#include "rsamplemodule2/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

constexpr const char* k1 = "log 3 qvmodules/rsamplemodule1: [repo] ";
constexpr const char* k2 = "log 3 qvmodules/rsamplemodule2: [repo] ";

class Storage : public Bench {
protected:
    void storcli(const std::string& report) { vendor_tool("storcli_x64", prints(report)); }

    template <class Parser>
    std::string records(Parser parser, const std::string& report) {
        storcli(report);
        parser(fakehost::repository());
        return noted({"add"});
    }
};

// --- the controller's summary

TEST_F(Storage, SummaryInFull) {
    storcli(
        "Product Name = X\nDriver Version = 1\nBIOS Version = 2\nFW Version = 3\nFunction Number = 0\n");
    lsi_info(fakehost::repository());
    EXPECT_EQ(
        noted(),
        std::string(k1) +
            "raidinfo raw path:'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n"
            "$ 'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n"
            "add RAIDINFO \"LSI Controller 0 Info\" -1: ProductName \"Product Name\"=\" X\\n\", "
            "DriverVersion \"Driver Version\"=\" 1\\n\", BIOSVersion \"BIOS Version\"=\" 2\\n\", "
            "FWVersion \"FW Version\"=\" 3\\n\", FunctionNumber \"Function Number\"=\" 0\\n\"\n");
}

TEST_F(Storage, SummaryRowsEndWithTheFunctionNumber) {
    EXPECT_EQ(records(lsi_info, "Product Name = X\nBus Number = 1\n"), "");
    EXPECT_EQ(records(lsi_info,
                      "Product Name = X\nFunction Number = 0\nBus Number = 7\nFunction Number ="),
              "add RAIDINFO \"LSI Controller 0 Info\" -1: ProductName \"Product Name\"=\" X\\n\", "
              "FunctionNumber \"Function Number\"=\" 0\\n\"\n"
              "add RAIDINFO \"LSI Controller 0 Info\" -1: ProductName \"Product Name\"=\" X\\n\", "
              "FunctionNumber \"Function Number\"=\"\", BusNumber \"Bus Number\"=\" 7\\n\"\n");
    // The first key of the table decides, not the first in the line.
    EXPECT_EQ(records(lsi_info, "FW Version = 1 BIOS Version = 2\nFunction Number = 0\n"),
              "add RAIDINFO \"LSI Controller 0 Info\" -1: BIOSVersion \"BIOS Version\"=\" 2\\n\", "
              "FunctionNumber \"Function Number\"=\" 0\\n\"\n");
}

TEST_F(Storage, SummaryOn32Bits) {
    linux_x32_x64 = 32;
    vendor_tool("storcli_x32", prints("Function Number = 0\n"));
    lsi_info(fakehost::repository());
    EXPECT_EQ(noted({"$"}), "$ 'P/qv_tools/storcli_x32' /c0 show > 'L/c0_showall.txt'\n");
}

TEST_F(Storage, ReportsThatCannotBeOpened) {
    vendor_tool("storcli_x64", "rm -f '" + log_dir + "'*.txt");
    lsi_info(fakehost::repository());
    EXPECT_EQ(noted({"log 4", "add"}),
              "log 4 qvmodules/rsamplemodule1: [repo] Failed to open raid log file\n");
    for (const auto parser : {lsi_list, pd_list, event_log, fw_term_log}) {
        parser(fakehost::repository());
        EXPECT_EQ(noted({"log 4", "add"}),
                  "log 4 qvmodules/rsamplemodule2: [repo] Failed to open raid log file\n");
    }
}

// --- drives in detail

TEST_F(Storage, DrivesInDetail) {
    storcli(
        "Drive /c0/e252/s0 State :\nMedia Error Count = 0\nNeeds EKM Attention = No\n"
        "Media Error Count = 5\nOther Error Count = 1\nNeeds EKM Attention = No\nSN = lost\n");
    pd_list(fakehost::repository());
    const std::string ekm = "NeedsEKMAttention \"Needs EKM Attention\"=\" No\\n\"";
    EXPECT_EQ(
        noted(),
        std::string(k2) +
            "fwterm raw path:'P/qv_tools/storcli_x64' /c0/eall/sall show all > 'L/pdlist.txt'\n"
            "$ 'P/qv_tools/storcli_x64' /c0/eall/sall show all > 'L/pdlist.txt'\n"
            "add PDLIST \"Controller 0 PDLIST\" -1: MediaErrorCount \"Media Error Count\"=\" 0\\n\", " +
            ekm +
            "\n"
            "add PDLIST \"Controller 0 PDLIST\" -1: MediaErrorCount \"Media Error Count\"=\" 5\\n\", " +
            ekm + ", OtherErrorCount \"Other Error Count\"=\" 1\\n\"\n");
}

TEST_F(Storage, DriveKeys) {
    const auto value = [&](const std::string& line) {
        const auto text = records(pd_list, line + "\nNeeds EKM Attention =");
        const auto begin = text.find("-1: ") + 4;
        return text.substr(begin, text.find(", NeedsEKM") - begin);
    };
    EXPECT_EQ(value("Coerced size = 930.390 GB"),
              "Coercedsize \"Coerced size\"=\" 930.390 GB\\n\"");
    EXPECT_EQ(value("Non Coerced size = 931.0 GB"),
              "NonCoercedsize \"Non Coerced size\"=\" 931.0 GB\\n\"");
    EXPECT_EQ(value("Coerced size = 1 Non Coerced size = 2"),
              "NonCoercedsize \"Non Coerced size\"=\" 1 Non Coerced size = 2\\n\"");
    EXPECT_EQ(value("WWN = 1 SN = 2"), "SN \"SN\"=\" 2\\n\"");
    EXPECT_EQ(value("S.M.A.R.T alert flagged by drive = No"),
              "SMARTflag \"S.M.A.R.T alert flagged by drive\"=\" No\\n\"");
    EXPECT_EQ(records(pd_list, "CLI Version = 1\nStatus = Success\n"), "");
}

// --- topology, virtual and physical drives

const std::string kHeading =
    "=====\n\n-----------------------------\nheader\n-----------------------------\n";
const std::string kRule = "-----------------------------\n";

TEST_F(Storage, TopologyRow) {
    storcli("TOPOLOGY :\n" + kHeading + " 0 - - - - RAID1 Optl N  930.390 GB dflt N  N dflt N N\n" +
            kRule + "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14\n");
    lsi_list(fakehost::repository());
    EXPECT_EQ(
        noted(),
        std::string(k2) +
            "raid raw path:'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n"
            "$ 'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n"
            "add TINFO \"Controller 0 TOPOLOGY INFO\" -1: DG \"Disk Group Index\"=\"0\", Arr \"Array Index\"=\"-\", "
            "Row \"Row Index\"=\"-\", EID \"EID:Slot\"=\"-\", DID \"Device ID\"=\"-\", Type \"Type\"=\"RAID1\", "
            "State \"State\"=\"Optl\", BT \"Background Task Active\"=\"N\", Size \"Size\"=\"930.390 GB\", "
            "PDC \"PD Cache\"=\"dflt\", PI \"Protection Info\"=\"N\", SED \"Self Encrypting Drive\"=\"N\", "
            "DS3 \"Dimmer Switch 3\"=\"dflt\", FSpace \"Free Space Present\"=\"N\"\n");
}

std::string virtual_drive(const std::string& size, const std::string& name) {
    return "add VINFO \"Controller 0 Virtual Drive List\" -1: DG \"DG/VD\"=\"0/0\", TYPE \"TYPE\"=\"R1\", "
           "State \"State\"=\"Optl\", Access \"Access\"=\"RW\", Consist \"Consist\"=\"Yes\", Cache \"Cache\"=\"RWTD\", "
           "sCC \"sCC\"=\"-\", Size \"Size\"=\"" +
           size + "\", Name \"Name\"=\"" + name + "\"\n";
}

TEST_F(Storage, VirtualDrivesNeedAName) {
    const auto list = [&](const std::string& rows) {
        return records(lsi_list, "VD LIST :\n" + kHeading + rows + kRule);
    };
    EXPECT_EQ(list("0/0 R1 Optl RW Yes RWTD - 1.0 GB system\n"),
              virtual_drive("1.0 GB", "system\\n"));
    EXPECT_EQ(list("0/0 R1 Optl RW Yes RWTD - 1.0 GB\n"), "");
    EXPECT_EQ(list("0/0 R1 Optl RW Yes RWTD - 1.0 GB \n"), virtual_drive("1.0 GB", "\\n"));
    EXPECT_EQ(list("0/0 R1 Optl RW Yes RWTD - 1.0 GB a b\n"), virtual_drive("1.0 GB", "a"));
    // A row that ends within its size leaves the size of the row before.
    EXPECT_EQ(list("0/0 R1 Optl RW Yes RWTD - 1.0 GB a\nX R1 Optl RW Yes RWTD - 2.0\n"
                   "0/0 R1 Optl RW Yes RWTD - 3.0 GB b\n"),
              virtual_drive("1.0 GB", "a\\n") + virtual_drive("3.0 GB", "b\\n"));
    // Tabs do not separate.
    EXPECT_EQ(list("0/0\tR1 Optl RW Yes RWTD - 1.0 GB a\n"), "");
}

TEST_F(Storage, PhysicalDrivesGoByPosition) {
    EXPECT_EQ(
        records(lsi_list, "PD LIST :\n" + kHeading +
                              "252:0 8 Onln 0 930.390 GB SATA HDD N N 512B EX 1000 U\n" + kRule),
        "add PINFO \"Controller 0 Physical Drive List\" -1: EID \"EID:Slt\"=\"252:0\", DID \"Device ID\"=\"8\", "
        "State \"State\"=\"Onln\", DG \"DriveGroup\"=\"0\", Size \"Size\"=\"930.390 GB\", Intf \"Intf\"=\"SATA\", "
        "Med \"Med\"=\"HDD\", SED \"SED\"=\"N\", PI \"PI\"=\"N\", SeSz \"SeSz\"=\"512B\", Model \"Model\"=\"EX\", "
        "Sp \"Spun\"=\"1000\"\n");
}

TEST_F(Storage, SectionsBeginAndEnd) {
    const std::string row = "0/0 R1 Optl RW Yes RWTD - 1.0 GB ";
    // Without a marker there is no row.
    EXPECT_EQ(records(lsi_list, kHeading + row + "a\n"), "");
    // Without a closing rule rows go on to the end.
    EXPECT_EQ(records(lsi_list, "VD LIST :\n" + kHeading + row + "a\n\n" + row + "b"),
              virtual_drive("1.0 GB", "a\\n") + virtual_drive("1.0 GB", "b"));
    // The marker and five lines are heading; what closes differs by a dash.
    EXPECT_EQ(records(lsi_list, "VD LIST :\n1\n2\n3\n4\n5\n" + row + "a\n" + std::string(26, '-') +
                                    "\n" + row + "b\n" + std::string(27, '-') + "\n" + row + "c\n"),
              virtual_drive("1.0 GB", "a\\n") + virtual_drive("1.0 GB", "b\\n"));
    const auto topology = [&](std::size_t dashes) {
        const std::string line = " 0 - - - - RAID1 Optl N 1 GB dflt N N dflt N N\n";
        const auto text = records(lsi_list, "TOPOLOGY :\n1\n2\n3\n4\n5\n" + line +
                                                std::string(dashes, '-') + "\n" + line);
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(topology(25), 2);
    EXPECT_EQ(topology(26), 1);
    const auto physical = [&](std::size_t dashes) {
        const std::string line = "252:0 8 Onln 0 1 GB SATA HDD N N 512B M U\n";
        const auto text = records(
            lsi_list, "PD LIST :\n1\n2\n3\n4\n5\n" + line + std::string(dashes, '-') + "\n" + line);
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(physical(27), 2);
    EXPECT_EQ(physical(28), 1);
}

TEST_F(Storage, AnOpenTopologyTakesPartInTheNextSection) {
    // The topology has no rule, so the drives' marker comes with the heading counted already: every line
    // is a row of both at once, and the first rule that closes one is the other's first heading line.
    const std::string row = "0/0 R1 Optl RW Yes RWTD - 1.0 GB a\n";
    EXPECT_EQ(records(lsi_list, "TOPOLOGY :\n1\n2\n3\n4\n5\nVD LIST :\n" + row +
                                    std::string(26, '-') + "\n" + "h2\nh3\nh4\nh5\nh6\n" + row),
              virtual_drive("1.0 GB", "a\\n") + virtual_drive("1.0 GB", "a\\n"));
}

TEST_F(Storage, ABlankLineSetsTheFirstFieldOfTheNextRow) {
    EXPECT_EQ(records(lsi_list, "VD LIST :\n" + kHeading + "\n" + kRule), "");
}

// --- the term log

TEST_F(Storage, TermLogIsTakenWholeOrNotAtAll) {
    const auto row = [](const std::string& text) {
        return "add FWTERMLOG \"Controller 0 FW Term Log\" -1: FWTERMLOG \"FW termlog\"=\"" + text +
               "\"\n";
    };
    storcli("a\n\nFirmware Term Log Information :\n");
    fw_term_log(fakehost::repository());
    EXPECT_EQ(noted(),
              std::string(k2) +
                  "fwterm raw path:'P/qv_tools/storcli_x64' /c0 show termlog > 'L/fwtermlog.txt'\n"
                  "$ 'P/qv_tools/storcli_x64' /c0 show termlog > 'L/fwtermlog.txt'\n" +
                  row("a\\n") + row("\\n") + row("Firmware Term Log Information :\\n"));
    EXPECT_EQ(records(fw_term_log, "a\nb\n"), "");
    const std::string marker = "Firmware Term Log Information";
    EXPECT_EQ(records(fw_term_log, marker + "\n" + std::string(600, 'x') + "\n"),
              row(marker + "\\n") + row(std::string(511, 'x')) + row(std::string(89, 'x') + "\\n"));
    // Cut by the 511 bytes of a line, or behind a NUL, the marker is not seen.
    EXPECT_EQ(records(fw_term_log, std::string(500, 'x') + marker + "\n"), "");
    EXPECT_EQ(records(fw_term_log, std::string(1, '\0') + marker + "\n"), "");
}

// --- links

TEST_F(Storage, LinksOfAController) {
    lsi_link(fakehost::repository(), 1);
    const auto link = [](const std::string& file) {
        return "\"\\n<pre>\\n<a href='../" + file + "'' target='_blank'>../" + file +
               "'</a>\\n<pre>\\n\"";
    };
    const std::string first = "'P/qv_tools/storcli_x64' /c1 show > 'L/c1_showall.txt'\n";
    EXPECT_EQ(noted(),
              "$ " + first + k2 + "raidevent raw path:" + first +
                  "$ 'P/qv_tools/storcli_x64' /c1 show events > 'L/c1_raidevents.txt'\n" + k2 +
                  "raidevent raw path:" + first +
                  "$ 'P/qv_tools/storcli_x64' /c1 show termlog > 'L/c1_fwtermlog.txt'\n" + k2 +
                  "raidevent raw path:" + first +
                  "$ 'P/qv_tools/storcli_x64' /c0/eall/sall show all > 'L/c1_pdlist.txt'\n"
                  "add LSILINK \"LSI Controller info link\" -1: index \"Index\"=\"Controller1\", "
                  "lsishowall \"LSI Info Link\"=" +
                  link("c1_showall.txt") +
                  ", lsieventlog \"LSI Event Log Link\"=" + link("c1_raidevents.txt") +
                  ", lsifwtermlog \"LSI FWTerm Log Link\"=" + link("c1_fwtermlog.txt") +
                  ", pdlist \"LSI PDList Link\"=" + link("c1_pdlist.txt") + "\n");
}

// --- SAS2308

class Sas2308 : public Storage {
protected:
    Sas2308() {
        tool("lspci", "echo 'Serial Attached SCSI controller: SAS2308 PCI-Express Fusion-MPT'");
        vendor_tool("sas2ircu", "echo raw > logir.log");
    }
    std::string entries(const std::string& log) {
        vendor_tool("SAS2IR_linux_x64", prints(log));
        sas2308_log(fakehost::repository());
        return noted({"add"});
    }
};

TEST_F(Sas2308, InFull) {
    vendor_tool("SAS2IR_linux_x64", "[ -f \"$1\" ] && echo 'Locale: 1'");
    sas2308_log(fakehost::repository());
    const std::string decode = "'P/qv_tools/SAS2IR_linux_x64' logir.log > 'L/ir.txt'\n";
    EXPECT_EQ(noted(),
              "$ lspci | grep SAS2308 | wc -l > b.txt\n$ P/qv_tools/sas2ircu 0 logir upload\n" +
                  std::string(k2) + "irlog2 raw path:" + decode + "$ " + decode + k2 +
                  "3irlog raw path:L/ir.txt\n"
                  "add SAS2IRLOG \"LSI SAS2308 Log\" -1: Locale \"Locale\"=\" 1\\n\"\n");
}

TEST_F(Sas2308, EntriesEndWithTheirLocale) {
    const std::string head = "add SAS2IRLOG \"LSI SAS2308 Log\" -1: ";
    EXPECT_EQ(
        entries(
            "Time: 12:00:01\nLogCode: 0x1234\nLocale: 1\nTime: 12:00:02\nLocale: 2\nLogCode: 9\n"),
        head +
            "Time \"Time\"=\"12:00:01\\n\", LogCode \"LogCode\"=\" 0x1234\\n\", Locale \"Locale\"=\" 1\\n\"\n" +
            head +
            "Time \"Time\"=\"12:00:02\\n\", LogCode \"LogCode\"=\" 0x1234\\n\", Locale \"Locale\"=\" 2\\n\"\n");
    EXPECT_EQ(
        entries("LogDataValue: x Locale: 3\nLocale:4\n"),
        head + "LogDataValue \"LogDataValue\"=\" x Locale: 3\\n\", Locale \"Locale\"=\"4\\n\"\n");
    EXPECT_EQ(
        entries("LogSequence: 1 Time: 2\nvf_id:1\nvp_id:2\nLocale:\n"),
        head +
            "Time \"Time\"=\"2\\n\", vfid \"vf_id\"=\"1\\n\", vpid \"vp_id\"=\"2\\n\", Locale \"Locale\"=\"\\n\"\n");
    EXPECT_EQ(entries("Time:\nLocale:\n"),
              head + "Time \"Time\"=\"\", Locale \"Locale\"=\"\\n\"\n");
}

TEST_F(Sas2308, NoneIsSilent) {
    tool("lspci", "echo 'Host bridge'");
    sas2308_log(fakehost::repository());
    EXPECT_EQ(noted(), "$ lspci | grep SAS2308 | wc -l > b.txt\n");
    // The count cannot be written, nor read.
    std::filesystem::remove("b.txt");
    std::filesystem::create_symlink("nowhere/b.txt", "b.txt");
    tool("lspci", "echo SAS2308");
    sas2308_log(fakehost::repository());
    EXPECT_EQ(noted(), "$ lspci | grep SAS2308 | wc -l > b.txt\n");
}

TEST_F(Sas2308, ADecodedLogThatCannotBeOpened) {
    vendor_tool("SAS2IR_linux_x64", "rm -f '" + log_dir + "'ir.txt");
    sas2308_log(fakehost::repository());
    EXPECT_EQ(noted({"log 4", "add"}),
              "log 4 qvmodules/rsamplemodule2: [repo] Failed to open ir log file\n");
}

TEST_F(Sas2308, OnlyAQuoteInTheDirectoryChangesTheUnquotedCommand) {
    const auto command = [&](const std::string& name) {
        use_program_dir(name);
        vendor_tool("sas2ircu", "echo \"$*\" > logir.log");
        vendor_tool("SAS2IR_linux_x64", "cat \"$1\"; echo Locale:");
        sas2308_log(fakehost::repository());
        return noted({"$"});
    };
    EXPECT_EQ(command("two words"),
              "$ lspci | grep SAS2308 | wc -l > b.txt\n"
              "$ P/qv_tools/sas2ircu 0 logir upload\n"
              "$ 'P/qv_tools/SAS2IR_linux_x64' logir.log > 'L/ir.txt'\n");
    command("it's two words");
    EXPECT_EQ(log_file("ir.txt"), "0 logir upload\nLocale:\n");
}

// --- Adaptec

class Adaptec : public Storage {
protected:
    Adaptec() {
        tool("lspci", "echo 'RAID bus controller: Adaptec Series 8'");
        tool("uname", "echo x86_64");
        tool("cp", "exit 0");
        vendor_tool("arcconf_x64", "exit 0");
    }
    std::string configuration(const std::string& text) {
        std::filesystem::create_directories(log_dir + "Firmware");
        tool("cp", "cat > \"$3/Firmware/Controller 1 Config.txt\" <<'END'\n" + text + "END");
        pmc_info(fakehost::repository());
        return noted({"add PMCINFO", "add PMCVER"});
    }
    static std::string line(std::string key, const std::string& value) {
        key.resize(43, ' ');
        return "   " + key + value + "\n";
    }
};

TEST_F(Adaptec, InFull) {
    fakehost::min_log_level = 4;
    configuration(line("Global Max SAS Phy Link Rate", "12 Gbps"));
    pmc_info(fakehost::repository());
    EXPECT_EQ(
        noted(),
        "$ lspci | grep Adaptec | wc -l\n$ uname -i\n$ 'P/qv_tools/arcconf_x64' savesupportarchive\n"
        "$ cp -rf /var/log/Support/Firmware 'L/' 2>/dev/null\n"
        "log 4 qvmodules/rsamplemodule1: [repo] PMC raid firmware log path:L/Firmware/Controller 1 Config.txt\n"
        "add PMCLINK \"PMC other info link\" -1: Link \"Link Address\"=\"\\n<pre>\\n<a href='../Firmware' "
        "target='_blank'>../Firmware</a>\\n<pre>\\n\"\n"
        "add PMCINFO \"Controller information\" -1: Rate \"Global Max SAS Phy Link Rate\"=\"12 Gbps\\n\"\n");
}

TEST_F(Adaptec, TheBuildFollowsItsOwnQuestion) {
    tool("uname", "echo i686");
    linux_x32_x64 = 64;
    pmc_info(fakehost::repository());
    EXPECT_EQ(linux_x32_x64, 64);
    EXPECT_EQ(noted({"$ 'P"}), "$ 'P/qv_tools/arcconf_x32' savesupportarchive\n");
}

TEST_F(Adaptec, Keys) {
    const auto rate = line("Global Max SAS Phy Link Rate", "r");
    const std::string end = "Rate \"Global Max SAS Phy Link Rate\"=\"r\\n\"\n";
    const std::string head = "add PMCINFO \"Controller information\" -1: ";
    EXPECT_EQ(
        configuration(line("Controller Mode", "RAID") + line("Controller Model", "ASR") + rate),
        head + "Mode \"Controller Mode\"=\"RAID\\n\", Model \"Controller Model\"=\"ASR\\n\", " +
            end);
    EXPECT_EQ(configuration(line("Spinup limit external drives ", "0") + rate),
              head + "external \"Spinup limit external drives \"=\"0\\n\", " + end);
    // A line that ends before the column of the values has none.
    EXPECT_EQ(configuration("Controller Status : x\n" + rate),
              head + "Status \"Controller Status\"=\"\", " + end);
    EXPECT_EQ(configuration(line("Controller Status", "x")), "");  // no last key, no row
}

TEST_F(Adaptec, Versions) {
    const std::string head = "add PMCVER \"Controller Version Info\" -1: ";
    EXPECT_EQ(
        configuration(line("BIOS", "7.5") + line("Firmware", "7.6") + line("Driver", "1.2") +
                      line("Boot Flash", "7.7")),
        head +
            "BIOS \"BIOS\"=\"7.5\\n\", Firmware \"Firmware\"=\"7.6\\n\", Driver \"Driver\"=\"1.2\\n\", "
            "BootFlash \"Boot Flash\"=\"7.7\\n\"\n");
    for (const char* other : {"Controller BIOS", "Runtime BIOS", "BIOS Halt"}) {
        EXPECT_EQ(configuration(line(other, "x") + line("Boot Flash", "7.7")),
                  head + "BootFlash \"Boot Flash\"=\"7.7\\n\"\n");
        EXPECT_EQ(
            configuration(line(std::string(other) + " Driver", "x") + line("Boot Flash", "7.7")),
            head + "Driver \"Driver\"=\"\", BootFlash \"Boot Flash\"=\"7.7\\n\"\n")
            << other;
    }
}

TEST_F(Adaptec, NothingToAsk) {
    for (const char* count : {"0", "-1", "none", ""}) {
        tool("wc", prints(count));
        pmc_info(fakehost::repository());
        EXPECT_EQ(noted(), "$ lspci | grep Adaptec | wc -l\n") << count;
    }
}

TEST_F(Adaptec, PipesThatCannotBeStarted) {
    fake_system.spawn_error = [](std::string_view command) {
        return command.starts_with("lspci") ? 11 : 0;
    };
    pmc_info(fakehost::repository());
    EXPECT_EQ(noted(), std::string("$ lspci | grep Adaptec | wc -l\n") + k1 +
                           "Can not find the PMC Card!\n");
    fake_system.spawn_error = [](std::string_view command) {
        return command == "uname -i" ? 11 : 0;
    };
    pmc_info(fakehost::repository());
    EXPECT_EQ(noted(), std::string("$ lspci | grep Adaptec | wc -l\n$ uname -i\n") + k1 +
                           "Cannot get the linux OS structure!\n");
}

TEST_F(Adaptec, NoConfiguration) {
    pmc_info(fakehost::repository());
    EXPECT_EQ(
        noted({"log", "add"}),
        "log 4 qvmodules/rsamplemodule1: [repo] PMC raid firmware log path:L/Firmware/Controller 1 Config.txt\n"
        "log 4 qvmodules/rsamplemodule1: [repo] Failed to open PMC Controller file\n");
}

}  // namespace
