// What people do with a page: search, sort, filter, choose columns, copy, follow links, print.
import assert from "node:assert/strict";
import {readFileSync, renameSync} from "node:fs";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {parse} from "./csv.mjs";
import {go, loaded, open, report, samples, screenshot, start, stop} from "./browser.mjs";

before(start);
after(stop);

const made = report(join(samples, "x86_64-kp220-megaraid"));
const records = table => made.json.records.filter(record => record.table === table);
const value = (record, id) => String(record.properties.find(property => property.id === id)?.value ?? "").trim();

const firstCells = (page, column = 0) =>
  page.evaluate(
    at =>
      [...document.querySelectorAll(".slick-row")]
        .sort((a, b) => a.dataset.row - b.dataset.row)
        .map(row => row.querySelectorAll(".slick-cell")[at].innerText.trim()),
    column,
  );
const until = (page, text) =>
  page.waitForFunction(wanted => document.querySelector(".tools .count")?.textContent.startsWith(wanted), text);

test("searching a table leaves the rows that have all words", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  await page.getByPlaceholder("Search this table").fill("fan nr");
  await until(page, "1 of 63");
  assert.deepEqual(await firstCells(page), ["FAN4"]);
  await page.getByRole("button", {name: "Show all"}).click();
  await until(page, "63 records");
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
    await until(page, `${wanted} of 63`);
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
  await page.waitForFunction(() => document.querySelector("[aria-sort=ascending]"));
  assert.deepEqual((await slots()).slice(0, 3), ["10:0", "10:1", "10:2"]);
  assert.equal((await slots()).at(-1), "10:11");
  await header.click();
  await page.waitForFunction(() => document.querySelector("[aria-sort=descending]"));
  await page.waitForFunction(
    () => document.querySelector(".slick-row[data-row='0'] .slick-cell").innerText.trim() === "10:11",
  );
  await page.getByLabel("Sort").selectOption("as collected");
  await page.waitForFunction(() => !document.querySelector("[aria-sort]"));
  await page.waitForFunction(
    () => document.querySelector(".slick-row[data-row='0'] .slick-cell").innerText.trim() === "10:0",
  );
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
  await until(page, "1 of 12");
  await page.getByRole("button", {name: "Copy"}).click();
  await page.getByText("1 row copied").waitFor();
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

test("searching everything finds every record and leads to it", async () => {
  const page = await open(made);
  await page.getByPlaceholder("Search everything").fill("patrol read");
  await page.keyboard.press("Enter");
  const wanted = made.json.records.filter(record =>
    ["patrol", "read"].every(word =>
      record.properties.some(property => String(property.value).toLowerCase().includes(word)),
    ),
  );
  assert.ok(wanted.length > 100);
  await page.getByText(`"patrol read": ${wanted.length.toLocaleString("en")} records`).waitFor();
  await screenshot(page, "search");
  await page.getByRole("link", {name: "EVENTLOG1", exact: true}).last().click();
  const there = wanted.filter(record => record.table === "EVENTLOG1").length;
  await until(page, `${there.toLocaleString("en")} of 2,999`);
  await page.context().close();
});

test("sensors are drawn against their thresholds, those with a finding marked", async () => {
  const {sensors} = made.json.inventory;
  const page = await open(made, "#/sensors");
  await page.locator(".sensor").first().waitFor();
  assert.equal(await page.locator(".sensor").count(), sensors.length);
  const marked = await page.locator(".sensor.poor .name, .sensor.bad .name").allInnerTexts();
  const told = made.json.findings.filter(({severity}) => severity !== "notice");
  const wanted = sensors.filter(({name}) => told.some(({subject}) => subject === `Sensor ${name}`));
  assert.ok(wanted.length > 5);
  assert.deepEqual(marked.toSorted(), wanted.map(({name}) => name).toSorted());
  // No number, no bar: its status is shown as it is.
  const plain = page.locator(".sensor", {hasText: "PSU2 Temp"});
  assert.equal(await plain.locator("svg").count(), 0);
  assert.equal(await plain.locator(".status").innerText(), "na");
  // A mark lies where its value lies between two thresholds.
  const bar = page.locator(".sensor", {hasText: "CPU1 Temp"}).first();
  const [lines, mark] = await bar.evaluate(element => [
    [...element.querySelectorAll("line.threshold")].map(line => line.x1.baseVal.value),
    element.querySelector("rect.mark").x.baseVal.value + 2.5,
  ]);
  const fraction = (mark - lines[1]) / (lines[2] - lines[1]); // 5, 48 and 90 degrees
  assert.ok(Math.abs(fraction - (48 - 5) / (90 - 5)) < 0.001, String(fraction));
  await bar.locator("a").click();
  await page.locator("mark[data-line='1']").waitFor();
  assert.match(await page.locator("mark").innerText(), /^CPU1 Temp/);
  await page.context().close();
});

test("the drives of all controllers are drawn as slots, arrays with their members", async () => {
  const page = await open(made, "#/drives");
  await page.locator(".slots .slot").first().waitFor();
  const {drives, controllers} = made.json.inventory;
  assert.equal(await page.locator(".controller").count(), controllers.length);
  const shown = await page.locator(".slots .slot").allInnerTexts();
  assert.equal(shown.length, drives.length);
  drives.forEach(({enclosure, slot, state, model, serial}, at) => {
    for (const text of [`${enclosure}:${slot}`, state, model, serial ?? ""])
      assert.ok(shown[at].includes(text), `${text} in ${shown[at]}`);
  });
  const bad = page.locator(".slots .slot.bad", {hasText: "10:5"});
  assert.match(await bad.innerText(), /Offln offline[\s\S]*1\.089 TiB SAS HDD[\s\S]*41 °C[\s\S]*218 media errors/);
  const array = page.locator(".array", {hasText: "Drive group 1"}).first();
  assert.equal(await array.locator(".members .slot").count(), 4);
  assert.match(await array.locator(".volumes").innerText(), /2 "data pool"\s+critical:\s+Dgrd degraded\s+RAID5/);
  await array.locator(".members a", {hasText: "10:5"}).click();
  await page.locator("mark").waitFor();
  assert.match(await page.locator("mark").innerText(), /^10:5 +16 Offln/);
  await page.context().close();
});

test("events are drawn by class, all of them", async () => {
  const page = await open(made, "#/events");
  await page.locator(".timeline").first().waitFor();
  const events = ["EVENTLOG1", "EVENTLOG2"].flatMap(records);
  const classes =
    Map.groupBy?.(events, event => value(event, "Class")) ??
    events.reduce(
      (map, event) => map.set(value(event, "Class"), [...(map.get(value(event, "Class")) ?? []), event]),
      new Map(),
    );
  const rows = await page.locator("table").first().locator("tbody tr").allInnerTexts();
  const shown = new Map(
    rows
      .map(row => row.split("\t"))
      .map(([title, count]) => [title.split(",")[0].trim(), Number(count.replace(/,/g, ""))]),
  );
  assert.deepEqual(shown, new Map([...shown.keys()].map(id => [id, classes.get(id)?.length])));
  assert.equal(
    [...shown.values()].reduce((sum, n) => sum + n, 0),
    events.length,
  );
  // The bars of a lane hold all its dated events.
  const held = await page.locator(".timeline").first().locator("title").allTextContents();
  const dated = events.filter(event => /^[A-Z][a-z]{2} [A-Z]/.test(value(event, "Time"))).length;
  assert.equal(
    held.reduce((sum, title) => sum + Number(title.match(/^([\d,]+) event/)[1].replace(/,/g, "")), 0),
    dated,
  );
  await page.locator(".timeline a rect.bad").first().click();
  await page.waitForFunction(() => /^#EVENTLOG\d@\d+$/.test(location.hash));
  await page.locator(".chosen").waitFor();
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
    /storcli_x64' \/c0 show > '.*c0_showall\.txt'\n.*ended well/,
  );
  const [file] = await Promise.all([
    page.waitForEvent("popup"),
    page.getByRole("link", {name: "open the file itself"}).click(),
  ]);
  await file.waitForLoadState();
  assert.ok((await file.locator("body").innerText()).startsWith(text.slice(0, 40).trim().split("\n")[0]));
  await go(page, "#/captures");
  assert.equal(await page.locator("table.list").first().locator("tbody tr").count(), 33);
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

  await page.emulateMedia({media: "screen"});
  await go(page, "#/print");
  await page.getByRole("button", {name: "Print"}).and(page.locator(":enabled")).waitFor();
  const filled = made.json.modules.flatMap(module => module.tables).filter(table => records(table.id).length > 0);
  assert.equal(await page.locator(".whole section").count(), filled.length);
  await page.getByText("2,799 more rows").waitFor();
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
