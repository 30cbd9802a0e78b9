// A report with more rows than any browser could show at once.
import assert from "node:assert/strict";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {counted, go, loaded, open, report, start, stop, work} from "./browser.mjs";
import {writeLarge} from "./large.mjs";

const EVENTS = 20_000;
const LINES = 60_000;
const machine = join(work, "large machine");
writeLarge(machine, EVENTS, LINES);
const made = report(machine);
const rows = table => made.json.records.filter(record => record.table === table).map(record => record.properties);

before(start);
after(stop);

const shown = page =>
  page.evaluate(() =>
    [...document.querySelectorAll(".slick-row")]
      .sort((a, b) => a.dataset.row - b.dataset.row)
      .map(row => [...row.querySelectorAll(".slick-cell")].map(cell => cell.innerText.trim())),
  );

test("the last line can be reached, and only a window of rows exists", async () => {
  const lines = rows("FWTERMLOG");
  assert.ok(lines.length >= LINES);
  const page = await open(made, `#FWTERMLOG@${lines.length}`);
  await loaded(page);
  await page.locator(".slick-cell.active").waitFor();
  const window = await shown(page);
  assert.ok(window.length < 200, `${window.length} rows exist`);
  assert.equal(window.at(-1)[0], lines.at(-1)[0].value.trim());
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("filters and sorting see all parts of the data", async () => {
  const events = rows("EVENTLOG5");
  const description = event => event.find(({id}) => id === "EventDescription").value.trim();
  const page = await open(made, "#EVENTLOG5");
  await counted(page, `${events.length.toLocaleString("en")} records`);
  await page.getByPlaceholder("Search this table").fill("#19");
  const wanted = events.filter(event => description(event).includes("#19"));
  assert.ok(wanted.length > 500);
  await counted(page, `${wanted.length.toLocaleString("en")} of ${events.length.toLocaleString("en")} records`);
  await page.getByLabel("Sort").selectOption("Event Description");
  await page.waitForFunction(() => document.querySelector("[aria-sort=ascending]"));
  await loaded(page);
  const order = wanted.map(description).sort(new Intl.Collator("en", {numeric: true}).compare);
  assert.deepEqual(
    (await shown(page)).slice(0, 10).map(cells => cells[5]),
    order.slice(0, 10),
  );
  await page.context().close();
});

test("the data is in files that load when their table is opened", async () => {
  const page = await open(made, "#/captures");
  const scripts = () => page.asked.filter(name => name.endsWith(".js")).toSorted();
  assert.deepEqual(scripts(), ["overview.js", "page.js"]);
  await go(page, "#EVENTLOG1");
  await loaded(page);
  assert.deepEqual(scripts(), ["11-EVENTLOG1-1.js", "overview.js", "page.js"]);
  await page.context().close();
});
