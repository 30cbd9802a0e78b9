// Each recorded server's page: it opens without complaint and shows what report.json says.
import assert from "node:assert/strict";
import {readdirSync, readFileSync, statSync} from "node:fs";
import {join} from "node:path";
import {after, before, describe, test} from "node:test";
import {parse} from "./csv.mjs";
import {go, loaded, open, report, samples, screenshot, start, stop} from "./browser.mjs";

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

const unguarded = cell => cell.replace(/^'(?=\s*[=+\-@\t\r])/, "");

// Chromium drops the downloads of a page that begins more than ten within a second.
const downloads = [];
async function pace(page) {
  const wait = (downloads.at(-10) ?? -Infinity) + 1200 - performance.now();
  if (wait > 0) await page.waitForTimeout(wait);
  downloads.push(performance.now());
}

async function csvOf(page) {
  await pace(page);
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("button", {name: "CSV"}).click(),
  ]);
  return parse(readFileSync(await download.path(), "utf8"));
}

const machines = readdirSync(samples).filter(name => statSync(join(samples, name)).isDirectory());

for (const machine of machines) {
  describe(machine, () => {
    test("every table agrees with report.json", async () => {
      const made = report(join(samples, machine));
      const page = await open(made);
      for (const table of made.json.modules.flatMap(module => module.tables)) {
        const {labels, rows} = expected(made.json, table);
        await go(page, `#${encodeURIComponent(table.id)}`);
        await page.getByRole("heading", {level: 1, name: table.id}).waitFor();
        if (rows.length === 0) {
          assert.match(await page.locator("main .empty").innerText(), /^No records(: .+|\.)$/);
          continue;
        }
        await loaded(page);
        assert.match(
          await page.locator(".tools .count").innerText(),
          new RegExp(`^${rows.length.toLocaleString("en")} records?`),
        );
        const [head, ...body] = await csvOf(page);
        assert.deepEqual(
          head,
          labels.map(label => label),
        );
        assert.deepEqual(
          body.map(row => row.map(unguarded)),
          rows,
          table.id,
        );

        // What is on the screen is the beginning of it.
        const shown = await page.evaluate(() =>
          [...document.querySelectorAll(".slick-row")]
            .sort((a, b) => a.dataset.row - b.dataset.row)
            .slice(0, 5)
            .map(row => row.querySelector(".slick-cell").innerText),
        );
        const flat = text => text.replace(/\s+/g, " ").trim();
        shown.forEach((text, at) => {
          if (!rows[at][0].includes("<a href")) assert.equal(flat(text), flat(rows[at][0]).replace(/\n/g, " ↵ "));
        });
      }
      assert.deepEqual(page.trouble, []);
      await page.context().close();
    });

    test("every view opens, wide and narrow, light and dark", async () => {
      const made = report(join(samples, machine));
      const looks = [
        ["wide light", {viewport: {width: 1280, height: 900}, colorScheme: "light"}],
        ["narrow dark", {viewport: {width: 390, height: 800}, colorScheme: "dark"}],
        ["wide dark", {viewport: {width: 1280, height: 900}, colorScheme: "dark"}],
        ["narrow light", {viewport: {width: 390, height: 800}, colorScheme: "light"}],
      ];
      for (const [look, options] of process.env.QV_ALL_LOOKS ? looks : looks.slice(0, 2)) {
        const page = await open(made, "", options);
        const views = await page.evaluate(() =>
          [...document.querySelectorAll("nav .subjects a")]
            .map(link => link.getAttribute("href"))
            .filter(href => href.startsWith("#/")),
        );
        assert.ok(views.includes("#/overview") && views.includes("#/captures"));
        for (const view of views) {
          await go(page, view);
          await page.waitForFunction(
            () => !/\.\.\.$/.test(document.querySelector("main .lead, main p")?.innerText ?? ""),
          );
          const wide = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
          assert.ok(wide <= 0, `${view} is ${wide} pixels too wide`);
          await screenshot(page, `${machine} ${view.slice(2)} ${look}`);
        }
        assert.deepEqual(page.trouble, []);
        await page.context().close();
      }
    });
  });
}
