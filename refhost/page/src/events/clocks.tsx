// Where the times come from: each source, and its clock.
import type {Overview} from "../base/report";
import {count, visible} from "../base/text";
import {DAY} from "./address";
import type {EventList, Source} from "./list";

// The end of the collection: of a recorded server the time at which it was recorded.
export function collectedAt({meta}: Overview): number {
  return Date.parse(
    meta["recorded"] ? `${meta["recorded"].replace(/Z$/, "")}Z` : meta["finished"] || meta["started"] || "",
  );
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

export function Clocks({list, collected}: {list: EventList; collected: number}) {
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
