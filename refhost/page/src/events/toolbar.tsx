// What one sets above the list of events: words, severities, a source, a time; and how many are left.
import {csv, save} from "../base/export";
import {routeOf} from "../base/route";
import {count, visible} from "../base/text";
import type {Change} from "../base/use_address";
import {SearchBox} from "../parts/search_box";
import {hashOfAddress, readAddress, SPANS, type Shown} from "./address";
import type {EventList} from "./list";
import {SeverityDot} from "./severity_dot";
import type {ShownEvents} from "./shown";

const SEVERITIES = ["critical", "warning", "info"];

interface Choice {
  shown: Shown;
  setShown: Change<Shown>;
}

function SeverityChoice({shown, setShown}: Choice) {
  const toggled = (severity: string) =>
    shown.severities.includes(severity)
      ? shown.severities.filter(word => word !== severity)
      : [...shown.severities, severity];
  return (
    <>
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
    </>
  );
}

function SourceChoice({sources, shown, setShown}: Choice & {sources: string[]}) {
  return (
    <label>
      <select
        aria-label="Source"
        value={shown.source}
        onChange={event => setShown({...shown, source: event.currentTarget.value}, true)}
      >
        <option value="">all sources</option>
        {sources.map(source => (
          <option key={source} value={source}>
            {visible(source)}
          </option>
        ))}
      </select>
    </label>
  );
}

function TimeChoice({shown, setShown}: Choice) {
  return (
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
  );
}

function Count({all, loaded, events, ready}: {all: number; loaded: number; events: ShownEvents; ready: boolean}) {
  const folded = events.found - events.order.length;
  return (
    <span class="count" role="status">
      {loaded < all
        ? `loading, ${loaded.toLocaleString("en")} of ${count(all, "event")}`
        : events.found < all
          ? `${events.found.toLocaleString("en")} of ${count(all, "event")}`
          : count(all, "event")}
      {folded > 0 && `, ${count(events.order.length, "row")}`}
      {ready ? "" : " ..."}
    </span>
  );
}

export function Toolbar({
  list,
  loaded,
  events,
  ready,
  shown,
  setShown,
}: Choice & {list: EventList; loaded: number; events: ShownEvents; ready: boolean}) {
  const {rows} = list;
  const everything = readAddress(routeOf("#/events"));
  const filtered = hashOfAddress({...shown, open: -1, line: ""}) !== hashOfAddress(everything);
  return (
    <div class="tools" role="toolbar" aria-label="Events">
      <SearchBox what="Search the events" text={shown.text} onText={text => setShown({...shown, text})} />
      <SeverityChoice shown={shown} setShown={setShown} />
      <SourceChoice sources={[...list.sources.keys()]} shown={shown} setShown={setShown} />
      <TimeChoice shown={shown} setShown={setShown} />
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
          save(csv({rows, order: events.order, columns: rows.table.columns.map((_, at) => at)}), "events.csv")
        }
      >
        CSV
      </button>
      {filtered && (
        <button type="button" onClick={() => setShown({...everything, open: shown.open}, true)}>
          Show all
        </button>
      )}
      <Count all={rows.table.records} loaded={loaded} events={events} ready={ready} />
    </div>
  );
}
