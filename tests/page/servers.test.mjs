// Each recorded server's page: it opens without complaint and shows what report.json says.
import assert from "node:assert/strict";
import {spawnSync} from "node:child_process";
import {readdirSync, readFileSync, statSync} from "node:fs";
import {join} from "node:path";
import {after, afterEach, before, describe, test} from "node:test";
import {parse} from "./csv.mjs";
import {counted, go, open, pictures, report, samples, screenshot, start, stop} from "./browser.mjs";
import {checkSensors} from "./sensors.mjs";

before(start);
after(stop);

// The table as report.json has it: the layout's headers first, then what else its records have.
function expected(json, table) {
  const records = json.records.filter(record => record.table === table.id);
  const labels = new Map();
  for (const record of records) {
    for (const {id, display} of record.properties) if (!labels.has(id)) labels.set(id, display);
  }
  const ids = [...new Set([...(table.layout?.headers ?? []), ...labels.keys()])];
  return {
    labels: ids.map(id => labels.get(id) ?? id),
    rows: records.map(record =>
      ids.map(id => {
        const values = record.properties.filter(property => property.id === id).map(({value}) => String(value));
        return values.join("\n");
      }),
    ),
  };
}

// Without the apostrophes that keep a spreadsheet from taking a value for a formula.
const sign = "[=+\\-@\\uff1d\\uff0b\\uff0d\\uff20]";
const first = new RegExp(`^'(?=[\\s"',;|]*'?${sign}|[\\u0000-\\u001f\\u007f])`);
const within = new RegExp(`([;|\\t\\r\\n][\\s"']*)'(?=${sign})`, "g");
const unguarded = cell => cell.replace(first, "").replace(within, "$1");

// Asks the page for each of `all` in one call.
const each = (page, ask, all) =>
  page.evaluate(
    async ({ask, all}) => {
      const found = [];
      for (const one of all) found.push(await globalThis.inside[ask](...one));
      return found;
    },
    {ask, all},
  );

const machines = readdirSync(samples).filter(name => statSync(join(samples, name)).isDirectory());

for (const machine of machines) {
  describe(machine, () => {
    let made;
    let page;
    before(async () => {
      made = report(join(samples, machine));
      page = await open(made);
    });
    after(() => page.context().close());
    afterEach(() => assert.deepEqual(page.trouble, []));

    test("every table agrees with report.json", async () => {
      const tables = made.json.modules.flatMap(module => module.tables);
      const shown = await each(
        page,
        "table",
        tables.map(({id}) => [id]),
      );
      for (const [at, table] of tables.entries()) {
        const {labels, rows} = expected(made.json, table);
        const {empty, count, csv, shown: first} = shown[at];
        if (rows.length === 0) {
          assert.match(empty, /^No records(: .+|\.)$/, table.id);
          continue;
        }
        assert.match(count, new RegExp(`^${rows.length.toLocaleString("en")} records?`), table.id);
        const [head, ...body] = parse(csv);
        assert.deepEqual(head, labels, table.id);
        assert.deepEqual(
          body.map(row => row.map(unguarded)),
          rows,
          table.id,
        );
        const flat = text => text.replace(/\s+/g, " ").trim();
        first.forEach((text, at) => {
          if (!rows[at][0].includes("<a href")) assert.equal(flat(text), flat(rows[at][0]).replace(/\n/g, " ↵ "));
        });
      }
    });

    test("each picture's numbers are the inventory's", async () => {
      const {inventory, health} = made.json;
      const texts = selector => page.evaluate(one => globalThis.inside.texts(one), selector);
      const holds = (shown, wanted, what) => {
        assert.equal(shown.length, wanted.length, what);
        wanted.forEach((parts, at) => {
          for (const part of parts.filter(one => one !== null))
            assert.ok(shown[at].includes(String(part)), `${what}: ${part} in ${shown[at]}`);
        });
      };

      await go(page, "#/overview");
      holds(
        await texts(".subsystem"),
        health.map(({health, missing}) => [health, missing[0] ?? null]),
        "health",
      );

      await go(page, "#/storage");
      const byPlace = (a, b) =>
        (a.controller ?? Infinity) - (b.controller ?? Infinity) ||
        (a.enclosure ?? Infinity) - (b.enclosure ?? Infinity) ||
        (a.slot ?? Infinity) - (b.slot ?? Infinity) ||
        (a.device_id ?? 0) - (b.device_id ?? 0) ||
        (a.device ?? "").localeCompare(b.device ?? "", "en", {numeric: true});
      const inOrder = inventory.drives.toSorted(byPlace);
      holds(
        await texts(".slots .slot:not(.empty)"),
        inOrder.map(drive => [
          drive.slot === null ? drive.device : `${drive.enclosure ?? ""}:${drive.slot}`,
          drive.state,
          drive.drive_group === null ? null : `group ${drive.drive_group}`,
          drive.spare === null ? null : `${drive.spare} spare`,
          drive.rebuild_percent === null ? null : `${drive.rebuild_percent} %`,
          drive.media_errors > 0 ? `${drive.media_errors.toLocaleString("en")} media error` : null,
          drive.predicted_failures > 0 ? `${drive.predicted_failures} predicted failure` : null,
          drive.shield_counter > 0 ? `shield counter ${drive.shield_counter}` : null,
        ]),
        "drives",
      );
      const volumes = inventory.volumes.toSorted(
        (a, b) =>
          (a.controller ?? Infinity) - (b.controller ?? Infinity) ||
          (a.drive_group ?? Infinity) - (b.drive_group ?? Infinity),
      );
      holds(
        await texts(".volumes > li"),
        volumes.map(({number, name, raid, state, operation, progress_percent}) => [
          number,
          name,
          raid,
          state,
          operation,
          progress_percent === null ? null : `${progress_percent} %`,
        ]),
        "volumes",
      );
      const ofGroups = made.json.findings.filter(({subject}) => /^Drive group \d+ of controller \d+$/.test(subject));
      const groups = (await texts(".array h4")).join(" ");
      for (const {says} of ofGroups) assert.ok(groups.includes(says), says);
      // Each volume with the drives that its captures name, and each spare of no volume.
      const arrayOf = ({controller, drive_group, volume, volume_name}) =>
        JSON.stringify([controller, drive_group ?? -1, drive_group === null ? (volume ?? volume_name) : null]);
      const told = new Map(); // by array, then by the drive or the line
      for (const member of inventory.volume_members) {
        const array = arrayOf(member);
        if (array.endsWith(",-1,null]")) continue; // a global spare
        const {enclosure, slot, device_id, device} = member;
        const place =
          slot !== null ? `${enclosure ?? ""}:${slot}` : device_id !== null ? `device ${device_id}` : device;
        if (!told.has(array)) told.set(array, new Map());
        const key = member.serial ?? place ?? `${member.capture} ${member.line}`;
        if (!told.get(array).has(key)) told.get(array).set(key, {...member, place});
      }
      for (const volume of inventory.volumes) {
        const {number, name} = volume;
        const array = arrayOf({...volume, volume: number, volume_name: name});
        if (!told.has(array)) told.set(array, new Map());
      }
      const drawn = await page
        .locator(".array:has(.volumes)")
        .evaluateAll(all =>
          all.map(one => [...one.querySelectorAll(".members > li")].map(line => line.textContent.replace(/\s+/g, " "))),
        );
      const inArray = ({span, position}) => (span ?? 0) * 1000 + (position ?? 999);
      const wanted = [...told.values()].map(members =>
        [...members.values()].toSorted((a, b) => inArray(a) - inArray(b)),
      );
      assert.equal(drawn.length, wanted.length, "arrays");
      for (const members of wanted) {
        const at = drawn.findIndex(
          lines =>
            lines.length === members.length &&
            members.every(({place, position, state}, at) =>
              [place ?? (position === null ? null : `row ${position}`)]
                .concat(place === null ? [state] : [])
                .every(part => part === null || lines[at].includes(part)),
            ),
        );
        assert.notEqual(at, -1, `${JSON.stringify(members)} is not among ${JSON.stringify(drawn)}`);
        drawn.splice(at, 1);
      }
      const isMember = ({serial, controller, enclosure, slot}) =>
        wanted
          .flat()
          .some(one =>
            one.serial === null || serial === null
              ? one.slot !== null && one.slot === slot && one.enclosure === enclosure && one.controller === controller
              : one.serial === serial,
          );
      const spares = inOrder.filter(drive => drive.spare !== null && !isMember(drive));
      assert.equal((await texts(".spares > li")).length, wanted.length > 0 ? spares.length : 0, "spares");
      // Each drive's own view has all that is known of it.
      const labels = {model: "Model", serial: "Serial", wwn: "WWN", firmware: "Firmware", media_errors: "Media errors"};
      const links = await page
        .locator(".slots .slot:not(.empty) a")
        .evaluateAll(all => all.map(link => link.getAttribute("href")));
      const known = await each(
        page,
        "drive",
        links.map(link => [link]),
      );
      for (const [at, link] of links.entries()) {
        const shown = new Map(known[at]);
        for (const [field, label] of Object.entries(labels)) {
          const value = inOrder[at][field];
          const text = typeof value === "number" ? value.toLocaleString("en") : (value ?? undefined);
          assert.equal(shown.get(label), text, `${field} of ${link}`);
        }
      }

      await go(page, "#/sensors");
      await checkSensors(page, inventory.sensors);
      const listed = (await texts(".findings")).join(" ");
      for (const {subject} of made.json.findings.filter(({subject}) => /^Sensor /.test(subject)))
        assert.ok(listed.includes(subject.split(", ")[0]), subject);

      await go(page, "#/power");
      holds(
        await texts(".supplies .slot"),
        inventory.power_supplies.map(({slot, present, state, input_state, input_watts, serial}) =>
          present === false ? [slot, "none in the bay"] : [slot, state, input_state, input_watts, serial],
        ),
        "power supplies",
      );
      await go(page, "#/memory");
      holds(
        await texts(".modules .slot"),
        inventory.memory_modules.map(({slot, capacity_bytes, serial}) => [
          slot,
          capacity_bytes === null ? "size not told" : `${capacity_bytes / 2 ** 30} GiB`,
          serial,
        ]),
        "memory",
      );
      await go(page, "#/events");
      const query = "SELECT count(*) FROM events";
      const ran = spawnSync("sqlite3", [join(made.directory, "report/report.sqlite"), query], {encoding: "utf8"});
      const events = Number(ran.stdout);
      if (events === 0) await page.getByText("No capture tells of an event").waitFor();
      else await counted(page, new RegExp(`^${events.toLocaleString("en")} events?(,|$)`));
    });

    test("each finding opens its evidence", async () => {
      await go(page, "#/overview");
      const links = await page
        .locator(".findings a.evidence")
        .evaluateAll(all => all.map(link => link.getAttribute("href")));
      const wanted = [];
      for (const {evidence, subject} of made.json.findings) {
        for (const {capture, line} of evidence) {
          const bytes = readFileSync(join(made.directory, capture));
          const lines = bytes
            .subarray(0, 1 << 20)
            .toString("latin1")
            .split("\n");
          if (line === 0 || line > lines.length || bytes.length === 0) continue;
          const link = `#/capture/${capture}@${line}`;
          assert.ok(links.includes(link), `${subject}: ${capture}, line ${line}`);
          const text = Buffer.from(lines[line - 1], "latin1").toString("utf8");
          wanted.push({subject, ask: [link, capture, line], text: text.trim()});
        }
      }
      const marked = await each(
        page,
        "marked",
        wanted.map(({ask}) => ask),
      );
      wanted.forEach(({subject, text}, at) => {
        assert.equal(marked[at].trim(), text, subject);
      });
    });

    test("every view opens, wide and narrow, light and dark", async () => {
      const looks = [
        ["wide light", {width: 1280, height: 900}, "light"],
        ["narrow dark", {width: 390, height: 800}, "dark"],
        ["wide dark", {width: 1280, height: 900}, "dark"],
        ["narrow light", {width: 390, height: 800}, "light"],
      ];
      for (const [look, viewport, colorScheme] of process.env.QV_ALL_LOOKS ? looks : looks.slice(0, 2)) {
        await page.setViewportSize(viewport);
        await page.emulateMedia({colorScheme});
        await page.reload();
        await page.locator("main h1, main .empty").first().waitFor();
        const views = await page.evaluate(() =>
          [...document.querySelectorAll("nav .subjects a")]
            .map(link => link.getAttribute("href"))
            .filter(href => href.startsWith("#/")),
        );
        assert.ok(views.includes("#/overview") && views.includes("#/captures"));
        const wide = await each(
          page,
          "overflow",
          views.map(view => [view]),
        );
        views.forEach((view, at) => {
          assert.ok(wide[at] <= 0, `${view} is ${wide[at]} pixels too wide, ${look}`);
        });
        for (const view of pictures === "" ? [] : views) {
          await each(page, "overflow", [[view]]);
          await screenshot(page, `${machine} ${view.slice(2)} ${look}`);
        }
      }
    });
  });
}
