// One list over the events of all sources, sorted by time.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import {loadRows, type Overview, type Rows, type Table} from "../base/data";
import {csv, save} from "../base/export";
import {routeOf, viewHash, type Route, type State} from "../base/route";
import {count, oneLine, visible, written} from "../base/text";
import {useAddress} from "../base/use_address";
import type {ViewProps} from "../base/view_props";
import {Evidence} from "../parts/evidence";
import {Panel} from "../parts/panel";
import {SearchBox} from "../parts/search_box";
import {GridHost} from "../grid/grid_host";
import {captureAt, eventAt, SEVERITY, SOURCE, SUBJECT, TEXT, TIME, timeOf} from "./event";
import {EventList, type Source} from "./list";
import {levelOfEvent, SeverityDot} from "./severity_dot";
import {shownEvents, type ShownEvents, type WantedEvents} from "./shown";
import {Timeline} from "./timeline";

const SEVERITIES = ["critical", "warning", "info"];
const LOADING_MS = 120; // while rows arrive, the first of them are enough to begin with

const DAY = 24 * 3600 * 1000;
const SPANS: [id: string, title: string, length: number][] = [
  ["", "All", Infinity],
  ["365d", "Year", 365 * DAY],
  ["30d", "30 days", 30 * DAY],
  ["7d", "7 days", 7 * DAY],
  ["1d", "24 hours", DAY],
];

// What the address says.
interface Shown extends Omit<WantedEvents, "from" | "to"> {
  span: string;
  from: string;
  to: string;
  open: number; // the row; -1: none
  line: string; // "CAPTURE@LINE": open the event that stands there
}

function read({state}: Route): Shown {
  const sort = state["sort"] ?? "-time";
  const column = ["time", "time_utc", "severity", "source", "subject", "text"].indexOf(sort.replace(/^-/, ""));
  return {
    text: state["text"] ?? "",
    severities: (state["severity"] ?? "").split(",").filter(word => word !== ""),
    source: state["source"] ?? "",
    span: state["span"] ?? "",
    from: state["from"] ?? "",
    to: state["to"] ?? "",
    folded: state["fold"] !== "no",
    sort: {column: Math.max(0, column), ascending: !sort.startsWith("-")},
    open: Number(state["open"] ?? 0) - 1,
    line: state["line"] ?? "",
  };
}

const COLUMNS = ["time", "time_utc", "severity", "source", "subject", "text"];

function stateOf({sort, ...shown}: Shown): State {
  const order = `${sort.ascending ? "" : "-"}${COLUMNS[sort.column]}`;
  return {
    text: shown.text,
    severity: shown.severities.join(","),
    source: shown.source,
    span: shown.span,
    from: shown.from,
    to: shown.to,
    fold: shown.folded ? "" : "no",
    sort: order === "-time" ? "" : order,
    open: shown.open < 0 ? "" : String(shown.open + 1),
    line: shown.line,
  };
}

const hash = (shown: Shown) => viewHash("events", "", stateOf(shown));

// The end of the collection: of a recorded server the time at which it was recorded.
export function collectedAt({meta}: Overview): number {
  return Date.parse(
    meta["recorded"] ? `${meta["recorded"].replace(/Z$/, "")}Z` : meta["finished"] || meta["started"] || "",
  );
}

function wantedOf(shown: Shown, collected: number): WantedEvents {
  const span = SPANS.find(([id]) => id === shown.span && id !== "");
  const [from, to] = span ? [collected - span[2], collected + 1] : [timeOf(shown.from), timeOf(shown.to)];
  return {...shown, from, to};
}

// "2 h ahead of UTC", or that nobody knows.
function clockOf({undated, events, offset}: Source): string {
  if (undated === events) return "no clock: in the order in which they were logged";
  const rest = undated > 0 ? `, ${undated.toLocaleString("en")} without a time` : "";
  if (Number.isNaN(offset)) return `its own clock, offset to UTC not known${rest}`;
  const minutes = Math.round(offset / 60_000);
  const sign = minutes < 0 ? "-" : "+";
  const [h, m] = [Math.floor(Math.abs(minutes) / 60), Math.abs(minutes) % 60].map(n => String(n).padStart(2, "0"));
  return `its own clock, UTC ${sign}${h}:${m}${rest}`;
}

function Clocks({list, collected}: {list: EventList; collected: number}) {
  return (
    <ul class="clocks">
      {[...list.sources.values()].map(source => (
        <li key={source.name}>
          <strong>
            <bdi>{visible(source.name)}</bdi>
          </strong>{" "}
          {count(source.events, "event")}; {clockOf(source)}
          {source.newest > collected + DAY && "; some are later than the collection: that clock is ahead"}
        </li>
      ))}
    </ul>
  );
}

function useEventList(table: Table) {
  const [list, setList] = useState<EventList | null>(null);
  const [loaded, setLoaded] = useState(0);
  const [failure, setFailure] = useState("");
  useEffect(() => {
    let alive = true;
    let made: EventList | null = null;
    const take = (rows: Rows) => {
      if (!alive) return;
      made ??= new EventList(rows);
      setList(made);
      setLoaded(rows.count);
    };
    loadRows(table, take)
      .then(take)
      .catch((error: Error) => alive && setFailure(error.message));
    return () => {
      alive = false;
    };
  }, [table]);
  return {list, loaded, failure};
}

function Events({overview, table, route, nonce}: {overview: Overview; table: Table; route: Route; nonce: string}) {
  const {list, loaded, failure} = useEventList(table);
  const [shown, setShown] = useAddress(route, read, hash);
  const [answer, setAnswer] = useState<{to: string; loaded: number; events: ShownEvents} | null>(null);
  const collected = useMemo(() => collectedAt(overview), [overview]);
  const narrow = useMemo(() => matchMedia("(max-width: 54rem)").matches, []);
  const captures = useMemo(() => new Map(overview.captures.map(capture => [capture.name, capture])), [overview]);
  const question = JSON.stringify({...shown, open: 0, line: ""});
  const events = answer?.events;

  // The first part is answered for before more of them begin anew.
  const taken = answer ? loaded : Math.min(loaded, table.chunk_rows);
  useEffect(() => {
    if (!list) return;
    const abort = new AbortController();
    const timer = setTimeout(
      () => {
        shownEvents(list, wantedOf(shown, collected), abort.signal)
          .then(events => setAnswer({to: question, loaded: taken, events}))
          .catch(() => {});
      },
      loaded === table.records || !answer ? 0 : LOADING_MS,
    );
    return () => {
      clearTimeout(timer);
      abort.abort();
    };
  }, [list, taken, question]);

  const ready = loaded === table.records && answer?.to === question && answer.loaded === loaded;
  // A link to a line opens its event.
  useEffect(() => {
    if (!ready || !list || shown.line === "") return;
    const [capture, line] = captureAt(shown.line);
    for (let row = 0; row < list.count; ++row) {
      const event = eventAt(list.rows, row);
      if (event.capture === capture && event.line === line) return setShown({...shown, line: "", open: row});
    }
    setUnknown(shown.line);
    setShown({...shown, line: ""});
  }, [ready, shown.line]);

  const [unknown, setUnknown] = useState("");
  const latest = useRef(events);
  latest.current = events;
  const look = useMemo(
    () => ({
      filters: false,
      cell(row: number, column: number): Node | undefined {
        if (!list) return undefined;
        const event = eventAt(list.rows, row);
        if (column === TIME) {
          const text = document.createElement("span");
          text.className = "time";
          text.textContent = event.time === "" ? "no clock" : visible(event.time.replace("T", " "));
          if (!narrow) return text;
          // On a phone the severity stands before the time, which goes to the minute, so that there is room for words.
          text.textContent = text.textContent.replace(/(\d\d:\d\d):\d\d.*$/, "$1");
          const severity = document.createElement("span");
          severity.className = "unseen";
          severity.textContent = `${visible(event.severity)} `;
          const dot = document.createElement("span");
          dot.className = `dot ${levelOfEvent(event.severity)}`;
          const both = document.createElement("span");
          both.append(dot, severity, text);
          return both;
        }
        if (column === SEVERITY) {
          const word = document.createElement("span");
          word.className = `event-severity ${levelOfEvent(event.severity)}`;
          word.textContent = visible(event.severity);
          return word;
        }
        const times = latest.current?.times[row] ?? 1;
        if (column !== TEXT || times < 2) return undefined;
        const cell = document.createElement("bdi");
        const badge = document.createElement("b");
        badge.className = "times";
        badge.textContent = `x ${times.toLocaleString("en")}`;
        cell.append(badge, ` ${oneLine(event.text)}`);
        return cell;
      },
    }),
    [list],
  );
  const columns = useMemo(
    () =>
      table.columns.map((_, at) => [TIME, TEXT].includes(at) || (!narrow && [SEVERITY, SOURCE, SUBJECT].includes(at))),
    [table],
  );

  if (failure)
    return (
      <p class="problem" role="alert">
        {failure}
      </p>
    );
  if (!list || !events) return <p role="status">Reading the events ...</p>;
  const toggled = (severity: string) =>
    shown.severities.includes(severity)
      ? shown.severities.filter(word => word !== severity)
      : [...shown.severities, severity];
  const everything = read(routeOf("#/events"));
  const filtered = hash({...shown, open: -1, line: ""}) !== hash(everything);
  const folded = events.found - events.order.length;
  const iso = (time: number) => new Date(time).toISOString().slice(0, 19);

  return (
    <>
      {unknown !== "" && <p class="note">No event stands at {visible(unknown.replace(/@(\d+)$/, ", line $1"))}.</p>}
      <Clocks list={list} collected={collected} />
      <div class="tools" role="toolbar" aria-label="Events">
        <SearchBox what="Search the events" text={shown.text} onText={text => setShown({...shown, text})} />
        {SEVERITIES.map(severity => (
          <button
            key={severity}
            type="button"
            aria-pressed={shown.severities.includes(severity)}
            onClick={() => setShown({...shown, severities: toggled(severity)}, true)}
          >
            <SeverityDot of={severity} />
          </button>
        ))}
        <label>
          <select
            aria-label="Source"
            value={shown.source}
            onChange={event => setShown({...shown, source: event.currentTarget.value}, true)}
          >
            <option value="">all sources</option>
            {[...list.sources.keys()].map(source => (
              <option key={source} value={source}>
                {visible(source)}
              </option>
            ))}
          </select>
        </label>
        <label>
          <select
            aria-label="Time"
            value={shown.from || shown.to ? "chosen" : shown.span}
            onChange={event => setShown({...shown, span: event.currentTarget.value, from: "", to: ""}, true)}
          >
            {SPANS.map(([id, title]) => (
              <option key={id} value={id}>
                {id === "" ? "all times" : `last ${title.toLowerCase()}`}
              </option>
            ))}
            {(shown.from || shown.to) && (
              <option value="chosen">{`${shown.from.replace("T", " ")} to ${shown.to.replace("T", " ")}`}</option>
            )}
          </select>
        </label>
        <label>
          <input
            type="checkbox"
            checked={shown.folded}
            onChange={() => setShown({...shown, folded: !shown.folded}, true)}
          />{" "}
          fold repeated
        </label>
        <button
          type="button"
          disabled={!ready}
          onClick={() =>
            save(csv({rows: list.rows, order: events.order, columns: table.columns.map((_, at) => at)}), "events.csv")
          }
        >
          CSV
        </button>
        {filtered && (
          <button type="button" onClick={() => setShown({...everything, open: shown.open}, true)}>
            Show all
          </button>
        )}
        <span class="count" role="status">
          {loaded < table.records
            ? `loading, ${loaded.toLocaleString("en")} of ${count(table.records, "event")}`
            : events.found < table.records
              ? `${events.found.toLocaleString("en")} of ${count(table.records, "event")}`
              : count(table.records, "event")}
          {folded > 0 && `, ${count(events.order.length, "row")}`}
          {ready ? "" : " ..."}
        </span>
      </div>
      <Timeline
        bins={events.bins}
        hrefOf={(from, to) => hash({...shown, span: "", from: iso(from), to: iso(to + 999), open: -1})}
      />
      <GridHost
        rows={list.rows}
        order={events.order}
        sort={shown.sort}
        onSort={sort => setShown({...shown, sort}, true)}
        visibleColumns={columns}
        captures={captures}
        nonce={nonce}
        chosen={shown.open}
        choose={open => setShown({...shown, open}, true)}
        look={look}
      />
      {shown.open >= 0 && shown.open < list.count && (
        <OpenEvent
          list={list}
          row={shown.open}
          events={events}
          overview={overview}
          each={subject => hash({...shown, text: subject, folded: false, open: -1})}
          close={() => setShown({...shown, open: -1}, true)}
        />
      )}
    </>
  );
}

function OpenEvent({
  list,
  row,
  events,
  overview,
  each,
  close,
}: {
  list: EventList;
  row: number;
  events: ShownEvents;
  overview: Overview;
  each: (text: string) => string;
  close: () => void;
}) {
  const event = eventAt(list.rows, row);
  const times = events.times[row] ?? 1;
  const other = times > 1 ? list.times[events.others[row]!]! : NaN;
  const facts: [string, string][] = [
    ["Time", event.time === "" ? "no clock" : event.time.replace("T", " ")],
    ["UTC", event.time_utc.replace("T", " ")],
    ["Severity", event.severity],
    ["Source", event.source],
    ["Subject", event.subject],
    ["Event", event.text],
  ];
  return (
    <Panel
      title="Event"
      detail={`number ${(row + 1).toLocaleString("en")} as the logs have them`}
      close={close}
      focus={false}
    >
      <dl>
        {facts
          .filter(([, text]) => text !== "")
          .map(([label, text]) => (
            <div key={label}>
              <dt>{label}</dt>
              <dd>
                <bdi class="value">{visible(text)}</bdi>
              </dd>
            </div>
          ))}
        {times > 1 && (
          <div>
            <dt>Repeated</dt>
            <dd>
              <a href={each(`${event.subject} ${event.text}`.trim())}>{count(times, "time")}</a>
              {!Number.isNaN(other) && `, since ${written(other)}`}
            </dd>
          </div>
        )}
        <div>
          <dt>Told by</dt>
          <dd>
            <Evidence overview={overview} place={event} />
          </dd>
        </div>
      </dl>
    </Panel>
  );
}

export function EventsPicture({overview, route, nonce}: ViewProps) {
  const {events} = overview;
  if (events === undefined) return <p class="empty">This report holds no list of events: there is nothing to draw.</p>;
  if (events.records === 0) return <p class="empty">No capture tells of an event.</p>;
  return <Events overview={overview} table={events} route={route} nonce={nonce} />;
}
