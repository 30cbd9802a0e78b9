// dmidecode in three versions: 3.3 with "MT/s" and sizes in GB, 2.12 with "MHz" and sizes in MB, and 2.2,
// which sets everything a tab deeper.
#include <map>

#include "print.h"

namespace truth {

namespace {

enum class Version { v2_2, v2_12, v3_3 };

struct Table {
    Page& page;
    Version version;
    int handle = 0;

    static int size_of(int type) {
        static const std::map<int, int> kSizes = {{0, 26},  {1, 27},  {2, 15},  {3, 22}, {4, 42},
                                                  {16, 23}, {17, 40}, {38, 18}, {127, 4}};
        return kSizes.at(type);
    }
    void open(int type, const std::string& name) {
        const auto size = std::to_string(size_of(type));
        if (version == Version::v2_2) {
            page.line("Handle 0x" + upper(hex(static_cast<std::uint64_t>(handle++), 4)));
            page.line("\tDMI type " + std::to_string(type) + ", " + size + " bytes.");
            page.line("\t" + name);
        } else {
            page.line("Handle 0x" + upper(hex(static_cast<std::uint64_t>(handle++), 4)) +
                      ", DMI type " + std::to_string(type) + ", " + size + " bytes");
            page.line(name);
        }
    }
    int say(const std::string& label, const std::string& value) {
        return page.line((version == Version::v2_2 ? "\t\t" : "\t") + label + ": " + value);
    }
    void close() {
        if (version != Version::v2_2) page.line("");
    }
};

bool is_placeholder(const std::string& text) {
    for (const char* one :
         {"To Be Filled By O.E.M.", "To be filled by O.E.M.", "Not Specified", "Default string",
          "System Serial Number", "None", "0123456789", "00000000-0000-0000-0000-000000000000"}) {
        if (text == one) return true;
    }
    return false;
}

Json real(const std::string& text) { return is_placeholder(text) ? Json() : Json(text); }

void print_system(const Server& server, Table& table, Book& book) {
    auto& page = table.page;
    auto& system = book.subject("systems", "system", {});
    table.open(0, "BIOS Information");
    table.say("Vendor", "Example BIOS");
    system.tell(page, table.say("Version", server.firmware),
                {{"firmware", beginning(server.firmware)}});
    table.say("Release Date", server.release_date);
    table.say("ROM Size", "16 MB");
    table.close();
    table.open(1, "System Information");
    system.tell(page, table.say("Manufacturer", server.manufacturer),
                {{"manufacturer", server.manufacturer},
                 {"is_virtual", server.is_virtual ? Told(true) : Told(false, {nullptr})}});
    system.tell(page, table.say("Product Name", server.product), {{"product", server.product}});
    table.say("Version", server.version);
    system.tell(page, table.say("Serial Number", server.serial), {{"serial", real(server.serial)}});
    system.tell(page, table.say("UUID", server.uuid), {{"uuid", real(server.uuid)}});
    table.say("Wake-up Type", "Power Switch");
    table.close();
    table.open(2, "Base Board Information");
    table.say("Manufacturer", "Example Boards");
    table.say("Product Name", server.board);
    table.say("Serial Number", "EXB000220017");
    table.say("Asset Tag", "(none)");
    table.close();
    table.open(3, "Chassis Information");
    table.say("Manufacturer", server.manufacturer);
    table.say("Type", server.chassis_type);
    table.say("Serial Number", "EXC0002201");
    system.tell(page, table.say("Asset Tag", server.asset_tag),
                {{"asset_tag", real(server.asset_tag)}});
    table.close();
}

void print_processors(const Server& server, Table& table, Book& book) {
    auto& page = table.page;
    for (const auto& one : server.processors) {
        auto& subject = book.subject("processors", one.socket, {});
        subject.may_be_missing = !one.is_there;
        table.open(4, "Processor Information");
        const int socket = table.say("Socket Designation", one.socket);
        table.say("Type", one.is_there ? "Central Processor" : "<OUT OF SPEC>");
        table.say("Family", one.is_there ? "Xeon" : "Unknown");
        table.say("Manufacturer", one.is_there ? "Example Silicon" : "Not Specified");
        const int model = table.say("Version", one.is_there ? one.model : "Not Specified");
        table.say("External Clock", "100 MHz");
        const int state = table.say("Status", one.is_there ? "Populated, Enabled" : "Unpopulated");
        subject.tell(page, socket, {{"socket", one.socket}});
        if (one.is_there) {
            subject.tell(page, model, {{"model", one.model}});
            subject.tell(page, state, {{"state", "Populated, Enabled"}});
        } else {
            subject.tell(page, state, {{"state", anything("Unpopulated")}});
        }
        // Before SMBIOS 2.5 there were no counts.
        if (table.version != Version::v2_2 && one.is_there) {
            subject.tell(page, table.say("Core Count", std::to_string(one.cores)),
                         {{"cores", one.cores}});
            table.say("Core Enabled", std::to_string(one.cores));
            subject.tell(page, table.say("Thread Count", std::to_string(one.threads)),
                         {{"threads", one.threads}});
        }
        table.close();
    }
}

void print_memory(const Server& server, Table& table, Book& book) {
    auto& page = table.page;
    table.open(16, "Physical Memory Array");
    table.say("Location", "System Board Or Motherboard");
    table.say("Use", "System Memory");
    table.say("Error Correction Type", "Multi-bit ECC");
    table.say("Maximum Capacity", "768 GB");
    table.say("Number Of Devices", std::to_string(server.memory.size()));
    table.close();
    const bool is_new = table.version == Version::v3_3;
    const std::string per_second = is_new ? " MT/s" : " MHz";
    for (const auto& one : server.memory) {
        auto& subject = book.subject("memory_modules", one.slot, {"slot"});
        subject.may_be_missing = !one.is_there;
        table.open(17, "Memory Device");
        table.say("Array Handle", "0x000F");
        table.say("Total Width", one.is_there ? "72 bits" : "Unknown");
        table.say("Data Width", one.is_there ? "64 bits" : "Unknown");
        const auto size = !one.is_there ? "No Module Installed"
                          : is_new      ? std::to_string(one.megabytes / 1024) + " GB"
                                        : std::to_string(one.megabytes) + " MB";
        const int capacity = table.say("Size", size);
        table.say("Form Factor", one.is_there ? "DIMM" : "Unknown");
        table.say("Set", "None");
        const int slot = table.say("Locator", one.slot);
        subject.tell(page, slot, {{"slot", one.slot}});
        table.say("Bank Locator", one.bank);
        const int type = table.say("Type", one.is_there ? one.type : "Unknown");
        table.say("Type Detail", one.is_there ? "Synchronous" : "None");
        const int speed = table.say(
            "Speed", one.is_there ? std::to_string(one.rated_speed) + per_second : "Unknown");
        const int maker = table.say("Manufacturer", one.is_there ? one.manufacturer : "NO DIMM");
        const int serial = table.say("Serial Number", one.is_there ? one.serial : "NO DIMM");
        table.say("Asset Tag", "Not Specified");
        const int part = table.say("Part Number", one.is_there ? left(one.part, 20) : "NO DIMM");
        if (!one.is_there) {
            // A reader may leave an empty slot out, or say that nothing is there.
            subject.tell(page, capacity, {{"capacity_bytes", Told(nullptr, {0})}});
            table.close();
            continue;
        }
        subject.tell(page, capacity,
                     {{"capacity_bytes", std::int64_t{one.megabytes} * 1024 * 1024}});
        subject.tell(page, type, {{"type", one.type}});
        subject.tell(page, speed, {{"speed_mts", Told(one.rated_speed, {one.speed})}});
        subject.tell(page, maker, {{"manufacturer", one.manufacturer}});
        subject.tell(page, serial, {{"serial", one.serial}});
        subject.tell(page, part, {{"part", one.part}});
        if (table.version != Version::v2_2)
            subject.tell(page,
                         table.say(is_new ? "Configured Memory Speed" : "Configured Clock Speed",
                                   std::to_string(one.speed) + per_second),
                         {{"speed_mts", Told(one.speed, {one.rated_speed})}});
        table.close();
    }
}

int structures(const Server& server) {
    return 6 + static_cast<int>(server.processors.size() + server.memory.size()) +
           (server.has_bmc ? 1 : 0);
}

}  // namespace

void print_dmidecode(const Server& server, Random& random, Book& book, Pages& pages) {
    static constexpr Version kVersions[] = {Version::v3_3, Version::v3_3, Version::v2_12,
                                            Version::v2_2};
    const auto version = random.pick(kVersions);
    Page page{"dmidecode.log", "dmidecode", ""};
    const auto count = std::to_string(structures(server));
    if (version == Version::v3_3)
        page.text("# dmidecode 3.3\nGetting SMBIOS data from sysfs.\nSMBIOS 2.8 present.\n");
    if (version == Version::v2_12) page.text("# dmidecode 2.12\nSMBIOS 2.7 present.\n");
    if (version == Version::v2_2) page.text("# dmidecode 2.2\nSMBIOS 2.4 present.\n");
    page.line(count + " structures occupying 5120 bytes.");
    page.line("Table at 0x7AFE6000.");
    if (version != Version::v2_2) page.line("");
    Table table{page, version};
    print_system(server, table, book);
    print_processors(server, table, book);
    print_memory(server, table, book);
    if (server.has_bmc) {
        table.open(38, "IPMI Device Information");
        table.say("Interface Type", "KCS (Keyboard Control Style)");
        table.say("Specification Version", "2.0");
        table.say("I2C Slave Address", "0x10");
        table.say("Base Address", "0x0000000000000CA2 (I/O)");
        table.close();
    }
    page.is_vital();
    table.open(127, "End Of Table");
    table.close();
    pages.push_back(page);
}

}  // namespace truth
