// The pictures, each from the tables it needs.
import type {FunctionComponent} from "preact";
import type {Table} from "../data";
import type {Route} from "../route";
import {DrivesPicture} from "./drives";
import {EventsPicture, eventTables} from "./events";
import {SensorsPicture} from "./sensors";

interface Picture {
  view: Route["view"];
  title: string;
  has: (tables: Map<string, Table>) => boolean;
  Picture: FunctionComponent<{tables: Map<string, Table>}>;
}

const any =
  (...ids: string[]) =>
  (tables: Map<string, Table>) =>
    ids.some(id => (tables.get(id)?.records ?? 0) > 0);

export const pictures: Picture[] = [
  {view: "sensors", title: "Sensors", has: any("SENSORINFO"), Picture: SensorsPicture},
  {view: "drives", title: "Drives and arrays", has: any("PINFO", "PDLIST", "TINFO"), Picture: DrivesPicture},
  {view: "events", title: "Events over time", has: any(...eventTables), Picture: EventsPicture},
];
