// How the page of a large report behaves, in numbers: node large_page.mjs DIR prints rows for bench/table.
import {join} from "node:path";
import {pathToFileURL} from "node:url";
import {chromium} from "playwright-core";

const [directory] = process.argv.slice(2);
const index = pathToFileURL(join(directory, "report/index.html")).href;
const browser = await chromium.launch({
  executablePath: "/usr/bin/chromium",
  args: [
    "--no-sandbox",
    "--disable-gpu",
    "--disable-quic",
    "--no-first-run",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-sync",
    "--js-flags=--expose-gc",
    "--enable-precise-memory-info",
  ],
});

// The longest time in which the page answered nothing, while `work` ran.
async function watched(page, work) {
  await page.evaluate(() => {
    window.longest = 0;
    let last = performance.now();
    const tick = () => {
      const now = performance.now();
      window.longest = Math.max(window.longest, now - last);
      last = now;
      if (window.longest >= 0) setTimeout(tick);
    };
    tick();
  });
  const begin = performance.now();
  await work();
  const took = performance.now() - begin;
  const longest = await page.evaluate(() => {
    const found = window.longest;
    window.longest = -1;
    return found;
  });
  return {took_ms: Math.round(took), longest_freeze_ms: Math.round(longest)};
}

const heap = page =>
  page.evaluate(() => {
    window.gc();
    return Math.round(performance.memory.usedJSHeapSize / 2 ** 20);
  });

async function openings(times) {
  const all = [];
  for (let i = 0; i < times; ++i) {
    const page = await (await browser.newContext({viewport: {width: 1280, height: 900}})).newPage();
    await page.goto(index);
    await page.locator("main h1").waitFor();
    all.push(
      await page.evaluate(async () => {
        const paint = await new Promise(resolve =>
          new PerformanceObserver(list => resolve(list.getEntries()[0].startTime)).observe({
            type: "largest-contentful-paint",
            buffered: true,
          }),
        );
        return paint;
      }),
    );
    await page.context().close();
  }
  return Math.round(all.toSorted((a, b) => a - b)[Math.floor(times / 2)]);
}

// Waits until a list says how many it has, and is done: it tells its last rows together with that.
const until = (page, pattern) =>
  page.waitForFunction(
    wanted => {
      const told = document.querySelector(".tools .count")?.textContent ?? "";
      return new RegExp(wanted).test(told) && !/^loading|\.\.\.$/.test(told);
    },
    pattern,
    {timeout: 120_000},
  );

async function opened() {
  const page = await (await browser.newContext({viewport: {width: 1280, height: 900}})).newPage();
  await page.goto(`${index}#/captures`);
  await page.locator("main h1").waitFor();
  return page;
}

// From the address to the first rows and to all of them.
async function listed(page, hash) {
  const first = await watched(page, async () => {
    await page.evaluate(to => {
      location.hash = to;
    }, hash);
    await page.locator(".slick-row").first().waitFor();
  });
  return {"first rows": first, "all rows": await watched(page, () => until(page, "record|event"))};
}

async function table(id) {
  const page = await opened();
  const result = await listed(page, `#${id}`);
  result["scroll through all"] = await watched(page, () =>
    page.evaluate(async () => {
      const view = document.querySelector(".slick-viewport-left.slick-viewport-top");
      const steps = 60;
      for (let step = 0; step <= steps; ++step) {
        view.scrollTop = (view.scrollHeight * step) / steps;
        await new Promise(resolve => requestAnimationFrame(() => requestAnimationFrame(resolve)));
      }
    }),
  );
  result["filter"] = await watched(page, async () => {
    await page.getByPlaceholder("Search this table").fill("9999");
    await until(page, " of ");
  });
  result["sort"] = await watched(page, async () => {
    await page.getByRole("button", {name: "Show all"}).click();
    await page.getByLabel("Sort").selectOption({index: 1});
    await page.waitForFunction(() => document.querySelector("[aria-sort]"));
    await until(page, "record");
  });
  result.heap_mib = await heap(page);
  await page.context().close();
  return result;
}

// The events of all sources: sorted by time, the repeated ones folded; each as they are; sorted by severity; searched.
async function events() {
  const page = await opened();
  const result = await listed(page, "#/events");
  const to = hash =>
    watched(page, async () => {
      await page.evaluate(
        one =>
          new Promise(heard => {
            window.addEventListener("hashchange", () => setTimeout(heard), {once: true});
            location.hash = one;
          }),
        hash,
      );
      await until(page, "event");
    });
  result["unfold"] = await to("#/events?fold=no");
  result["sort"] = await to("#/events?fold=no&sort=severity");
  result["filter"] = await to("#/events?fold=no&text=9999");
  result["fold"] = await to("#/events");
  result.heap_mib = await heap(page);
  await page.context().close();
  return result;
}

const rows = [{row: "page", what: "first paint", took_ms: await openings(5)}];
const note = (what, {took_ms, longest_freeze_ms}, more = {}) =>
  rows.push({row: "page", what, took_ms, longest_freeze_ms, ...more});
for (const [id, measure] of [
  ["EVENTLOG5", table],
  ["FWTERMLOG", table],
  ["events", events],
]) {
  const {heap_mib, ...steps} = await measure(id);
  for (const [step, measured] of Object.entries(steps)) note(`${id}: ${step}`, measured);
  rows.push({row: "page", what: `${id}: memory of its values and the page`, heap_mib});
}
await browser.close();
console.log(JSON.stringify(rows, null, 1));
