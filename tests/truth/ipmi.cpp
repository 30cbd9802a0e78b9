// What ipmitool and ipmiutil say of a BMC: sensors, sensor records, field replaceable units, the system
// event log, self test, and the makers' answers on controller, power supplies and network.
#include <algorithm>
#include <cmath>

#include "print.h"

namespace truth {

namespace {

std::string table_value(double value) { return number(value, 3); }

// ipmitool leaves the decimals of whole numbers away.
std::string elist_value(double value) { return number(value, value == std::trunc(value) ? 0 : 2); }

std::string bound(const std::optional<double>& value) {
    return "| " + left(value ? table_value(*value) : "na", 10);
}

// Both bytes of the states, the lower one first; many BMCs set the highest bit.
int state_bits(const Sensor& sensor) {
    int bits = 0;
    for (const auto& state : sensor.states) bits |= 1 << state.first;
    return bits;
}

std::vector<Json> other_units(const std::string& unit) {
    if (unit == "degrees C") return {"C", "celsius", "Cel"};
    if (unit == "RPM") return {"rpm"};
    if (unit == "Volts") return {"V", "volts"};
    if (unit == "Amps") return {"A", "amps", "amperes", "Amperes"};
    if (unit == "Watts") return {"W", "watts"};
    return {};
}

Subject& subject_of(Book& book, const Sensor& sensor) {
    return book.subject("sensors", std::to_string(sensor.number), {"name"});
}

Json value_of(const std::optional<double>& value, int decimals) {
    if (!value) return {};
    return std::stod(number(*value, decimals));
}

// "PSU1 Input" tells of the power supply as well, while it reads well, and so does "PSU1 Status".
void tell_supply(Book& book, const Sensor& sensor, const Page& page, int line) {
    if (sensor.role.starts_with("psu") && sensor.role.size() == 4 && !sensor.states.empty())
        book.subject("power_supplies", sensor.role.substr(3), {"slot"})
            .tell(page, line, {{"present", joined(true)}});
    if (sensor.kind != "power" || sensor.status != "ok" || !sensor.reading) return;
    book.subject("power_supplies", sensor.name.substr(3, 1), {"slot"})
        .tell(page, line, {{"input_watts", joined(*sensor.reading)}});
}

// ipmitool sensor:
//     CPU1 Temp        | 48.000     | degrees C  | ok    | na        | 0.000     | ...
void print_sensors(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"sensorinfo.txt", "ipmitool", "sensor", true};
    const bool keeps_unit = random.chance(30);  // of a sensor without a reading
    const int high_bit = random.chance(50) ? 0x80 : 0;
    for (const auto& sensor : server.bmc.sensors) {
        auto& subject = subject_of(book, sensor);
        if (sensor.kind == "discrete") {
            const auto bits = static_cast<unsigned>(state_bits(sensor));
            const int line =
                page.row(left(sensor.name, 16) + " | " + left("0x" + hex(bits & 0xff, 1), 10) +
                             " | " + left("discrete", 10) + " | " +
                             left("0x" + hex(bits & 0xff, 2) +
                                      hex((bits >> 8) | static_cast<unsigned>(high_bit), 2),
                                  6) +
                             bound({}) + bound({}) + bound({}) + bound({}) + bound({}) + bound({}),
                         10);
            subject.tell(page, line,
                         {{"name", sensor.name},
                          {"kind", "discrete"},
                          {"unit", anything(nullptr)},
                          {"status", anything(nullptr)}});
            continue;
        }
        const bool has_reading = sensor.reading.has_value();
        std::string row = left(sensor.name, 16) + " | " +
                          left(has_reading ? table_value(*sensor.reading) : "na", 10) + " | " +
                          left(has_reading || keeps_unit ? sensor.unit : "", 10) + " | " +
                          left(sensor.status, 6);
        for (const auto* value :
             {&sensor.lnr, &sensor.lc, &sensor.lnc, &sensor.unc, &sensor.uc, &sensor.unr})
            row += bound(*value);
        const int line = page.row(row, 10);
        subject.tell(page, line,
                     {{"name", sensor.name},
                      {"reading", value_of(sensor.reading, 3)},
                      {"status", sensor.status},
                      {"lnr", value_of(sensor.lnr, 3)},
                      {"lc", value_of(sensor.lc, 3)},
                      {"lnc", value_of(sensor.lnc, 3)},
                      {"unc", value_of(sensor.unc, 3)},
                      {"uc", value_of(sensor.uc, 3)},
                      {"unr", value_of(sensor.unr, 3)}});
        if (has_reading) {
            subject.tell(
                page, line,
                {{"kind", sensor.kind}, {"unit", Told(sensor.unit, other_units(sensor.unit))}});
            tell_supply(book, sensor, page, line);
        } else {
            subject.tell(page, line, {{"kind", anything(nullptr)}, {"unit", anything(nullptr)}});
        }
    }
    pages.push_back(page);
}

std::string elist_status(const Sensor& sensor) {
    if (sensor.status == "na") return "ns";
    if (sensor.kind == "discrete" || sensor.status == "ok") return "ok";
    return (sensor.is_high ? "u" : "l") + (sensor.status == "cr"   ? std::string("cr")
                                           : sensor.status == "nc" ? "nc"
                                                                   : "nr");
}

// ipmitool sdr elist:
//     CPU1 Temp        | 01h | ok  |  3.1 | 48 degrees C
//     PSU2 Status      | 2Ch | ok  | 10.2 | Presence detected, Power Supply AC lost
void print_records(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"sdrinfo.txt", "ipmitool", "sdr elist", true};
    const std::string nothing = random.chance(50) ? "No Reading" : "Disabled";
    for (const auto& sensor : server.bmc.sensors) {
        auto& subject = subject_of(book, sensor);
        std::string words;
        Json states = Json::array();
        if (sensor.kind == "discrete") {
            auto sorted = sensor.states;
            std::sort(sorted.begin(), sorted.end());
            for (const auto& state : sorted) {
                words += (words.empty() ? "" : ", ") + state.second;
                states.push_back(state.second);
            }
        } else {
            words = sensor.reading ? elist_value(*sensor.reading) + " " + sensor.unit : nothing;
        }
        const auto digits = upper(hex(static_cast<std::uint64_t>(sensor.number), 2)) + "h";
        const auto dot = sensor.entity.find('.');
        const int line = page.row(
            left(sensor.name, 16) + " | " + digits + " | " + left(elist_status(sensor), 3) + " | " +
                right(sensor.entity.substr(0, dot), 2) + sensor.entity.substr(dot) + " | " + words,
            static_cast<int>(words.size()) + 1);
        subject.tell(page, line, {{"name", sensor.name}, {"number", digits}});
        if (sensor.kind == "discrete") {
            subject.tell(page, line,
                         {{"states", states},
                          {"status", anything("ok")},
                          {"kind", anything("discrete")},
                          {"unit", anything(nullptr)}});
            tell_supply(book, sensor, page, line);
        } else if (sensor.reading) {
            subject.tell(
                page, line,
                {{"reading",
                  value_of(sensor.reading, *sensor.reading == std::trunc(*sensor.reading) ? 0 : 2)},
                 {"status", elist_status(sensor)},
                 {"kind", sensor.kind},
                 {"unit", Told(sensor.unit, other_units(sensor.unit))}});
            tell_supply(book, sensor, page, line);
        } else {
            subject.tell(page, line,
                         {{"status", "ns"},
                          {"kind", anything(nullptr)},
                          {"unit", anything(nullptr)},
                          {"states", anything(nullptr)}});
        }
    }
    pages.push_back(page);
}

// ipmitool fru
void print_frus(const Server& server, Book& book, Pages& pages) {
    Page page{"fruinfo.txt", "ipmitool", "fru", true};
    const auto say = [&](const std::string& label, const std::string& value) {
        return page.line(" " + left(label, 22) + ": " + value);
    };
    for (const auto& fru : server.bmc.frus) {
        auto& subject = book.subject("frus", fru.device, {"device"});
        subject.may_be_missing = !fru.has_board && !fru.has_product;
        subject.tell(page, page.line("FRU Device Description : " + fru.device),
                     {{"device", fru.device}});
        if (fru.has_chassis) {
            say("Chassis Type", "Rack Mount Chassis");
            say("Chassis Part Number", "EX-CH-2U");
            say("Chassis Serial", "CH0012345");
        }
        const bool both = fru.has_board && fru.has_product;
        // The product area says what the unit is; the board area where there is no other.
        const auto tell = [&](int line, const char* field, const std::string& own,
                              const std::string& other) {
            subject.tell(page, line, {{field, both ? Told(own, {other}) : Told(own)}});
        };
        if (fru.has_board) {
            say("Board Mfg Date", "Sun Jan  1 00:00:00 2023 UTC");
            tell(say("Board Mfg", fru.board_manufacturer), "manufacturer", fru.board_manufacturer,
                 fru.manufacturer);
            tell(say("Board Product", fru.board_product), "product", fru.board_product,
                 fru.product);
            tell(say("Board Serial", fru.board_serial), "serial", fru.board_serial, fru.serial);
            tell(say("Board Part Number", fru.board_part), "part", fru.board_part, fru.part);
            say("Board Extra", "MAC " + server.bmc.mac);
        }
        const int supply = fru.device.starts_with("PSU") ? fru.device[3] - '0' : 0;
        const auto join = [&](int line, const char* field, const std::string& value) {
            if (supply > 0)
                book.subject("power_supplies", std::to_string(supply), {"slot"})
                    .tell(page, line, {{field, joined(value)}});
        };
        if (fru.has_product) {
            tell(say("Product Manufacturer", fru.manufacturer), "manufacturer", fru.manufacturer,
                 fru.board_manufacturer);
            const int product = say("Product Name", fru.product);
            if (supply > 0)
                book.subject("power_supplies", std::to_string(supply), {"slot"})
                    .tell(page, product, {{"present", joined(true)}});
            tell(product, "product", fru.product, fru.board_product);
            join(product, "model", fru.product);
            tell(say("Product Part Number", fru.part), "part", fru.part, fru.board_part);
            say("Product Version", "1.0");
            const int serial = say("Product Serial", fru.serial);
            tell(serial, "serial", fru.serial, fru.board_serial);
            join(serial, "serial", fru.serial);
            if (fru.has_chassis) say("Product Asset Tag", "asset-42");
        }
        page.line("");
    }
    pages.push_back(page);
}

// ipmiutil sel -t
void print_sel(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"selinfo.txt", "ipmiutil", "sel -t", true};
    const bool is_older = random.chance(30);
    const auto used = server.bmc.sel.size();
    page.line(is_older ? "ipmiutil sel version 2.98" : "ipmiutil sel version 3.18");
    page.line("-- BMC version " + server.bmc.firmware + ", IPMI version 2.0 ");
    const int full = page.line(
        "SEL Ver 51 Support 0f, Size = 0 records (Used=" + std::to_string(used) + ", Free=" +
        std::to_string(std::max(0, server.bmc.sel_room - static_cast<int>(used))) + ")");
    book.subject("_sel", "room", {}).tell(page, full, {{"used", used}});
    if (used == 0) page.is_vital();  // that there are no entries is told
    page.line("RecId Date/Time_______ SEV Src_ Evt_Type___ Sens# Evt_detail - Trig [Evt_data]");
    int id = 1;
    for (const auto& entry : server.bmc.sel) {
        const auto time =
            entry.time ? sel_time(*entry.time) : "01/01/70 00:04:" + std::to_string(10 + id % 50);
        const int line = page.row(hex(static_cast<std::uint64_t>(id), 4) + " " + time + " " +
                                      entry.severity + " " + entry.source + " " + entry.type +
                                      " #" + entry.sensor + "  " + entry.detail + " " + entry.rest,
                                  static_cast<int>(entry.rest.size()) + 1, true);
        auto& event = book.events["bmc " + std::to_string(10000 + id)];
        event.source = "bmc";
        if (entry.time) event.time = iso(*entry.time);
        event.words = entry.words;
        event.spots = {{page.name, line, line}};
        ++id;
    }
    if (used > 0) page.is_vital();
    if (is_older) page.line("ipmiutil sel, completed successfully");
    pages.push_back(page);
}

Subject& bmc_of(Book& book) { return book.subject("bmcs", "bmc", {}); }

// ipmitool mc selftest
void print_self_test(const Server& server, Book& book, Pages& pages) {
    Page page{"selfinfo.txt", "ipmitool", "mc selftest", true};
    const auto& result = server.bmc.self_test;
    const int line =
        page.line(result == "fatal error" ? "Selftest     : fatal error" : "Selftest: " + result);
    bmc_of(book).tell(page, line,
                      {{"self_test", result == "passed" ? Told(result) : beginning(result)}});
    if (result == "fatal error") page.line("Failure code : 01");
    if (result == "device corrupted") page.line("FRU device not accessible");
    if (result != "passed") page.exit = 1;
    pages.push_back(page);
}

void print_controller(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"mcinfo.txt", "ipmiutil", "dorvanoem mc", true};
    const int width = random.chance(50) ? 25 : 0;
    const auto say = [&](const std::string& label, const std::string& value) {
        return page.line(left(label, width) + ": " + value);
    };
    say("Device ID", "32");
    say("Device Revision", "1");
    bmc_of(book).tell(page, say("Firmware Revision", server.bmc.firmware),
                      {{"firmware", server.bmc.firmware}});
    bmc_of(book).tell(page, say("IPMI Version", server.bmc.ipmi), {{"ipmi", server.bmc.ipmi}});
    say("Manufacturer ID", "20301");
    say("Product ID", "220 (0x00dc)");
    say("Device Available", "yes");
    say("Provides Device SDRs", "no");
    pages.push_back(page);
}

void print_network(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"laninfo.txt", "ipmiutil", "dorvanoem lan", true};
    const int width = random.chance(50) ? 25 : 0;
    const auto say = [&](const std::string& label, const std::string& value) {
        return page.line(left(width ? label : label + " ", width) + "- " + value);
    };
    say("IP Source", "Static");
    bmc_of(book).tell(page, say("IP Address", server.bmc.address),
                      {{"address", server.bmc.address}});
    say("Subnet Mask", "255.255.255.0");
    bmc_of(book).tell(page, say("MAC Address", server.bmc.mac), {{"mac", server.bmc.mac}});
    say("Default Gateway", "192.0.2.1");
    say("VLAN ID", "disabled");
    pages.push_back(page);
}

// ---- Power supplies, in three makers' forms -----------------------------------------------------------

Subject& subject_of(Book& book, const PowerSupply& supply) {
    return book.subject("power_supplies", std::to_string(supply.number), {"slot"});
}

Told slot_of(const PowerSupply& supply) {
    const auto digit = std::to_string(supply.number);
    return Told(digit, {"PSU" + digit, "PSU " + digit, "Power supply " + digit, "PS" + digit});
}

void print_prose(const PowerSupply& supply, Page& page, Book& book) {
    const auto digit = std::to_string(supply.number);
    auto& subject = subject_of(book, supply);
    const int state = page.line("Power supply " + digit + ": present, " +
                                (supply.has_input ? "AC ok, " : "AC lost, ") +
                                (supply.has_failed  ? "failed"
                                 : supply.has_input ? "output on"
                                                    : "output off"));
    subject.tell(page, state,
                 {{"slot", slot_of(supply)},
                  {"present", true},
                  {"state", anything("ok")},
                  {"input_state", anything("AC ok")},
                  {"part", anything(nullptr)}});
    subject.tell(
        page,
        page.line("  Model: " + supply.model + ", firmware " + supply.firmware + ", serial " +
                  supply.serial),
        {{"model", supply.model}, {"firmware", supply.firmware}, {"serial", supply.serial}});
    const int watts = supply.has_input ? supply.watts : 0;
    subject.tell(
        page,
        page.line("  Input " + std::string(supply.has_input ? "231.0 V 1.12 A " : "0.0 V 0.00 A ") +
                  std::to_string(watts) + " W, output 12.1 V 19.4 A " + std::to_string(watts) +
                  " W"),
        {{"input_watts", watts}});
    page.line("  Temperature 34 degrees C, fan 5400 RPM");
}

void print_row(const PowerSupply& supply, Page& page, Book& book) {
    const auto digit = std::to_string(supply.number);
    const int line = page.line(
        "PSU" + digit + "  Vendor=Example  Watt=1100  In=" + (supply.has_input ? "229V" : "0V  ") +
        "  Out=" + (supply.has_input ? "12.2V" : "0.0V ") +
        "  Temp=31\xc2\xb0"
        "C  Fan=4320rpm  " +
        (!supply.has_input   ? "AC LOST"
         : supply.has_failed ? "FAILED"
                             : "OK"));
    subject_of(book, supply)
        .tell(page, line,
              {{"slot", slot_of(supply)},
               {"present", Told(true, {nullptr})},
               {"state", anything("OK")},
               {"input_state", anything(nullptr)},
               {"input_watts", Told(nullptr)},
               {"model", anything(nullptr)},
               {"serial", anything(nullptr)},
               {"firmware", anything(nullptr)},
               {"part", anything(nullptr)}});
}

void print_block(const PowerSupply& supply, Page& page, Book& book) {
    auto& subject = subject_of(book, supply);
    const auto say = [&](const std::string& label, const std::string& value) {
        return page.line("  " + left(label, 20) + value);
    };
    const int head = page.line("PSU" + std::to_string(supply.number));
    subject.tell(page, head, {{"slot", slot_of(supply)}, {"part", anything(nullptr)}});
    subject.tell(page, say("Present", "Yes"), {{"present", true}});
    subject.tell(page, say("Model", supply.model), {{"model", supply.model}});
    subject.tell(page, say("Serial Number", supply.serial), {{"serial", supply.serial}});
    subject.tell(page, say("Input", supply.has_input ? "AC 230 V" : "AC lost"),
                 {{"input_state", anything("AC 230 V")}});
    say("Output Power", std::to_string(supply.watts) + " W");
    subject.tell(page,
                 say("Status", supply.has_failed  ? "Failed"
                               : supply.has_input ? "OK"
                                                  : "AC lost"),
                 {{"state", anything("OK")}});
}

void print_supplies(const Server& server, Random& random, Book& book, Pages& pages) {
    Page page{"psuinfo.txt", "ipmiutil", "dorvanoem psu", true};
    const int form = random.below(3);
    for (const auto& supply : server.bmc.supplies) {
        if (form == 0) print_prose(supply, page, book);
        if (form == 1) print_row(supply, page, book);
        if (form == 2) print_block(supply, page, book);
    }
    pages.push_back(page);
}

// What no verdict rests on.
void print_versions(const Server& server, Pages& pages) {
    if (!server.asks_sdr()) return;
    Page versions{"verinfo.txt", "ipmiutil", "dorvanoem ver", true};
    versions.line("BMC Firmware             : TCO " + server.bmc.firmware);
    versions.line("UEFI Version             : " + server.firmware);
    versions.line("FPGA Version             : 1.06");
    pages.push_back(versions);
    if (server.platform != Platform::full) return;
    Page leds{"ledinfo.txt", "ipmiutil", "dorvanoem led", true};
    leds.line("Power LED                 green, on");
    leds.line("System error LED          off");
    pages.push_back(leds);
}

// What the tools say where there is no BMC.
void print_absence(const Server& server, Pages& pages) {
    const std::string ipmitool =
        "Could not open device at /dev/ipmi0 or /dev/ipmi/0 or /dev/ipmidev/0: No such file or directory";
    const std::string ipmiutil =
        "Cannot open an IPMI driver: /dev/ipmi0, /dev/ipmi/0, or /dev/ipmidev/0: No such file or directory";
    struct Question {
        const char* name;
        const char* tool;
        const char* arguments;
    };
    static constexpr Question kQuestions[] = {
        {"sensorinfo.txt", "ipmitool", "sensor"},     {"selfinfo.txt", "ipmitool", "mc selftest"},
        {"fruinfo.txt", "ipmitool", "fru"},           {"selinfo.txt", "ipmiutil", "sel -t"},
        {"mcinfo.txt", "ipmiutil", "dorvanoem mc"},   {"psuinfo.txt", "ipmiutil", "dorvanoem psu"},
        {"laninfo.txt", "ipmiutil", "dorvanoem lan"}, {"sdrinfo.txt", "ipmitool", "sdr elist"},
    };
    for (const auto& question : kQuestions) {
        const auto name = std::string(question.name);
        if (!server.asks_sdr() && (name == "psuinfo.txt" || name == "sdrinfo.txt")) continue;
        Page page{question.name, question.tool, question.arguments, true, 1};
        page.line(page.tool == "ipmitool" ? ipmitool : ipmiutil);
        pages.push_back(page);
    }
}

}  // namespace

void print_ipmi(const Server& server, Random& random, Book& book, Pages& pages) {
    if (server.platform == Platform::unknown) return;
    if (!server.has_bmc) {
        print_absence(server, pages);
        return;
    }
    print_sensors(server, random, book, pages);
    if (server.asks_sdr()) print_records(server, random, book, pages);
    print_frus(server, book, pages);
    print_sel(server, random, book, pages);
    print_self_test(server, book, pages);
    print_controller(server, random, book, pages);
    print_network(server, random, book, pages);
    if (server.asks_sdr()) print_supplies(server, random, book, pages);
    print_versions(server, pages);
}

}  // namespace truth
