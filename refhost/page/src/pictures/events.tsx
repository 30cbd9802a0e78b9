// When what happened: the controller's event log and the system event log, a lane for each class.
import {scaleUtc} from "d3-scale";
import {useMemo, useState} from "preact/hooks";
import type {Overview, Table} from "../data";
import {tableHash} from "../route";
import {count} from "../text";
import {controllerEvents, systemEvents, type Event, type Lane} from "./event_times";
import {useRows} from "./use_rows";

const CONTROLLER = ["EVENTLOG1", "EVENTLOG2", "EVENTLOG3", "EVENTLOG4", "EVENTLOG5"] as const;
export const eventTables = [...CONTROLLER, "SELINFO"] as const;

const WIDTH = 900;
const LABEL = 150;
const LANE = 44;
const BINS = 120;
const DAY = 86_400_000;

const SPANS: [string, number][] = [
  ["all", Infinity],
  ["last year", 365 * DAY],
  ["last 30 days", 30 * DAY],
  ["last 7 days", 7 * DAY],
];

function day(time: number): string {
  return new Date(time).toISOString().slice(0, 16).replace("T", " ");
}

// A span of time ends when the collection did; without it, all events that there are.
function Timeline({
  title,
  events,
  lanes,
  note,
  collected,
}: {
  title: string;
  events: Event[];
  lanes: Lane[];
  note: string;
  collected: number; // NaN: not known
}) {
  const [span, setSpan] = useState(Infinity);
  const dated = useMemo(() => events.filter(event => !Number.isNaN(event.time)), [events]);
  const range = useMemo(
    () =>
      dated.reduce<[number, number]>(
        ([low, high], {time}) => [Math.min(low, time), Math.max(high, time)],
        [Infinity, -Infinity],
      ),
    [dated],
  );
  const last = Number.isNaN(collected) ? range[1] : collected;
  const end = (span === Infinity ? Math.max(range[1], last) : last) + 1;
  const start = Math.max(Math.min(range[0], end - 1), end - span);
  const present = lanes.filter(lane => events.some(event => event.lane === lane.id));
  const bins = useMemo(() => {
    const all = new Map<string, {lane: string; bin: number; events: Event[]}>();
    for (const event of dated) {
      if (event.time < start || event.time >= end) continue;
      const bin = Math.floor(((event.time - start) / (end - start)) * BINS);
      const key = `${event.lane} ${bin}`;
      const known = all.get(key);
      if (known) known.events.push(event);
      else all.set(key, {lane: event.lane, bin, events: [event]});
    }
    return [...all.values()];
  }, [dated, start, end]);

  const x = scaleUtc()
    .domain([start, end])
    .range([LABEL, WIDTH - 8]);
  const step = (WIDTH - 8 - LABEL) / BINS;
  const height = present.length * LANE + 26;
  const label = (lane: Lane) =>
    `${lane.title} (${events.filter(event => event.lane === lane.id).length.toLocaleString("en")})`;
  const undated = events.length - dated.length;
  const highest = new Map(
    present.map(lane => [
      lane.id,
      Math.max(1, ...bins.filter(bin => bin.lane === lane.id).map(bin => bin.events.length)),
    ]),
  );

  return (
    <section>
      <h2>{title}</h2>
      <p>
        {count(events.length, "entry", "entries")}
        {undated > 0 && `, ${undated.toLocaleString("en")} of them without a date (no clock)`}. {undated > 0 && note}
      </p>
      {dated.length > 0 && (
        <>
          <p class="choices">
            {SPANS.filter(([, length]) => length === Infinity || length < last - range[0]).map(([name, length]) => (
              <button type="button" key={name} aria-pressed={span === length} onClick={() => setSpan(length)}>
                {name}
              </button>
            ))}
          </p>
          <div class="scroll" tabIndex={0} role="region" aria-label={`${title}, over time`}>
            <svg
              class="timeline"
              viewBox={`0 0 ${WIDTH} ${height}`}
              role="group"
              aria-label={`${title} from ${day(start)} to ${day(end)}`}
            >
              {present.map((lane, at) => (
                <g key={lane.id}>
                  <text class="lane" x={0} y={at * LANE + LANE / 2 + 4}>
                    {label(lane)}
                  </text>
                  <line class="base" x1={LABEL} x2={WIDTH - 8} y1={(at + 1) * LANE - 4} y2={(at + 1) * LANE - 4} />
                </g>
              ))}
              {bins.map(({lane, bin, events: held}) => {
                const at = present.findIndex(one => one.id === lane);
                // Single events stay visible beside thousands.
                const tall = 6 + ((LANE - 14) * Math.log1p(held.length)) / Math.log1p(highest.get(lane)!);
                const first = held[0]!;
                const says = `${count(held.length, "event")}, from ${day(Math.min(...held.slice(0, 1000).map(e => e.time)))}: ${first.text}`;
                return (
                  <a key={`${lane} ${bin}`} href={tableHash(first.table, first.row)} tabIndex={-1} aria-label={says}>
                    <title>{says}</title>
                    <rect
                      class={`event ${present[at]!.level}`}
                      x={LABEL + bin * step}
                      width={Math.max(step - 0.6, 2)}
                      y={(at + 1) * LANE - 4 - tall}
                      height={tall}
                    />
                  </a>
                );
              })}
              {x.ticks(6).map(tick => (
                <g key={+tick}>
                  <line class="tick" x1={x(tick)} x2={x(tick)} y1={0} y2={height - 22} />
                  <text class="tick" x={x(tick)} y={height - 6} text-anchor="middle">
                    {x.tickFormat(6)(tick)}
                  </text>
                </g>
              ))}
            </svg>
          </div>
        </>
      )}
      {events.length > 0 && (
        <div class="scroll">
          <table class="list small">
            <caption class="unseen">{title} by class</caption>
            <thead>
              <tr>
                <th scope="col">Class</th>
                <th scope="col" class="number">
                  Entries
                </th>
                <th scope="col">Newest</th>
              </tr>
            </thead>
            <tbody>
              {present.map(lane => {
                const own = events.filter(event => event.lane === lane.id);
                const newest = own.reduce((best, event) => (!(event.time <= best.time) ? event : best), own[0]!);
                return (
                  <tr key={lane.id}>
                    <th scope="row">
                      <span class={`dot ${lane.level}`} aria-hidden="true" />
                      {lane.title}
                    </th>
                    <td class="number">{own.length.toLocaleString("en")}</td>
                    <td>
                      <a href={tableHash(newest.table, newest.row)}>
                        <bdi>{newest.text}</bdi>
                      </a>
                      {!Number.isNaN(newest.time) && <small> {day(newest.time)}</small>}
                    </td>
                  </tr>
                );
              })}
            </tbody>
          </table>
        </div>
      )}
    </section>
  );
}

export function EventsPicture({overview, tables}: {overview: Overview; tables: Map<string, Table>}) {
  const {rows, failure} = useRows(tables, eventTables);
  const [controller, system] = useMemo(() => {
    if (!rows) return [null, null];
    const logs = CONTROLLER.flatMap(id => rows.get(id) ?? []);
    const sel = rows.get("SELINFO");
    return [logs.length > 0 ? controllerEvents(logs) : null, sel ? systemEvents(sel) : null];
  }, [rows]);
  if (failure)
    return (
      <p class="problem" role="alert">
        {failure}
      </p>
    );
  if (!rows) return <p>Reading the events ...</p>;
  const collected = Date.parse(overview.meta["finished"] || overview.meta["started"] || "");
  return (
    <>
      <h1>Events over time</h1>
      <p class="lead">Each bar leads to its first event. Times are as the controller and the BMC wrote them.</p>
      {controller && (
        <Timeline
          title="RAID controller"
          {...controller}
          collected={collected}
          note="Without a date are those that the controller dated in seconds since it started."
        />
      )}
      {system && (
        <Timeline
          title="System event log (SEL)"
          {...system}
          collected={collected}
          note="Without a date are those from before the BMC had a clock."
        />
      )}
    </>
  );
}
