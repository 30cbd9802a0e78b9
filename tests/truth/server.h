// A server as it is, whatever its tools say of it.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "random.h"
#include "text.h"

namespace truth {

// ---- Storage ----------------------------------------------------------------------------------------

struct Drive {
    std::optional<int> enclosure = {};
    int slot = 0;
    int device_id = 0;
    std::string state;  // storcli's words: Onln, Offln, Rbld, UGood, UBad, GHS, DHS, JBOD
    std::optional<int> group = {};  // the drive group
    int span = 0, row = 0;          // its place in the group
    bool is_foreign = false;
    bool is_missing = false;  // it left a hole in the topology
    bool is_ssd = false;
    std::string interface = "SAS";
    int sector = 512;
    std::int64_t sectors = 0;  // of 512 bytes, coerced
    std::string vendor, model, serial, wwn, firmware;
    int temperature = 30;
    int media_errors = 0, other_errors = 0, predicted_failures = 0, shield_counter = 0;
    bool smart_alert = false;
    bool is_spun_up = true;
};

struct Volume {
    int group = 0, number = 0;
    std::string state = "Optl";  // storcli's words: Optl, Pdgd, Dgrd, OfLn
    std::string access = "RW", cache = "RWBD", name;
    bool is_consistent = true;
    std::int64_t sectors = 0;
};

struct Group {
    int number = 0;
    std::string raid;                     // "RAID5"
    std::string state = "Optl";           // as the topology says it
    std::vector<std::string> spans = {};  // the state of each
    std::int64_t sectors = 0;
};

struct Enclosure {
    int id = 0, slots = 0;
    std::string state = "OK", port = "-", product, vendor_words;
    int supplies = 0, fans = 0, sensors = 0;
};

struct Battery {
    bool is_cachevault = true;
    std::string model, state = "Optimal";
    int temperature = 30;
};

struct ControllerEvent {
    std::optional<Seconds> time = {};  // none: the clock was not set yet
    int since_reboot = 0;
    int code = 0, level = 0, locale = 0;
    std::string words;
    std::vector<std::string> data = {};
};

enum class Mode { raid, hba };

struct Controller {
    int number = 0;
    Mode mode = Mode::raid;
    std::string model, serial, package, firmware, bios, driver, driver_version;
    std::string pci_address;  // "00:03:00:00"
    int clock_off = 0;        // seconds its clock is ahead of the system's
    std::vector<Enclosure> enclosures = {};
    std::vector<Drive> drives = {};
    std::vector<Group> groups = {};
    std::vector<Volume> volumes = {};
    std::optional<Battery> battery = {};
    std::vector<ControllerEvent> events = {};
    std::string status = "Optimal";  // as arcconf says it
};

// A member of a software array: its drive's partition, and its place in the array.
struct ArrayMember {
    std::string device;  // "sdk1"
    int number = 0;
    int place = -1;     // -1: none
    std::string state;  // active sync, spare, spare rebuilding, faulty
};

// An array of the kernel. A place without a member is one that was removed.
struct Array {
    std::string name, raid;  // "md0", "raid5"
    int places = 0;
    std::int64_t blocks = 0;  // of 1024 bytes
    std::vector<ArrayMember> members = {};
    std::string operation = {};  // rebuild, resync, check
    double progress = 0;         // percent
    bool is_written_to = false;
};

// How many places have no member that is in sync, and whether the data is out of reach by that.
int places_lost(const Array& array);
bool is_lost(const Array& array);

// A pool of ZFS with one group of drives.
struct PoolMember {
    std::string device;  // "sdba"
    std::string state = "ONLINE";
    int reads = 0, writes = 0, checksums = 0;  // errors
};

struct Pool {
    std::string name, raid;  // mirror, raidz1, raidz2
    std::vector<PoolMember> members = {};
    std::string spare = {};      // its device; empty: none
    std::string operation = {};  // scrub, resilver
    double progress = 0;         // percent
    int data_errors = 0;
};

int members_lost(const Pool& pool);
int can_lose(const Pool& pool);  // how many members

enum class StorageTool { none, storcli, arcconf, sas2ircu };

// Which form of output storcli has.
enum class StorcliForm {
    v1_03,  // no "CLI Version", no Cac, no TR
    v1_2x,  // no "CLI Version", Cac, drive groups to the right
    v7_06,  // "CLI Version", no Cac, no TR
    v7_12,  // Cac, TR, Type
};

// ---- The BMC ----------------------------------------------------------------------------------------

struct Sensor {
    std::string name;
    int number = 0;
    std::string kind;  // temperature, fan, voltage, current, power, discrete
    std::string unit;  // "degrees C"
    std::optional<double> reading = {};
    std::string status = "ok";  // ok, nc, cr, nr; na: no reading
    bool is_high = true;        // which side of its range it left
    std::optional<double> lnr = {}, lc = {}, lnc = {}, unc = {}, uc = {}, unr = {};
    std::string entity = "7.1";
    int decimals = 0;
    // Of discrete ones: which bits are set, and the word of each.
    std::vector<std::pair<int, std::string>> states = {};
    std::string role =
        {};  // what a fault may happen to: "psu2", "psu redundancy", "intrusion", ...
};

struct PowerSupply {
    int number = 1;
    bool is_present = true, has_input = true, has_failed = false;
    std::string model, serial, firmware;
    int watts = 200;
};

struct Fru {
    std::string device;  // "Builtin FRU Device (ID 0)"
    bool has_board = false, has_product = false, has_chassis = false;
    std::string manufacturer, product, part, serial;
    std::string board_manufacturer, board_product, board_part, board_serial;
};

enum class SelKind {
    quiet,      // of no interest
    threshold,  // a sensor that crossed one; fine now
    uncorrectable,
    correctable,
    processor,  // IERR
    thermal_trip,
    pci,
    ac_lost,
    drive_fault,
};

struct SelEntry {
    SelKind kind = SelKind::quiet;
    std::optional<Seconds> time = {};  // none: the clock was not set yet
    std::string severity, source, type, sensor, detail, rest;
    std::string words;  // of the detail, those that any reader keeps
};

struct Bmc {
    std::string firmware, ipmi = "2.0", address, mac;
    std::string self_test = "passed";
    std::vector<Sensor> sensors = {};
    std::vector<PowerSupply> supplies = {};
    std::vector<Fru> frus = {};
    std::vector<SelEntry> sel = {};
    int sel_room = 4096;  // entries
};

// ---- The machine ------------------------------------------------------------------------------------

struct Processor {
    std::string socket, model;
    int cores = 0, threads = 0;
    bool is_there = true;
};

struct MemoryModule {
    std::string slot, bank;
    bool is_there = true;
    int megabytes = 0, rated_speed = 0, speed = 0;
    std::string type, manufacturer, serial, part;
};

enum class KernelKind {
    quiet,
    edac_corrected,
    edac_uncorrected,
    machine_check,
    disk_error,
    drive_lost,
    controller_lost,
};

struct KernelLine {
    KernelKind kind = KernelKind::quiet;
    std::string text;
    std::string words = {};  // of a bad one
};

// What the plug-in asks of a BMC, which it tells by the product's name.
enum class Platform {
    full,
    without_leds,
    reduced,  // neither sensor records nor power supplies
    unknown,  // nothing
};

struct Server {
    std::uint64_t seed = 0;
    Seconds now = 0;
    bool is_virtual = false, has_bmc = true;
    std::string manufacturer, product, version, serial, uuid, asset_tag, firmware, release_date;
    std::string board, chassis_type;
    std::string kernel, os;
    std::vector<Processor> processors = {};
    std::vector<MemoryModule> memory = {};
    Bmc bmc = {};
    StorageTool storage_tool = StorageTool::none;
    StorcliForm form = StorcliForm::v7_12;
    std::vector<Controller> controllers = {};
    // What is odd about storcli's tables: even, a column that nobody knows; odd, two columns in each
    // other's places; 0, nothing.
    int odd_column = 0;
    bool has_ahci = false;  // an on-board SATA controller
    std::vector<Array> arrays = {};
    std::optional<Pool> pool = {};
    bool has_topology_fault = false;
    std::vector<KernelLine> dmesg = {};
    Platform platform = Platform::full;
    bool asks_sdr() const {
        return platform == Platform::full || platform == Platform::without_leds;
    }
    std::set<std::string> faults = {};  // the names of what is wrong with it
};

// A healthy random server.
Server invent(std::uint64_t seed, Seconds now);

// Gives it random faults, or one by name; false: the server has nothing that this can happen to.
void add_faults(Server& server, Random& random);
bool add_fault(Server& server, Random& random, const std::string& name);
std::vector<std::string> fault_names();

// What the states of the drives make of groups and volumes.
void settle(Controller& controller);

}  // namespace truth
