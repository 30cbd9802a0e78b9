// The drives of each controller as a row of slots, and its arrays with their members. What has a finding is
// marked.
import type {Battery, Controller, Drive, Enclosure, Overview, Volume} from "../data";
import {Standing} from "../evidence";
import {SeverityMark} from "../severity_mark";
import {capacity, count, visible} from "../text";
import {drivePlace, driveSeverities, severities} from "../verdict";
import {levelOf} from "./level";
import {driveStates, volumeStates} from "./states";

type DriveJudge = ReturnType<typeof driveSeverities>;
type Judge = ReturnType<typeof severities>;

const joined = (...texts: (string | number | undefined)[]) =>
  texts
    .filter(text => text !== undefined && text !== "")
    .map(text => visible(String(text)))
    .join(" ");

function State({code, words, severity}: {code: string; words: Map<string, string>; severity: ReturnType<Judge>}) {
  const meaning = words.get(code);
  return (
    <span class={`state ${levelOf(severity)}`}>
      {severity !== undefined && severity !== "notice" && (
        <>
          <SeverityMark of={severity} />
          <span class="unseen">{severity}: </span>
        </>
      )}
      <bdi>{visible(code)}</bdi>
      {meaning !== undefined && <small> {meaning}</small>}
    </span>
  );
}

const size = (bytes: number | undefined) => (bytes === undefined ? undefined : capacity(bytes));

// What is known of a drive beside its state, in this order.
const FACTS: ((drive: Drive) => string | undefined | false)[] = [
  drive => drive.serial !== undefined && `serial ${drive.serial}`,
  drive => drive.firmware !== undefined && `firmware ${drive.firmware}`,
  drive => drive.slot !== undefined && drive.device,
  drive => drive.spare !== undefined && `${drive.spare} spare`,
  drive => drive.is_foreign === true && "foreign configuration",
  drive => drive.rebuild_percent !== undefined && `rebuild ${drive.rebuild_percent} %`,
  drive => drive.temperature_celsius !== undefined && `${drive.temperature_celsius} °C`,
  drive => drive.power_on_hours !== undefined && `${drive.power_on_hours.toLocaleString("en")} hours on`,
];

// Counters of what goes wrong: raised from 1 on.
const COUNTERS: ((drive: Drive) => [value: number | undefined, words: string])[] = [
  drive => [drive.media_errors, "media errors"],
  drive => [drive.other_errors, "other errors"],
  drive => [drive.predicted_failures, "predicted failures"],
];

function Counters({drive}: {drive: Drive}) {
  const wear = [
    drive.percentage_used !== undefined && `${drive.percentage_used} % used`,
    drive.available_spare_percent !== undefined && `${drive.available_spare_percent} % spare left`,
  ].filter(text => text !== false);
  return (
    <ul class="counters">
      {COUNTERS.map(counter => {
        const [value, words] = counter(drive);
        return (
          value !== undefined && (
            <li key={words} class={value > 0 ? "counted" : ""}>
              {value.toLocaleString("en")} {words}
            </li>
          )
        );
      })}
      {drive.smart_alert !== undefined && (
        <li class={drive.smart_alert ? "counted" : ""}>SMART alert: {drive.smart_alert ? "yes" : "no"}</li>
      )}
      {wear.length > 0 && <li>{wear.join(", ")}</li>}
    </ul>
  );
}

function Slot({drive, overview, severityOf}: {drive: Drive; overview: Overview; severityOf: DriveJudge}) {
  const severity = severityOf(drive);
  return (
    <li class={`slot ${levelOf(severity)}`}>
      <Standing overview={overview} place={drive}>
        <strong>
          <bdi>{visible(drivePlace(drive)) || "no slot"}</bdi>
        </strong>
        <State code={drive.state ?? ""} words={driveStates} severity={severity} />
        <span class="what">
          <bdi>{joined(size(drive.capacity_bytes), drive.interface, drive.media)}</bdi>
        </span>
        <span class="what">
          <bdi>{visible(drive.model ?? "")}</bdi>
        </span>
        {FACTS.map(fact => fact(drive) || "")
          .filter(text => text !== "")
          .map(text => (
            <span key={text} class="what">
              <bdi>{visible(text)}</bdi>
            </span>
          ))}
        <Counters drive={drive} />
      </Standing>
    </li>
  );
}

function VolumeLine({volume, overview, severityOf}: {volume: Volume; overview: Overview; severityOf: Judge}) {
  const {number, name, device, operation, progress_percent: progress} = volume;
  return (
    <li>
      <Standing overview={overview} place={volume}>
        <bdi>{joined(number, name && `"${name}"`, device)}</bdi>
        <State code={volume.state ?? ""} words={volumeStates} severity={severityOf(volume)} />
        <small>
          <bdi>
            {joined(
              volume.raid,
              size(volume.capacity_bytes),
              operation,
              progress === undefined ? undefined : `${progress} %`,
            )}
          </bdi>
        </small>
      </Standing>
    </li>
  );
}

function Arrays({volumes, drives, overview}: {volumes: Volume[]; drives: Drive[]; overview: Overview}) {
  const severityOf = severities(overview);
  const ofDrive = driveSeverities(overview);
  const groups = [...new Set([...volumes, ...drives].map(one => one.drive_group))]
    .filter(group => group !== undefined || volumes.some(volume => volume.drive_group === undefined))
    .sort((a, b) => (a ?? Infinity) - (b ?? Infinity));
  if (groups.length === 0) return null;
  return (
    <>
      <h3 class="part">Arrays and their members</h3>
      <div class="arrays">
        {groups.map(group => {
          const members = group === undefined ? [] : drives.filter(drive => drive.drive_group === group);
          return (
            <article key={group} class="array">
              <h4>{group === undefined ? "Without a drive group" : `Drive group ${group}`}</h4>
              <ul class="volumes">
                {volumes
                  .filter(volume => volume.drive_group === group)
                  .map((volume, at) => (
                    <VolumeLine key={at} volume={volume} overview={overview} severityOf={severityOf} />
                  ))}
              </ul>
              <ul class="members">
                {members.map((drive, at) => (
                  <li key={at} class={`slot ${levelOf(ofDrive(drive))}`}>
                    <Standing overview={overview} place={drive}>
                      <strong>
                        <bdi>{visible(drivePlace(drive))}</bdi>
                      </strong>
                      <State code={drive.state ?? ""} words={driveStates} severity={ofDrive(drive)} />
                      <span class="what">
                        <bdi>{joined(size(drive.capacity_bytes))}</bdi>
                      </span>
                    </Standing>
                  </li>
                ))}
              </ul>
            </article>
          );
        })}
      </div>
    </>
  );
}

// A line about the controller itself, its battery or an enclosure.
const controllerSays = ({serial, firmware, status}: Controller) =>
  visible([serial && `serial ${serial}`, firmware && `firmware ${firmware}`, status].filter(Boolean).join(", "));
const batterySays = ({model, state, charge_percent: charge, temperature_celsius: heat}: Battery) =>
  joined(
    "Battery",
    model,
    state,
    charge === undefined ? undefined : `${charge} % full`,
    heat === undefined ? undefined : `${heat} °C`,
  );
const enclosureSays = ({number, model, state, slots}: Enclosure) =>
  joined("Enclosure", number, model, state, slots === undefined ? undefined : count(slots, "slot"));

function ControllerPart({number, overview}: {number: number | undefined; overview: Overview}) {
  const inventory = overview.inventory!;
  const own = <One extends {controller?: number}>(list: One[]) => list.filter(one => one.controller === number);
  const controllers = number === undefined ? [] : inventory.controllers.filter(one => one.number === number);
  const drives = own(inventory.drives);
  const parts = [
    ...controllers.map(one => ({place: one, says: controllerSays(one)})),
    ...own(inventory.batteries).map(one => ({place: one, says: batterySays(one)})),
    ...own(inventory.enclosures).map(one => ({place: one, says: enclosureSays(one)})),
  ].filter(({says}) => says !== "");
  const severityOf = severities(overview);
  const ofDrive = driveSeverities(overview);
  return (
    <section class="controller">
      <h2>
        {number === undefined ? (
          "Behind no RAID controller"
        ) : (
          <bdi>{joined("Controller", number, ...controllers.map(({model}) => model))}</bdi>
        )}
      </h2>
      {parts.length > 0 && (
        <ul class="controller-parts">
          {parts.map(({place, says}, at) => {
            const severity = severityOf(place);
            return (
              <li key={at}>
                <Standing overview={overview} place={place}>
                  {severity !== undefined && severity !== "notice" && <SeverityMark of={severity} />}
                  <bdi>{says}</bdi>
                </Standing>
              </li>
            );
          })}
        </ul>
      )}
      {drives.length > 0 && (
        <>
          <h3 class="part">{count(drives.length, "drive")}</h3>
          <ul class="slots">
            {drives.map((drive, at) => (
              <Slot key={at} drive={drive} overview={overview} severityOf={ofDrive} />
            ))}
          </ul>
        </>
      )}
      <Arrays volumes={own(inventory.volumes)} drives={drives} overview={overview} />
    </section>
  );
}

export function DrivesPicture({overview}: {overview: Overview}) {
  const {controllers, drives, volumes} = overview.inventory!;
  const numbers = [
    ...controllers.map(({number}) => number),
    ...[...drives, ...volumes].map(({controller}) => controller),
  ];
  return (
    <>
      <h1>Drives and arrays</h1>
      {[...new Set(numbers)]
        .sort((a, b) => (a ?? Infinity) - (b ?? Infinity))
        .map(number => (
          <ControllerPart key={number} number={number} overview={overview} />
        ))}
    </>
  );
}
