// The storage as it stands in the rack: controllers, enclosures with their slots, and which drives make which
// volume. A click on a drive shows everything about it.
import {driveKey} from "../base/drive_key";
import type {Battery, Controller, Drive, Enclosure, Overview, Volume} from "../base/report";
import {viewHash, visit} from "../base/route";
import {capacity, count, visible} from "../base/text";
import {driveFindings, drivePlace, findingsHere, worst, volumeFindings} from "../base/verdict";
import type {ViewProps} from "../base/view_props";
import {Standing} from "../parts/evidence";
import {arraysOf, type DriveArray, type Member} from "./arrays";
import {DriveDetails} from "./drive";
import {EmptyPicture} from "./empty_picture";
import {levelOf} from "./level";
import {slotsOf} from "./slots";
import {State} from "./state";
import {driveStates, volumeStates} from "./states";

interface Drawing {
  overview: Overview;
  about: ReturnType<typeof driveFindings>;
  aboutVolume: ReturnType<typeof volumeFindings>;
  here: ReturnType<typeof findingsHere>;
  arrays: DriveArray[];
  open: string; // the key of the drive that is shown
}

const joined = (...texts: (string | number | undefined | false)[]) =>
  texts
    .filter(text => text !== undefined && text !== false && text !== "")
    .map(text => visible(String(text)))
    .join(" ");

const size = (bytes: number | undefined) => (bytes === undefined ? undefined : capacity(bytes));

const holds = (drive: Drive) => (array: DriveArray) => array.members.some(member => member.drive === drive);

// What its tool says; of a drive of the system's own arrays, what they say of it.
function stateOf(drive: Drive, arrays: DriveArray[]): string {
  const told = arrays.flatMap(({members}) => members.flatMap(one => (one.drive === drive && one.told.state) || []));
  const states = drive.state ?? [...new Set(told)].join(", ");
  return states || (drive.smart_alert === false ? "no SMART alert" : "state not told");
}

function Progress({percent, of}: {percent: number; of: string}) {
  return (
    <span class="progress">
      <progress max={100} value={percent} aria-label={of} /> {percent} %
    </span>
  );
}

// What is wrong or special, in the few words that fit a slot.
function Marks({drive}: {drive: Drive}) {
  const words = [
    drive.spare !== undefined && `${drive.spare} spare`,
    drive.is_foreign === true && "foreign",
    drive.smart_alert === true && "SMART alert",
    !!drive.predicted_failures && count(drive.predicted_failures, "predicted failure"),
    !!drive.media_errors && count(drive.media_errors, "media error"),
    !!drive.other_errors && count(drive.other_errors, "other error"),
    !!drive.shield_counter && `shield counter ${drive.shield_counter.toLocaleString("en")}`,
  ].filter(text => text !== false);
  return (
    <>
      {drive.rebuild_percent !== undefined && <Progress percent={drive.rebuild_percent} of="Rebuild" />}
      {words.map(text => (
        <span key={text} class="what">
          <bdi>{visible(text)}</bdi>
        </span>
      ))}
    </>
  );
}

function Slot({drive, drawing}: {drive: Drive; drawing: Drawing}) {
  const severity = worst(drawing.about(drive));
  const key = driveKey(drive);
  const isOpen = key === drawing.open;
  const arrays = drawing.arrays.filter(holds(drive));
  return (
    <li class={`slot ${levelOf(severity)}`}>
      <a
        class="standing"
        href={viewHash("storage", "", {drive: isOpen ? "" : key})}
        aria-current={isOpen ? "true" : undefined}
      >
        <strong>
          <bdi>{visible(drivePlace(drive)) || "no slot"}</bdi>
        </strong>
        <State printed={stateOf(drive, arrays)} words={driveStates} severity={severity} />
        {arrays.map(array => (
          <span key={`${array.controller} ${array.name}`} class={`group hue${array.hue}`}>
            <bdi>{visible(array.name)}</bdi>
          </span>
        ))}
        <span class="what">
          <bdi>{joined(size(drive.capacity_bytes), drive.interface, drive.media)}</bdi>
        </span>
        <Marks drive={drive} />
      </a>
    </li>
  );
}

function Slots({drives, enclosure, drawing}: {drives: Drive[]; enclosure: Enclosure | undefined; drawing: Drawing}) {
  return (
    <ul class="slots">
      {slotsOf(drives, enclosure?.slots).map(({number, drive}, at) =>
        drive === undefined ? (
          <li key={at} class="slot empty">
            <strong>
              {enclosure?.number ?? ""}:{number}
            </strong>
            <span class="what">no drive listed</span>
          </li>
        ) : (
          <Slot key={at} drive={drive} drawing={drawing} />
        ),
      )}
    </ul>
  );
}

// "RAID1" as storcli prints it; arcconf prints "1" and "6 Reed-Solomon".
const level = (raid: string | undefined) => (/^\d/.test(raid ?? "") ? `RAID ${raid}` : raid);

function VolumeLine({volume, drawing}: {volume: Volume; drawing: Drawing}) {
  const {number, name, device, operation, progress_percent: progress} = volume;
  return (
    <li>
      <Standing overview={drawing.overview} place={volume}>
        <strong>
          <bdi>{joined("Volume", number, name && `"${name}"`, device)}</bdi>
        </strong>
        <State
          printed={volume.state ?? "state not told"}
          words={volumeStates}
          severity={worst(drawing.aboutVolume(volume))}
        />
        <span class="what">
          <bdi>{joined(level(volume.raid), size(volume.capacity_bytes), volume.cache && `cache ${volume.cache}`)}</bdi>
        </span>
        {(operation !== undefined || progress !== undefined) && (
          <span class="what">
            <bdi>{visible(operation ?? "")}</bdi>{" "}
            {progress !== undefined && <Progress percent={progress} of={operation ?? "Progress"} />}
          </span>
        )}
      </Standing>
    </li>
  );
}

// A drive that makes a volume; one that no list has is missing.
function MemberLine({member: {told, drive}, drawing}: {member: Member; drawing: Drawing}) {
  const isSpare = told.is_spare === true && !/spare/i.test(drive?.state ?? told.state ?? "");
  const spare = isSpare && <small> spare</small>;
  if (drive !== undefined)
    return (
      <li>
        <a href={viewHash("storage", "", {drive: driveKey(drive)})}>
          <bdi>{visible(drivePlace(drive))}</bdi>
        </a>{" "}
        <State printed={drive.state ?? told.state ?? ""} severity={worst(drawing.about(drive))} />
        {spare}
      </li>
    );
  return (
    <li>
      <Standing overview={drawing.overview} place={told}>
        <bdi>{visible(drivePlace(told) || (told.position === undefined ? "drive" : `row ${told.position}`))}</bdi>
      </Standing>{" "}
      <State printed={told.state ?? "not listed"} words={driveStates} severity={worst(drawing.here(told))} />
      {spare}
    </li>
  );
}

function ArrayPart({array, drawing}: {array: DriveArray; drawing: Drawing}) {
  // Said of the group where no volume of it is listed.
  const ending = `:c${array.controller}_dg${array.group}`;
  const found = drawing.overview.findings?.find(({id}) => id.endsWith(ending));
  return (
    <article class={`array hue${array.hue}`}>
      {array.group !== undefined && (
        <h4>
          Drive group {array.group} {found && <State printed={found.says} severity={found.severity} />}
        </h4>
      )}
      <ul class="volumes">
        {array.volumes.map((volume, at) => (
          <VolumeLine key={at} volume={volume} drawing={drawing} />
        ))}
      </ul>
      {array.members.length === 0 ? (
        <p class="note">Its drives are not told.</p>
      ) : (
        <ul class="members">
          {array.members.map((member, at) => (
            <MemberLine key={at} member={member} drawing={drawing} />
          ))}
        </ul>
      )}
    </article>
  );
}

function Arrays({arrays, drives, drawing}: {arrays: DriveArray[]; drives: Drive[]; drawing: Drawing}) {
  const spares = drives.filter(drive => drive.spare !== undefined && !drawing.arrays.some(holds(drive)));
  if (arrays.length === 0) return null;
  return (
    <>
      <h3>Volumes and the drives that make them</h3>
      <div class="arrays">
        {arrays.map((array, at) => (
          <ArrayPart key={at} array={array} drawing={drawing} />
        ))}
        {spares.length > 0 && (
          <article class="array">
            <h4>Hot spares</h4>
            <ul class="spares members">
              {spares.map((drive, at) => (
                <MemberLine key={at} member={{told: drive, drive}} drawing={drawing} />
              ))}
            </ul>
          </article>
        )}
      </div>
    </>
  );
}

// A line about the controller itself, its battery or an enclosure.
const told = (...texts: (string | undefined | false)[]) => visible(texts.filter(Boolean).join(", "));
const controllerSays = ({serial, firmware, status, volumes, drives}: Controller) =>
  told(
    status,
    serial && `serial ${serial}`,
    firmware && `firmware ${firmware}`,
    volumes !== undefined && `says it has ${count(volumes, "volume")}`,
    drives !== undefined && `${volumes === undefined ? "says it has " : ""}${count(drives, "drive")}`,
  );
const batterySays = ({model, state, charge_percent: charge, temperature_celsius: heat}: Battery) =>
  told(joined("Battery", model), state, charge !== undefined && `${charge} % full`, heat !== undefined && `${heat} °C`);
const enclosureSays = ({model, serial, state, slots}: Enclosure) =>
  told(state, model, serial && `serial ${serial}`, slots !== undefined && count(slots, "slot"));

function EnclosurePart({
  enclosure,
  number,
  isOnly,
  drives,
  drawing,
}: {
  enclosure: Enclosure | undefined;
  number: number | undefined;
  isOnly: boolean;
  drives: Drive[];
  drawing: Drawing;
}) {
  const {overview, here} = drawing;
  const title = number === undefined ? "Without an enclosure" : `Enclosure ${number}`;
  return (
    <section class="enclosure">
      {(number !== undefined || !isOnly) && (
        <h3>
          {title}{" "}
          {enclosure !== undefined && (
            <small>
              <Standing overview={overview} place={enclosure}>
                <State printed={enclosureSays(enclosure)} severity={worst(here(enclosure))} />
              </Standing>
            </small>
          )}
        </h3>
      )}
      {drives.length === 0 ? (
        <p class="empty">No drive in it is listed.</p>
      ) : (
        <Slots drives={drives} enclosure={enclosure} drawing={drawing} />
      )}
    </section>
  );
}

function ControllerPart({number, drawing}: {number: number | undefined; drawing: Drawing}) {
  const {overview, here} = drawing;
  const inventory = overview.inventory!;
  const own = <One extends {controller?: number}>(list: One[]) => list.filter(one => one.controller === number);
  const controllers = number === undefined ? [] : inventory.controllers.filter(one => one.number === number);
  const drives = own(inventory.drives);
  const enclosures = own(inventory.enclosures);
  const parts = [
    ...controllers.map(one => ({place: one, says: controllerSays(one)})),
    ...own(inventory.batteries).map(one => ({place: one, says: batterySays(one)})),
  ].filter(({says}) => says !== "");
  const numbers = [...new Set([...enclosures.map(one => one.number), ...drives.map(one => one.enclosure)])].sort(
    (a, b) => (a ?? Infinity) - (b ?? Infinity),
  );
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
          {parts.map(({place, says}, at) => (
            <li key={at}>
              <Standing overview={overview} place={place}>
                <State printed={says} severity={worst(here(place))} />
              </Standing>
            </li>
          ))}
        </ul>
      )}
      {numbers.map(enclosure => (
        <EnclosurePart
          key={enclosure}
          number={enclosure}
          isOnly={numbers.length === 1}
          enclosure={enclosures.find(one => one.number === enclosure)}
          drives={drives.filter(one => one.enclosure === enclosure)}
          drawing={drawing}
        />
      ))}
      {drives.length === 0 && number !== undefined && <p class="empty">No drive of this controller is listed.</p>}
      <Arrays arrays={drawing.arrays.filter(one => one.controller === number)} drives={drives} drawing={drawing} />
    </section>
  );
}

// Everything that is drawn, for the screen and for paper.
export function StorageDrawing({overview, open = ""}: {overview: Overview; open?: string}) {
  const {controllers, drives, volumes} = overview.inventory!;
  const drawing = {
    overview,
    about: driveFindings(overview),
    aboutVolume: volumeFindings(overview),
    here: findingsHere(overview),
    arrays: arraysOf(overview.inventory!),
    open,
  };
  const numbers = [
    ...controllers.map(({number}) => number),
    ...[...drives, ...volumes].map(({controller}) => controller),
  ];
  return (
    <>
      {[...new Set(numbers)]
        .sort((a, b) => (a ?? Infinity) - (b ?? Infinity))
        .map(number => (
          <ControllerPart key={number} number={number} drawing={drawing} />
        ))}
    </>
  );
}

export function hasStorage({inventory}: Overview): boolean {
  return [inventory?.drives, inventory?.volumes, inventory?.controllers].some(list => list?.length);
}

export function StoragePicture({overview, route}: ViewProps) {
  if (!hasStorage(overview)) return <EmptyPicture overview={overview} of="drives or volumes" />;
  const open = route.state["drive"] ?? "";
  const drive = overview.inventory!.drives.find(one => driveKey(one) === open);
  return (
    <>
      {drive !== undefined && (
        <DriveDetails key={open} drive={drive} overview={overview} close={() => visit(viewHash("storage"))} />
      )}
      <StorageDrawing overview={overview} open={open} />
    </>
  );
}
