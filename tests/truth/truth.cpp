#include "truth.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <stdexcept>

namespace truth {

// clang-format off
const std::vector<ContractKind>& contract() {
    static const std::vector<ContractKind> kKinds = {
        {"systems", {"manufacturer", "product", "serial", "uuid", "asset_tag", "firmware", "is_virtual"}},
        {"processors", {"socket", "model", "cores", "threads", "state"}},
        {"memory_modules", {"slot", "capacity_bytes", "type", "speed_mts", "manufacturer", "serial", "part"}},
        {"bmcs", {"firmware", "ipmi", "self_test", "address", "mac"}},
        {"sensors", {"name", "number", "kind", "reading", "unit", "status", "lnr", "lc", "lnc", "unc", "uc", "unr", "states"}},
        {"power_supplies", {"slot", "present", "state", "input_state", "input_watts", "model", "serial", "part", "firmware"}},
        {"frus", {"device", "manufacturer", "product", "part", "serial"}},
        {"controllers", {"number", "model", "serial", "firmware", "status", "volumes", "drives"}},
        {"batteries", {"controller", "model", "state", "charge_percent", "temperature_celsius"}},
        {"enclosures", {"controller", "number", "slots", "state", "model", "serial"}},
        {"volumes", {"controller", "drive_group", "number", "raid", "state", "access", "consistent", "cache", "capacity_bytes", "name", "device", "operation", "progress_percent"}},
        {"drives", {"controller", "enclosure", "slot", "device_id", "state", "drive_group", "is_foreign", "spare", "rebuild_percent", "capacity_bytes", "interface", "media", "sector_bytes", "model", "serial", "wwn", "firmware", "device", "temperature_celsius", "media_errors", "other_errors", "predicted_failures", "shield_counter", "smart_alert", "percentage_used", "available_spare_percent", "power_on_hours"}},
        {"volume_members", {"controller", "drive_group", "volume", "volume_name", "span", "position", "is_spare", "state", "enclosure", "slot", "device_id", "device", "serial"}},
    };
    return kKinds;
}
// clang-format on

Seconds usual_now() { return seconds_at(2026, 11, 21, 6); }

namespace {

void add_once(Json& list, const Json& value) {
    if (std::find(list.begin(), list.end(), value) == list.end()) list.push_back(value);
}

bool has_damaged_line(const Fact& fact, const Fates& fates) {
    const auto& fate = fates.of(fact.spot.page);
    return fate.cut_line == fact.spot.first && fate.is_cut_in_tail;
}

// What a field may be read as, from all the lines that told it and are left.
void add_field(const Subject& subject, const char* field, const Fates& fates, Json& entity,
               Json& how) {
    Json sure = Json::array();
    Json shaky = Json::array();
    Json joined = Json::array();
    bool is_told_freely = false;
    bool begins = false;
    bool was_cut = false;
    for (const auto& fact : subject.facts) {
        if (fact.field != field) continue;
        const auto left = left_of(fact.spot, fates);
        if (left == Left::gone) continue;
        if (fact.told.is_free) {
            is_told_freely = true;
            continue;
        }
        if (fact.told.is_joined) {
            add_once(joined, fact.told.value);
            continue;
        }
        begins = begins || fact.told.begins;
        was_cut = was_cut || has_damaged_line(fact, fates);
        auto& values = left == Left::sure ? sure : shaky;
        add_once(values, fact.told.value);
        for (const auto& other : fact.told.also) add_once(values, other);
    }
    auto values = sure;
    for (const auto& value : shaky) add_once(values, value);
    if (sure.empty() && !shaky.empty()) add_once(values, nullptr);
    if (values.empty() && !joined.empty()) values.push_back(nullptr);
    for (const auto& value : joined) add_once(values, value);
    if (values.empty() && is_told_freely) how["free"].push_back(field);
    if (sure.empty() && is_told_freely && !values.empty()) how["free"].push_back(field);
    entity[field] = values.empty() ? Json() : values.front();
    if (values.size() > 1) how["also"][field] = Json(values.begin() + 1, values.end());
    if (begins) how["begins"].push_back(field);
    if (was_cut) how["cut"].push_back(field);
}

// Where the entity may be said to stand: at a row of a table itself, else in the block of its lines or
// shortly before, at the block's heading.
Json places_of(const Subject& subject, const Fates& fates) {
    struct Range {
        int first = 0, last = 0;
        bool is_rows = true;
        std::vector<int> rows = {};
    };
    std::map<std::string, Range> by_page;
    for (const auto& fact : subject.facts) {
        if (fact.told.is_elsewhere || left_of(fact.spot, fates) == Left::gone) continue;
        const auto& fate = fates.of(fact.spot.page);
        const auto at = static_cast<std::size_t>(fact.spot.first);
        const int line = fate.where[at];
        auto& range = by_page[fact.spot.page];
        range.first = range.rows.empty() ? line : std::min(range.first, line);
        range.last = std::max(range.last, line);
        range.is_rows = range.is_rows && fate.page->lines[at].tail >= 0;
        range.rows.push_back(line);
    }
    Json places = Json::array();
    for (const auto& [page, range] : by_page) {
        if (range.is_rows) {
            for (const int row : range.rows)
                add_once(places, {{"capture", page}, {"first", row}, {"last", row}});
        } else {
            constexpr int kHeading = 12;
            places.push_back({{"capture", page},
                              {"first", std::max(1, range.first - kHeading)},
                              {"last", range.last}});
        }
    }
    return places;
}

Json entity_of(const ContractKind& kind, const Subject& subject, const Fates& fates) {
    Left best = Left::gone;
    const Fact* first = nullptr;
    for (const auto& fact : subject.facts) {
        const auto left = left_of(fact.spot, fates);
        if (left > best && !fact.told.is_joined && !fact.told.is_elsewhere) {
            best = left;
            first = &fact;
        }
    }
    if (best == Left::gone) return {};
    Json entity;
    entity["capture"] = first->spot.page;
    entity["line"] = fates.of(first->spot.page).where[static_cast<std::size_t>(first->spot.first)];
    Json how;
    how["match"] = subject.match;
    how["certain"] = best == Left::sure && !subject.may_be_missing;
    for (const char* field : kind.fields) add_field(subject, field, fates, entity, how);
    how["places"] = places_of(subject, fates);
    entity["compare"] = how;
    return entity;
}

Json spots_json(const std::vector<Spot>& spots, const Fates& fates) {
    Json places = Json::array();
    for (const auto& spot : spots) {
        if (left_of(spot, fates) == Left::gone) continue;
        const auto& where = fates.of(spot.page).where;
        const int first = where[static_cast<std::size_t>(spot.first)];
        int last = first;
        for (int line = spot.first; line <= spot.last; ++line)
            last = std::max(last, where[static_cast<std::size_t>(line)]);
        add_once(places, {{"capture", spot.page}, {"first", first}, {"last", last}});
    }
    return places;
}

Json findings_json(const std::vector<Expected>& findings, const Fates& fates) {
    Json all = Json::array();
    for (const auto& one : findings) {
        Json severities = Json::array();
        for (const auto level : {Level::notice, Level::warning, Level::critical}) {
            if (level >= one.least && level <= one.most) severities.push_back(word(level));
        }
        all.push_back({{"about", one.about},
                       {"rules", one.rules},
                       {"severity", severities},
                       {"subsystem", one.subsystem},
                       {"places", spots_json(one.spots, fates)},
                       {"holds", one.holds},
                       {"certain", one.is_certain},
                       {"once", one.is_once}});
    }
    return all;
}

Json events_json(const Book& book, const Fates& fates) {
    Json all = Json::array();
    for (const auto& [id, event] : book.events) {
        Left best = Left::gone;
        for (const auto& spot : event.spots) best = std::max(best, left_of(spot, fates));
        if (best == Left::gone) continue;
        all.push_back({{"source", event.source},
                       {"time", event.time ? Json(*event.time) : Json()},
                       {"words", event.words},
                       {"certain", best == Left::sure},
                       {"places", spots_json(event.spots, fates)}});
    }
    return all;
}

int count_lines(const std::string& bytes) {
    const auto ends = std::count(bytes.begin(), bytes.end(), '\n');
    return static_cast<int>(ends) + (!bytes.empty() && bytes.back() != '\n' ? 1 : 0);
}

Json captures_json(const Made& made) {
    Json all = Json::array();
    for (const auto& page : made.pages) {
        const auto& fate = made.fates.of(page.name);
        if (!fate.is_there) continue;
        Json one{{"capture", page.name},
                 {"tool", page.tool},
                 {"lines", count_lines(fate.bytes)},
                 {"ended_badly", fate.ended_badly},
                 {"damage", word(fate.damage)}};
        // Nobody may say of these that they could not be read.
        one["whole"] = fate.trust == Trust::whole && page.exit == 0;
        if (fate.cut_line >= 0)
            one["cut_line"] = fate.where[static_cast<std::size_t>(fate.cut_line)];
        all.push_back(one);
    }
    return all;
}

Json truth_of(const Made& made) {
    Json truth;
    truth["format"] = 1;
    truth["seed"] = made.server.seed;
    truth["now"] = iso(made.server.now);
    truth["faults"] = made.server.faults;
    truth["captures"] = captures_json(made);
    auto& inventory = truth["inventory"];
    for (const auto& kind : contract()) {
        auto& list = inventory[kind.name] = Json::array();
        for (const auto& subject : made.book.subjects) {
            if (subject.kind != kind.name) continue;
            auto entity = entity_of(kind, subject, made.fates);
            if (!entity.is_null()) list.push_back(entity);
        }
    }
    truth["findings"] = findings_json(made.findings, made.fates);
    for (const auto& [subsystem, words] : expected_health(made.server, made.findings, made.fates))
        truth["health"][subsystem] = words;
    truth["events"] = events_json(made.book, made.fates);
    return truth;
}

void write(const std::filesystem::path& file, const std::string& bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << bytes;
    if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
}

std::string json_text(const Json& json) {
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

namespace {

// Of what happens to the server; the number alone makes the server itself.
Random fate_of(std::uint64_t seed) { return Random(seed ^ 0x5eed); }

}  // namespace

namespace {

// mdadm is asked of the arrays that /proc/mdstat shows.
void ask_of_known_arrays(Made& made) {
    Random none(0);
    for (const auto& page : made.pages) {
        if (page.tool != "mdadm") continue;
        const auto name = page.arguments.substr(page.arguments.rfind('/') + 1);
        if (made.fates.of("host_mdstat.txt").bytes.find(name + " : ") == std::string::npos)
            made.fates.by_page[page.name] = suffer(page, Damage::not_captured, none);
    }
}

// storcli is asked of as many controllers as it has counted; without a count, of the first alone.
void ask_of_counted_controllers(Made& made) {
    const auto& count = made.fates.of("ctrlcount.txt");
    const auto line = "Controller Count = " + std::to_string(made.server.controllers.size()) + "\n";
    if (count.ended_badly.empty() && count.bytes.find(line) != std::string::npos) return;
    Random none(0);
    for (const auto& page : made.pages) {
        if (page.tool == "storcli" && page.arguments.starts_with("/c") &&
            !page.arguments.starts_with("/c0"))
            made.fates.by_page[page.name] = suffer(page, Damage::not_captured, none);
    }
}

void answer_once(Made& made) {
    std::map<std::string, const Fate*> answers;
    for (const auto& page : made.pages) {
        auto& fate = made.fates.by_page[page.name];
        const auto [answer, is_first] = answers.emplace(page.tool + " " + page.arguments, &fate);
        if (is_first) continue;
        fate = *answer->second;
        fate.page = &page;
    }
}

}  // namespace

std::vector<std::uint64_t> seeds_with(const std::string& fault, std::size_t count,
                                      std::uint64_t first) {
    constexpr std::uint64_t kMost = 5000;
    std::vector<std::uint64_t> seeds;
    for (auto seed = first; seed < first + kMost && seeds.size() < count; ++seed) {
        auto server = invent(seed, usual_now());
        auto random = fate_of(seed);
        if (add_fault(server, random, fault)) seeds.push_back(seed);
    }
    return seeds;
}

std::unique_ptr<Made> make(const Options& options) {
    auto made = std::make_unique<Made>();
    auto random = fate_of(options.seed);
    made->server = invent(options.seed, options.now);
    auto& server = made->server;
    if (options.fault.empty()) {
        add_faults(server, random);
    } else {
        add_fault(server, random, options.fault);
    }
    if (options.change) options.change(server);
    print_ipmi(server, random, made->book, made->pages);
    print_storcli(server, random, made->book, made->pages);
    print_arcconf(server, random, made->book, made->pages);
    print_sas2ircu(server, random, made->book, made->pages);
    print_md(server, made->book, made->pages);
    print_zpool(server, made->book, made->pages);
    print_dmidecode(server, random, made->book, made->pages);
    print_kernel(server, random, made->book, made->pages);
    made->fates = suffer_all(made->pages, random, options.page.empty() ? options.percent_hurt : 0);
    for (const auto& page : made->pages) {
        if (page.name == options.page && fits(page, options.damage))
            made->fates.by_page[page.name] = suffer(page, options.damage, random, options.cut_at);
    }
    if (options.is_recorded) {
        answer_once(*made);
        ask_of_known_arrays(*made);
        ask_of_counted_controllers(*made);
    }
    made->findings = expected_findings(server, made->book, made->fates);
    made->truth = truth_of(*made);
    return made;
}

void write_log_dir(const Made& made, const std::filesystem::path& dir) {
    for (const auto& page : made.pages) {
        const auto& fate = made.fates.of(page.name);
        if (fate.is_there) write(dir / page.name, fate.bytes);
    }
    write(dir / "truth.json", json_text(made.truth));
}

// ---- A recorded server --------------------------------------------------------------------------------

namespace {

// A file beside machine.json has no folder of its own.
std::string flat(std::string name) {
    for (char& c : name) {
        if (c == '/' || c == ' ') c = '_';
    }
    return name;
}

}  // namespace

void write_machine(const Made& made, const std::filesystem::path& dir) {
    Json commands = Json::array();
    const auto add = [&](const std::string& tool, const std::string& arguments) -> Json& {
        commands.push_back({{"tool", tool}, {"args", arguments}});
        return commands.back();
    };
    std::vector<std::string> asked;
    for (const auto& page : made.pages) {
        const auto& fate = made.fates.of(page.name);
        const bool was_not_asked =
            !fate.is_there || fate.damage == Damage::tool_missing || page.lines.empty();
        const auto question = page.tool + " " + page.arguments;
        if (was_not_asked || std::find(asked.begin(), asked.end(), question) != asked.end())
            continue;
        asked.push_back(question);
        write(dir / flat(page.name), fate.bytes);
        if (page.tool == "arcconf") {
            add("arcconf", "savesupportarchive");
            add("cp",
                "-rf /var/log/Support/Firmware {LOG}")["files"] = {{page.name, flat(page.name)}};
            continue;
        }
        auto& command = add(page.tool, page.arguments);
        command["stdout"] = flat(page.name);
        if (page.exit != 0) command["exit"] = page.exit;
        if (!fate.ended_badly.empty()) command["signal"] = 9;
    }
    // By this the plug-in tells what to ask of the BMC, so nothing happens to it.
    write(dir / "dmidecode_system.txt",
          "# dmidecode 3.3\nGetting SMBIOS data from sysfs.\n\n"
          "Handle 0x0001, DMI type 1, 27 bytes\nSystem Information\n"
          "\tManufacturer: " +
              made.server.manufacturer + "\n\tProduct Name: " + made.server.product + "\n\n");
    add("dmidecode", "-t system")["stdout"] = "dmidecode_system.txt";
    for (const char* words : {"ipmi start", "ipmi stop"}) add("service", words);
    add("supportconfig", "-R /tmp");
    Json machine;
    machine["description"] = "Random server " + std::to_string(made.server.seed) + ".";
    machine["uname"] = "x86_64";
    machine["commands"] = commands;
    write(dir / "machine.json", json_text(machine));
    write(dir / "truth.json", json_text(made.truth));
}

}  // namespace truth
