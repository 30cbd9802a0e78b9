// One search over everything: findings and inventory, events, captures, tables; the hits counted by place.
import {useEffect, useState} from "preact/hooks";
import {loadCapture, loadRows} from "../base/load";
import type {Overview, Place} from "../base/report";
import {captureHash, tableHash, viewHash} from "../base/route";
import {selected, Slicer} from "../base/slices";
import {count, oneLine, plain, visible} from "../base/text";
import {searchTest} from "../base/view_rows";
import {CAPTURE, LINE, SUBJECT, TEXT, TIME} from "../events/event";

interface Hit {
  href: string;
  text: string;
}

// The hits of one place: a table, a capture, ...
interface Hits {
  title: string;
  what: string;
  href: string;
  count: number;
  first: Hit[];
}

const SHOWN = 5;

type Found = (hits: Hits) => void;
type Look = (overview: Overview, words: string[], text: string, slicer: Slicer, found: Found) => Promise<void>;

const wordsOf = (text: string) =>
  text
    .toLowerCase()
    .split(/\s+/)
    .filter(word => word !== "");

const holds = (text: string, words: string[]) => {
  const lower = text.toLowerCase();
  return words.every(word => lower.includes(word));
};

const inVerdict: Look = async (overview, words, _text, _slicer, found) => {
  const all: (Place & {text: string})[][] = [
    (overview.findings ?? []).flatMap(({subject, says, evidence}) =>
      evidence.slice(0, 1).map(place => ({...place, text: `${subject} ${says}`})),
    ),
    Object.values(overview.inventory ?? {})
      .flat()
      .map((entity: Place) => ({
        capture: entity.capture,
        line: entity.line,
        text: Object.entries(entity)
          .filter(([field, value]) => !["capture", "line"].includes(field) && !(Array.isArray(value) && !value.length))
          .map(([field, value]) => `${field} ${value}`)
          .join(", "),
      })),
  ];
  for (const [at, list] of all.entries()) {
    const hits = list.filter(({text}) => holds(text, words));
    if (hits.length === 0) continue;
    const first = hits.slice(0, SHOWN).map(({capture, line, text}) => ({href: captureHash(capture, line), text}));
    const [title, what] = [
      ["Findings", "finding"],
      ["Inventory", "entity"],
    ][at]!;
    found({title: title!, what: what!, href: "#/overview", count: hits.length, first});
  }
};

const inCaptures: Look = async (overview, words, text, slicer, found) => {
  for (const capture of overview.captures) {
    if (capture.data === "") continue;
    const whole = await loadCapture(capture);
    const lower = whole.toLowerCase();
    if (slicer.due) await slicer.rest();
    if (!words.every(word => lower.includes(word))) continue;
    const first: Hit[] = [];
    let hits = 0;
    for (const [at, line] of whole.split("\n").entries()) {
      if (holds(line, words)) {
        ++hits;
        if (first.length < SHOWN) first.push({href: captureHash(capture.name, at + 1), text: line});
      }
      if (at % 256 === 255 && slicer.due) await slicer.rest();
    }
    // What is found is one text; only lines with all words of it are hits.
    const find = captureHash(capture.name, 0, {find: text});
    if (hits > 0) found({title: capture.name, what: "line", href: find, count: hits, first});
  }
};

const inEvents: Look = async ({events}, words, text, slicer, found) => {
  if (!events || events.records === 0) return;
  const rows = await loadRows(events);
  const passes = (row: number) => holds(`${plain(rows.cell(row, SUBJECT))} ${plain(rows.cell(row, TEXT))}`, words);
  const hits = await selected(rows.count, passes, slicer);
  if (hits.length === 0) return;
  const first = [...hits.slice(-SHOWN)].reverse().map(row => ({
    href: captureHash(plain(rows.cell(row, CAPTURE)), Number(rows.cell(row, LINE))),
    text: [TIME, SUBJECT, TEXT].map(column => plain(rows.cell(row, column))).join(" "),
  }));
  found({title: "Events", what: "event", href: viewHash("events", "", {text}), count: hits.length, first});
};

const inTables: Look = async (overview, _words, text, slicer, found) => {
  for (const table of overview.modules.flatMap(module => module.tables)) {
    if (table.records === 0) continue;
    const rows = await loadRows(table);
    const hits = await selected(rows.count, searchTest(rows, text), slicer);
    if (hits.length === 0) continue;
    const line = (row: number) =>
      rows
        .record(row)
        .map(value => oneLine(value))
        .filter(value => value !== "")
        .join(" | ");
    const first = [...hits.slice(0, SHOWN)].map(row => ({href: tableHash(table.id, row), text: line(row)}));
    found({
      title: table.id,
      what: "record",
      href: tableHash(table.id, -1, {search: text}),
      count: hits.length,
      first,
    });
  }
};

// What is quickest to look through comes first.
const PLACES: [string, Look][] = [
  ["findings and inventory", inVerdict],
  ["captures", inCaptures],
  ["events", inEvents],
  ["tables", inTables],
];

// One search. Another text is another search: the caller gives each a key of its own.
export function SearchView({overview, text}: {overview: Overview; text: string}) {
  const [hits, setHits] = useState<Hits[]>([]);
  // What is being looked through. It is set before the search begins: no hits yet is not "0 hits".
  const [left, setLeft] = useState(PLACES[0]![0]);
  const [failures, setFailures] = useState<string[]>([]);

  useEffect(() => {
    const abort = new AbortController();
    const slicer = new Slicer(abort.signal);
    const words = wordsOf(text);
    const search = async () => {
      for (const [place, look] of words.length > 0 ? PLACES : []) {
        setLeft(place);
        try {
          await look(overview, words, text, slicer, one => {
            if (!abort.signal.aborted) setHits(all => [...all, one]);
          });
        } catch (error) {
          if (abort.signal.aborted) return;
          setFailures(all => [...all, (error as Error).message]);
        }
      }
      setLeft("");
    };
    void search().catch(() => {});
    return () => abort.abort();
  }, [text]);
  const total = hits.reduce((sum, hit) => sum + hit.count, 0);
  return (
    <>
      <h1>Search</h1>
      <p class="lead" role="status">
        {text === ""
          ? "Type what to look for at the top."
          : left !== ""
            ? `"${visible(text)}": ${count(total, "hit")}; looking in ${left} ...`
            : `"${visible(text)}": ${count(total, "hit")} in ${count(hits.length, "place")}`}
      </p>
      {failures.map(failure => (
        <p key={failure} class="problem" role="alert">
          {failure}
        </p>
      ))}
      {hits.map(({title, what, href, count: number, first}) => (
        <section key={`${what} ${title}`}>
          <h2>
            <a href={href}>
              <bdi>{visible(title)}</bdi>
            </a>{" "}
            <small>{count(number, what, what === "entity" ? "entities" : undefined)}</small>
          </h2>
          <ul class="hits">
            {first.map((hit, at) => (
              <li key={at}>
                <a href={hit.href}>
                  <bdi>
                    <Marked text={oneLine(hit.text)} search={text} />
                  </bdi>
                </a>
              </li>
            ))}
          </ul>
        </section>
      ))}
    </>
  );
}

function Marked({text, search}: {text: string; search: string}) {
  const word = wordsOf(search)[0] ?? "";
  const at = word === "" ? -1 : text.toLowerCase().indexOf(word);
  const from = Math.max(0, at - 80);
  const cut = text.slice(from, from + 240);
  if (at < 0) return <>{cut}</>;
  return (
    <>
      {from > 0 && "... "}
      {text.slice(from, at)}
      <mark>{text.slice(at, at + word.length)}</mark>
      {text.slice(at + word.length, from + 240)}
      {from + 240 < text.length && " ..."}
    </>
  );
}
