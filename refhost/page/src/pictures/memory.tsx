// The memory modules by slot, with the events that name each; then the errors that name none of the slots.
import type {MemoryModule} from "../base/report";
import {capacity, count, visible} from "../base/text";
import type {ViewProps} from "../base/view_props";
import {Standing} from "../parts/evidence";
import {EventsOf} from "../events/events_of";
import {isOfMemory, named} from "../events/memory";
import {useEventsWith, type FoundEvents} from "../events/use_events";
import {EmptyPicture} from "./empty_picture";

function Module({module, events}: {module: MemoryModule; events: FoundEvents["found"]}) {
  const {slot, capacity_bytes: size, type, speed_mts: speed, manufacturer, part, serial} = module;
  const worst = ["critical", "warning", "info"].find(severity => events.some(event => event.severity === severity));
  const about = [
    [type, speed !== undefined && `${speed} MT/s`],
    [manufacturer, part],
    [serial && `serial ${serial}`],
  ].map(texts => texts.filter(text => text).join(" "));
  return (
    <>
      <strong>
        <bdi>{visible(slot ?? "slot not told")}</bdi>
      </strong>
      <span>{size === undefined ? "size not told" : capacity(size)}</span>
      {about
        .filter(text => text !== "")
        .map(text => (
          <span key={text} class="what">
            <bdi>{visible(text)}</bdi>
          </span>
        ))}
      {worst !== undefined && (
        <span class="counted">
          {count(events.length, "event")}, worst: {worst}
        </span>
      )}
    </>
  );
}

export function MemoryPicture({overview}: ViewProps) {
  const modules = overview.inventory?.memory_modules ?? [];
  const events = useEventsWith(overview, isOfMemory, "memory");
  const bySlot = modules.map(({slot}) => events.found.filter(event => named(event, slot ?? "")));
  const others = events.found.filter(event => !bySlot.some(list => list.includes(event)));
  const total = modules.reduce((sum, {capacity_bytes: size}) => sum + (size ?? 0), 0);
  return (
    <>
      {modules.length === 0 ? (
        <EmptyPicture overview={overview} of="memory modules" />
      ) : (
        <>
          <p class="lead">
            {count(modules.length, "module")}, {capacity(total)}; empty slots are not listed.
          </p>
          <ul class="slots modules">
            {modules.map((module, at) => (
              <li key={at} class="slot">
                <Standing overview={overview} place={module}>
                  <Module module={module} events={bySlot[at]!} />
                </Standing>
              </li>
            ))}
          </ul>
        </>
      )}
      {modules.map(
        (module, at) =>
          bySlot[at]!.length > 0 && (
            <EventsOf
              heading="h2"
              key={at}
              title={`Events that name ${visible(module.slot ?? "")}`}
              events={{...events, found: bySlot[at]!}}
            />
          ),
      )}
      {overview.events !== undefined && (events.reading || events.failure !== "" || others.length > 0) && (
        <EventsOf
          heading="h2"
          title={`Events about memory${modules.length > 0 ? " that name none of these slots" : ""}`}
          events={{...events, found: others}}
        />
      )}
    </>
  );
}
