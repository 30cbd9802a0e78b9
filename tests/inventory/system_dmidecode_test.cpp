// dmidecode: the system, processors, memory modules, power supplies.
#include <gtest/gtest.h>

#include <regex>

#include "beside.h"
#include "inventory/system/join.h"
#include "inventory/system/readers.h"
#include "reading_text.h"

namespace qvhost::inventory::test {
namespace {

constexpr std::string_view kTables =
    "# dmidecode 3.3\n"
    "Getting SMBIOS data from sysfs.\n"
    "SMBIOS 2.8 present.\n"
    "\n"
    "Handle 0x0000, DMI type 0, 24 bytes\n"
    "BIOS Information\n"
    "\tVendor: Example Systems\n"
    "\tVersion: BWG2E14\n"
    "\tCharacteristics:\n"
    "\t\tPCI is supported\n"
    "\t\tVersion: 9 of a list, which is no field\n"
    "\n"
    "Handle 0x0001, DMI type 1, 27 bytes\n"
    "System Information\n"
    "\tManufacturer: Example Systems\n"
    "\tProduct Name: KP220 Rack Server   \n"
    "\tSerial Number: EXS0002201\n"
    "\tUUID: 00000220-0000-4000-8000-000000000001\n"
    "\n"
    "Handle 0x0003, DMI type 3, 22 bytes\n"
    "Chassis Information\n"
    "\tAsset Tag: asset-42\n"
    "\n"
    "Handle 0x0004, DMI type 4, 42 bytes\n"
    "Processor Information\n"
    "\tSocket Designation: CPU 1\n"
    "\tType: Central Processor\n"
    "\tFlags:\n"
    "\t\tFPU (Floating-point unit on-chip)\n"
    "\tVersion: Example CPU E5-2630 v3 @ 2.40GHz\n"
    "\tStatus: Populated, Enabled\n"
    "\tCore Count: 8\n"
    "\tThread Count: 16\n"
    "\n"
    "Handle 0x0005, DMI type 4, 42 bytes\n"
    "Processor Information\n"
    "\tSocket Designation: CPU 2\n"
    "\tStatus: Unpopulated\n"
    "\n"
    "Handle 0x0010, DMI type 17, 40 bytes\n"
    "Memory Device\n"
    "\tSize: 16 GB\n"
    "\tLocator: DIMM 1\n"
    "\tType: DDR4\n"
    "\tSpeed: 2133 MT/s\n"
    "\tManufacturer: Example Memory\n"
    "\tSerial Number: EXM0002200\n"
    "\tPart Number: EXM16G4R2133      \n"
    "\n"
    "Handle 0x0011, DMI type 17, 40 bytes\n"
    "Memory Device\n"
    "\tSize: 8192 MB\n"
    "\tLocator: DIMM 2\n"
    "\tType: Unknown\n"
    "\tSpeed: 667 MHz (1.5 ns)\n"
    "\tManufacturer: Not Specified\n"
    "\tSerial Number: 00000000\n"
    "\n"
    "Handle 0x0012, DMI type 17, 40 bytes\n"
    "Memory Device\n"
    "\tSize: No Module Installed\n"
    "\tLocator: DIMM 3\n"
    "\n"
    "Handle 0x0020, DMI type 38, 18 bytes\n"
    "IPMI Device Information\n"
    "\tInterface Type: KCS (Keyboard Control Style)\n"
    "\n"
    "Handle 0x0021, DMI type 39, 22 bytes\n"
    "System Power Supply\n"
    "\tLocation: PSU1\n"
    "\tName: PWS-751P-1R\n"
    "\tSerial Number: P751PCH10A00840\n"
    "\tModel Part Number: PWS-751P\n"
    "\tStatus: Present, OK\n"
    "\n"
    "Handle 0x0030, DMI type 127, 4 bytes\n"
    "End Of Table\n"
    "\n";

constexpr std::string_view kEntities =
    "systems 13: manufacturer=Example Systems product=KP220 Rack Server serial=EXS0002201 "
    "uuid=00000220-0000-4000-8000-000000000001 asset_tag=asset-42 firmware=BWG2E14 is_virtual=no\n"
    "processors 24: socket=CPU 1 model=Example CPU E5-2630 v3 @ 2.40GHz cores=8 threads=16 state=Populated, Enabled\n"
    "memory_modules 40: slot=DIMM 1 capacity_bytes=17179869184 type=DDR4 speed_mts=2133 manufacturer=Example Memory "
    "serial=EXM0002200 part=EXM16G4R2133\n"
    "memory_modules 50: slot=DIMM 2 capacity_bytes=8589934592 speed_mts=667\n";

std::string described(std::string_view text) {
    const auto made = read(text, read_dmidecode);
    std::string rest;
    for (const auto& supply : made.found.firmware_power_supplies)
        rest += "supply " + describe_one(supply) + "\n";
    for (const auto& device : made.found.ipmi_devices)
        rest += "ipmi " + std::to_string(device.place.line) + ": " +
                device.interface_type.value_or("") + "\n";
    return made.all() + rest;
}

TEST(Dmidecode, TheFirmwaresOwnMemoryIsNoModule) {
    const auto modules = [](const std::string& type) {
        return read(
                   "Handle 0x0013, DMI type 17, 40 bytes\nMemory Device\n\tSize: 16 MB\n"
                   "\tForm Factor: Chip\n\tLocator: SYSTEM ROM\n\tType: " +
                       type + "\n\n",
                   read_dmidecode)
            .found.memory_modules.size();
    };
    EXPECT_EQ(modules("Flash"), 0U);
    EXPECT_EQ(modules("DDR"), 1U);
}

TEST(Dmidecode, TablesOfToday) {
    const std::string all =
        std::string(kEntities) +
        "supply 68: slot=PSU1 present=yes state=Present, OK model=PWS-751P-1R serial=P751PCH10A00840 part=PWS-751P\n"
        "ipmi 64: KCS (Keyboard Control Style)\n";
    EXPECT_EQ(described(kTables), all);
    EXPECT_EQ(described(with_crlf(kTables)), all);
    EXPECT_EQ(described(std::string(kTables).substr(0, kTables.size() - 2)), all);
    EXPECT_TRUE(read(kTables, read_dmidecode).how.whole());
}

TEST(Dmidecode, TablesOfVersion2) {
    EXPECT_EQ(described("# dmidecode 2.2\n"
                        "SMBIOS 2.4 present.\n"
                        "104 structures occupying 3162 bytes.\n"
                        "Table at 0x000EE000.\n"
                        "Handle 0x0000\n"
                        "\tDMI type 0, 24 bytes.\n"
                        "\tBIOS Information\n"
                        "\t\tVendor: HP\n"
                        "\t\tVersion: A08\n"
                        "Handle 0x0001\n"
                        "\tDMI type 1, 27 bytes.\n"
                        "\tSystem Information\n"
                        "\t\tManufacturer: HP\n"
                        "\t\tProduct Name: Example G1\n"
                        "Handle 0x0030\n"
                        "\tDMI type 127, 4 bytes.\n"
                        "\tEnd Of Table\n"),
              "systems 10: manufacturer=HP product=Example G1 firmware=A08 is_virtual=no\n");
}

// Version 2 indents all of a structure: what stands at the line's beginning is said by somebody else.
TEST(Dmidecode, WordsBetweenAreNoTitle) {
    const std::string words =
        "bash: warning: setlocale: LC_ALL: cannot change locale (en_US.UTF-8)\n";
    const std::string parts[] = {"Handle 0x0011\n", "\tDMI type 17, 40 bytes.\n",
                                 "\tMemory Device\n", "\t\tSize: 8192 MB\n\t\tLocator: DIMM 1\n"};
    const std::string end = "Handle 0x0030\n\tDMI type 127, 4 bytes.\n\tEnd Of Table\n";
    for (std::size_t before = 1; before <= std::size(parts); ++before) {
        std::string text;
        for (std::size_t i = 0; i < std::size(parts); ++i) {
            if (i == before) text += words;
            text += parts[i];
        }
        const auto made = read(text + end, read_dmidecode);
        ASSERT_EQ(made.found.memory_modules.size(), 1U) << text;
        EXPECT_EQ(made.found.memory_modules.front().slot, "DIMM 1") << text;
        EXPECT_TRUE(made.how.whole()) << text;
    }
}

// Whatever stands before the cut is read, nothing else is, and the cut is noticed.
TEST(Dmidecode, ACutIsNoticed) {
    const auto end = kTables.find("DMI type 127");
    const auto whole = read(kTables, read_dmidecode);
    for (std::size_t size = 1; size < end; ++size) {
        const auto made = read(kTables.substr(0, size), read_dmidecode);
        EXPECT_FALSE(made.how.whole()) << size;
        for (std::size_t i = 0; i < made.found.memory_modules.size(); ++i) {
            const auto& module = made.found.memory_modules[i];
            const auto& meant = whole.found.memory_modules[i];
            EXPECT_TRUE(!module.serial || module.serial == meant.serial) << size;
            EXPECT_TRUE(!module.capacity_bytes || module.capacity_bytes == meant.capacity_bytes)
                << size;
            EXPECT_TRUE(!module.part || module.part == meant.part) << size;
        }
    }
}

TEST(Dmidecode, ErrorsAreSaid) {
    EXPECT_EQ(described("# dmidecode 3.3\n/dev/mem: Permission denied\n"),
              "gap 2: the table has no end\nerror 2: /dev/mem: Permission denied\n");
}

TEST(Dmidecode, VirtualMachines) {
    struct Case {
        std::string_view bios, manufacturer, product;
        bool is_virtual;
    };
    for (const auto& [bios, manufacturer, product, is_virtual] : {
             Case{"SeaBIOS", "QEMU", "Standard PC (Q35 + ICH9, 2009)", true},
             Case{"SeaBIOS", "Red Hat", "KVM", true},
             Case{"Phoenix", "VMware, Inc.", "VMware7,1", true},
             Case{"innotek GmbH", "innotek GmbH", "VirtualBox", true},
             Case{"American Megatrends Inc.", "Microsoft Corporation", "Virtual Machine", true},
             Case{"American Megatrends Inc.", "Microsoft Corporation", "Surface Hub", false},
             Case{"Xen", "Xen", "HVM domU", true},
             Case{"Bochs", "Bochs", "Bochs", true},
             Case{"Amazon EC2", "Amazon EC2", "m5.large", true},
             Case{"Amazon EC2", "Amazon EC2", "m5.metal", false},
             Case{"Google", "Google", "Google Compute Engine", true},
             Case{"SeaBIOS", "OpenStack Foundation", "OpenStack Nova", true},
             Case{"Dell Inc.", "Dell Inc.", "PowerEdge R640", false},
         }) {
        const std::string text =
            "Handle 0x0000, DMI type 0, 24 bytes\nBIOS Information\n\tVendor: " +
            std::string(bios) +
            "\n\nHandle 0x0001, DMI type 1, 27 bytes\nSystem Information\n\tManufacturer: " +
            std::string(manufacturer) + "\n\tProduct Name: " + std::string(product) + "\n\n";
        const auto made = read(text, read_dmidecode);
        ASSERT_EQ(made.found.systems.size(), 1U);
        EXPECT_EQ(made.found.systems[0].is_virtual, is_virtual) << product;
    }
    const auto by_trait = read(
        "Handle 0x0000, DMI type 0, 24 bytes\nBIOS Information\n\tVendor: EFI\n\tCharacteristics:\n"
        "\t\tSystem is a virtual machine\n\nHandle 0x0001, DMI type 1, 27 bytes\nSystem Information\n\tManufacturer: X\n\n",
        read_dmidecode);
    EXPECT_EQ(by_trait.found.systems[0].is_virtual, true);
}

TEST(Dmidecode, PlaceholdersAreNull) {
    for (const std::string value :
         {"To be filled by O.E.M.", "To Be Filled By O.E.M.", "Default string",
          "System Serial Number", "0000000000", "FFFFFFFF", "XXXXXXXXXX", "..................",
          "Not Specified", "None", "N/A", "0123456789", "--", "Not Settable", "   "}) {
        const auto made = read(
            "Handle 0x0001, DMI type 1, 27 bytes\nSystem Information\n\tSerial Number: " + value +
                "\n\tUUID: " + value +
                "\n\nHandle 0x0003, DMI type 3, 22 bytes\nChassis Information\n\tAsset Tag: " +
                value + "\n",
            read_dmidecode);
        ASSERT_EQ(made.found.systems.size(), 1U);
        EXPECT_EQ(describe_one(made.found.systems[0]), "1: is_virtual=no") << value;
    }
}

TEST(JoinMachine, TheFirmwareGoesBeforeTheKernel) {
    Read made;
    made.add(
        "Handle 0x0004, DMI type 4, 42 bytes\nProcessor Information\n\tSocket Designation: CPU 1\n\tCore Count: 8\n\n",
        read_dmidecode, "dmidecode.log");
    made.add(
        "processor\t: 0\nmodel name\t: Example\nphysical id\t: 0\ncpu cores\t: 4\n\nprocessor\t: 1\nphysical id\t: 0\n\n",
        read_cpuinfo, "cpuinfo.log");
    made.add("Handle 0x0001, DMI type 1, 27 bytes\nSystem Information\n\tManufacturer: A\n\n",
             read_dmidecode, "one.txt");
    made.add(
        "Handle 0x0001, DMI type 1, 27 bytes\nSystem Information\n\tManufacturer: B\n\tProduct Name: C\n\n",
        read_dmidecode, "two.txt");
    join_machine(made.found);
    EXPECT_EQ(made.entities(),
              "systems 1: manufacturer=A product=C is_virtual=no\n"
              "processors 1: socket=CPU 1 model=Example cores=8 threads=2\n");
    EXPECT_TRUE(made.found.kernel_processors.empty());
}

// Of each memory device with a size, no more than the regular expression sees.
TEST(Dmidecode, CapturesHaveTheModulesThatTheyList) {
    const auto files = files_in(folder_beside("captures/dmidecode"), "");
    if (files.empty()) GTEST_SKIP() << "no captures beside the repository";
    std::size_t modules = 0;
    for (const auto& file : files) {
        const auto text = content(file);
        const auto made = read(text, read_dmidecode);
        const std::regex device(
            "\\n[ \\t]*Memory Device\\r?\\n(?:[ \\t]+[^\\n]*\\n)*?[ \\t]+Size: [1-9][0-9]* [kKMGT]i?B");
        const auto count = std::distance(std::sregex_iterator(text.begin(), text.end(), device),
                                         std::sregex_iterator());
        EXPECT_EQ(made.found.memory_modules.size(), static_cast<std::size_t>(count)) << file;
        EXPECT_EQ(made.how.whole(), text.find("DMI type 127,") != std::string::npos) << file;
        EXPECT_EQ(made.how.not_understood, 0) << file << ":" << made.how.first_not_understood;
        modules += made.found.memory_modules.size();
    }
    EXPECT_GT(modules, 200U);
}

}  // namespace
}  // namespace qvhost::inventory::test
