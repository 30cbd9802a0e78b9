// The views of a fleet. They read alike on SQLite and PostgreSQL: no function that one of them lacks, no order by the
// locale, and sums as integers.
#include <string>
#include <vector>

#include "fleet/schema.h"

namespace qvhost::fleet {

namespace {

// What stands in the host's last run, and what stood in any run, each with the host's name.
void add_views_of(const History& history, std::vector<View>& all) {
    std::string told;
    for (const auto& name : history.names) told += ", t." + name;
    all.push_back(
        {"current_" + history.name, "what each host's last run has",
         "SELECT h.host, h.name AS host_name, t.digest, t.run" + told + " FROM " + history.name +
             " t JOIN hosts h ON h.host = t.host WHERE t.until = " + std::to_string(kForever),
         false});
    all.push_back({history.name + "_by_run", "what each run has",
                   "SELECT r.host, r.name AS host_name, r.run, r.started, t.digest" + told +
                       " FROM runs r JOIN " + history.name +
                       " t ON t.host = r.host AND t.run <= r.run AND t.until > r.run",
                   false});
}

// clang-format off
#define HOSTS \
    " n.host, n.name AS host_name, n.first_run AS since_run, o.host AS earlier_host, o.name AS earlier_name," \
    " o.last_run AS earlier_last_run, n.machine_id, n.serial," \
    " o.machine_id AS earlier_machine_id, o.serial AS earlier_serial"
#define LATER " (n.first_run > o.first_run OR (n.first_run = o.first_run AND n.host > o.host))"

const std::vector<View> kAnswers = {
    {"host_changes", "hosts that have the machine id or the serial number of an earlier one",
     "SELECT CASE WHEN n.machine_id IS NULL OR o.machine_id IS NULL THEN 'machine id known or lost'"
     " ELSE 'new installation' END AS change," HOSTS
     " FROM hosts n JOIN hosts o ON n.serial = o.serial WHERE o.host <> n.host AND" LATER
     " UNION ALL SELECT CASE WHEN n.serial IS NULL OR o.serial IS NULL THEN 'serial number known or lost'"
     " ELSE 'new board' END," HOSTS
     " FROM hosts n JOIN hosts o ON n.machine_id = o.machine_id WHERE o.host <> n.host AND" LATER},

    {"host_status", "each host's last run, with the worst that it says",
     "SELECT h.host, h.name AS host_name, h.machine_id, h.serial, h.last_run, r.status,"
     " coalesce(w.critical, 0) AS critical, coalesce(w.warning, 0) AS warning, coalesce(w.unknown, 0) AS unknown,"
     " coalesce(f.findings, 0) AS findings, p.manufacturer, p.product,"
     " CASE WHEN c.earlier_host IS NULL THEN 0 ELSE 1 END AS replaced"
     " FROM hosts h JOIN runs r ON r.host = h.host AND r.run = h.last_run"
     " LEFT JOIN (SELECT host, sum(CASE WHEN health = 'critical' THEN 1 ELSE 0 END) AS critical,"
     " sum(CASE WHEN health = 'warning' THEN 1 ELSE 0 END) AS warning,"
     " sum(CASE WHEN health = 'unknown' THEN 1 ELSE 0 END) AS unknown"
     " FROM current_health GROUP BY host) w ON w.host = h.host"
     " LEFT JOIN (SELECT host, count(*) AS findings FROM current_findings"
     " WHERE severity IN ('critical', 'warning') GROUP BY host) f ON f.host = h.host"
     " LEFT JOIN (SELECT host, min(manufacturer) AS manufacturer, min(product) AS product"
     " FROM current_systems GROUP BY host) p ON p.host = h.host"
     " LEFT JOIN (SELECT DISTINCT earlier_host FROM host_changes WHERE since_run > earlier_last_run) c"
     " ON c.earlier_host = h.host"},

    {"failing_drives", "drives that findings are about, by model and firmware, and how many of these there are",
     "SELECT d.model, d.firmware, count(*) AS failing, count(DISTINCT d.host) AS on_hosts, min(a.drives) AS of_drives"
     " FROM current_drives d"
     " JOIN (SELECT DISTINCT e.host, e.entity FROM current_finding_entities e JOIN current_findings f"
     " ON f.host = e.host AND f.id = e.finding_id"
     " WHERE e.kind = 'drives' AND f.severity IN ('critical', 'warning')) bad"
     " ON bad.host = d.host AND bad.entity = d.digest"
     " JOIN (SELECT coalesce(model, '') AS model, coalesce(firmware, '') AS firmware, count(*) AS drives"
     " FROM current_drives GROUP BY coalesce(model, ''), coalesce(firmware, '')) a"
     " ON a.model = coalesce(d.model, '') AND a.firmware = coalesce(d.firmware, '')"
     " GROUP BY d.model, d.firmware"},

    {"media_error_growth", "drives whose media errors grew from their first run to their last, on one host",
     "SELECT g.host, h.name AS host_name, g.serial, g.model, g.first_errors, g.last_errors,"
     " g.last_errors - g.first_errors AS growth, g.first_run, g.last_change"
     " FROM (SELECT host, serial, min(model) AS model, min(run) AS first_run, max(run) AS last_change,"
     " min(CASE WHEN nth = 1 THEN media_errors END) AS first_errors,"
     " min(CASE WHEN from_last = 1 THEN media_errors END) AS last_errors"
     " FROM (SELECT host, serial, model, run, media_errors,"
     " row_number() OVER (PARTITION BY host, serial ORDER BY run, digest) AS nth,"
     " row_number() OVER (PARTITION BY host, serial ORDER BY run DESC, digest DESC) AS from_last"
     " FROM drives WHERE serial IS NOT NULL AND media_errors IS NOT NULL) each_row"
     " GROUP BY host, serial) g JOIN hosts h ON h.host = g.host"
     " WHERE g.last_errors > g.first_errors"},

    {"firmware_off", "what has another firmware than most of its kind",
     "SELECT f.kind, f.model, f.host, f.host_name, f.item, f.firmware, c.firmware AS commonest,"
     " c.has AS has_commonest, c.of_all"
     " FROM fleet_firmware f JOIN (SELECT kind, model, firmware, has, of_all FROM"
     " (SELECT kind, model, firmware, count(*) AS has,"
     " sum(count(*)) OVER (PARTITION BY kind, model) AS of_all,"
     " row_number() OVER (PARTITION BY kind, model ORDER BY count(*) DESC, firmware DESC) AS nth"
     " FROM fleet_firmware GROUP BY kind, model, firmware) counted WHERE nth = 1) c"
     " ON c.kind = f.kind AND c.model = f.model AND c.firmware <> f.firmware WHERE f.model <> '' AND c.has > 1"},

    {"memory_replaced_twice", "memory slots that have had three or more modules",
     "SELECT m.host, h.name AS host_name, m.slot, count(DISTINCT m.serial) AS modules,"
     " max(m.run) AS last_replaced"
     " FROM memory_modules m JOIN hosts h ON h.host = m.host"
     " WHERE m.slot IS NOT NULL AND m.serial IS NOT NULL"
     " GROUP BY m.host, h.name, m.slot HAVING count(DISTINCT m.serial) >= 3"},

    {"findings_on_siblings", "findings by one rule on two or more hosts of one product",
     "SELECT s.manufacturer, s.product, f.rule, f.severity, count(DISTINCT f.host) AS hosts, min(a.hosts) AS of_hosts,"
     " min(f.host_name) AS first_host, min(f.says) AS first_says"
     " FROM current_findings f JOIN host_status s ON s.host = f.host"
     " JOIN (SELECT manufacturer, product, count(*) AS hosts FROM host_status GROUP BY manufacturer, product) a"
     " ON a.product = s.product AND coalesce(a.manufacturer, '') = coalesce(s.manufacturer, '')"
     " WHERE f.severity <> 'notice'"
     " GROUP BY s.manufacturer, s.product, f.rule, f.severity HAVING count(DISTINCT f.host) >= 2"},

    {"netbox_devices", "the columns that NetBox imports as devices; role and site are the site's own",
     "SELECT coalesce(name, serial, machine_id) AS name, coalesce(manufacturer, 'Unknown') AS manufacturer,"
     " coalesce(product, 'Unknown') AS device_type, serial, 'active' AS status"
     " FROM (SELECT host_name AS name, serial, machine_id, manufacturer, product FROM host_status WHERE replaced = 0) d"},

    {"netbox_inventory_items", "the columns that NetBox imports as inventory items of those devices",
     "SELECT coalesce(h.host_name, h.serial, h.machine_id) AS device, i.name, i.manufacturer, i.part_id, i.serial,"
     " 'true' AS discovered, i.description FROM host_status h JOIN fleet_items i ON i.host = h.host"
     " WHERE h.replaced = 0"},
};

// What the answers are made of. They stand before them.
const std::vector<View> kParts = {
    {"fleet_firmware", "firmware by kind and model",
     "SELECT 'system' AS kind, host, host_name, coalesce(product, '') AS model, coalesce(serial, '') AS item, firmware"
     " FROM current_systems WHERE firmware IS NOT NULL"
     " UNION ALL SELECT 'bmc', b.host, b.host_name, coalesce(s.product, ''), coalesce(b.address, ''), b.firmware"
     " FROM current_bmcs b LEFT JOIN (SELECT host, min(product) AS product FROM current_systems GROUP BY host) s"
     " ON s.host = b.host WHERE b.firmware IS NOT NULL"
     " UNION ALL SELECT 'controller', host, host_name, coalesce(model, ''), coalesce(serial, ''), firmware"
     " FROM current_controllers WHERE firmware IS NOT NULL"
     " UNION ALL SELECT 'drive', host, host_name, coalesce(model, ''), coalesce(serial, ''), firmware"
     " FROM current_drives WHERE firmware IS NOT NULL"
     " UNION ALL SELECT 'power supply', host, host_name, coalesce(model, ''), coalesce(slot, ''), firmware"
     " FROM current_power_supplies WHERE firmware IS NOT NULL",
     false},
    {"worst_findings", "of each host's last run the first of the worst findings",
     "SELECT host, severity, subject, says FROM (SELECT host, severity, subject, says,"
     " row_number() OVER (PARTITION BY host ORDER BY CASE severity WHEN 'critical' THEN 0 WHEN 'warning' THEN 1"
     " WHEN 'unknown' THEN 2 ELSE 3 END, id, digest) AS nth FROM current_findings WHERE severity <> 'notice') f WHERE nth = 1",
     false},
    {"fleet_items", "parts of hosts with makers, part numbers and serial numbers",
     "SELECT host, 'DIMM ' || coalesce(slot, '?') AS name, manufacturer, part AS part_id, serial,"
     " coalesce(type, '') AS description FROM current_memory_modules"
     " UNION ALL SELECT host, 'CPU ' || coalesce(socket, '?'), NULL, model, NULL, coalesce(state, '')"
     " FROM current_processors"
     " UNION ALL SELECT host, 'Controller ' || coalesce(CAST(number AS TEXT), '?'), NULL, model, serial,"
     " 'firmware ' || coalesce(firmware, '?') FROM current_controllers"
     " UNION ALL SELECT host, 'Drive ' || coalesce(CAST(controller AS TEXT) || ':', '')"
     " || coalesce(CAST(enclosure AS TEXT) || ':', '') || coalesce(CAST(slot AS TEXT), 'device ' || CAST(device_id AS TEXT), device, '?'),"
     " NULL, model, serial, 'firmware ' || coalesce(firmware, '?') FROM current_drives"
     " UNION ALL SELECT host, 'PSU ' || coalesce(slot, '?'), NULL, coalesce(part, model), serial, coalesce(state, '')"
     " FROM current_power_supplies",
     false},
};
// clang-format on

std::vector<View> made_views() {
    std::vector<View> all;
    for (const auto& history : histories()) add_views_of(history, all);
    all.insert(all.end(), kParts.begin(), kParts.end());
    all.insert(all.end(), kAnswers.begin(), kAnswers.end());
    return all;
}

}  // namespace

const std::vector<View>& views() {
    static const auto kAll = made_views();
    return kAll;
}

}  // namespace qvhost::fleet
