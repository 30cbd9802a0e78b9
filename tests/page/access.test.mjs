// For everyone: roles, labels and contrast by axe-core, the keyboard, and zoom.
import assert from "node:assert/strict";
import {readFileSync} from "node:fs";
import {createRequire} from "node:module";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {address, go, loaded, open, report, samples, start, stop} from "./browser.mjs";

before(start);
after(stop);

const made = report(join(samples, "x86_64-kp220-megaraid"));
const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const views = [
  "#/overview",
  "#/sensors",
  "#/storage",
  "#/storage?drive=c0 e10 s5",
  "#/power",
  "#/memory",
  "#/system",
  "#/tables",
  "#/events",
  "#/events?open=200&fold=no",
  "#/captures",
  "#/capture/dmidecode.log",
  "#/capture/c0_showall.txt@90",
  "#/search/fan",
  "#/print",
  "#SENSORINFO",
  "#EVENTLOG1@3",
  "#FWTERMLOG",
  "#RAIDINFO",
  "#S1TABLE1",
  "#ARRAY",
  "#LSILINK",
];

const wide = {width: 1280, height: 900};
const narrow = {width: 390, height: 800};
// Contrast depends on the colours, what overlaps on the width: two of the four show each once.
const looks = [
  ["light", "wide", wide],
  ["dark", "narrow", narrow],
];
if (process.env["QV_TEST_LONG"]) looks.push(["light", "narrow", narrow], ["dark", "wide", wide]);

for (const [colorScheme, name, viewport] of looks) {
  test(`axe finds nothing wrong, ${colorScheme}, ${name}`, async () => {
    const page = await open(made, "", {colorScheme, viewport});
    const found = [];
    for (const view of views) {
      await go(page, view);
      await loaded(page);
      await page.evaluate(axe);
      const {violations} = await page.evaluate(() => window.axe.run(document, {resultTypes: ["violations"]}));
      for (const {id, nodes} of violations)
        found.push(
          `${view}: ${id}: ${nodes
            .slice(0, 3)
            .map(node => node.html.slice(0, 160))
            .join(" | ")}`,
        );
    }
    assert.deepEqual(found, []);
    await page.context().close();
  });
}

test("the keyboard alone reaches content, tables and records", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  await page.keyboard.press("Tab");
  assert.equal(await page.evaluate(() => document.activeElement.textContent), "Skip to the content");
  await page.keyboard.press("Enter");
  assert.equal(await page.evaluate(() => document.activeElement.tagName), "MAIN");
  const reached = [];
  for (let i = 0; i < 40 && !reached.includes("grid"); ++i) {
    await page.keyboard.press("Tab");
    reached.push(
      await page.evaluate(() => {
        const active = document.activeElement;
        return active.closest(".grid") && !active.matches("input")
          ? "grid"
          : active.textContent.trim() || active.placeholder || active.tagName;
      }),
    );
  }
  assert.ok(reached.includes("Search this table"), reached.join(", "));
  assert.ok(reached.includes("Copy") && reached.includes("CSV"), reached.join(", "));
  assert.ok(reached.includes("grid"), reached.join(", "));
  await page.context().close();
});

test("a table is one Tab stop, with arrows inside", async () => {
  const page = await open(made, "#SENSORINFO");
  await loaded(page);
  const active = () =>
    page.evaluate(() => {
      const one = document.activeElement;
      if (one.closest(".slick-cell")) return `cell ${one.closest(".slick-row").dataset.row}`;
      if (one.closest(".grid")) return one.matches("input") ? "filter" : `heading ${one.textContent.trim()}`;
      return one.textContent.trim();
    });
  const press = async (...keys) => {
    for (const key of keys) await page.keyboard.press(key);
    return active();
  };
  await page.getByRole("button", {name: "CSV"}).focus();
  assert.equal(await press("Tab"), "cell 0");
  assert.equal(await press("ArrowDown", "ArrowDown", "ArrowRight"), "cell 2");
  assert.equal(await press("Shift+Tab"), "CSV");
  assert.equal(await press("Tab"), "cell 2");
  assert.equal(await press("Enter"), "cell 2");
  const panel = page.getByRole("region", {name: "Record 3"});
  await panel.waitFor();
  // What follows the table is the open record.
  assert.equal(await press("Tab"), "Copy");
  assert.equal(await press("Shift+Tab"), "cell 2");
  await page.keyboard.press("Escape");
  await panel.waitFor({state: "detached"});
  assert.equal(await press("ArrowUp", "ArrowUp", "ArrowUp"), "filter");
  assert.equal(await press("ArrowUp"), "heading Reading");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.querySelector("[aria-sort=ascending]"));
  await loaded(page);
  assert.equal(await press("ArrowDown", "ArrowDown"), "cell 0");
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("the keys do what the list of keys says", async () => {
  const page = await open(made);
  await page.keyboard.press("?");
  const keys = page.getByRole("dialog", {name: "Keys"});
  await keys.waitFor();
  await page.keyboard.press("Escape");
  await keys.waitFor({state: "detached"});
  await page.keyboard.press("/");
  await page.keyboard.type("fan");
  await page.keyboard.press("Enter");
  await page.getByRole("heading", {level: 1, name: "Search"}).waitFor();
  assert.equal(await address(page), "#/search/fan");
  await page.context().close();
});

test("at 200 % and on a small screen nothing is cut off", async () => {
  for (const viewport of [
    {width: 640, height: 450},
    {width: 320, height: 568},
  ]) {
    const page = await open(made, "", {viewport, deviceScaleFactor: 2});
    for (const view of views) {
      await go(page, view);
      await loaded(page);
      const over = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
      assert.ok(over <= 0, `${view} at ${viewport.width} is ${over} pixels too wide`);
    }
    await page.context().close();
  }
});

test("screen readers hear how many rows there are and which this is", async () => {
  const page = await open(made, "#EVENTLOG1@2500");
  await loaded(page);
  const grid = page.getByRole("grid", {name: "EVENTLOG1, 2,999 rows"});
  await grid.waitFor();
  assert.equal(await grid.getAttribute("aria-rowcount"), "3000");
  assert.equal(await page.locator(".slick-row:has(.slick-cell.active)").getAttribute("aria-rowindex"), "2501");
  await page.context().close();
});
