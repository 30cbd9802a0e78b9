// storcli: `show ctrlcount`, `/cN show`, `/c0/eall/sall show all` and `/cN show events` in four forms of
// RAID controllers and that of host bus adapters.
#include <algorithm>
#include <functional>

#include "print.h"

namespace truth {

int asked_controllers(const Server& server) {
    const int count = static_cast<int>(server.controllers.size());
    return server.storage_tool == StorageTool::storcli && count > 9 ? 1 : count;
}

std::string volume_id(const Controller& controller, const Volume& volume) {
    return "c" + std::to_string(controller.number) + "/v" + std::to_string(volume.number);
}

std::string group_id(const Controller& controller, const Group& group) {
    return "c" + std::to_string(controller.number) + "/g" + std::to_string(group.number);
}

namespace {

// ---- Tables -----------------------------------------------------------------------------------------

struct Column {
    const char* head;
    bool is_right = false;
    int least = 0;
};
using Cells = std::vector<std::string>;

// A ruler, the heading, a ruler, the rows, a ruler; each column is as wide as its widest cell. The last
// `open` columns can be cut off a row and nobody could tell. Gives the line of each row.
std::vector<int> print_table(Page& page, const std::vector<Column>& columns,
                             const std::vector<Cells>& rows, std::size_t open, bool is_counted) {
    std::vector<int> widths;
    std::size_t total = 0;
    std::size_t tail = 0;
    for (std::size_t at = 0; at < columns.size(); ++at) {
        std::size_t width = std::max(std::string(columns[at].head).size(),
                                     static_cast<std::size_t>(columns[at].least));
        for (const auto& row : rows) width = std::max(width, row[at].size());
        widths.push_back(static_cast<int>(width));
        total += width + 1;
        if (at + open >= columns.size()) tail += width + 1;
    }
    const auto line_of = [&](const auto& cell_at) {
        std::string line;
        for (std::size_t at = 0; at < columns.size(); ++at)
            line += (columns[at].is_right ? right(cell_at(at), widths[at])
                                          : left(cell_at(at), widths[at])) +
                    " ";
        return line;
    };
    const std::string ruler(total, '-');
    page.line(ruler);
    page.line(line_of([&](std::size_t at) { return std::string(columns[at].head); }));
    page.line(ruler);
    std::vector<int> lines;
    for (const auto& row : rows)
        lines.push_back(page.row(line_of([&](std::size_t at) { return row[at]; }),
                                 static_cast<int>(tail), is_counted));
    page.line(ruler);
    page.line("");
    return lines;
}

// The same as another version might print it: with a column more, or two that changed their places.
std::vector<int> print_table(const Server& server, Page& page, std::vector<Column> columns,
                             std::vector<Cells> rows, std::size_t open, bool is_counted) {
    const auto odd = static_cast<std::size_t>(server.odd_column);
    if (odd > 0) {
        const auto at = 1 + odd / 2 % (columns.size() - open - 2);
        const auto place = static_cast<std::ptrdiff_t>(at);
        const bool is_more = odd % 2 == 0;
        if (is_more) {
            columns.insert(columns.begin() + place, Column{"Xtra"});
        } else {
            std::swap(columns[at], columns[at + 1]);
        }
        for (auto& row : rows) {
            if (is_more) {
                row.insert(row.begin() + place, "x1");
            } else {
                std::swap(row[at], row[at + 1]);
            }
        }
    }
    return print_table(page, columns, rows, open, is_counted);
}

void print_heading(Page& page, const std::string& heading) {
    page.line(heading + " :");
    page.line(std::string(heading.size(), '='));
    page.line("");
}

// ---- Heads ------------------------------------------------------------------------------------------

bool says_version(const Server& server) {
    return server.form == StorcliForm::v7_06 || server.form == StorcliForm::v7_12;
}

void print_version(const Server& server, Page& page) {
    if (!says_version(server)) return;
    page.line(server.form == StorcliForm::v7_06 ? "CLI Version = 007.0606.0000.0000 Mar 20, 2018"
                                                : "CLI Version = 007.1211.0000.0000 Nov 07, 2019");
    page.line("Operating system = Linux " + server.kernel);
}

// Gives the line of the controller's number.
int print_head(const Server& server, Page& page, int controller, const std::string& description) {
    print_version(server, page);
    const int number = page.line("Controller = " + std::to_string(controller));
    page.line("Status = Success");
    page.line("Description = " + description);
    page.line("");
    return number;
}

Subject& subject_of(Book& book, const Controller& controller) {
    return book.subject("controllers", "c" + std::to_string(controller.number), {"number"});
}

void tell_controller(Page& page, Book& book, const Controller& controller) {
    auto& subject = subject_of(book, controller);
    const auto say = [&](const std::string& key, const std::string& value) {
        return page.line(key + " = " + value);
    };
    subject.tell(page, say("Product Name", controller.model),
                 {{"model", controller.model}, {"status", anything(nullptr)}});
    subject.tell(page, say("Serial Number", controller.serial), {{"serial", controller.serial}});
    page.line("SAS Address =  500605b00" + std::to_string(controller.number % 10) + "5719c0");
}

void print_summary(const Server& server, Page& page, Book& book, const Controller& controller) {
    tell_controller(page, book, controller);
    auto& subject = subject_of(book, controller);
    auto& clock = book.subject("_clocks", "c" + std::to_string(controller.number), {});
    const bool is_hba = controller.mode == Mode::hba;
    const auto firmware = [&](const std::string& key, const std::string& value) {
        const auto& other = value == controller.package ? controller.firmware : controller.package;
        subject.tell(page, page.line(key + " = " + value), {{"firmware", Told(value, {other})}});
    };
    page.line("PCI Address = " + controller.pci_address);
    clock.tell(page, page.line("System Time = " + storcli_time(server.now - 3600)),
               {{"system", iso(server.now - 3600)}});
    if (!is_hba) {
        page.line("Mfg. Date = 03/14/16");
        clock.tell(page,
                   page.line("Controller Time = " +
                             storcli_time(server.now - 3602 + controller.clock_off)),
                   {{"time", iso(server.now - 3602 + controller.clock_off)}});
    }
    firmware("FW Package Build", controller.package);
    if (!is_hba) page.line("BIOS Version = " + controller.bios);
    firmware("FW Version", controller.firmware);
    if (is_hba) {
        page.line("BIOS Version = 09.71.00.00_36.00.00.00");
        page.line("NVDATA Version = 36.00.00.14");
    }
    page.line("Driver Name = " + controller.driver);
    page.line("Driver Version = " + controller.driver_version);
    if (!is_hba && server.form == StorcliForm::v7_12) page.line("Current Personality = RAID-Mode ");
    page.line("Vendor Id = 0x1000");
    page.line(is_hba ? "Device Id = 0xE6" : "Device Id = 0x5D");
    page.line("SubVendor Id = 0x1000");
    page.line("SubDevice Id = 0x9361");
    if (is_hba) {
        page.line("Board Name = " + controller.model);
        page.line("Board Assembly = 03-50075-00003");
        page.line("Board Tracer Number = " + controller.serial);
        return;
    }
    page.line("Host Interface = PCI-E");
    page.line("Device Interface = SAS-12G");
    page.line("Bus Number = " + std::to_string(3 + controller.number));
    page.line("Device Number = 0");
    page.line("Function Number = 0");
    page.line("Drive Groups = " + std::to_string(controller.groups.size()));
    page.line("");
}

// ---- Topology ---------------------------------------------------------------------------------------

std::string cell_of(const Drive& drive) {
    return (drive.enclosure ? std::to_string(*drive.enclosure) : " ") + ":" +
           std::to_string(drive.slot);
}

// What a row of the topology tells, and a row of the list of drives, but for the place in the group.
void tell_member(const Page& page, int line, Book& book, const Controller& controller,
                 const Drive& drive, const std::vector<Saying>& more = {}) {
    const bool is_here = !drive.is_missing;
    std::vector<Saying> says = {
        {"drive_group", drive.group ? Json(*drive.group) : Json()},
        {"is_spare", drive.state == "GHS" || drive.state == "DHS"},
        {"state", drive.state},
        {"enclosure", is_here && drive.enclosure ? Json(*drive.enclosure) : Json()},
        {"slot", is_here ? Json(drive.slot) : Json()},
        {"device_id", is_here ? Json(drive.device_id) : Json()},
        {"serial", is_here ? Told(drive.serial, {nullptr}) : Told(nullptr)}};
    says.insert(says.end(), more.begin(), more.end());
    const auto volumes = volumes_of(controller, drive);
    for (const auto* volume : volumes) {
        truth::tell_member(page, line, book, controller, volume, drive,
                           {"controller", "drive_group", "volume", "position", "enclosure", "slot"},
                           says);
        // Of a volume whose own row is lost there is no member; of no volume, one.
        if (volumes.size() > 1)
            book.subject("volume_members", member_id(controller, volume, drive), {})
                .may_be_missing = true;
    }
}

void print_topology(const Server& server, Page& page, Book& book, const Controller& controller,
                    bool is_short) {
    std::vector<Column> columns = {{"DG", true},        {"Arr"},   {"Row"},
                                   {"EID:Slot"},        {"DID"},   {"Type", false, 5},
                                   {"State", false, 5}, {"BT"},    {"Size", true},
                                   {"PDC", false, 4},   {"PI"},    {"SED"},
                                   {"DS3", false, 4},   {"FSpace"}};
    const bool has_tr = server.form == StorcliForm::v7_12;
    if (has_tr) columns.push_back({"TR"});
    std::vector<Cells> rows;
    std::vector<std::function<void(int)>> tells;
    const auto add = [&](Cells cells, const std::string& id, const std::string& state,
                         const Drive* drive = nullptr) {
        if (has_tr) cells.push_back("N");
        rows.push_back(std::move(cells));
        tells.push_back([&page, &book, &controller, id, state, drive](int line) {
            book.subject("_topology", id, {}).tell(page, line, {{"state", state}});
            if (!drive) return;
            std::vector<Saying> place;
            if (drive->group && drive->span >= 0)
                place = {{"span", drive->span}, {"position", drive->row}};
            tell_member(page, line, book, controller, *drive, place);
        });
    };
    for (const auto& group : controller.groups) {
        const auto number = std::to_string(group.number);
        const auto id = group_id(controller, group);
        const bool spanned = group.spans.size() > 1;
        add({number, "-", "-", "-", "-", group.raid, group.state, "N",
             storcli_size(group.sectors, is_short), "dflt", "N", "N", "dflt", "N"},
            id, group.state);
        for (std::size_t span = 0; span < group.spans.size(); ++span) {
            const auto array = std::to_string(span);
            auto raid = group.raid;
            if (spanned) raid = raid == "RAID10" ? "RAID1" : raid == "RAID50" ? "RAID5" : "RAID6";
            add({number, array, "-", "-", "-", raid, group.spans[span], "N",
                 storcli_size(group.sectors / static_cast<std::int64_t>(group.spans.size()),
                              is_short),
                 "dflt", "N", "N", "dflt", "N"},
                id, group.spans[span]);
            for (const auto& drive : controller.drives) {
                if (drive.group != group.number || drive.span != static_cast<int>(span)) continue;
                const bool is_here = !drive.is_missing;
                add({number, array, std::to_string(drive.row), is_here ? cell_of(drive) : "-",
                     is_here ? std::to_string(drive.device_id) : "-", "DRIVE", drive.state, "N",
                     storcli_size(drive.sectors, is_short), "dflt", "N", "N", "dflt", "-"},
                    drive.serial, drive.state, &drive);
            }
        }
        for (const auto& drive : controller.drives) {
            if (drive.group != group.number || drive.span >= 0) continue;
            add({number, "-", "-", cell_of(drive), std::to_string(drive.device_id), "DRIVE",
                 drive.state, "-", storcli_size(drive.sectors, is_short), "-", "-", "-", "-", "N"},
                drive.serial, drive.state, &drive);
        }
    }
    for (const auto& drive : controller.drives) {
        if (drive.state != "GHS") continue;
        add({"-", "-", "-", cell_of(drive), std::to_string(drive.device_id), "DRIVE", drive.state,
             "-", storcli_size(drive.sectors, is_short), "-", "-", "-", "-", "N"},
            drive.serial, drive.state, &drive);
    }
    if (rows.empty()) return;
    print_heading(page, "TOPOLOGY");
    const auto lines = print_table(server, page, columns, rows, has_tr ? 2 : 1, false);
    for (std::size_t at = 0; at < lines.size(); ++at) tells[at](lines[at]);
    page.text(
        "DG=Disk Group Index|Arr=Array Index|Row=Row Index|EID=Enclosure Device ID\n"
        "DID=Device ID|Type=Drive Type|Onln=Online|Rbld=Rebuild|Dgrd=Degraded\n"
        "Pdgd=Partially degraded|Offln=Offline|BT=Background Task Active\n"
        "PDC=PD Cache|PI=Protection Info|SED=Self Encrypting Drive|Frgn=Foreign\n"
        "DS3=Dimmer Switch 3|dflt=Default|Msng=Missing|FSpace=Free Space Present\n");
    if (has_tr) page.line("TR=Transport Ready");
    page.line("");
}

// ---- Virtual drives ---------------------------------------------------------------------------------

std::string raid_of(const Controller& controller, const Volume& volume) {
    for (const auto& group : controller.groups) {
        if (group.number == volume.group) return group.raid;
    }
    return "";
}

void print_volumes(const Server& server, Page& page, Book& book, const Controller& controller,
                   bool is_short) {
    if (controller.volumes.empty()) return;
    subject_of(book, controller)
        .tell(page, page.line("Virtual Drives = " + std::to_string(controller.volumes.size())),
              {{"volumes", controller.volumes.size()}});
    page.line("");
    print_heading(page, "VD LIST");
    const bool has_cac = server.form == StorcliForm::v7_12 || server.form == StorcliForm::v1_2x;
    std::vector<Column> columns = {{"DG/VD"},  {"TYPE", false, 5}, {"State", false, 5},
                                   {"Access"}, {"Consist"},        {"Cache", false, 5}};
    if (has_cac) columns.push_back({"Cac"});
    for (const Column& column : {Column{"sCC"}, Column{"Size", true}, Column{"Name"}})
        columns.push_back(column);
    std::vector<Cells> rows;
    for (const auto& volume : controller.volumes) {
        Cells cells = {std::to_string(volume.group) + "/" + std::to_string(volume.number),
                       raid_of(controller, volume),
                       volume.state,
                       volume.access,
                       volume.is_consistent ? "Yes" : "No",
                       volume.cache};
        if (has_cac) cells.push_back("-");
        cells.push_back(volume.number % 2 == 0 ? (has_cac ? "OFF" : "-") : "ON");
        cells.push_back(storcli_size(volume.sectors, is_short));
        cells.push_back(volume.name);
        rows.push_back(cells);
    }
    const auto lines = print_table(server, page, columns, rows, 1, true);
    for (std::size_t at = 0; at < lines.size(); ++at) {
        const auto& volume = controller.volumes[at];
        auto& subject =
            book.subject("volumes", volume_id(controller, volume), {"controller", "number"});
        subject.tell(page, lines[at],
                     {{"controller", controller.number},
                      {"drive_group", volume.group},
                      {"number", volume.number},
                      {"raid", raid_of(controller, volume)},
                      {"state", volume.state},
                      {"access", volume.access},
                      {"consistent", volume.is_consistent},
                      {"cache", volume.cache},
                      {"capacity_bytes", bytes_of_size(storcli_size(volume.sectors, is_short))},
                      {"name", volume.name.empty() ? Json() : Json(volume.name)}});
        tell_volume_of_members(page, lines[at], book, controller, volume,
                               {{"volume", volume.number},
                                {"volume_name", volume.name.empty() ? Json() : Json(volume.name)}});
    }
    if (server.form == StorcliForm::v7_12) {
        page.text(
            "EID=Enclosure Device ID| VD=Virtual Drive| DG=Drive Group|Rec=Recovery\n"
            "Cac=CacheCade|OfLn=OffLine|Pdgd=Partially Degraded|Dgrd=Degraded\n"
            "Optl=Optimal|RO=Read Only|RW=Read Write|HD=Hidden|TRANS=TransportReady|B=Blocked|\n"
            "Consist=Consistent|R=Read Ahead Always|NR=No Read Ahead|WB=WriteBack|\n"
            "AWB=Always WriteBack|WT=WriteThrough|C=Cached IO|D=Direct IO|sCC=Scheduled\n"
            "Check Consistency\n");
    } else {
        page.text(
            "Cac=CacheCade|Rec=Recovery|OfLn=OffLine|Pdgd=Partially Degraded|dgrd=Degraded\n");
        page.text(
            server.form == StorcliForm::v1_03
                ? "Optl=Optimal|RO=Read Only|RW=Read Write|B=Blocked|Consist=Consistent|\n"
                  "Ra=Read Ahead Adaptive|R=Read Ahead Always|NR=No Read Ahead|WB=WriteBack|\n"
                : "Optl=Optimal|RO=Read Only|RW=Read Write|HD=Hidden|B=Blocked|Consist=Consistent|\n"
                  "R=Read Ahead Always|NR=No Read Ahead|WB=WriteBack|\n");
        page.text(
            "AWB=Always WriteBack|WT=WriteThrough|C=Cached IO|D=Direct IO|sCC=Scheduled\n"
            "Check Consistency\n");
    }
    page.line("");
}

// ---- Physical drives --------------------------------------------------------------------------------

std::vector<Column> drive_columns(const Server& server, const Controller& controller) {
    const bool is_hba = controller.mode == Mode::hba;
    const bool is_right =
        !is_hba && (server.form == StorcliForm::v7_12 || server.form == StorcliForm::v1_2x);
    std::vector<Column> columns = {{"EID:Slt"},
                                   {"DID", true},
                                   {"State", false, 5},
                                   {"DG", is_right},
                                   {"Size", true},
                                   {"Intf"},
                                   {"Med"},
                                   {"SED"},
                                   {"PI"},
                                   {"SeSz"},
                                   {"Model", false, 16},
                                   {"Sp"}};
    if (!is_hba && server.form == StorcliForm::v7_12) columns.push_back({"Type"});
    return columns;
}

Cells drive_cells(const Server& server, const Controller& controller, const Drive& drive,
                  bool is_short) {
    const bool is_hba = controller.mode == Mode::hba;
    Cells cells = {cell_of(drive),
                   std::to_string(drive.device_id),
                   drive.state,
                   drive.is_foreign ? "F"
                   : drive.group    ? std::to_string(*drive.group)
                                    : "-",
                   storcli_size(drive.sectors, is_short),
                   drive.interface,
                   drive.is_ssd ? "SSD" : "HDD",
                   is_hba ? "-" : "N",
                   is_hba ? "-" : "N",
                   drive.sector == 4096 ? "4 KB" : "512B",
                   drive.model,
                   is_hba             ? "-"
                   : drive.is_spun_up ? "U"
                                      : "D"};
    if (!is_hba && server.form == StorcliForm::v7_12) cells.push_back("-");
    return cells;
}

Subject& subject_of(Book& book, const Drive& drive) {
    return book.subject("drives", drive.serial, {"controller", "enclosure", "slot"});
}

void tell_drive(Page& page, int line, Book& book, const Controller& controller, const Drive& drive,
                bool is_short) {
    auto& subject = subject_of(book, drive);
    subject.tell(page, line,
                 {{"controller", controller.number},
                  {"enclosure", drive.enclosure ? Json(*drive.enclosure) : Json()},
                  {"slot", drive.slot},
                  {"device_id", drive.device_id},
                  {"state", drive.state},
                  {"drive_group", drive.group ? Json(*drive.group) : Json()},
                  {"is_foreign", drive.is_foreign ? Told(true) : Told(false, {nullptr})},
                  {"spare", drive.state == "GHS"   ? Json("global")
                            : drive.state == "DHS" ? Json("dedicated")
                                                   : Json()},
                  {"capacity_bytes", bytes_of_size(storcli_size(drive.sectors, is_short))},
                  {"interface", drive.interface},
                  {"media", drive.is_ssd ? "SSD" : "HDD"},
                  {"sector_bytes", drive.sector},
                  {"model", drive.model}});
    if (drive.group && !drive.is_foreign) tell_member(page, line, book, controller, drive);
}

void print_drive_legend(const Server& server, const Controller& controller, Page& page) {
    if (controller.mode == Mode::hba) {
        page.text(
            "EID-Enclosure Device ID|Slt-Slot No|DID-Device ID|DG-DriveGroup\n"
            "UGood-Unconfigured Good|UBad-Unconfigured Bad|Intf-Interface\n"
            "Med-Media Type|SED-Self Encryptive Drive|PI-Protection Info\n"
            "SeSz-Sector Size|Sp-Spun|U-Up|D-Down|T-Transition\n");
    } else if (server.form == StorcliForm::v7_12) {
        page.text(
            "EID=Enclosure Device ID|Slt=Slot No.|DID=Device ID|DG=DriveGroup\n"
            "DHS=Dedicated Hot Spare|UGood=Unconfigured Good|GHS=Global Hotspare\n"
            "UBad=Unconfigured Bad|Onln=Online|Offln=Offline|Intf=Interface\n"
            "Med=Media Type|SED=Self Encryptive Drive|PI=Protection Info\n"
            "SeSz=Sector Size|Sp=Spun|U=Up|D=Down|T=Transition|F=Foreign\n"
            "UGUnsp=UGood Unsupported|UGShld=UnConfigured shielded|HSPShld=Hotspare shielded\n"
            "CFShld=Configured shielded|Cpybck=CopyBack|CBShld=Copyback Shielded\n"
            "UBUnsp=UBad Unsupported|Rbld=Rebuild\n");
    } else {
        page.text(
            "EID-Enclosure Device ID|Slt-Slot No.|DID-Device ID|DG-DriveGroup\n"
            "DHS-Dedicated Hot Spare|UGood-Unconfigured Good|GHS-Global Hotspare\n"
            "UBad-Unconfigured Bad|Onln-Online|Offln-Offline|Intf-Interface\n"
            "Med-Media Type|SED-Self Encryptive Drive|PI-Protection Info\n"
            "SeSz-Sector Size|Sp-Spun|U-Up|D-Down|T-Transition|F-Foreign\n"
            "UGUnsp-Unsupported|UGShld-UnConfigured shielded|HSPShld-Hotspare shielded\n"
            "CFShld-Configured shielded|Cpybck-CopyBack|CBShld-Copyback Shielded\n");
    }
    page.line("");
}

void print_drives(const Server& server, Page& page, Book& book, const Controller& controller,
                  bool is_short) {
    std::vector<const Drive*> here;
    for (const auto& drive : controller.drives) {
        if (!drive.is_missing) here.push_back(&drive);
    }
    if (here.empty()) return;
    subject_of(book, controller)
        .tell(page, page.line("Physical Drives = " + std::to_string(here.size())),
              {{"drives", here.size()}});
    page.line("");
    print_heading(page, "PD LIST");
    std::vector<Cells> rows;
    for (const auto* drive : here)
        rows.push_back(drive_cells(server, controller, *drive, is_short));
    const auto columns = drive_columns(server, controller);
    const auto lines = print_table(server, page, columns, rows, columns.size() - 11, true);
    page.is_vital();
    for (std::size_t at = 0; at < lines.size(); ++at)
        tell_drive(page, lines[at], book, controller, *here[at], is_short);
    print_drive_legend(server, controller, page);
    if (!says_version(server) || controller.enclosures.empty()) page.line("");
}

// ---- Enclosures, batteries --------------------------------------------------------------------------

void print_enclosures(const Server& server, Page& page, Book& book, const Controller& controller) {
    if (!says_version(server) || controller.enclosures.empty()) return;
    page.line("Enclosures = " + std::to_string(controller.enclosures.size()));
    page.line("");
    page.line("Enclosure LIST :");
    page.line("==============");
    page.line("");
    std::vector<Cells> rows;
    for (const auto& one : controller.enclosures) {
        const auto drives = std::count_if(
            controller.drives.begin(), controller.drives.end(),
            [&](const Drive& drive) { return drive.enclosure == one.id && !drive.is_missing; });
        rows.push_back({std::to_string(one.id), one.state, std::to_string(one.slots),
                        std::to_string(drives), std::to_string(one.supplies),
                        std::to_string(one.fans), std::to_string(one.sensors), "0", "0", one.port,
                        one.product, one.vendor_words});
    }
    const auto lines = print_table(page,
                                   {{"EID", true},
                                    {"State", false, 5},
                                    {"Slots", true},
                                    {"PD", true},
                                    {"PS", true},
                                    {"Fans", true},
                                    {"TSs", true},
                                    {"Alms", true},
                                    {"SIM", true},
                                    {"Port#"},
                                    {"ProdID", false, 10},
                                    {"VendorSpecific"}},
                                   rows, 3, true);
    for (std::size_t at = 0; at < lines.size(); ++at) {
        const auto& one = controller.enclosures[at];
        book.subject("enclosures",
                     "c" + std::to_string(controller.number) + "/e" + std::to_string(one.id),
                     {"controller", "number"})
            .tell(page, lines[at],
                  {{"controller", controller.number},
                   {"number", one.id},
                   {"slots", one.slots},
                   {"state", one.state},
                   {"model", one.product}});
    }
    page.text(
        "EID=Enclosure Device ID |PD=Physical drive count |PS=Power Supply count|\n"
        "TSs=Temperature sensor count |Alms=Alarm count |SIM=SIM Count\n");
    page.line("");
    page.line("");
}

void print_battery(Page& page, Book& book, const Controller& controller) {
    if (!controller.battery) return;
    const auto& one = *controller.battery;
    const auto degrees = std::to_string(one.temperature) + "C";
    std::vector<int> lines;
    if (one.is_cachevault) {
        page.line("Cachevault_Info :");
        page.line("===============");
        page.line("");
        lines =
            print_table(page, {{"Model"}, {"State"}, {"Temp"}, {"Mode"}, {"MfgDate", false, 10}},
                        {{one.model, one.state, degrees, "-", "2016/03/14"}}, 2, false);
    } else {
        page.line("BBU_Info :");
        page.line("========");
        page.line("");
        lines = print_table(page,
                            {{"Model"},
                             {"State"},
                             {"RetentionTime"},
                             {"Temp"},
                             {"Mode"},
                             {"MfgDate"},
                             {"Next Learn"}},
                            {{one.model, one.state, "48 hours +", degrees, "5", "2012/12/20",
                              "2025/06/10  21:01:26"}},
                            3, false);
        page.text(
            "Mode 5: 48+ Hrs retention with a non-transparent learn cycle \n"
            "           and moderate service life.\n\n");
    }
    book.subject("batteries", "c" + std::to_string(controller.number), {"controller"})
        .tell(page, lines.front(),
              {{"controller", controller.number},
               {"model", one.model},
               {"state", one.state},
               {"temperature_celsius", one.temperature}});
}

Page show(const Server& server, Random& random, Book& book, const Controller& controller) {
    const auto digit = std::to_string(controller.number);
    Page page{"c" + digit + "_showall.txt", "storcli", "/c" + digit + " show"};
    const bool is_hba = controller.mode == Mode::hba;
    const bool is_short = server.form == StorcliForm::v1_2x && random.chance(50);
    if (!is_hba && server.form != StorcliForm::v1_03)
        page.text(
            "Generating detailed summary of the adapter, it may take a while to complete.\n\n");
    const int head = print_head(server, page, controller.number, "None");
    subject_of(book, controller).tell(page, head, {{"number", controller.number}});
    print_summary(server, page, book, controller);
    if (!is_hba) {
        print_topology(server, page, book, controller, is_short);
        print_volumes(server, page, book, controller, is_short);
    }
    print_drives(server, page, book, controller, is_short);
    if (is_hba) {
        page.line("Requested Boot Drive = Not Set");
    } else {
        print_enclosures(server, page, book, controller);
        print_battery(page, book, controller);
    }
    page.line("");
    return page;
}

// ---- Details ----------------------------------------------------------------------------------------

void print_detail(const Server& server, Page& page, Book& book, const Controller& controller,
                  const Drive& drive) {
    const bool is_hba = controller.mode == Mode::hba;
    const auto name = "Drive /c" + std::to_string(controller.number) +
                      (drive.enclosure ? "/e" + std::to_string(*drive.enclosure) : "") + "/s" +
                      std::to_string(drive.slot);
    auto& subject = subject_of(book, drive);
    print_heading(page, name);
    const auto columns = drive_columns(server, controller);
    const auto row = print_table(page, columns, {drive_cells(server, controller, drive, false)},
                                 columns.size() - 11, false);
    tell_drive(page, row.front(), book, controller, drive, false);
    print_drive_legend(server, controller, page);
    page.line("");
    page.line(name + " - Detailed Information :");
    page.line(std::string(name.size() + 23, '='));
    page.line("");
    page.line(name + " State :");
    page.line(std::string(name.size() + 6, '='));
    const auto count = [&](const char* key, const char* field, int value) {
        const int line =
            page.line(std::string(key) + " = " + (is_hba ? "N/A" : std::to_string(value)));
        if (!is_hba) subject.tell(page, line, {{field, value}});
    };
    count("Shield Counter", "shield_counter", drive.shield_counter);
    count("Media Error Count", "media_errors", drive.media_errors);
    count("Other Error Count", "other_errors", drive.other_errors);
    if (!is_hba) {
        const double fahrenheit = drive.temperature * 9.0 / 5.0 + 32.0;
        subject.tell(page,
                     page.line("Drive Temperature =  " + std::to_string(drive.temperature) + "C (" +
                               number(fahrenheit, 2) + " F)"),
                     {{"temperature_celsius", drive.temperature}});
    }
    count("Predictive Failure Count", "predicted_failures", drive.predicted_failures);
    const int alert = page.line(std::string("S.M.A.R.T alert flagged by drive = ") +
                                (is_hba              ? "N/A"
                                 : drive.smart_alert ? "Yes"
                                                     : "No"));
    if (!is_hba) subject.tell(page, alert, {{"smart_alert", drive.smart_alert}});
    page.line("");
    page.line("");
    page.line(name + " Device attributes :");
    page.line(std::string(name.size() + 18, '='));
    const bool is_old = server.form == StorcliForm::v7_06 || server.form == StorcliForm::v1_03;
    if (is_hba) {
        page.line("Manufacturer Id = " + left(drive.vendor, 8));
        page.line("Model Number = " + drive.model);
        page.line("NAND Vendor = NA");
        subject.tell(page, page.line("SN = " + drive.serial), {{"serial", drive.serial}});
    } else {
        subject.tell(page, page.line("SN = " + (is_old ? right(drive.serial, 20) : drive.serial)),
                     {{"serial", drive.serial}});
        page.line("Manufacturer Id = " + left(drive.vendor, 8));
        page.line("Model Number = " + drive.model);
        page.line("NAND Vendor = NA");
    }
    subject.tell(page, page.line("WWN = " + drive.wwn), {{"wwn", drive.wwn}});
    subject.tell(page, page.line("Firmware Revision = " + left(drive.firmware, 8)),
                 {{"firmware", drive.firmware}});
    const auto sized = [&](const char* key, std::int64_t sectors) {
        page.line(std::string(key) + " = " + storcli_size(sectors) + " [0x" +
                  hex(static_cast<std::uint64_t>(sectors), 1) + " Sectors]");
    };
    sized("Raw size", drive.sectors + 2158256);
    sized("Coerced size", drive.sectors);
    sized("Non Coerced size", drive.sectors + 1109680);
    page.line("Device Speed = 12.0Gb/s");
    page.line("Link Speed = 12.0Gb/s");
    if (!is_hba)
        page.line(drive.interface == "SATA" ? "NCQ setting = Enabled" : "NCQ setting = N/A");
    page.line(is_hba ? "Sector Size = 512B" : "Write Cache = N/A");
    if (!is_hba) {
        page.line(drive.sector == 4096 ? "Logical Sector Size = 4 KB"
                                       : "Logical Sector Size = 512B");
        page.line("Physical Sector Size = 4 KB");
    }
    page.line("Connector Name = Port 0 - 3 x1 ");
    page.line("");
    page.line("");
    page.line(name + " Policies/Settings :");
    page.line(std::string(name.size() + 18, '='));
    if (drive.group && drive.span >= 0)
        page.line("Drive position = DriveGroup:" + std::to_string(*drive.group) +
                  ", Span:" + std::to_string(drive.span) + ", Row:" + std::to_string(drive.row));
    page.text(
        "Enclosure position = 1\n"
        "Connected Port Number = 0(path0) \n"
        "Sequence Number = 2\n"
        "Commissioned Spare = No\n"
        "Emergency Spare = No\n"
        "Last Predictive Failure Event Sequence Number = 0\n"
        "Successful diagnostics completion on = N/A\n");
    page.text(
        "SED Capable = No\nSED Enabled = No\nSecured = No\nLocked = No\n"
        "Needs EKM Attention = No\nPI Eligible = No\nCertified = No\nWide Port Capable = No\n");
    page.line("");
    page.line("Port Information :");
    page.line("================");
    page.line("");
    page.text(
        "-----------------------------------------\n"
        "Port Status Linkspeed SAS address        \n"
        "-----------------------------------------\n");
    page.line("   0 Active 12.0Gb/s  0x" + left(drive.wwn.substr(0, 16), 18));
    page.line("-----------------------------------------");
    page.line("");
    page.line("");
    page.line("Inquiry Data = ");
    page.text(
        "00 00 06 12 5b 00 10 02 41 54 41 20 20 20 20 20 \n"
        "45 58 4d 20 53 53 44 41 34 38 30 47 32 20 20 20 \n"
        "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \n");
    page.text("\n\n\n");
}

// `/c0/eall/sall`: drives in enclosures; where there are none at all, those without.
Page details(const Server& server, Book& book, const std::string& name) {
    Page page{name, "storcli", "/c0/eall/sall show all"};
    const auto& controller = server.controllers.front();
    print_head(server, page, 0, "Show Drive Information Succeeded.");
    page.line("");
    for (const auto& drive : controller.drives) {
        if (drive.is_missing || (!drive.enclosure && !controller.enclosures.empty())) continue;
        print_detail(server, page, book, controller, drive);
    }
    return page;
}

// ---- Events -----------------------------------------------------------------------------------------

Page events(const Server& server, Book& book, const Controller& controller,
            const std::string& name) {
    const auto digit = std::to_string(controller.number);
    Page page{name, "storcli", "/c" + digit + " show events"};
    page.line("");
    page.line("");
    int sequence = 0xa31;
    int written = 1000;
    for (const auto& event : controller.events) {
        const int first = page.line("seqNum: 0x" + hex(static_cast<std::uint64_t>(sequence++), 8));
        page.line(event.time ? "Time: " + c_time(*event.time)
                             : "Seconds since last reboot: " + std::to_string(event.since_reboot));
        page.line("");
        page.line("Code: 0x" + hex(static_cast<std::uint64_t>(event.code), 8));
        page.line("Class: " + std::to_string(event.level));
        page.line("Locale: 0x" + hex(static_cast<std::uint64_t>(event.locale), 2));
        page.line("Event Description: " + event.words);
        page.line("Event Data:");
        page.line("===========");
        if (event.data.empty()) page.line("None");
        for (const auto& line : event.data) page.line(line);
        auto& told = book.events["controller " + digit + " " + std::to_string(written++)];
        told.source = "controller " + digit;
        if (event.time) told.time = iso(*event.time);
        told.words = event.words;
        told.spots.push_back({name, first, page.last()});
        page.line("");
        page.line("");
    }
    print_version(server, page);
    page.line("Controller = " + digit);
    page.line("Status = Success");
    page.line("Description = None");
    page.line("");
    return page;
}

}  // namespace

void print_storcli(const Server& server, Random& random, Book& book, Pages& pages) {
    if (server.storage_tool != StorageTool::storcli) {
        // The plug-in asks all the same, and what it opened for the answer stays empty.
        pages.push_back({"ctrlcount.txt", "storcli", "show ctrlcount", false, 127});
        pages.push_back({"c0_showall.txt", "storcli", "/c0 show", false, 127});
        pages.push_back({"pdlist.txt", "storcli", "/c0/eall/sall show all", false, 127});
        pages.push_back({"raidevents.txt", "storcli", "/c0 show events", false, 127});
        return;
    }
    Page count{"ctrlcount.txt", "storcli", "show ctrlcount"};
    print_version(server, count);
    count.text("Status Code = 0\nStatus = Success\nDescription = None\n\n");
    count.line("Controller Count = " + std::to_string(server.controllers.size()));
    count.is_vital();
    count.text("\n\n");
    pages.push_back(count);
    const int asked = asked_controllers(server);
    for (const auto& controller : server.controllers) {
        if (controller.number >= asked) continue;
        const auto digit = "c" + std::to_string(controller.number);
        pages.push_back(show(server, random, book, controller));
        pages.push_back(events(server, book, controller, digit + "_raidevents.txt"));
        pages.push_back(details(server, book, digit + "_pdlist.txt"));
    }
    pages.push_back(events(server, book, server.controllers.front(), "raidevents.txt"));
    pages.push_back(details(server, book, "pdlist.txt"));
}

}  // namespace truth
