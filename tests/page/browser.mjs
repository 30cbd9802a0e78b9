// Debian's Chromium, and reports to open in it.
import {spawnSync} from "node:child_process";
import {cpSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync} from "node:fs";
import {tmpdir} from "node:os";
import {basename, join, resolve} from "node:path";
import {pathToFileURL} from "node:url";
import {runInNewContext} from "node:vm";
import {chromium} from "playwright-core";
import {inside} from "./inside.mjs";

export const top = resolve(import.meta.dirname, "../..");
export const samples = join(top, "samples");
const qvhost = process.env.QVHOST;
if (!qvhost) throw new Error("QVHOST names the program to test");
export const pictures = process.env.QV_SCREENSHOTS ?? "";

export const work = mkdtempSync(join(tmpdir(), "qv-page-"));
process.on("exit", () => rmSync(work, {recursive: true, force: true}));

// Recorded servers of which a collection is incomplete: tools that hang, a module of which every tool fails.
const incomplete = new Set(["x86_64-kp110-storage-faults", "x86_64-kp120-tools-killed"]);

// Collects from a recorded server; once for each.
const reports = new Map();
export function report(machine) {
  if (!reports.has(machine)) {
    const directory = join(work, `report ${reports.size}`);
    const isIncomplete = incomplete.has(basename(machine));
    const patient = isIncomplete ? "5" : "300"; // seconds, which only a tool that hangs is to take
    const ran = spawnSync(qvhost, ["replay", machine, "--log-dir", directory, "--quiet", "--tool-timeout", patient], {
      encoding: "utf8",
    });
    if (ran.status !== (isIncomplete ? 3 : 0)) throw new Error(`${machine}: ${ran.stderr}`);
    const json = JSON.parse(readFileSync(join(directory, "report/report.json"), "utf8"));
    reports.set(machine, {directory, json, summary: ran.stdout});
  }
  return reports.get(machine);
}

// The report with its overview's data changed.
export function changed(made, change) {
  const directory = join(work, `changed ${Math.random()}`);
  cpSync(made.directory, directory, {recursive: true});
  const file = join(directory, "report/data/overview.js");
  let json;
  runInNewContext(readFileSync(file, "utf8"), {
    qv: {
      overview: text => {
        json = JSON.parse(text);
      },
    },
  });
  change(json);
  const text = JSON.stringify(json).replace(/[\\']/g, "\\$&");
  writeFileSync(file, `qv.overview('${text}')\n`);
  return {directory};
}

// A browser among other tests on two processors may stand still for a while.
const patience = 600_000; // milliseconds

let browser;
export async function start() {
  browser = await chromium.launch({
    executablePath: "/usr/bin/chromium",
    timeout: patience,
    args: [
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
  });
}
export const stop = () => browser.close();

// Opens a report's page. What it complains about and asks the network for is in `trouble`, the files
// it loads are in `asked`.
export async function open({directory}, hash = "", options = {}) {
  const context = await browser.newContext({viewport: {width: 1280, height: 900}, acceptDownloads: true, ...options});
  context.setDefaultTimeout(patience);
  await context.addInitScript(inside);
  const page = await context.newPage();
  page.trouble = [];
  page.on("console", message => {
    if (["error", "warning"].includes(message.type())) page.trouble.push(message.text());
  });
  page.on("pageerror", error => page.trouble.push(error.message));
  page.asked = [];
  page.on("request", request => {
    page.asked.push(request.url().replace(/.*\//, ""));
    if (!/^(file|data|blob):/.test(request.url())) page.trouble.push(`request ${request.url()}`);
  });
  await page.goto(pathToFileURL(join(directory, "report/index.html")).href + hash);
  await page.locator("main h1, main .empty").first().waitFor();
  return page;
}

// Goes there. The page draws a view in the event that tells of the new address; what the view loads comes later.
export const go = (page, hash) => page.evaluate(to => globalThis.inside.go(to), hash);

// The address by now: what the browser tells of a page's address comes later than what the page draws.
export const address = page => page.evaluate(() => location.hash);

// Waits until nothing says that it is still loading, reading, looking or sorting.
export const loaded = page => page.evaluate(() => globalThis.inside.until(globalThis.inside.isLoaded).then(() => {}));

// Waits until a list says how many rows it has, as a text or as a pattern that the text fits. What it says is drawn
// together with its rows, and ends in "..." as long as others are shown.
export const counted = (page, wanted) =>
  page.waitForFunction(
    ({text, pattern}) => {
      const said = document.querySelector(".tools .count")?.textContent ?? "";
      return text === undefined ? new RegExp(pattern).test(said) && !said.endsWith("...") : said === text;
    },
    typeof wanted === "string" ? {text: wanted} : {pattern: wanted.source},
  );

export async function screenshot(page, name) {
  if (pictures === "") return;
  mkdirSync(pictures, {recursive: true});
  await page.screenshot({path: join(pictures, `${name}.png`)});
}
