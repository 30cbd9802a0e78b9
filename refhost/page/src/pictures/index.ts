// The pictures, each from the part of the inventory or the tables it needs.
import type {FunctionComponent} from "preact";
import type {Overview, Table} from "../data";
import type {Route} from "../route";
import {DrivesPicture} from "./drives";
import {EventsPicture, eventTables} from "./events";
import {SensorsPicture} from "./sensors";

interface Picture {
  view: Route["view"];
  title: string;
  has: (overview: Overview, tables: Map<string, Table>) => boolean;
  Picture: FunctionComponent<{overview: Overview; tables: Map<string, Table>}>;
}

export const pictures: Picture[] = [
  {
    view: "sensors",
    title: "Sensors",
    has: ({inventory}) => (inventory?.sensors.length ?? 0) > 0,
    Picture: SensorsPicture,
  },
  {
    view: "drives",
    title: "Drives and arrays",
    has: ({inventory}) => [inventory?.drives, inventory?.volumes, inventory?.controllers].some(list => list?.length),
    Picture: DrivesPicture,
  },
  {
    view: "events",
    title: "Events over time",
    has: (_, tables) => eventTables.some(id => (tables.get(id)?.records ?? 0) > 0),
    Picture: EventsPicture,
  },
];
