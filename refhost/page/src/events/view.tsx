// One list over the events of all sources, sorted by time.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import {loadRows} from "../base/load";
import type {Overview, Table} from "../base/report";
import type {Route} from "../base/route";
import type {Rows} from "../base/rows";
import {visible} from "../base/text";
import {useAddress, type Change} from "../base/use_address";
import type {ViewProps} from "../base/view_props";
import {GridHost} from "../grid/grid_host";
import {hashOfAddress, readAddress, wantedOf, type Shown} from "./address";
import {cellOf} from "./cells";
import {Clocks, collectedAt} from "./clocks";
import {captureAt, eventAt, SEVERITY, SOURCE, SUBJECT, TEXT, TIME} from "./event";
import {EventList} from "./list";
import {OpenEvent} from "./open_event";
import {shownEvents, type ShownEvents} from "./shown";
import {Timeline} from "./timeline";
import {Toolbar} from "./toolbar";

const LOADING_MS = 120; // while rows arrive, the first of them are enough to begin with

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

// The events that are wanted, found again when that changes or more have been loaded. `ready`: these are all of them.
function useShownEvents(table: Table, list: EventList | null, loaded: number, shown: Shown, collected: number) {
  const [answer, setAnswer] = useState<{to: string; loaded: number; events: ShownEvents} | null>(null);
  const question = JSON.stringify({...shown, open: 0, line: ""});
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
  return {events: answer?.events, ready};
}

// A link to a line opens its event. Returns the line at which none stands; empty: there was no such link.
function useLinkedLine(list: EventList | null, ready: boolean, shown: Shown, setShown: Change<Shown>): string {
  const [unknown, setUnknown] = useState("");
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
  return unknown;
}

function Events({overview, table, route, nonce}: {overview: Overview; table: Table; route: Route; nonce: string}) {
  const {list, loaded, failure} = useEventList(table);
  const [shown, setShown] = useAddress(route, readAddress, hashOfAddress);
  const collected = useMemo(() => collectedAt(overview), [overview]);
  const {events, ready} = useShownEvents(table, list, loaded, shown, collected);
  const unknown = useLinkedLine(list, ready, shown, setShown);
  const narrow = useMemo(() => matchMedia("(max-width: 54rem)").matches, []);
  const captures = useMemo(() => new Map(overview.captures.map(capture => [capture.name, capture])), [overview]);
  const latest = useRef(events);
  latest.current = events;
  const look = useMemo(
    () => ({
      filters: false,
      cell: (row: number, column: number) =>
        list ? cellOf(eventAt(list.rows, row), column, latest.current?.times[row] ?? 1, narrow) : undefined,
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
  const iso = (time: number) => new Date(time).toISOString().slice(0, 19);

  return (
    <>
      {unknown !== "" && <p class="note">No event stands at {visible(unknown.replace(/@(\d+)$/, ", line $1"))}.</p>}
      <Clocks list={list} collected={collected} />
      <Toolbar list={list} loaded={loaded} events={events} ready={ready} shown={shown} setShown={setShown} />
      <Timeline
        bins={events.bins}
        hrefOf={(from, to) => hashOfAddress({...shown, span: "", from: iso(from), to: iso(to + 999), open: -1})}
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
          each={subject => hashOfAddress({...shown, text: subject, folded: false, open: -1})}
          close={() => setShown({...shown, open: -1}, true)}
        />
      )}
    </>
  );
}

export function EventsPicture({overview, route, nonce}: ViewProps) {
  const {events} = overview;
  if (events === undefined) return <p class="empty">This report holds no list of events: there is nothing to draw.</p>;
  if (events.records === 0) return <p class="empty">No capture tells of an event.</p>;
  return <Events overview={overview} table={events} route={route} nonce={nonce} />;
}
