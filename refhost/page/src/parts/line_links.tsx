// What stands at a line of a capture: the part of the machine, the row of a table that it tells of. Whether an event does,
// the list of events knows.
import {useEffect, useState} from "preact/hooks";
import {driveKey} from "../base/drive_key";
import {loadRows} from "../base/load";
import type {Drive, Inventory, Overview, Place, Table} from "../base/report";
import {tableHash, viewHash, type View} from "../base/route";
import {rowLines} from "../base/row_lines";
import {visible} from "../base/text";

const VIEWS: Partial<Record<keyof Inventory, [view: View, what: string]>> = {
  drives: ["storage", "drive"],
  volumes: ["storage", "volume"],
  volume_members: ["storage", "volume"],
  controllers: ["storage", "controller"],
  enclosures: ["storage", "enclosure"],
  batteries: ["storage", "battery"],
  sensors: ["sensors", "sensor"],
  power_supplies: ["power", "power supply"],
  memory_modules: ["memory", "memory module"],
};

interface Way {
  href: string;
  says: string;
}

function entitiesAt({inventory}: Overview, capture: string, line: number): Way[] {
  return Object.entries(VIEWS).flatMap(([list, [view, what]]) => {
    const all: Place[] = inventory?.[list as keyof Inventory] ?? [];
    const here = all.filter(one => one.capture === capture && one.line === line);
    if (here.length === 0) return [];
    const state = list === "drives" ? {drive: driveKey(here[0] as Drive)} : undefined;
    return [{href: viewHash(view, "", state), says: `Its ${what}`}];
  });
}

function useRowsAt(tables: Table[], overview: Overview, capture: string, line: number): Way[] {
  const [ways, setWays] = useState<Way[]>([]);
  useEffect(() => {
    let alive = true;
    setWays([]);
    const look = async () => {
      for (const table of line > 0 ? tables : []) {
        const rows = await loadRows(table);
        const lines = await rowLines(
          rows,
          overview.captures.find(({name}) => name === capture),
        );
        const row = lines.indexOf(line);
        if (!alive) return;
        if (row >= 0)
          setWays(all => [...all, {href: tableHash(table.id, row), says: `Row ${row + 1} of ${visible(table.id)}`}]);
      }
    };
    look().catch(() => {}); // the view of the table says what is wrong with its rows
    return () => {
      alive = false;
    };
  }, [capture, line]);
  return ways;
}

export function LineLinks({overview, capture, line}: {overview: Overview; capture: string; line: number}) {
  const tables = overview.modules
    .flatMap(module => module.tables)
    .filter(table => table.capture === capture && table.records > 0);
  const rows = useRowsAt(tables, overview, capture, line);
  const isOfEvents = overview.events?.captures?.includes(capture) === true;
  const ways = [
    ...(isOfEvents
      ? [{href: viewHash("events", "", {line: `${capture}@${line}`}), says: "Look among the events"}]
      : []),
    ...entitiesAt(overview, capture, line),
    ...rows,
  ];
  return (
    <>
      {ways.map(({href, says}) => (
        <a key={says} class="way" href={href}>
          {says}
        </a>
      ))}
    </>
  );
}
