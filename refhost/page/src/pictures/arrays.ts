// Which drives make which volume: the volumes of a controller, those of one drive group together, with their drives.
import type {Drive, Inventory, Volume, VolumeMember} from "../base/report";

export interface Member {
  told: VolumeMember; // the line that says so
  drive: Drive | undefined; // undefined: no list has it
}

export interface DriveArray {
  controller: number | undefined;
  group?: number; // not there: the tool counts no groups
  name: string; // "group 0", "volume 2", "md0"
  hue: number;
  volumes: Volume[];
  members: Member[];
}

const isSerial = (told: VolumeMember, drive: Drive) => told.serial !== undefined && told.serial === drive.serial;

const isPlace = (told: VolumeMember, drive: Drive) =>
  (told.serial === undefined || drive.serial === undefined) && // else another drive was put there
  (told.slot !== undefined
    ? told.enclosure === drive.enclosure && told.slot === drive.slot
    : told.device_id !== undefined && drive.slot === undefined && told.device_id === drive.device_id);

export function driveOf(told: VolumeMember, drives: Drive[]): Drive | undefined {
  const own = told.controller === undefined ? drives : drives.filter(one => one.controller === told.controller);
  return (
    own.find(one => isSerial(told, one)) ??
    own.find(one =>
      told.controller === undefined ? told.device !== undefined && told.device === one.device : isPlace(told, one),
    )
  );
}

// `drives` are all of the machine's: those of software storage may be behind a controller.
function membersOf(told: VolumeMember[], drives: Drive[]): Member[] {
  const all = new Map<unknown, Member>();
  for (const one of told) {
    const drive = driveOf(one, drives);
    const key = drive ?? `${one.capture} ${one.line} ${one.device ?? ""}`; // a line is told of each of its volumes
    if (!all.has(key)) all.set(key, {told: one, drive});
  }
  // As they stand in it, those without a place last.
  const place = ({told: {span, position}}: Member) => (span ?? 0) * 1000 + (position ?? 999);
  return [...all.values()].sort((a, b) => place(a) - place(b));
}

const HUES = 6; // of which style.css has a colour each

function arraysAt(
  controller: number | undefined,
  {volumes, drives, volume_members: told}: Pick<Inventory, "volumes" | "drives" | "volume_members">,
): DriveArray[] {
  const own = <One extends {controller?: number}>(list: One[]) => list.filter(one => one.controller === controller);
  const here = own(volumes);
  // An earlier program's report tells the groups of drives alone.
  const rows: VolumeMember[] = told.length > 0 ? own(told) : own(drives);
  const made = (name: string, hue: number, own: Volume[], told: VolumeMember[]) => ({
    controller,
    name,
    hue: hue % HUES,
    volumes: own,
    members: membersOf(told, drives),
  });
  const groups = [...new Set([...here, ...rows].map(one => one.drive_group))]
    .filter(group => group !== undefined)
    .sort((a, b) => a - b);
  const isOf = (group: number | undefined) => (one: {drive_group?: number}) => one.drive_group === group;
  return [
    ...groups.map(group => ({
      ...made(`group ${group}`, group, here.filter(isOf(group)), rows.filter(isOf(group))),
      group,
    })),
    ...here.filter(isOf(undefined)).map((volume, at) => {
      const {number, name} = volume;
      const isMember = (one: VolumeMember) => (number === undefined ? one.volume_name === name : one.volume === number);
      return made(
        number === undefined ? (name ?? "volume") : `volume ${number}`,
        at,
        [volume],
        rows.filter(isOf(undefined)).filter(isMember),
      );
    }),
  ];
}

// By controllers, those of none last.
export function arraysOf(inventory: Pick<Inventory, "volumes" | "drives" | "volume_members">): DriveArray[] {
  const all = [...inventory.volumes, ...inventory.volume_members].map(one => one.controller);
  return [...new Set(all)]
    .sort((a, b) => (a ?? Infinity) - (b ?? Infinity))
    .flatMap(controller => arraysAt(controller, inventory));
}
