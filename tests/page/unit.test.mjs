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
      contents: ["text", "link", "route", "slices", "view_rows", "pictures/event_times", "verdict", "data"]
        .map(name => `export * from "./src/${name}";`)
        .join("\n"),
      resolveDir: page,
    },
    bundle: true,
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
  const ids = ["SENSORINFO", "a@b/c", "#%&?'\"<>", "/overview", "ü\u202e", "@3", "a/b@4"];
  for (const id of ids) {
    for (const [row, search] of [
      [-1, ""],
      [0, ""],
      [41, ""],
      [-1, "a b/c@d%"],
    ]) {
      const route = part.routeOf(part.tableHash(id, row, search));
      assert.deepEqual(route, {view: "table", name: id, row, search}, id);
    }
    assert.deepEqual(part.routeOf(part.captureHash(id)), {view: "capture", name: id, row: -1, search: ""});
    assert.deepEqual(part.routeOf(part.captureHash(id, 42)), {view: "capture", name: id, row: 41, search: ""});
  }
  assert.equal(part.routeOf("").view, "overview");
  assert.equal(part.routeOf("#/nonsense").view, "overview");
  assert.equal(part.routeOf("#%E0%A4%A").name, "%E0%A4%A");
});

test("sorting in slices is a stable sort", async () => {
  const count = 10_000;
  const keys = Array.from({length: count}, (_, at) => (at * 7919) % 101);
  const slicer = () => new part.Slicer(new AbortController().signal);
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

test("event times are read as the tools write them, or not at all", () => {
  assert.equal(part.writtenTime("Tue Nov 17 21:12:03 2026"), Date.UTC(2026, 10, 17, 21, 12, 3));
  assert.equal(part.writtenTime("Thu Jul  9 04:04:22 2026"), Date.UTC(2026, 6, 9, 4, 4, 22));
  for (const text of [
    "",
    "0",
    "19",
    "07:12:44",
    "Thu Jan  1 00:00:12 1970",
    "Tue Foo 17 21:12:03 2026",
    "Tue Nov 17 21:12:03 2026 x",
  ])
    assert.ok(Number.isNaN(part.writtenTime(text)), text);
});

function rowsOf(ids, records) {
  const table = {id: "T", columns: ids.map(id => ({id, label: id})), chunk_rows: 10};
  const rows = new part.Rows(table);
  rows.chunks.push(ids.map((_, at) => records.map(record => record[at] ?? null)));
  rows.count = records.length;
  return rows;
}

test("SEL lines with and without a date", () => {
  const {events} = part.systemEvents(
    rowsOf(
      ["SELINFO"],
      [
        ["ipmiutil sel version 3.18\n"],
        ["RecId Date/Time_______ SEV Src_ Evt_Type___ Sens# Evt_detail - Trig [Evt_data]\n"],
        ["0005 11/15/23 02:13:48 MAJ BMC  Fan #17  Lo Crit thresh act=04 thr=06\n"],
        ["0007 01/01/70 00:00:12 INF BMC  Fan #17  something\n"],
        ["0008 12/31/99 23:59:59 INF BMC  Fan #17  something\n"],
        ["0009 01/01/00 00:00:00 INF BMC  Fan #17  something\n"],
        ["0006 00000012 INF BMC  Fan #17  something\n"],
        ["rubbish"],
      ],
    ),
  );
  assert.deepEqual(
    events.map(({time, lane, row}) => [time, lane, row]),
    [
      [Date.UTC(2023, 10, 15, 2, 13, 48), "MAJ", 2],
      [NaN, "INF", 3],
      [NaN, "INF", 4],
      [Date.UTC(2000, 0, 1), "INF", 5],
      [NaN, "INF", 6],
    ],
  );
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
  const of = part.driveSeverities({
    findings: [
      finding("warning", "Drive 10:1 of controller 0, X, serial 1", 90),
      finding("notice", "somebody", 7),
      finding("critical", "Drive 10:11 of controller 0", 91),
      finding("warning", "Drive /dev/sda, X", 92),
    ],
  });
  const drive = (place, line = 1) => of({capture: "a.txt", line, ...place});
  assert.equal(drive({controller: 0, enclosure: 10, slot: 1}), "warning");
  assert.equal(drive({controller: 1, enclosure: 10, slot: 1}), undefined);
  assert.equal(drive({controller: 0, enclosure: 10, slot: 2}, 7), "notice");
  assert.equal(drive({controller: 0, enclosure: 10, slot: 1}, 91), "critical");
  assert.equal(drive({device: "/dev/sda"}), "warning");
  assert.equal(of({capture: "b.txt", line: 91}), undefined);
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
