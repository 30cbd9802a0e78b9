// The page's small parts, without a browser.
import assert from "node:assert/strict";
import {createRequire} from "node:module";
import {join} from "node:path";
import {before, test} from "node:test";
import {top} from "./browser.mjs";

const page = join(top, "refhost/page");
const {build} = createRequire(join(page, "package.json"))("esbuild");
let part;
before(async () => {
  globalThis.window = {};
  const {outputFiles} = await build({
    stdin: {
      contents: [
        "base/text",
        "base/link",
        "base/route",
        "base/slices",
        "base/view_rows",
        "base/row_lines",
        "base/verdict",
        "base/load",
        "base/rows",
        "base/subjects",
        "pictures/arrays",
        "pictures/slots",
        "pictures/sensor_words",
        "events/event",
        "events/list",
        "events/memory",
        "events/shown",
        "events/timeline",
      ]
        .map(name => `export * from "./src/${name}";`)
        .join("\n"),
      resolveDir: page,
    },
    bundle: true,
    jsx: "automatic",
    jsxImportSource: "preact",
    format: "esm",
    write: false,
  });
  part = await import(`data:text/javascript;base64,${Buffer.from(outputFiles[0].text).toString("base64")}`);
});

const capture = (name, kind = "text") => ({name, kind, size: 1, data: "", shown: 0, commands: []});

test("a link is exactly the module's form, and names a file of the report", () => {
  const captures = new Map([["a.txt", capture("a.txt")]]);
  const link = (href, text = href) => `\n<pre>\n<a href='../${href}' target='_blank'>../${text}</a>\n<pre>\n`;
  const name = value => part.linkedCapture(value, captures)?.name;
  assert.equal(name(link("a.txt")), "a.txt");
  assert.equal(name(link("a.txt'")), "a.txt");
  const others = [
    link("b.txt"),
    link("a.txt", "b.txt"),
    link("../a.txt"),
    link("x/a.txt"),
    ` ${link("a.txt")}`,
    `${link("a.txt")} `,
    link("a.txt").replace("_blank", "_self"),
    "<a href='javascript:alert(1)'>a.txt</a>",
    "../a.txt",
    "a.txt",
    7,
    null,
    link("a.txt' onclick='alert(1)"),
    link("a.txt''"),
  ];
  for (const value of others) assert.equal(name(value), undefined, JSON.stringify(value));
});

test("only what a browser shows, saves or lists is opened as a file", () => {
  const address = (name, kind) => part.captureAddress(capture(name, kind));
  assert.equal(address("dmesg.log"), "../dmesg.log");
  assert.equal(address("Firmware", "directory"), "../Firmware");
  assert.equal(address("a b#1?.txt"), "../a%20b%231%3F.txt");
  for (const name of ["a.html", "a.HTM", "a.svg", "a.xml", "a.xhtml", "a.txt.html", "a.mht", "a.pdf", "a.js"])
    assert.equal(address(name), undefined, name);
  assert.equal(address("link.txt", "other"), undefined);
});

test("hidden characters are made visible", () => {
  assert.equal(part.visible("a\u001b[31mb\u0000c"), "a␛[31mb␀c");
  assert.equal(part.visible("x\u202egnp.exe\u200b\ufeff"), "x[U+202E]gnp.exe[U+200B][U+FEFF]");
  assert.equal(part.visible("\u2066a\u2069\u{e0020}"), "[U+2066]a[U+2069][U+E0020]");
  assert.equal(part.visible("a\r\nb\tc\rd"), "a\nb\tc␍d");
  assert.equal(part.oneLine("  a\n\nb\t c \n"), "a ↵ b  c");
  assert.equal(part.oneLine("  a\tb \n", true), "  a    b");
});

test("a number is a whole number, nothing else", () => {
  const cases = [
    [" 48.000 ", 48],
    ["-1", -1],
    ["0x10", 16],
    [7, 7],
    ["1e3", 1000],
    [".5", 0.5],
  ];
  for (const [text, number] of cases) assert.equal(part.number(text), number);
  for (const text of ["na", "", " ", "31C (87.80 F)", "5 4", "0x", "1.2.3", "Infinity", null])
    assert.ok(Number.isNaN(part.number(text)), JSON.stringify(text));
});

test("no cell is a formula", () => {
  assert.equal(part.csvCell("=1+1"), "'=1+1");
  assert.equal(part.csvCell(" @SUM(A1)"), "' @SUM(A1)");
  assert.equal(part.csvCell("\t=1"), "\"'\t'=1\"");
  assert.equal(part.csvCell("\u00a0\uff1d1"), "'\u00a0\uff1d1");
  assert.equal(part.csvCell(",=1"), '"\',=1"');
  assert.equal(part.csvCell("x; @1"), '"x; \'@1"');
  assert.equal(part.csvCell("+cmd|' /C calc'!A0"), "\"'+cmd|' /C calc'!A0\"");
  assert.equal(part.csvCell("-12.5"), "-12.5");
  assert.equal(part.csvCell('a,"b"\r\nc'), '"a,""b""\r\nc"');
  assert.equal(part.csvCell(null), "");
});

test("addresses in the page come back as they went in", () => {
  const ids = ["SENSORINFO", "a@b/c", "#%&?'\"<>=", "/overview", "ü\u202e", "@3", "a/b@4"];
  for (const id of ids) {
    for (const [row, state] of [
      [-1, {}],
      [0, {}],
      [41, {search: "a b/c@d%", [`filter.${id}`]: "=&?#"}],
      [-1, {sort: "-x"}],
    ]) {
      const table = part.routeOf(part.tableHash(id, row, state));
      assert.deepEqual(table, {view: "table", name: id, row, state}, id);
      const view = part.routeOf(part.viewHash("search", id, state));
      assert.deepEqual(view, {view: "search", name: id, row: -1, state}, id);
    }
    assert.deepEqual(part.routeOf(part.captureHash(id)), {view: "capture", name: id, row: -1, state: {}});
    const found = part.routeOf(part.captureHash(id, 42, {find: id}));
    assert.deepEqual(found, {view: "capture", name: id, row: 41, state: {find: id}});
  }
  assert.equal(part.tableHash("X", -1, {search: ""}), "#X");
  assert.equal(part.routeOf("").view, "overview");
  assert.equal(part.routeOf("#/nonsense").view, "overview");
  assert.equal(part.routeOf("#%E0%A4%A").name, "%E0%A4%A");
  assert.deepEqual(part.routeOf("#/events?a=%E0%A4%A&b&=c&__proto__=x").state.a, "%E0%A4%A");
});

test("sorting in slices is a stable sort", async () => {
  const count = 10_000;
  const keys = Array.from({length: count}, (_, at) => (at * 7919) % 101);
  const rows = await part.selected(count, row => keys[row] !== 5, slicer());
  const sorted = [...(await part.sorted(rows, (a, b) => keys[a] - keys[b], slicer()))];
  const wanted = keys
    .map((key, at) => [key, at])
    .filter(([key]) => key !== 5)
    .sort(([a], [b]) => a - b)
    .map(([, at]) => at);
  assert.deepEqual(sorted, wanted);
});

test("work that is no longer wanted stops", async () => {
  const abort = new AbortController();
  const work = part.selected(50_000_000, () => true, new part.Slicer(abort.signal));
  abort.abort(new Error("enough"));
  await assert.rejects(work, /enough/);
});

function rowsOf(ids, records) {
  const table = {id: "T", columns: ids.map(id => ({id, label: id})), chunk_rows: 1000, records: records.length};
  const rows = new part.Rows(table);
  rows.add(
    ids.map((_, at) => records.map(record => record[at] ?? null)),
    records.length,
  );
  return rows;
}

test("a row is found in chunks of any length", () => {
  const table = {id: "T", columns: [{id: "N", label: "N"}], chunk_rows: 4};
  const rows = new part.Rows(table);
  let next = 0;
  for (const size of [4, 1, 4, 2, 1, 1, 3]) {
    rows.add([Array.from({length: size}, () => next++)], size);
  }
  assert.equal(rows.count, 16);
  for (let row = 0; row < rows.count; ++row) assert.equal(rows.cell(row, 0), row);
  assert.equal(rows.cell(16, 0), null);
  assert.equal(new part.Rows(table).cell(0, 0), null);
});

const slicer = () => new part.Slicer(new AbortController().signal);

test("few different values are sorted as many are: numbers first, equal ones as collected", async () => {
  const few = ["disk 10", "5", "disk 9", " 7 ", "05", null, "0x7", "disk 9 ", "na"];
  for (const more of [0, 3000]) {
    const values = [...few, ...Array.from({length: more}, (_, at) => `row ${at}`)];
    const rows = rowsOf(
      ["N"],
      values.map(value => [value]),
    );
    const sorted = async ascending =>
      [
        ...(await part.shownRows(
          rows,
          {...part.everything(), sort: {column: 0, ascending}},
          new AbortController().signal,
        )),
      ].filter(row => row < few.length);
    assert.deepEqual(await sorted(true), [1, 4, 3, 6, 5, 2, 7, 0, 8]);
    assert.deepEqual(await sorted(false), [8, 0, 2, 7, 5, 3, 6, 1, 4]);
  }
});

test("times under the events are as short as they can be", () => {
  const words = ["2026-01-01", "2026-11-01", "2026-11-18", "2026-11-18T09:30Z", "2026-11-18T09:30:15Z"].map(time =>
    part.tickWords(new Date(time)),
  );
  assert.deepEqual(words, ["2026", "Nov", "Nov 18", "09:30", "09:30:15"]);
});

// Events as [time, severity, source, text], or with their time in UTC in the end.
async function listOf(events) {
  const ids = ["time", "time_utc", "severity", "source", "subject", "text", "capture", "line"];
  const records = events.map(([time, severity, source, text, utc], at) => [
    time,
    utc ?? null,
    severity,
    source,
    null,
    text,
    "a.txt",
    at + 1,
  ]);
  const list = new part.EventList(rowsOf(ids, records));
  await list.grow(slicer());
  return list;
}

const wanted = {
  text: "",
  severities: [],
  source: "",
  from: NaN,
  to: NaN,
  folded: false,
  sort: {column: 0, ascending: false},
};
const shownOf = async (list, change = {}) =>
  part.shownEvents(list, {...wanted, ...change}, new AbortController().signal);

test("a time before 2000 is no time", () => {
  assert.equal(part.timeOf("2026-11-17T21:12:03"), Date.UTC(2026, 10, 17, 21, 12, 3));
  assert.equal(part.timeOf("2000-01-01T00:00:00Z"), Date.UTC(2000, 0, 1));
  for (const text of ["", "1970-01-01T00:00:12", "1999-12-31T23:59:59", "Pre-Init", "2026-99-01T00:00:00"])
    assert.ok(Number.isNaN(part.timeOf(text)), text);
});

test("events of all sources stand in the order of time, those without a clock where their log has them", async () => {
  const list = await listOf([
    [null, "info", "a", "a0"], // before any time of its log: at that of the next
    ["2026-01-02T00:00:00", "info", "a", "a1"],
    [null, "info", "a", "a2"], // after a1
    ["2026-01-04T00:00:00", "info", "a", "a3"],
    ["1970-01-01T00:00:09", "info", "b", "b0"],
    ["2026-01-03T00:00:00", "warning", "b", "b1"],
    ["2026-01-03T00:00:00", "critical", "b", "b2"],
    [null, "info", "c", "c0"], // a log without any time is the oldest
    ["2026-01-03T09:00:00", "info", "d", "d0", "2026-01-03T08:00:00Z"],
  ]);
  const texts = ({order}) => [...order].map(row => list.rows.cell(row, part.TEXT));
  const newest = ["a3", "d0", "b2", "b1", "b0", "a2", "a1", "a0", "c0"];
  assert.deepEqual(texts(await shownOf(list)), newest);
  const oldest = {sort: {column: part.TIME, ascending: true}};
  assert.deepEqual(texts(await shownOf(list, oldest)), newest.toReversed());
  assert.deepEqual(
    [...list.sources.values()].map(({name, events, undated, offset}) => [name, events, undated, offset]),
    [
      ["a", 4, 2, NaN],
      ["b", 3, 1, NaN],
      ["c", 1, 1, NaN],
      ["d", 1, 0, 3_600_000],
    ],
  );
  assert.deepEqual(texts(await shownOf(list, {severities: ["critical", "warning"]})), ["b2", "b1"]);
  assert.deepEqual(texts(await shownOf(list, {source: "b"})), ["b2", "b1", "b0"]);
  assert.deepEqual(texts(await shownOf(list, {text: "A 3"})), ["a3"]);
  const span = {from: Date.UTC(2026, 0, 3), to: Date.UTC(2026, 0, 4)};
  const within = await shownOf(list, span);
  assert.deepEqual(texts(within), ["d0", "b2", "b1"]);
  // critical, warning, others
  assert.deepEqual([...within.bins.counts.slice(0, 3)], [1, 1, 0]);
  assert.equal(
    within.bins.counts.reduce((sum, n) => sum + n),
    3,
  );
});

test("what says the same is one row with its number", async () => {
  const day = at => `2026-01-0${at}T00:00:00`;
  const list = await listOf([
    [day(1), "info", "a", "x"],
    [day(2), "info", "b", "x"],
    [day(3), "info", "a", "y"],
    [day(4), "info", "a", "x"],
    [day(5), "warning", "a", "x"],
    [null, "info", "a", "x"],
  ]);
  const {order, times, others, found} = await shownOf(list, {folded: true});
  assert.equal(found, 6);
  assert.deepEqual(
    [...order].map(row => [row, times[row], others[row]]),
    [
      [5, 3, 0],
      [4, 1, 4],
      [2, 1, 2],
      [1, 1, 1],
    ],
  );
});

test("an event names a memory slot by a word of its own", () => {
  const event = text => ({subject: "", text});
  assert.ok(part.named(event("2 CE on DIMM_A1 (channel 0)"), "DIMM_A1"));
  assert.ok(!part.named(event("2 CE on DIMM_A12"), "DIMM_A1"));
  assert.ok(!part.named(event("Memory: Correctable ECC, DIMM(5)"), "DIMM_A1"));
  assert.ok(!part.named(event("anything"), ""));
  assert.ok(part.named(event("on CPU_SrcID#0.DIMM[0]"), "CPU_SrcID#0.DIMM[0]"));
});

test("slots stand where the enclosure has them, empty ones between", () => {
  const numbers = (slots, count) =>
    part
      .slotsOf(
        slots.map(slot => (slot === null ? {} : {slot})),
        count,
      )
      .map(({number, drive}) => (drive === undefined ? `-${number}` : `${number}`));
  assert.deepEqual(numbers([2, 0], 4), ["0", "-1", "2", "-3"]);
  assert.deepEqual(numbers([4, 2], 4), ["-1", "2", "-3", "4"]);
  assert.deepEqual(numbers([1, 3], 8), ["1", "-2", "3"]);
  assert.deepEqual(numbers([5, 0], 4), ["0", "-1", "-2", "-3", "-4", "5"]);
  assert.deepEqual(numbers([null, 1], undefined), ["1", "undefined"]);
  assert.deepEqual(numbers([1, 1], undefined), ["1", "1"]);
  assert.deepEqual(numbers([], 4), []);
  assert.ok(numbers([0, 1_000_000_000], 3).length < 2000);
  const unplaced = [{device: "/dev/sdb"}, {device: "/dev/nvme10n1"}, {device: "/dev/nvme2n1"}, {device_id: 4}];
  assert.deepEqual(
    part.slotsOf(unplaced, undefined).map(({drive}) => drive.device ?? drive.device_id),
    ["/dev/nvme2n1", "/dev/nvme10n1", "/dev/sdb", 4],
  );
});

test("volumes and the drives that make them", () => {
  const drives = [
    {controller: 0, enclosure: 252, slot: 0, serial: "A", drive_group: 0},
    {controller: 0, enclosure: 252, slot: 1, drive_group: 0},
    {controller: 0, device_id: 7},
    {controller: 1, enclosure: 252, slot: 0, serial: "B", device: "/dev/sdb"},
    {device: "/dev/sda"},
  ];
  const told = inventory =>
    part
      .arraysOf({volumes: [], drives, volume_members: [], ...inventory})
      .map(
        ({controller, name, volumes, members}) =>
          `${controller ?? "-"} ${name}: ${volumes.map(({number, name}) => number ?? name)} of ` +
          members.map(({told, drive}) => (drive === undefined ? `?${told.line}` : drives.indexOf(drive))),
      );
  const at = (line, rest) => ({capture: "c", line, ...rest});
  // The line of a group's drive is told of each of its volumes; a spare of no group is in none.
  const group = {controller: 0, drive_group: 0};
  assert.deepEqual(
    told({
      volumes: [
        {number: 0, ...group},
        {number: 1, ...group},
        {number: 4, controller: 0},
      ],
      volume_members: [
        at(1, {...group, volume: 0, position: 1, enclosure: 252, slot: 1, serial: "C"}),
        at(1, {...group, volume: 1, position: 1, enclosure: 252, slot: 1, serial: "C"}),
        at(2, {...group, volume: 0, position: 0, serial: "A"}),
        at(3, {...group, volume: 0, position: 2, state: "Msng"}),
        at(3, {...group, volume: 1, position: 2, state: "Msng"}),
        at(4, {controller: 0, is_spare: true, device_id: 7}),
      ],
    }),
    ["0 group 0: 0,1 of 0,1,?3", "0 volume 4: 4 of "],
  );
  // Software storage names devices, whatever controller they are behind.
  assert.deepEqual(
    told({
      volumes: [{name: "md0"}, {name: "tank"}],
      volume_members: [
        at(1, {volume_name: "md0", device: "/dev/sda"}),
        at(2, {volume_name: "md0", device: "/dev/sdb"}),
        at(3, {volume_name: "md0", device: "/dev/sdc"}),
        at(3, {volume_name: "tank", device: "/dev/sdc"}),
        at(3, {volume_name: "tank", device: "/dev/sdd"}),
      ],
    }),
    ["- md0: md0 of 4,3,?3", "- tank: tank of ?3,?3"],
  );
  // A report of an earlier program.
  assert.deepEqual(told({volumes: [{number: 0, ...group}]}), ["0 group 0: 0 of 0,1"]);
});

test("a row leads to its line where that is certain, else nowhere", async () => {
  const lines = (columns, records, text) => {
    const table = {columns: columns.map(id => ({id, label: id, width: 0})), chunk_rows: 100, records: records.length};
    const rows = new part.Rows(table);
    rows.add(
      columns.map((_, column) => records.map(record => record[column])),
      records.length,
    );
    return part.linesOf(rows, text, new part.Slicer(new AbortController().signal)).then(found => [...found]);
  };
  // A line a row, in whatever order and with whatever blanks; what is no row's is left out.
  const sensors = "heading\nCPU1 Temp | 48.000 | ok\nFAN1      | na     | na\n\n";
  assert.deepEqual(
    await lines(
      ["a", "b", "c"],
      [
        ["FAN1 ", "na", "na"],
        ["CPU1 Temp", "48.000", "ok"],
      ],
      sensors,
    ),
    [3, 2],
  );
  // Rows that say the same: as many lines, in the same order; else nobody knows.
  const twice = "x 1\ny\nx 1\nz 2\n";
  assert.deepEqual(
    await lines(
      ["a", "b"],
      [
        ["x", 1],
        ["x", 1],
        ["z", 2],
      ],
      twice,
    ),
    [1, 3, 4],
  );
  assert.deepEqual(
    await lines(
      ["a", "b"],
      [
        ["x", 1],
        ["z", 2],
      ],
      twice,
    ),
    [0, 4],
  );
  // A part of a line, a value more or another order is another thing.
  assert.deepEqual(
    await lines(
      ["a", "b"],
      [
        ["x", 1],
        ["2", "z"],
        ["z", 2],
      ],
      "x 1 2\nz 2\n",
    ),
    [0, 0, 2],
  );
  assert.deepEqual(await lines(["a"], [[null], [""]], "\n\n"), [0, 0]);
  // Rows of several lines stand where the one key says the column's values in their order.
  const drives = "seqNum: 0x000101\nClass: 0\nText: fan\n\nseqNum: 0x000102\nClass: 0\nText: fan\n";
  const events = [
    ["0x000101", "0", "fan"],
    ["0x000102", "0", "fan"],
  ];
  assert.deepEqual(await lines(["seq", "class", "text"], events, drives), [1, 5]);
  assert.deepEqual(await lines(["seq", "class", "text"], events.toReversed(), drives), [0, 0]);
  assert.deepEqual(await lines(["seq", "class", "text"], events.slice(1), drives), [5]);
  // Two keys say it: nobody knows which. Short or repeated values tell nothing.
  const both = drives.replaceAll("Class: 0\n", "Class: 0\nagain: 0x000101\n");
  assert.deepEqual(await lines(["seq", "class"], [["0x000101", "0"]], both), [0]);
  assert.deepEqual(
    await lines(
      ["class", "text"],
      [
        ["0", "fan"],
        ["0", "fan"],
      ],
      drives,
    ),
    [0, 0],
  );
});

test("a discrete sensor is told in words, or by the numbers of its states", () => {
  const table = [
    [["Presence detected", "Throttled"], "ok", "Presence detected, Throttled"],
    [[], "ok", "no state told"],
    [[], undefined, "no state told"],
    [[], "na", "no reading"],
    [[], "0x0080", "no state is set (0x0080)"],
    [[], "0x0180", "state 0, not named (0x0180)"],
    [[], "0x8280", "states 1, 7, not named (0x8280)"],
    [[], "0x0081", "state 8, not named (0x0081)"],
    [["Fully Redundant"], "0x0180", "Fully Redundant"],
    [[], "0x1", "0x1"],
  ];
  for (const [states, status, words] of table) assert.equal(part.stateWords({states, status}), words);
});

test("a subject is as its worst subsystem, and never ok by silence", () => {
  const word = (health, subsystems) =>
    part.healthOf({health: health?.map(([subsystem, health]) => ({subsystem, health}))}, {subsystems});
  const health = [
    ["storage", "ok"],
    ["power", "absent"],
    ["memory", "unknown"],
    ["system", "warning"],
  ];
  assert.equal(word(health, ["storage", "power"]), "ok");
  assert.equal(word(health, ["power"]), "absent");
  assert.equal(word(health, ["storage", "memory"]), "unknown");
  assert.equal(word(health, "all"), "warning");
  assert.equal(word(health, ["storage", "cooling"]), "unknown");
  assert.equal(word(health, []), undefined);
  assert.equal(word(undefined, "all"), undefined);
});

test("a text is cut at one of its lines", () => {
  const cut = (text, line) => {
    const {before, marked, after, lines} = part.cutAtLine(text, line);
    assert.equal(before + (marked ?? "") + after, text);
    return [marked, before.length, lines];
  };
  assert.deepEqual(cut("a\nb\nc\n", 2), ["b", 2, 3]);
  assert.deepEqual(cut("a\nb\nc", 3), ["c", 4, 3]);
  assert.deepEqual(cut("\n\n", 2), ["", 1, 2]);
  assert.deepEqual(cut("a\n", 2), [null, 2, 1]);
  assert.deepEqual(cut("a\n", 0), [null, 2, 1]);
  assert.deepEqual(cut("", 1), [null, 0, 0]);
});

test("a capacity is in binary units, to three decimals", () => {
  assert.equal(part.capacity(478998375170), "446.102 GiB");
  assert.equal(part.capacity(1024 ** 4), "1 TiB");
  assert.equal(part.capacity(512), "512 B");
});

test("a drive's severity comes from where it stands or from findings that begin with its name", () => {
  const finding = (severity, subject, line) => ({severity, subject, evidence: [{capture: "a.txt", line}]});
  const found = part.driveFindings({
    findings: [
      finding("warning", "Drive 10:1 of controller 0, X, serial 1", 90),
      finding("notice", "somebody", 7),
      finding("critical", "Drive 10:11 of controller 0", 91),
      finding("warning", "Drive /dev/sda, X", 92),
    ],
  });
  const of = drive => part.worst(found(drive));
  const drive = (place, line = 1) => of({capture: "a.txt", line, ...place});
  assert.equal(drive({controller: 0, enclosure: 10, slot: 1}), "warning");
  assert.equal(drive({controller: 1, enclosure: 10, slot: 1}), undefined);
  assert.equal(drive({controller: 0, enclosure: 10, slot: 2}, 7), "notice");
  assert.equal(drive({controller: 0, enclosure: 10, slot: 1}, 91), "critical");
  assert.equal(drive({device: "/dev/sda"}), "warning");
  assert.equal(of({capture: "b.txt", line: 91}), undefined);
});

test("a finding of a capture names it once", () => {
  for (const [subject, says, wanted] of [
    ["sel.txt", "sel.txt: ipmitool: exit code 1", "ipmitool: exit code 1"],
    ["sel.txt", "sel.txt, line 1: Node busy", "line 1: Node busy"],
    ["sel.txt", "sel.txt2: cut off", "sel.txt2: cut off"],
    ["sel.txt", "sel.txt", "sel.txt"],
    ["Sensor FAN4", "480 RPM", "480 RPM"],
  ])
    assert.equal(part.saysBesideSubject({subject, says}), wanted);
});

test("a volume is named as findings name it, whichever line is their evidence", () => {
  const finding = (severity, subject) => ({severity, subject, evidence: [{capture: "a.txt", line: 91}]});
  const found = part.volumeFindings({
    findings: [
      finding("critical", 'Volume 2 "data, pool" of controller 0 (RAID5)'),
      finding("warning", "Volume 1 of controller 1 (6 Reed-Solomon)"),
      finding("notice", 'Volume "root" /dev/md0 (raid1)'),
    ],
  });
  const volume = fields => part.worst(found({capture: "a.txt", line: 86, ...fields}));
  assert.equal(volume({controller: 0, number: 2, name: "data, pool", raid: "RAID5", device: "/dev/sdb"}), "critical");
  assert.equal(volume({controller: 1, number: 2, name: "data, pool", raid: "RAID5"}), undefined);
  assert.equal(volume({controller: 1, number: 1, raid: "6 Reed-Solomon"}), "warning");
  assert.equal(volume({name: "root", device: "/dev/md0", raid: "raid1"}), "notice");
  assert.equal(volume({controller: 1, number: 1, line: 91}), "critical");
});

test("filters of a column", () => {
  const passes = (filter, value) => part.cellTest(filter)(value);
  assert.ok(passes("AB", "xaby"));
  assert.ok(passes("=ab", " AB \n") && !passes("=ab", "abc"));
  assert.ok(passes(">5", "5.1") && !passes(">5", "5") && !passes(">5", "na"));
  assert.ok(passes("<0x10", "15"));
  assert.ok(passes("!ok", "nr") && !passes("!ok", "ok"));
  assert.ok(passes(">x", "a>x"));
});
