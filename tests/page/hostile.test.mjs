// A server whose tools print what could hurt: everything stays text.
import assert from "node:assert/strict";
import {mkdirSync, readFileSync, writeFileSync} from "node:fs";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {parse} from "./csv.mjs";
import {changed, go, loaded, open, report, screenshot, start, stop, work} from "./browser.mjs";

const evil = [
  "<script>window.hurt=1</script>",
  "</script><script>window.hurt=1</script>",
  "<img src=x onerror=window.hurt=1>",
  "<a href='javascript:window.hurt=1'>click</a>",
  "<svg onload=window.hurt=1>",
  "&lt;b&gt; &amp;amp; &#60;",
  "');window.hurt=1;('",
  "\\');window.hurt=1;//",
  "${window.hurt=1} `${1}`",
  "\u001b[31mred\u001b[0m",
  "\u202egnp.exe\u200e",
  '=HYPERLINK("http://127.0.0.1:9/","x")',
  "@SUM(1)",
  "javascript:window.hurt=1",
  "<style>*{display:none}</style>",
  "__proto__",
  "\u2028\u2029line ends",
  "<meta http-equiv=refresh content=0;url=http://127.0.0.1:9/>",
  "W".repeat(5000),
  "",
];

const machine = join(work, "hostile machine");
mkdirSync(machine);
const file = (name, text) => writeFileSync(join(machine, name), text);
file(
  "fru.txt",
  Buffer.concat([Buffer.from(`${evil.join("\n")}\n`), Buffer.from([0x62, 0x61, 0x64, 0xff, 0xfe, 0x80, 0x0a])]),
);
file(
  "sensor.txt",
  evil
    .map(text => `${text.replaceAll("|", "/")} | na | ${text.replaceAll("|", "/")} | ns | na | na | na | na | na | na`)
    .join("\n"),
);
file(
  "events.txt",
  evil
    .map((text, at) =>
      [
        `seqNum: 0x${at.toString(16).padStart(8, "0")}`,
        "Time: Tue Nov 17 21:12:03 2026",
        "",
        "Code: 0x00000001",
        `Class: ${at % 2 ? text : 2}`,
        "Locale: 0x20",
        `Event Description: ${text}`,
        "Event Data:",
        "===========",
        text,
        "",
        "",
      ].join("\n"),
    )
    .join("\n"),
);
file(
  "drives.txt",
  `Drive /c0/e1/s1 :\nShield Counter = ${evil[0]}\nMedia Error Count = ${evil[2]}\nDrive Temperature = ${evil[4]}\n` +
    `SN = ${evil[1]}\nNeeds EKM Attention = ${evil[3]}\n`,
);
file("evil.html", "<html><script>window.hurt=1</script></html>");
file(
  "dmi.txt",
  `System Information\n\tManufacturer: ${evil[2]}\n\tProduct Name: ${evil[0]}\n\tSerial Number: ${evil[10]}\n`,
);
file("product.txt", "KP220 Rack Server\n");
file("count.txt", "Controller Count = 1\n");
file("empty.txt", "");

const {sensor, fru} = {sensor: "sensor.txt", fru: "fru.txt"};
const base = JSON.parse(
  readFileSync(join(import.meta.dirname, "../../samples/x86_64-kp220-megaraid/machine.json"), "utf8"),
);
// The recorded server's commands, with other answers.
const answers = [
  [/^ipmitool/, /sensor|sdr/, sensor],
  [/^ipmiutil/, /fru/, fru],
  [/^ipmitool/, /fru/, fru],
  [/^storcli/, /events/, "events.txt"],
  [/^storcli/, /eall/, "drives.txt"],
  [/^storcli/, /ctrlcount/, "count.txt"],
  [/^storcli/, /termlog/, fru],
  [/^dmidecode/, /^$/, "dmi.txt"],
];
const recorded = join(import.meta.dirname, "../../samples/x86_64-kp220-megaraid");
const commands = base.commands.map(command => {
  const found = answers.find(([tool, args]) => tool.test(command.tool) && args.test(command.args ?? ""));
  const copy = {...command, stdout: found ? found[2] : command.stdout};
  if (!found && copy.stdout) {
    mkdirSync(join(machine, copy.stdout, ".."), {recursive: true});
    writeFileSync(join(machine, copy.stdout), readFileSync(join(recorded, copy.stdout)));
  }
  delete copy.files;
  if (command.tool.startsWith("ipmiutil") && !copy.files) copy.files = {"evil.html": "evil.html"};
  return copy;
});
writeFileSync(join(machine, "machine.json"), JSON.stringify({...base, commands}));

before(start);
after(stop);
const made = report(machine);

const SYMBOL = /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/;

async function harmless(page, where) {
  const found = await page.evaluate(() => ({
    hurt: window.hurt,
    scripts: [...document.querySelectorAll("script")].map(script => script.getAttribute("src")),
    strange: document.querySelectorAll(
      "main img, main style, main iframe, main object, main meta, main [onerror], main [onload]",
    ).length,
    links: [...document.querySelectorAll("a[href]")].map(link => link.getAttribute("href")),
    text: document.querySelector("main").textContent,
  }));
  assert.equal(found.hurt, undefined, where);
  assert.deepEqual(
    found.scripts.filter(source => source && !/^(assets\/page|data\/[\w-]+)\.js$/.test(source)),
    [],
    where,
  );
  assert.ok(
    found.scripts.every(source => source),
    where,
  );
  assert.equal(found.strange, 0, where);
  for (const href of found.links) assert.match(href, /^(#|\.\.\/[^/]+$|report\.json$)/, where);
  assert.doesNotMatch(found.text, SYMBOL, where);
}

test("no view and no table comes alive", async () => {
  const page = await open(made);
  const views = await page.evaluate(() =>
    [...document.querySelectorAll("nav a")].map(link => link.getAttribute("href")),
  );
  assert.ok(views.includes("#FRUINFO") && views.includes("#/events") && views.includes("#/storage"));
  for (const view of [
    ...views,
    "#/search/hurt",
    "#/capture/fruinfo.txt",
    "#/capture/evil.html",
    "#EVENTLOG1@2",
    "#/events?open=2",
    "#/storage?drive=c0 e1 s1",
  ]) {
    await go(page, view);
    await loaded(page);
    await harmless(page, view);
  }
  await screenshot(page, "hostile");
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("the text is there, as text", async () => {
  const page = await open(made, "#FRUINFO");
  await loaded(page);
  const shown = await page.evaluate(() => [...document.querySelectorAll(".slick-row")].map(row => row.innerText));
  for (const text of [
    "<script>window.hurt=1</script>",
    "&lt;b&gt; &amp;amp; &#60;",
    "␛[31mred␛[0m",
    "[U+202E]gnp.exe[U+200E]",
    "bad\ufffd\ufffd\ufffd",
    "[U+2028][U+2029]line ends",
  ])
    assert.ok(
      shown.some(line => line.trim() === text),
      `${text} in ${JSON.stringify(shown)}`,
    );
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("button", {name: "CSV"}).click(),
  ]);
  const cells = parse(readFileSync(await download.path(), "utf8")).flat();
  assert.ok(cells.some(cell => cell.startsWith("'=HYPERLINK")));
  assert.ok(cells.some(cell => cell.startsWith("'@SUM")));
  assert.ok(!cells.some(cell => /^[=@]/.test(cell)));
  await page.context().close();
});

test("a capture that a browser would run is shown as text and not linked", async () => {
  const page = await open(made, "#/capture/evil.html");
  await page.locator("pre.capture").waitFor();
  assert.equal(await page.locator("pre.capture").textContent(), "<html><script>window.hurt=1</script></html>");
  assert.equal(await page.getByRole("link", {name: "open the file itself"}).count(), 0);
  await page.context().close();
});

test("the page's policy lets nothing in that it did not bring", async () => {
  const page = await open(made);
  const wanted = ["script-src-elem", "style-src-elem", "img-src", "frame-src", "connect-src", "eval"];
  const refused = await page.evaluate(async wanted => {
    const violations = [];
    document.addEventListener("securitypolicyviolation", event => violations.push(event.effectiveDirective));
    const add = (name, change) => {
      const element = document.createElement(name);
      change(element);
      document.body.append(element);
    };
    add("script", element => {
      element.textContent = "window.hurt = 1";
    });
    add("style", element => {
      element.textContent = "body { display: none }";
    });
    add("img", element => {
      element.src = "http://127.0.0.1:9/x.png";
    });
    add("iframe", element => {
      element.src = "http://127.0.0.1:9/";
    });
    add("script", element => {
      element.src = "http://127.0.0.1:9/x.js";
    });
    await fetch("http://127.0.0.1:9/").catch(() => {});
    // Later, because what a debugger evaluates may call eval().
    setTimeout(() => {
      try {
        window.eval("window.hurt = 1");
      } catch {
        violations.push("eval");
      }
    });
    // They are told one after another; a minute is enough on a busy machine.
    for (let i = 0; i < 600 && !wanted.every(one => violations.includes(one)); ++i)
      await new Promise(resolve => setTimeout(resolve, 100));
    return violations;
  }, wanted);
  for (const directive of wanted) assert.ok(refused.includes(directive), `${directive} in ${refused}`);
  assert.equal(await page.evaluate(() => window.hurt), undefined);
  await page.context().close();
});

// A report in which every text that a tool, a file or a machine may have chosen says something else. What only the
// program itself writes stays: names of data files, kinds, severities and words of health.
const OWN = new Set(["chunks", "data", "kind", "severity", "health", "version", "format"]);
const ODD = {
  "markup, escapes and marks": at =>
    `</script><img src=x onerror=window.hurt=1>'"&lt;\u202e\u001b[31m\u0000\u200b ${at}`,
  "very long": at => `${at}${"W".repeat(2000)}`,
  empty: () => "",
};

function everyText(value, odd) {
  let at = 0;
  const walk = (one, key) => {
    if (typeof one === "string") return OWN.has(key) ? one : odd(++at);
    if (Array.isArray(one)) return one.map(part => walk(part, key));
    if (one === null || typeof one !== "object") return one;
    for (const [name, part] of Object.entries(one)) one[name] = walk(part, name);
    return one;
  };
  walk(value, "");
  return at;
}

for (const [name, odd] of Object.entries(ODD)) {
  test(`every field of a report may be odd: ${name}`, async () => {
    let texts = 0;
    const strange = changed(report(recorded), overview => {
      texts = everyText(overview, odd);
    });
    assert.ok(texts > 1000, `${texts} texts`);
    // Where there is little room, odd texts need the most.
    const narrow = {width: 390, height: 844};
    for (const viewport of process.env["QV_TEST_LONG"] ? [narrow, {width: 1280, height: 900}] : [narrow]) {
      const page = await open(strange, "", {viewport});
      const links = await page.evaluate(() =>
        [...document.querySelectorAll("nav a")].map(link => link.getAttribute("href")),
      );
      assert.ok(links.length > 40);
      // Some tables: all are drawn by the same view. A drive, a line and an event are opened as well.
      const views = links
        .filter(link => link.startsWith("#/"))
        .concat(links.filter(link => !link.startsWith("#/")).slice(0, 6));
      await go(page, "#/storage");
      views.push(
        ...(await page.locator(".slots .slot a").evaluateAll(all => all.slice(0, 2).map(a => a.getAttribute("href")))),
      );
      await go(page, "#/captures");
      views.push(
        ...(await page.locator("main table a").evaluateAll(all => all.slice(0, 2).map(a => a.getAttribute("href")))),
      );
      for (const view of [...views, "#/events?open=2", "#/search/hurt"]) {
        const where = `${view.slice(0, 60)} at ${viewport.width}`;
        await go(page, view);
        await loaded(page);
        await harmless(page, where);
        const wide = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
        assert.ok(wide <= 0, `${where} is ${wide} pixels too wide`);
      }
      await screenshot(page, `odd ${name} ${viewport.width}`);
      assert.deepEqual(page.trouble, []);
      await page.context().close();
    }
  });
}
