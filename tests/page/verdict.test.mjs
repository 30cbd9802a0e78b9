// The first screen shows the report's verdict, and each finding leads to the line that says so.
import assert from "node:assert/strict";
import {spawnSync} from "node:child_process";
import {cpSync, mkdirSync, readFileSync} from "node:fs";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {changed, go, loaded, open, report, samples, start, stop, work} from "./browser.mjs";

before(start);
after(stop);

const sample = name => report(join(samples, name));

for (const name of ["x86_64-kp220-megaraid", "x86_64-kp420-two-megaraid", "x86_64-kn100-adaptec"]) {
  test(`every finding of ${name} leads to its line`, async () => {
    const made = sample(name);
    const {findings} = made.json;
    assert.ok(findings.length > 2);
    const page = await open(made);
    const shown = await page.locator(".findings > li").evaluateAll(lines =>
      lines.map(line => ({
        severity: line.classList[1],
        text: line.textContent,
        links: [...line.querySelectorAll("a.evidence")].map(link => link.getAttribute("href")),
        first: line.querySelector("a").getAttribute("href"),
      })),
    );
    assert.deepEqual(
      shown.map(({severity}) => severity),
      findings.map(({severity}) => severity),
    );
    for (const [at, {subject, says, evidence}] of findings.entries()) {
      assert.ok(shown[at].text.includes(subject) && shown[at].text.includes(says), subject);
      assert.equal(shown[at].links.length, evidence.length);
      assert.equal(shown[at].first, shown[at].links[0]);
      for (const [nth, {capture, line}] of evidence.entries()) {
        await go(page, shown[at].links[nth]);
        const text = readFileSync(join(made.directory, capture));
        if (line === 0 || text.length === 0) continue;
        const wanted = text.toString("latin1").split("\n")[line - 1];
        if (
          text
            .subarray(0, 1 << 20)
            .toString("latin1")
            .split("\n").length <= line
        ) {
          await page.getByText(`Line ${line} is not in the shown part`).waitFor();
          continue;
        }
        const mark = page.locator(`h1:has-text("${capture}") ~ .capture-text mark[data-line="${line}"]`);
        await mark.waitFor();
        assert.equal((await mark.textContent()).trim(), wanted.trim(), `${capture}, line ${line}`);
        // In sight: in its box, and the box in the window.
        assert.ok(
          await mark.evaluate(element => {
            const [own, box] = [element, element.closest(".capture-text")].map(one => one.getBoundingClientRect());
            return own.top >= box.top && own.bottom <= box.bottom && own.top >= 0 && own.bottom <= innerHeight;
          }),
          `${capture}, line ${line} is out of sight`,
        );
        assert.ok((await page.locator("main .findings").innerText()).includes(subject));
      }
    }
    assert.deepEqual(page.trouble, []);
    await page.context().close();
  });
}

test("an acknowledged finding is a notice that is not folded away", async () => {
  const made = changed(sample("x86_64-kp420-two-megaraid"), overview => {
    const [first] = overview.findings;
    first.severity = "notice";
    first.says = "acknowledged by Jane Doe until 2999-12-31: ticket 7";
    first.acknowledged = {until: "2999-12-31", by: "Jane Doe", why: "ticket 7"};
  });
  const page = await open(made);
  const line = page.locator("section:has(> h3:text-is('1 acknowledged finding')) > .findings > li");
  assert.ok((await line.innerText()).includes("acknowledged by Jane Doe until 2999-12-31: ticket 7"));
  assert.ok(await line.isVisible());
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("each subsystem has its word, and what the word rests on", async () => {
  for (const name of ["x86_64-kp220-megaraid", "x86_64-kp220-healthy", "x86_64-virtual-machine"]) {
    const made = sample(name);
    const page = await open(made, "", {viewport: {width: 390, height: 844}});
    const shown = await page.locator(".subsystem").evaluateAll(tiles =>
      tiles.map(tile => ({
        word: tile.querySelector(".word").textContent,
        reason: tile.querySelector("details").title,
        level: tile.classList[1],
      })),
    );
    for (const [at, {health, judged_by, missing}] of made.json.health.entries()) {
      assert.equal(shown[at].word, health);
      assert.equal(shown[at].level, health);
      for (const words of [...judged_by, ...missing]) assert.ok(shown[at].reason.includes(words), words);
    }
    // On a phone, health comes before the findings and the machine.
    const titles = await page.locator("main h2").allInnerTexts();
    assert.deepEqual(titles.slice(0, 3), ["Health", "Findings", "The machine"]);
    // The way to each subject tells the worst of its subsystems.
    const worst = subsystems =>
      ["critical", "warning", "unknown", "ok", "absent"].find(word =>
        made.json.health.some(({subsystem, health}) => health === word && subsystems.includes(subsystem)),
      );
    const told = await page
      .locator("nav .subjects a:has(.word)")
      .evaluateAll(links => links.map(link => link.textContent.replace(/\s+/g, " ").trim()));
    assert.deepEqual(told, [
      `Health${worst(made.json.health.map(({subsystem}) => subsystem))}`,
      `Storage${worst(["storage"])}`,
      `Sensors${worst(["temperature", "cooling"])}`,
      `Power${worst(["power"])}`,
      `Memory${worst(["memory"])}`,
      `System${worst(["system", "processor", "bmc"])}`,
      `Captures${worst(["collection"])}`,
    ]);
    const first = await page.locator(".subsystem").first().boundingBox();
    assert.ok(first.y + first.height < 844);
    await page.locator(".subsystem summary").first().click();
    await page.locator(".subsystem details[open] a.evidence").first().click();
    await page.locator(".capture-text").waitFor();
    await page.context().close();
  }
});

test("what the collection lacks is said at the top", async () => {
  const made = sample("x86_64-kp120-tools-killed");
  const page = await open(made);
  const top = page.getByRole("alert");
  const missing = new Set(made.json.health.flatMap(({missing}) => missing));
  assert.ok(missing.size > 4);
  const text = await top.textContent();
  for (const words of missing) assert.ok(text.includes(words), words);
  const [alert, health] = [await top.boundingBox(), await page.locator(".health").boundingBox()];
  assert.ok(alert.y < health.y);
  await page.context().close();

  const healthy = await open(sample("x86_64-kp220-healthy"));
  assert.equal(await healthy.getByRole("alert").count(), 0);
  assert.equal(await healthy.locator("h1 bdi").first().innerText(), "kp220c");
  assert.match(await healthy.title(), /kp220c, .*KP220/);
  await healthy.context().close();
});

test("a report without a verdict says so and shows the rest", async () => {
  const made = sample("x86_64-kp220-megaraid");
  const old = join(work, "old");
  mkdirSync(old);
  const store = join(old, "report.sqlite");
  cpSync(join(made.directory, "report/report.sqlite"), store);
  const drop = ["health", "health_captures", "health_missing", "findings", "finding_evidence", "sensors", "drives"];
  const ran = spawnSync("sqlite3", [store, drop.map(table => `DROP TABLE ${table};`).join("")], {encoding: "utf8"});
  assert.equal(ran.status, 0, ran.stderr);
  const exported = spawnSync(
    process.env.QVHOST,
    ["export", store, "--format", "html", "--output", join(old, "report")],
    {encoding: "utf8"},
  );
  assert.equal(exported.status, 0, exported.stderr);
  const page = await open({directory: old});
  await page.getByText("This report holds no verdict").waitFor();
  for (const view of ["overview", "storage", "sensors", "power", "memory", "events", "system", "print"]) {
    await go(page, `#/${view}`);
    if (view !== "overview" && view !== "print" && view !== "system") await page.getByText("nothing to draw").waitFor();
    assert.equal(await page.locator(".subsystem, .finding, .severity, .word").count(), 0, view);
  }
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("a hostile verdict is text", async () => {
  const evil = "<img src=x onerror=window.hurt=1>\u202e\u001b[31m</script><script>window.hurt=1</script>";
  const made = changed(sample("x86_64-kp220-megaraid"), overview => {
    overview.meta.host = evil;
    overview.findings.unshift({
      ...overview.findings[0],
      id: evil,
      subject: evil,
      says: evil,
      time: evil,
      evidence: [
        {capture: "c0_showall.txt", line: 90},
        {capture: "javascript:window.hurt=1", line: 1},
        {capture: "../../etc/passwd", line: 1},
        {capture: evil, line: 3},
      ],
    });
    overview.health[0] = {...overview.health[0], missing: [evil], judged_by: [evil]};
    Object.assign(overview.inventory.drives[0], {model: evil, state: evil, serial: evil, capture: evil});
    Object.assign(overview.inventory.power_supplies[0], {slot: evil, state: evil, model: evil});
    Object.assign(overview.inventory.memory_modules[0], {slot: evil, type: evil});
    Object.assign(overview.inventory.processors[0], {model: evil});
    Object.assign(overview.inventory.volumes[0], {name: evil, raid: evil, operation: evil});
    Object.assign(overview.inventory.sensors[0], {name: evil, unit: evil, kind: evil, states: [evil]});
  });
  const page = await open(made);
  const finding = page.locator(".finding").first();
  assert.ok((await finding.innerText()).includes("<img src=x onerror=window.hurt=1>[U+202E]␛[31m</script>"));
  assert.equal(await finding.locator("a.evidence").count(), 1);
  for (const view of [
    "#/overview",
    "#/storage",
    "#/storage?drive=c0 e10 s0",
    "#/sensors",
    "#/power",
    "#/memory",
    "#/system",
    "#/print",
    "#/capture/c0_showall.txt@90",
  ]) {
    await go(page, view);
    await loaded(page);
    const found = await page.evaluate(() => ({
      hurt: window.hurt,
      made: document.querySelectorAll("img, main script, [onerror]").length,
      links: [...document.querySelectorAll("a[href]")].map(link => link.getAttribute("href")),
      text: document.querySelector("main").textContent,
    }));
    assert.equal(found.hurt, undefined, view);
    assert.equal(found.made, 0, view);
    for (const href of found.links) assert.match(href, /^(#|\.\.\/[^/]+$|report\.json$)/, view);
    assert.doesNotMatch(found.text, /[\u001b\u202e]/, view);
  }
  assert.deepEqual(page.trouble, []);
  await page.context().close();
});

test("a line that is not shown is told", async () => {
  const page = await open(sample("x86_64-kp220-megaraid"), "#/capture/c0_showall.txt@99999");
  await page.getByRole("alert").getByText("There is no line 99999").waitFor();
  assert.equal(await page.locator(".capture-text mark").count(), 0);
  await page.context().close();
});
