// The events that name one thing: how many, the newest, and the way to all of them.
import {captureHash, viewHash, type State} from "../base/route";
import {count, oneLine, visible} from "../base/text";
import {SeverityDot} from "./severity_dot";
import type {FoundEvents} from "./use_events";

const NEWEST = 8;

export function EventsOf({
  events,
  state,
  title = "Events",
  heading: Heading = "h3",
}: {
  events: FoundEvents;
  state?: State;
  title?: string;
  heading?: "h2" | "h3";
}) {
  const {found, reading, failure} = events;
  return (
    <section>
      <Heading>
        <bdi>{title}</bdi>
      </Heading>
      {failure !== "" && (
        <p class="problem" role="alert">
          {failure}
        </p>
      )}
      {reading && <p role="status">Looking through the events ...</p>}
      {!reading && failure === "" && found.length === 0 && <p class="empty">No event names it.</p>}
      {found.length > 0 && (
        <>
          <p>
            {state === undefined ? (
              count(found.length, "event")
            ) : (
              <a href={viewHash("events", "", state)}>{count(found.length, "event")}</a>
            )}
            {found.length > NEWEST && `, the newest ${NEWEST}:`}
          </p>
          <ul class="events-of">
            {found.slice(0, NEWEST).map(event => (
              <li key={event.row}>
                <SeverityDot of={event.severity} />{" "}
                <span class="time">{event.time === "" ? "no clock" : visible(event.time.replace("T", " "))}</span>{" "}
                <bdi>{oneLine(event.text)}</bdi> <a href={captureHash(event.capture, event.line)}>line {event.line}</a>
              </li>
            ))}
          </ul>
        </>
      )}
    </section>
  );
}
