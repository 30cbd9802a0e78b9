// What people do with a page: search, sort, filter, choose columns, copy, follow links, print.
import assert from "node:assert/strict";
import {spawnSync} from "node:child_process";
import {readdirSync, readFileSync, renameSync, statSync} from "node:fs";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {parse} from "./csv.mjs";
import {address, counted, go, loaded, open, report, samples, screenshot, start, stop} from "./browser.mjs";
import {checkSensors} from "./sensors.mjs";

before(start);
after(stop);

const made = report(join(samples, "x86_64-kp220-megaraid"));
const records = table => made.json.records.filter(record => record.table === table);
const sql = query => {
  const ran = spawnSync("sqlite3", [join(made.directory, "report/report.sqlite"), query], {encoding: "utf8"});
  assert.equal(ran.status, 0, ran.stderr);
  return ran.stdout.trim();
};
const value = (record, id) => String(record.properties.find(property => property.id === id)?.value ?? "").trim();

const firstCells = (page, column = 0) =>
  page.evaluate(
    at =>
      [...document.querySelectorAll(".slick-row")]
        .sort((a, b) => a.dataset.row - b.dataset.row)
        .map(row => row.querySelectorAll(".slick-cell")[at].innerText.trim()),
    column,
  );
// Rows that are sorted come after the header's mark: while they are awaited, the count says so.
const sorted = async (page, order) => {
  await page.waitForFunction(
    wanted => (document.querySelector("[aria-sort]")?.getAttribute("aria-sort") ?? "") === wanted,
    order,
  );
  await loaded(page);
};

test("the page's own code is small", () => {
  const assets = join(made.directory, "report/assets");
  const sizes = readdirSync(assets).map(name => statSync(join(assets, name)).size);
  assert.ok(sizes.length > 1);
  assert.ok(sizes.reduce((sum, size) => sum + size, 0) <= 350_000, `${sizes} bytes`);
});

test("searching a table leaves the rows that have all words", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  await page.getByPlaceholder("Search this table").fill("fan nr");
  await counted(page, "1 of 63 records");
  assert.deepEqual(await firstCells(page), ["FAN4"]);
  await page.getByRole("button", {name: "Show all"}).click();
  await counted(page, "63 records");
  await page.context().close();
});

test("a column's filter knows parts, whole values, limits and the opposite", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  const filter = page.getByLabel("Filter Reading");
  const cases = [
    [">100", reading => Number(reading) > 100],
    ["=5400.000", reading => reading === "5400.000"],
    ["!na", reading => !reading.includes("na")],
  ];
  for (const [text, passes] of cases) {
    // Discrete readings such as 0x80 are numbers too.
    const wanted = records("SENSORINFO").filter(record => passes(value(record, "item2"))).length;
    await filter.fill(text);
    await counted(page, `${wanted} of 63 records`);
  }
  await page.context().close();
});

test("sorting is by number where values are numbers, and back", async () => {
  const page = await open(made, "#PINFO");
  await loaded(page);
  const slots = () => firstCells(page);
  const order = records("PINFO").map(record => value(record, "EID"));
  assert.deepEqual(await slots(), order);
  const header = page.getByRole("columnheader", {name: "EID:Slt"});
  await header.click();
  await sorted(page, "ascending");
  assert.deepEqual((await slots()).slice(0, 3), ["10:0", "10:1", "10:2"]);
  assert.equal((await slots()).at(-1), "10:11");
  await header.click();
  await sorted(page, "descending");
  assert.equal((await slots())[0], "10:11");
  await page.getByLabel("Sort").selectOption("as collected");
  await sorted(page, "");
  assert.deepEqual(await slots(), order);
  await page.context().close();
});

test("columns can be left out, of the screen and of what is taken along", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  await page.getByText("Columns", {exact: true}).click();
  await page.getByRole("checkbox", {name: "Units"}).uncheck();
  await page.waitForFunction(() => document.querySelectorAll(".slick-header-column").length === 9);
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("button", {name: "CSV"}).click(),
  ]);
  assert.equal(download.suggestedFilename(), "SENSORINFO.csv");
  const [head, first] = parse(readFileSync(await download.path(), "utf8"));
  assert.equal(head.length, 9);
  assert.ok(!head.includes("Units"));
  assert.equal(first[1].trim(), "48.000");
  await page.context().close();
});

test("copying takes what is shown", async () => {
  const page = await open(made, "#PINFO", {permissions: ["clipboard-read", "clipboard-write"]});
  await loaded(page);
  await page.getByPlaceholder("Search this table").fill("GHS");
  await counted(page, "1 of 12 records");
  // It says so for a moment only.
  await Promise.all([page.getByText("1 row copied").waitFor(), page.getByRole("button", {name: "Copy"}).click()]);
  const text = await page.evaluate(() => navigator.clipboard.readText());
  assert.equal(text.split("\n").length, 3);
  assert.match(text.split("\n")[1], /^10:7\t18\tGHS\t/);
  await page.context().close();
});

test("a deep link opens its record, and Enter opens the one under the cursor", async () => {
  const page = await open(made, "#EVENTLOG1@2500");
  await loaded(page);
  const panel = page.getByRole("region", {name: "Record 2500"});
  await panel.waitFor();
  const wanted = records("EVENTLOG1")[2499];
  assert.ok((await panel.innerText()).includes(value(wanted, "EventDescription")));
  await page.locator(".slick-cell.active").waitFor();
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("Enter");
  await page.getByRole("region", {name: "Record 2501"}).waitFor();
  await page.getByRole("button", {name: "Close"}).click();
  await page.getByRole("region", {name: "Record 2501"}).waitFor({state: "detached"});
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("searching everything counts hits by place: inventory, captures, events, tables", async () => {
  const page = await open(made);
  await page.evaluate(() => {
    globalThis.told = [];
    const look = () => globalThis.told.push(document.querySelector("main [role=status]")?.textContent ?? "");
    new MutationObserver(look).observe(document.body, {subtree: true, childList: true, characterData: true});
  });
  await page.getByPlaceholder("Search everything").fill("patrol read");
  await page.keyboard.press("Enter");
  const wanted = made.json.records.filter(record =>
    ["patrol", "read"].every(word =>
      record.properties.some(property => String(property.value).toLowerCase().includes(word)),
    ),
  );
  assert.ok(wanted.length > 100);
  await page.getByText(/^"patrol read": [\d,]+ hits in \d+ places$/).waitFor();
  const told = [...new Set(await page.evaluate(() => globalThis.told))];
  assert.ok(told.some(text => text.includes("looking in captures")));
  // Nothing is told as the result before everything was looked through.
  assert.equal(told.filter(text => /hits? in \d+ places?$/.test(text)).length, 1, told.join("\n"));
  const places = new Map(
    await page
      .locator("main section h2")
      .evaluateAll(titles => titles.map(title => title.textContent.trim().split(/ (?=[\d,]+ \w+$)/))),
  );
  const number = n => n.toLocaleString("en");
  const tables = [...places].filter(([, hits]) => /records?$/.test(hits));
  assert.equal(
    tables.reduce((sum, [, hits]) => sum + Number(hits.replace(/\D/g, "")), 0),
    wanted.length,
  );
  const events = Number(sql("SELECT count(*) FROM events WHERE text LIKE '%patrol%' AND text LIKE '%read%'"));
  assert.equal(places.get("Events"), `${number(events)} events`);
  const lines = readFileSync(join(made.directory, "c0_raidevents.txt"), "utf8")
    .slice(0, 1 << 20)
    .split("\n")
    .filter(line => /patrol/i.test(line) && /read/i.test(line)).length;
  assert.equal(places.get("c0_raidevents.txt"), `${number(lines)} lines`);
  await screenshot(page, "search");
  await page.locator("main").getByRole("link", {name: "EVENTLOG1", exact: true}).click();
  const there = wanted.filter(record => record.table === "EVENTLOG1").length;
  await counted(page, `${there.toLocaleString("en")} of 2,999 records`);
  await go(page, "#/search/EXS0002201");
  await page.locator("main section", {hasText: "Inventory"}).waitFor();
  await go(page, "#/search/EDAC MC1");
  await page.locator("main section", {hasText: "dmesg.log"}).getByRole("link").nth(1).click();
  await page.locator("mark[data-line]", {hasText: "EDAC MC1"}).waitFor();
  await page.context().close();
});

test("sensors are drawn against their thresholds, those with a finding marked", async () => {
  const {sensors} = made.json.inventory;
  const page = await open(made, "#/sensors");
  await page.locator(".sensor").first().waitFor();
  const marked = await page.locator(".sensor.poor .name, .sensor.bad .name").allInnerTexts();
  const told = made.json.findings.filter(({severity}) => severity !== "notice");
  const wanted = sensors.filter(({name}) => told.some(({subject}) => subject === `Sensor ${name}`));
  assert.ok(wanted.length > 5);
  assert.deepEqual(marked.toSorted(), wanted.map(({name}) => name).toSorted());
  // No number, no bar: its status is shown as it is.
  const plain = page.locator(".sensor", {hasText: "PSU2 Temp"});
  assert.equal(await plain.locator("svg").count(), 0);
  assert.equal(await plain.locator(".status").innerText(), "na");
  assert.ok((await checkSensors(page, sensors)) > 30);
  const bar = page.locator(".sensor", {hasText: "CPU1 Temp"}).first();
  await bar.locator("a").click();
  await page.locator("mark[data-line='1']").waitFor();
  assert.match(await page.locator("mark").innerText(), /^CPU1 Temp/);
  await page.context().close();
});

test("the drives of all controllers are drawn in their slots, volumes with their members", async () => {
  const page = await open(made, "#/storage");
  await page.locator(".slots .slot").first().waitFor();
  const {drives, controllers} = made.json.inventory;
  assert.equal(await page.locator(".controller").count(), controllers.length);
  const shown = await page.locator(".slots .slot:not(.empty)").allInnerTexts();
  assert.equal(shown.length, drives.length);
  drives.forEach(({enclosure, slot, state}, at) => {
    for (const text of [`${enclosure}:${slot}`, state]) assert.ok(shown[at].includes(text), `${text} in ${shown[at]}`);
  });
  const array = page.locator(".array", {hasText: "Drive group 1"}).first();
  assert.equal(await array.locator(".members li").count(), 4);
  assert.match(await array.locator(".volumes").innerText(), /Volume 2 "data pool"\s+critical:\s+Dgrd degraded\s+RAID5/);
  const bad = page.locator(".slots .slot.bad", {hasText: "10:5"});
  assert.match(await bad.innerText(), /Offln offline\s+group 1\s+1\.089 TiB SAS HDD[\s\S]*218 media errors/);
  await page.context().close();
});

test("a click on a slot shows everything about its drive, and the address leads there", async () => {
  const page = await open(made, "#/storage");
  await page.locator(".slots .slot.bad a", {hasText: "10:5"}).click();
  const panel = page.getByRole("region", {name: "Drive 10:5 of controller 0"});
  await panel.waitFor();
  await loaded(page);
  const text = await panel.innerText();
  for (const words of ["EX220005", "5000220000000005", "EX02", "41 °C", "218", "1.089 TiB", "state Offln"])
    assert.ok(text.includes(words), words);
  const finding = made.json.findings.find(({subject}) => subject.startsWith("Drive 10:5 of controller 0"));
  assert.equal(await panel.locator("a.evidence").count(), finding.evidence.length + 1);
  // Its lines: all of them name it, by place or serial, and none names 10:50 or another's.
  const lines = await panel.locator(".lines-of li code").allInnerTexts();
  assert.ok(lines.length > 5);
  for (const line of lines) assert.match(line, /^10:5\b|\/c0\/e10\/s5\b|EX220005/);
  assert.ok(lines.some(line => line.startsWith("10:5 ")) && lines.some(line => line.includes("/c0/e10/s5")));
  await panel.getByRole("link", {name: /^\d+ events$/}).click();
  const named = sql("SELECT count(*) FROM events WHERE source='controller 0' AND text LIKE '%(e0x0a/s5)%'");
  await counted(page, new RegExp(`^${named} of `));
  await page.goBack();
  await panel.waitFor();
  await page.keyboard.press("Escape");
  await panel.waitFor({state: "detached"});
  assert.equal(await address(page), "#/storage");
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("one list has the events of all sources, sorted by time, the repeated ones folded", async () => {
  const page = await open(made, "#/events");
  const total = sql("SELECT count(*) FROM events");
  const kinds = sql(
    "SELECT count(*) FROM (SELECT DISTINCT source, severity, ifnull(subject, char(0)), text FROM events)",
  );
  const number = n => Number(n).toLocaleString("en");
  await counted(page, `${number(total)} events, ${number(kinds)} rows`);
  assert.match(
    (await page.locator(".slick-row[data-row='0']").innerText()).trim(),
    /^2026-11-18 09:23:15\s+critical\s+bmc/,
  );
  // The bars hold all that have a time.
  const held = (await page.locator(".timeline title").allTextContents()).map(title =>
    Number(title.match(/^([\d,]+) event/)[1].replace(/,/g, "")),
  );
  assert.equal(
    held.reduce((sum, n) => sum + n, 0),
    Number(sql("SELECT count(*) FROM events WHERE time IS NOT NULL")),
  );
  await page.getByLabel("fold repeated").uncheck();
  await counted(page, `${number(total)} events`);
  const times = (await firstCells(page)).filter(time => time !== "no clock");
  assert.deepEqual(times, times.toSorted().toReversed());
  await page.getByRole("button", {name: "critical"}).click();
  await page.getByLabel("Source").selectOption("bmc");
  const critical = sql("SELECT count(*) FROM events WHERE source='bmc' AND severity='critical'");
  await counted(page, `${critical} of ${number(total)} events`);
  await page.getByPlaceholder("Search the events").fill("uncorrectable");
  const uncorrectable = sql("SELECT count(*) FROM events WHERE source='bmc' AND text LIKE '%uncorrectable%'");
  await counted(page, `${uncorrectable} of ${number(total)} events`);
  await page.locator(".slick-row .slick-cell").first().click();
  await page.getByRole("region", {name: "Event"}).getByRole("link", {name: "selinfo.txt, line 81"}).click();
  await page.locator("mark[data-line='81']").waitFor();
  assert.match(await page.locator("mark").innerText(), /Uncorrectable ECC/);
  await page.getByRole("link", {name: "Look among the events"}).click();
  await page.getByRole("region", {name: "Event"}).getByText("Memory: Uncorrectable ECC, DIMM(5)").waitFor();
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("a table's row leads to its line, and a line to its row, its event and its part", async () => {
  const page = await open(made, "#SENSORINFO@4");
  const told = page.getByRole("region", {name: "Record 4"}).getByRole("link", {name: "sensorinfo.txt, line 4"});
  await told.click();
  await page.locator("mark[data-line='4']").waitFor();
  const name = value(records("SENSORINFO")[3], "item1").trim();
  assert.ok((await page.locator("mark").innerText()).startsWith(name));
  await page.getByRole("link", {name: "Its sensor"}).waitFor();
  await page.getByRole("link", {name: "Row 4 of SENSORINFO"}).click();
  await page.getByRole("region", {name: "Record 4"}).getByText(name, {exact: true}).waitFor();
  // Each row of these tables is a line that has all its values.
  for (const [id, capture] of [
    ["SENSORINFO", "sensorinfo.txt"],
    ["SDRINFO", "sdrinfo.txt"],
    ["SELINFO", "selinfo.txt"],
  ]) {
    const lines = readFileSync(join(made.directory, capture), "utf8").split("\n");
    const all = records(id);
    for (const at of [0, 7, all.length - 1]) {
      await go(page, `#${id}@${at + 1}`);
      const link = page.getByRole("region", {name: `Record ${at + 1}`}).locator("a.evidence");
      await link.waitFor();
      const line = Number(/line (\d+)$/.exec(await link.innerText())[1]);
      for (const {value} of all[at].properties)
        assert.ok(lines[line - 1].includes(String(value).trim()), `${id} ${at}`);
    }
  }
  // A drive's line leads to all that is known of it.
  const drive = made.json.inventory.drives.find(({slot}) => slot === 4);
  await go(page, `#/capture/${drive.capture}@${drive.line}`);
  await page.getByRole("link", {name: "Its drive"}).click();
  await page.getByRole("region", {name: /^Drive 10:4/}).waitFor();
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("a span of events ends at the time of the collection", async () => {
  const page = await open(made, "#/events?fold=no");
  await page.getByLabel("Time", {exact: true}).selectOption("last 7 days");
  // machine.json tells when the server was recorded.
  const within = sql("SELECT count(*) FROM events WHERE time BETWEEN '2026-11-11T10:42:19' AND '2026-11-18T10:42:19'");
  await counted(page, new RegExp(`^${within} of `));
  const [first] = await page.locator(".timeline a").all();
  const held = Number((await first.locator("title").textContent()).match(/^([\d,]+) event/)[1].replace(/,/g, ""));
  await first.click();
  await counted(page, new RegExp(`^${held} of `));
  await page.goBack();
  await counted(page, new RegExp(`^${within} of `));
  await page.context().close();
});

test("events without a clock say so", async () => {
  const page = await open(made, "#/events?fold=no&sort=time");
  await counted(page, /^[\d,]+ events$/);
  assert.ok((await firstCells(page)).includes("no clock"));
  assert.doesNotMatch(await page.locator(".grid").innerText(), /1970|2070/);
  await page.getByText("28 without a time").waitFor();
  await page.getByText("no clock: in the order in which they were logged").waitFor();
  await page.context().close();
});

test("memory and power are drawn from the inventory", async () => {
  const page = await open(made, "#/memory");
  const {memory_modules: modules, power_supplies: supplies} = made.json.inventory;
  await page.locator(".modules .slot").first().waitFor();
  const slots = await page.locator(".modules .slot").allInnerTexts();
  assert.equal(slots.length, modules.length);
  modules.forEach(({slot, serial}, at) => {
    assert.ok(slots[at].includes(slot) && slots[at].includes(serial) && slots[at].includes("16 GiB"), slots[at]);
  });
  const text = page.locator("main");
  await text.getByText("Events about memory that name none of these slots").waitFor();
  await text.getByText("Memory: Uncorrectable ECC, DIMM(5)").first().waitFor();
  await go(page, "#/power");
  const bays = await page.locator(".supplies .slot").allInnerTexts();
  assert.equal(bays.length, supplies.length);
  assert.match(bays[1], /warning:\s+AC lost, output off\s+input: AC lost, 0 W/);
  await page.context().close();
});

test("what is filtered, sorted and open stands in the address, and back undoes it", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  const warm = records("SENSORINFO").filter(record => value(record, "item1").toLowerCase().includes("temp"));
  const ok = warm.filter(record => value(record, "item4") === "ok").length;
  await page.getByPlaceholder("Search this table").fill("temp");
  await counted(page, `${warm.length} of 63 records`);
  await page.getByRole("columnheader", {name: "Reading"}).click();
  await sorted(page, "ascending");
  await page.getByLabel("Filter Status").fill("=ok");
  await counted(page, `${ok} of 63 records`);
  await page.locator(".slick-row[data-row='0'] .slick-cell").first().click();
  const panel = page.locator(".chosen");
  await panel.waitFor();
  const [there, title] = [await address(page), await panel.getAttribute("aria-label")];
  assert.match(there, /^#SENSORINFO@\d+\?search=temp&sort=item2&filter\.item4=%3Dok$/);

  const other = await open(made, there);
  await counted(other, `${ok} of 63 records`);
  assert.equal(await other.locator(".chosen").getAttribute("aria-label"), title);
  assert.equal(await other.getByPlaceholder("Search this table").inputValue(), "temp");
  assert.equal(await other.getByLabel("Filter Status").inputValue(), "=ok");
  assert.equal(await other.locator("[aria-sort=ascending]").count(), 1);
  // Of the rows above an open record some more may be drawn than fit.
  assert.deepEqual((await firstCells(other)).slice(0, 8), (await firstCells(page)).slice(0, 8));
  await other.context().close();

  await page.goBack();
  await panel.waitFor({state: "detached"});
  await counted(page, `${ok} of 63 records`);
  await page.goBack();
  await sorted(page, "");
  await counted(page, `${warm.length} of 63 records`);
  await page.goForward();
  await sorted(page, "ascending");
  await counted(page, `${ok} of 63 records`);
  await page.context().close();
});

test("a capture is evidence: its command, lines that can be linked, and finding in it", async () => {
  const page = await open(made, "#/capture/c0_showall.txt@90");
  await page.locator("mark[data-line='90']").waitFor();
  assert.ok(await page.locator(".command").first().isVisible());
  await page.locator(".line-numbers a", {hasText: /^85$/}).click();
  await page.locator("mark[data-line='85']").waitFor();
  assert.equal(await address(page), "#/capture/c0_showall.txt@85");
  const text = readFileSync(join(made.directory, "c0_showall.txt"), "utf8").split("\n");
  const lines = text.flatMap((line, at) => (line.toLowerCase().includes("dgrd") ? [at + 1] : []));
  assert.ok(lines.length > 2);
  await page.getByPlaceholder("Find in this capture").fill("dgrd");
  await page.getByText(`${lines.length} lines`).waitFor();
  const next = lines.find(line => line > 85) ?? lines[0];
  await page.keyboard.press("Enter");
  await page.locator(`mark[data-line='${next}']`).waitFor();
  await page.getByText(`${lines.indexOf(next) + 1} of ${lines.length} lines`).waitFor();
  await page.getByRole("button", {name: "Previous"}).click();
  const before = lines.at(lines.indexOf(next) - 1);
  await page.locator(`mark[data-line='${before}']`).waitFor();
  assert.equal(await address(page), `#/capture/c0_showall.txt@${before}?find=dgrd`);
  assert.equal((await page.locator("pre.capture").textContent()).trimEnd(), text.join("\n").trimEnd());
  await page.context().close();
});

test("captures show size, command and text, and the modules' links lead to them", async () => {
  const page = await open(made, "#LSILINK");
  await loaded(page);
  await page.getByRole("link", {name: "c0_showall.txt"}).first().click();
  await page.locator("pre.capture").waitFor();
  const text = readFileSync(join(made.directory, "c0_showall.txt"), "utf8");
  assert.equal((await page.locator("pre.capture").textContent()).trimEnd(), text.trimEnd());
  assert.match(
    await page.locator(".command").last().innerText(),
    /storcli_x64' \/c0 show > '.*c0_showall\.txt'\s+.*ended well/,
  );
  const [file] = await Promise.all([
    page.waitForEvent("popup"),
    page.getByRole("link", {name: "open the file itself"}).click(),
  ]);
  await file.waitForLoadState();
  assert.ok((await file.locator("body").innerText()).startsWith(text.slice(0, 40).trim().split("\n")[0]));
  await go(page, "#/captures");
  const files = readdirSync(made.directory).filter(name => name !== "report");
  assert.equal(await page.locator("table.list").first().locator("tbody tr").count(), files.length);
  await page.context().close();
});

test("paper gets the rows, not the screen's window on them", async () => {
  const page = await open(made, "#EVENTLOG2");
  await loaded(page);
  const pdf = await page.pdf();
  assert.ok(pdf.length > 20_000);
  await page.emulateMedia({media: "print"});
  await page.evaluate(() => window.dispatchEvent(new Event("beforeprint")));
  assert.equal(await page.locator(".paper tbody tr").count(), records("EVENTLOG2").length);
  assert.ok(await page.locator(".paper table").isVisible());
  assert.ok(!(await page.locator(".grid").isVisible()));
  await page.evaluate(() => window.dispatchEvent(new Event("afterprint")));
  assert.equal(await page.locator(".paper tr").count(), 0);

  await page.context().close();
});

test("for paper there are a few pages with what matters", async () => {
  const page = await open(made, "#/print");
  await page.getByText("The newest 25 of 3,159 events").waitFor();
  await page.emulateMedia({media: "print"});
  const text = await page.locator("main").innerText();
  for (const words of ["EXS0002201", "Collected 2026-", "state Offln", "VRM CPU2 Temp", "2026-11-18 09:23:15", "10:11"])
    assert.ok(text.includes(words), words);
  const {drives, health} = made.json.inventory && {drives: made.json.inventory.drives, health: made.json.health};
  assert.equal(await page.locator(".slot:not(.empty)").count(), drives.length);
  for (const {subsystem, health: word} of health)
    assert.match(text, new RegExp(`${subsystem}\\s+${word}`, "i"), subsystem);
  const pdf = await page.pdf({format: "A4"});
  const pages = pdf.toString("latin1").match(/\/Type \/Page\b(?!s)/g).length;
  assert.ok(pages >= 2 && pages <= 4, `${pages} pages`);
  await page.context().close();
});

test("the colours can be chosen and are kept", async () => {
  const page = await open(made, "", {colorScheme: "light"});
  const background = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const light = await background();
  await page.getByRole("button", {name: "Colours: system"}).click();
  await page.getByRole("button", {name: "Colours: light"}).click();
  await page.getByRole("button", {name: "Colours: dark"}).waitFor();
  assert.notEqual(await background(), light);
  await page.reload();
  await page.getByRole("button", {name: "Colours: dark"}).waitFor();
  await page.context().close();
});

test("a missing data file is told, and the rest works", async () => {
  const file = join(made.directory, "report/data/34-SENSORINFO-1.js");
  renameSync(file, `${file}.away`);
  const page = await open(made, "#PINFO");
  await go(page, "#SENSORINFO");
  await page.getByRole("alert").getByText("is missing beside this page").waitFor();
  await go(page, "#PINFO");
  await loaded(page);
  assert.equal((await firstCells(page)).length, 12);
  renameSync(`${file}.away`, file);
  await page.context().close();
});
