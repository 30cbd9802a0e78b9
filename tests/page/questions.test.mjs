// What a technician asks a report: each question is answered from its first view by clicks and keys, which are
// counted, and the answer is checked against report.json. docs/page.md has the table that this prints.
import assert from "node:assert/strict";
import {cpSync, readFileSync, writeFileSync} from "node:fs";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {go, loaded, open, report, samples, start, stop, top, work} from "./browser.mjs";

before(start);
after(stop);

// The server with two controllers, some hours later: the failed drive was replaced and is being rebuilt.
function rebuilding() {
  const machine = join(work, "rebuilding");
  cpSync(join(samples, "x86_64-kp420-two-megaraid"), machine, {recursive: true});
  for (const name of ["c1_show.txt", "c1_drives.txt"]) {
    const file = join(machine, name);
    writeFileSync(file, readFileSync(file, "utf8").replaceAll(" Failed ", " Rbld   "));
  }
  const line = "-".repeat(58);
  writeFileSync(
    join(machine, "rebuild.txt"),
    `CLI Version = 007.2707\nOperating system = Linux\nController = 1\nStatus = Success\n` +
      `Description = Show Drive Rebuild Status Succeeded.\n\n\n${line}\n` +
      `Drive-ID     Progress% Status          Estimated Time Left \n${line}\n` +
      `/c1/e134/s0  -         Not in progress -                   \n` +
      `/c1/e134/s2  37        In progress     3 Hours 12 Minutes  \n${line}\n`,
  );
  const file = join(machine, "machine.json");
  const json = JSON.parse(readFileSync(file, "utf8"));
  json.commands.push({tool: "storcli", args: "/c1/eall/sall show rebuild", stdout: "rebuild.txt"});
  writeFileSync(file, JSON.stringify(json));
  return machine;
}

const servers = {
  two: () => report(join(samples, "x86_64-kp420-two-megaraid")),
  rebuilding: () => report(rebuilding()),
  ill: () => report(join(samples, "x86_64-kp220-megaraid")),
  killed: () => report(join(samples, "x86_64-kp120-tools-killed")),
  nvme: () => report(join(samples, "x86_64-kp320-nvme")),
};
const made = new Map();
const server = name => made.get(name) ?? made.set(name, servers[name]()).get(name);
const pages = new Map();

// The server's page at its first view.
async function pageOf(name) {
  if (!pages.has(name)) pages.set(name, await open(server(name)));
  const page = pages.get(name);
  await go(page, "#/overview");
  return page;
}

// Counts what a person does. A step is a click, a choice, or something typed with the key that sends it off.
class Person {
  clicks = 0;
  keys = 0;
  steps = 0;

  constructor(page) {
    this.page = page;
  }

  async clickAt(place) {
    await (typeof place === "string" ? this.page.locator(place).first() : place).click();
    this.count(1, 0);
  }

  async search(text) {
    await this.page.keyboard.press("/");
    await this.page.keyboard.type(text);
    await this.page.keyboard.press("Enter");
    this.count(0, text.length + 2);
  }

  count(clicks, keys) {
    this.clicks += clicks;
    this.keys += keys;
    ++this.steps;
  }
}

const view = name => person => person.clickAt(person.page.locator("nav").getByRole("link", {name}));
const found = ({findings}, rule) => findings.find(finding => finding.rule === rule);
const finding = ".findings > li";
const failed = ({inventory}) => inventory.drives.find(({state}) => state === "Failed");

// What is asked, of which server, what is done for it, where the answer then stands, and the words that it has to hold.
const questions = [
  {
    ask: "Which slot do I pull, and which serial number is on the drive?",
    of: "two",
    at: `${finding}.critical`,
    wanted: json => {
      const {controller, enclosure, slot, serial} = failed(json);
      return [`Drive ${enclosure}:${slot} of controller ${controller}`, serial];
    },
  },
  {
    ask: "Since when is that drive failed?",
    of: "two",
    does: [view(/^Storage/), person => person.clickAt(".slots .slot.bad a")],
    at: ".chosen .events-of",
    wanted: json => [
      found(json, "event_controller_drive").time.replace("T", " "),
      found(json, "event_controller_drive").says,
    ],
  },
  {
    ask: "Which volume has no redundancy left?",
    of: "two",
    at: `${finding}.critical`,
    wanted: json => [found(json, "volume_no_redundancy").subject],
  },
  {
    ask: "Which drive would step in as a hot spare?",
    of: "two",
    does: [view(/^Storage/)],
    at: ".spares",
    wanted: ({inventory}) =>
      inventory.drives.filter(({spare}) => spare !== null).map(({enclosure, slot}) => `${enclosure}:${slot}`),
  },
  {
    ask: "Is the array being rebuilt, and how far is it?",
    of: "rebuilding",
    does: [view(/^Storage/)],
    at: ".slots .slot:has(progress)",
    wanted: ({inventory}) => {
      const {enclosure, slot, rebuild_percent} = inventory.drives.find(one => one.rebuild_percent !== null);
      assert.equal(rebuild_percent, 37);
      return [`${enclosure}:${slot}`, `${rebuild_percent} %`];
    },
  },
  {
    ask: "Who wrote this line: which command, when?",
    of: "two",
    does: [person => person.clickAt(`${finding}.critical a.evidence`)],
    at: ".command",
    wanted: ({findings}) => {
      const [{capture}] = findings[0].evidence;
      assert.equal(capture, "c1_showall.txt");
      return ["/c1 show", capture, "UTC", "ended well"];
    },
  },
  {
    ask: "What did the tool print, word for word?",
    of: "two",
    does: [person => person.clickAt(`${finding}.critical a.evidence`)],
    at: "mark",
    wanted: ({findings}) => {
      const [{capture, line}] = findings[0].evidence;
      return [
        readFileSync(join(server("two").directory, capture), "utf8")
          .split("\n")
          [line - 1].trim(),
      ];
    },
  },
  {
    ask: "What firmware has the controller?",
    of: "two",
    does: [view(/^Storage/)],
    at: ".controller",
    wanted: ({inventory}) => [inventory.controllers[0].model, `firmware ${inventory.controllers[0].firmware}`],
  },
  {
    ask: "Which drive has this serial number?",
    of: "two",
    does: [person => person.search("EX420102")],
    at: "main",
    wanted: json => {
      const {controller, enclosure, slot, serial} = failed(json);
      assert.equal(serial, "EX420102");
      return [serial, `Drive ${enclosure}:${slot} of controller ${controller}`];
    },
  },
  {
    ask: "Which DIMM has errors, and how many times?",
    of: "ill",
    at: `${finding}.critical`,
    wanted: json => {
      const {says, count} = found(json, "event_memory_error");
      assert.match(says, /DIMM\(5\)/);
      return [says, `${count} times`];
    },
  },
  {
    ask: "Is a power supply without input?",
    of: "ill",
    does: [view(/^Power/)],
    at: ".supplies .slot.poor",
    wanted: ({inventory}) => {
      const {slot, input_state} = inventory.power_supplies.find(one => /lost/i.test(one.input_state));
      return [slot, `input: ${input_state}`];
    },
  },
  {
    ask: "What is too hot, and what is its limit?",
    of: "ill",
    at: `${finding}.critical`,
    wanted: json => [found(json, "temperature_critical").subject, found(json, "temperature_critical").says],
  },
  {
    ask: "Since when is the fan too slow?",
    of: "ill",
    at: `${finding}.warning`,
    wanted: json => [
      found(json, "fan_warning").subject,
      `since ${found(json, "fan_warning").first_seen.replace("T", " ")}`,
    ],
  },
  {
    ask: "What happened last?",
    of: "ill",
    does: [view(/^Events/)],
    at: ".slick-row[data-row='0']",
    wanted: json => {
      const {time, says} = json.findings
        .filter(({time}) => time !== null)
        .toSorted((a, b) => (a.time < b.time ? 1 : -1))[0];
      return [time.replace("T", " "), says];
    },
  },
  {
    ask: "What did the BMC log about memory?",
    of: "ill",
    does: [view(/^Memory/)],
    at: "main",
    wanted: ({findings}) => findings.filter(({subject}) => subject.startsWith("Memory #")).map(({says}) => says),
  },
  {
    ask: "What is missing from this collection?",
    of: "killed",
    does: [person => person.clickAt(".problem summary")],
    at: ".problem",
    wanted: ({health}) => ["This collection is incomplete", ...health.flatMap(({missing}) => missing)],
  },
  {
    ask: "Which tool died, and of what?",
    of: "killed",
    at: `${finding}.unknown`,
    wanted: ({findings}) => {
      const {subject, says} = findings.find(({says}) => /killed by signal/.test(says));
      return [subject, says.slice(says.indexOf(": ") + 2)];
    },
  },
  {
    ask: "How worn is the SSD?",
    of: "nvme",
    at: `${finding}.warning`,
    wanted: ({inventory}) => {
      const {device, percentage_used, serial} = inventory.drives.find(one => one.percentage_used > 80);
      return [device, serial, `${percentage_used} %`];
    },
  },
  {
    ask: "Which version and address has the BMC?",
    of: "nvme",
    does: [view(/^(System|Machine)/)],
    at: "section:has(> h2:text-is('Management controller (BMC)'))",
    wanted: ({inventory}) => [inventory.bmcs[0].firmware, inventory.bmcs[0].address],
  },
  {
    ask: "Which server is it, and when was this collected?",
    of: "nvme",
    at: "main",
    wanted: ({inventory, collection}) => [
      inventory.systems[0].product,
      inventory.systems[0].serial,
      collection.started.slice(0, 16).replace("T", " "),
    ],
  },
  {
    ask: "How large are the memory modules, and in which slots?",
    of: "nvme",
    does: [view(/^Memory/)],
    at: ".modules",
    wanted: ({inventory}) =>
      inventory.memory_modules.flatMap(({slot, capacity_bytes}) => [slot, `${capacity_bytes / 2 ** 30} GiB`]),
  },
];

const MOST_STEPS = 3;
const counted = [];

for (const {ask, of, does = [], at, wanted} of questions) {
  test(ask, async () => {
    const page = await pageOf(of);
    const person = new Person(page);
    for (const step of does) {
      await step(person);
      await loaded(page);
    }
    const answers = page.locator(at).filter({visible: true});
    await answers.first().waitFor();
    const flat = text => text.replace(/\s+/g, " ").trim();
    const words = wanted(server(of).json).map(flat);
    assert.ok(words.length > 0 && words.every(word => word !== ""));
    const texts = (await answers.allInnerTexts()).map(flat);
    assert.ok(
      texts.some(text => words.every(word => text.includes(word))),
      `${JSON.stringify(words)} in ${JSON.stringify(texts)}`,
    );
    assert.ok(person.steps <= MOST_STEPS, `${person.steps} steps`);
    assert.deepEqual(page.trouble, []);
    counted.push(`| ${ask} | ${person.clicks} | ${person.keys} |`);
  });
}

test("the documents have the table", () => {
  assert.ok(questions.length >= 20 && counted.length === questions.length);
  const table = ["| question | clicks | keys |", "| --- | ---: | ---: |", ...counted].join("\n");
  console.log(table);
  assert.ok(readFileSync(join(top, "docs/page.md"), "utf8").includes(table));
});
