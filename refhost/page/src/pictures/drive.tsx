// Everything about one drive: its fields, what was found, its events, its lines in the captures.
import {useEffect, useState} from "preact/hooks";
import {driveKey} from "../base/drive_key";
import {loadCapture} from "../base/load";
import type {Drive, Overview} from "../base/report";
import {captureHash} from "../base/route";
import {Slicer} from "../base/slices";
import {capacity, count, visible} from "../base/text";
import {driveFindings, drivePlace} from "../base/verdict";
import {Evidence} from "../parts/evidence";
import {FindingsView} from "../parts/findings";
import {Panel} from "../parts/panel";
import {EventsOf} from "../events/events_of";
import {useEventsWith} from "../events/use_events";
import {driveOf} from "./arrays";
import {driveStates} from "./states";

const yes = (flag: boolean) => (flag ? "yes" : "no");
const number = (n: number) => n.toLocaleString("en");

type Field = {[F in keyof Drive]-?: [F, string, ((value: NonNullable<Drive[F]>) => string)?]}[keyof Drive];

const FIELDS: Field[] = [
  ["state", "State", (state: string) => `${state}${driveStates.has(state) ? `, ${driveStates.get(state)}` : ""}`],
  ["controller", "Controller"],
  ["enclosure", "Enclosure"],
  ["slot", "Slot"],
  ["device_id", "Device id"],
  ["device", "Device"],
  ["drive_group", "Drive group"],
  ["spare", "Hot spare"],
  ["is_foreign", "Foreign", yes],
  ["rebuild_percent", "Rebuilt", (n: number) => `${n} %`],
  ["model", "Model"],
  ["serial", "Serial"],
  ["wwn", "WWN"],
  ["firmware", "Firmware"],
  ["capacity_bytes", "Size", capacity],
  ["interface", "Interface"],
  ["media", "Media"],
  ["sector_bytes", "Sector", (n: number) => `${n} B`],
  ["temperature_celsius", "Temperature", (n: number) => `${n} °C`],
  ["media_errors", "Media errors", number],
  ["other_errors", "Other errors", number],
  ["predicted_failures", "Predicted failures", number],
  ["shield_counter", "Shield counter", number],
  ["smart_alert", "SMART alert", yes],
  ["percentage_used", "Life used", (n: number) => `${n} %`],
  ["available_spare_percent", "Spare blocks left", (n: number) => `${n} %`],
  ["power_on_hours", "Hours on", number],
];

const COUNTED = new Set<keyof Drive>([
  "media_errors",
  "other_errors",
  "predicted_failures",
  "shield_counter",
  "smart_alert",
]);

function shown(drive: Drive, [field, , write]: Field): string {
  const value = drive[field];
  return write === undefined ? String(value) : (write as (value: unknown) => string)(value);
}

// How captures name the drive: "/c0/e10/s5" in headings, "10:5" at a list's line, "e0x0a/s5" in events.
export function namesOf({controller, enclosure, slot, serial}: Drive): {text: string; starts: boolean}[] {
  const [c, e, s] = [controller ?? "", enclosure ?? "", slot ?? ""];
  const names = serial === undefined ? [] : [{text: serial, starts: false}];
  if (slot === undefined) return names;
  if (controller !== undefined)
    names.push({text: enclosure === undefined ? `/c${c}/s${s}` : `/c${c}/e${e}/s${s}`, starts: false});
  if (enclosure !== undefined) names.push({text: `${e}:${s}`, starts: true});
  return names;
}

// In the words of a controller's events: "PD 10(e0x0a/s5)".
export function eventName({enclosure, slot}: Drive): string {
  if (enclosure === undefined || slot === undefined) return "";
  return `(e0x${enclosure.toString(16).padStart(2, "0")}/s${slot})`;
}

// A name ends where no digit or letter goes on: "/s1" is not in "/s12".
export function holds(line: string, name: {text: string; starts: boolean}): boolean {
  const text = name.starts ? line.trimStart() : line;
  const at = text.indexOf(name.text);
  if (at < 0 || (name.starts && at > 0)) return false;
  return !/[\w]/.test(text[at + name.text.length] ?? "");
}

interface Found {
  capture: string;
  lines: {line: number; text: string}[];
  more: number;
}

const MOST_LINES = 12; // shown of one capture

function LinesOf({drive, overview}: {drive: Drive; overview: Overview}) {
  const [found, setFound] = useState<Found[]>([]);
  const [reading, setReading] = useState(true);
  useEffect(() => {
    const abort = new AbortController();
    const slicer = new Slicer(abort.signal);
    const names = namesOf(drive);
    // A list's line says "10:5" without its controller: only where the drive itself stands.
    const look = async () => {
      for (const capture of overview.captures) {
        if (capture.data === "") continue;
        const text = await loadCapture(capture);
        const wanted = names.filter(({starts}) => !starts || capture.name === drive.capture);
        if (!wanted.some(name => text.includes(name.text))) continue;
        const one: Found = {capture: capture.name, lines: [], more: 0};
        for (const [at, line] of text.split("\n").entries()) {
          if (!wanted.some(name => holds(line, name))) continue;
          if (one.lines.length < MOST_LINES) one.lines.push({line: at + 1, text: line});
          else ++one.more;
        }
        if (one.lines.length > 0) setFound(all => [...all, one]);
        if (slicer.due) await slicer.rest();
        abort.signal.throwIfAborted();
      }
      setReading(false);
    };
    look().catch(() => {
      if (!abort.signal.aborted) setReading(false);
    });
    return () => abort.abort();
  }, [drive]);
  return (
    <section>
      <h3>Lines in the captures</h3>
      {found.map(({capture, lines, more}) => (
        <div key={capture} class="lines-of">
          <h4>
            <a href={captureHash(capture)}>
              <bdi>{visible(capture)}</bdi>
            </a>
          </h4>
          <ol>
            {lines.map(({line, text}) => (
              <li key={line}>
                <a href={captureHash(capture, line)}>{line}</a> <code>{visible(text.trimEnd())}</code>
              </li>
            ))}
          </ol>
          {more > 0 && <p class="note">{count(more, "more line")}</p>}
        </div>
      ))}
      {reading ? (
        <p role="status">Looking through the captures ...</p>
      ) : (
        found.length === 0 && <p class="empty">None names it.</p>
      )}
    </section>
  );
}

// "Volume 0 "system", RAID1, row 1"
function volumesOf(drive: Drive, {volumes, drives, volume_members}: NonNullable<Overview["inventory"]>): string[] {
  return volume_members
    .filter(one => driveOf(one, drives) === drive)
    .flatMap(({controller, volume, volume_name, span, position, is_spare}) => {
      const of = volumes.find(
        one => one.controller === controller && one.number === volume && one.name === volume_name,
      );
      if (of === undefined) return [];
      const words = [
        volume === undefined ? volume_name : `Volume ${volume}${volume_name === undefined ? "" : ` "${volume_name}"`}`,
        of.raid,
        span !== undefined && `span ${span}`,
        position !== undefined && `row ${position}`,
        is_spare === true && "spare",
      ];
      return [words.filter(Boolean).join(", ")];
    });
}

export function DriveDetails({drive, overview, close}: {drive: Drive; overview: Overview; close: () => void}) {
  const findings = driveFindings(overview)(drive);
  const name = eventName(drive);
  const source = drive.controller === undefined ? "" : `controller ${drive.controller}`;
  const events = useEventsWith(
    overview,
    event => name !== "" && event.source === source && `${event.subject} ${event.text}`.includes(name),
    driveKey(drive),
  );
  const controller = drive.controller === undefined ? "" : ` of controller ${drive.controller}`;
  return (
    <Panel title={`Drive ${visible(drivePlace(drive))}${controller}`} close={close}>
      <p class="note">
        <Evidence overview={overview} place={drive} />
      </p>
      <dl>
        {FIELDS.filter(([field]) => drive[field] !== undefined).map(field => (
          <div key={field[0]} class={COUNTED.has(field[0]) && Number(drive[field[0]]) > 0 ? "counted" : ""}>
            <dt>{field[1]}</dt>
            <dd>
              <bdi>{visible(shown(drive, field))}</bdi>
            </dd>
          </div>
        ))}
        {volumesOf(drive, overview.inventory!).map(text => (
          <div key={text}>
            <dt>Makes</dt>
            <dd>
              <bdi>{visible(text)}</bdi>
            </dd>
          </div>
        ))}
      </dl>
      <section>
        <h3>Findings</h3>
        {findings.length === 0 ? (
          <p class="empty">No rule found anything of this drive in what was read.</p>
        ) : (
          <FindingsView overview={overview} findings={findings} />
        )}
      </section>
      <EventsOf events={events} state={{source, text: name}} />
      <LinesOf drive={drive} overview={overview} />
    </Panel>
  );
}
