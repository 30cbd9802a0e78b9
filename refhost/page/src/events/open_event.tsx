// The event that was chosen, with everything that its source says.
import type {Overview} from "../base/report";
import {count, visible, written} from "../base/text";
import {Evidence} from "../parts/evidence";
import {Panel} from "../parts/panel";
import {eventAt} from "./event";
import type {EventList} from "./list";
import type {ShownEvents} from "./shown";

export function OpenEvent({
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
