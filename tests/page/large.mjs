// A recorded server with many events and term-log lines.
import {mkdirSync, writeFileSync} from "node:fs";
import {join} from "node:path";

const DESCRIPTIONS = [
  "Patrol Read started",
  "Battery charge complete",
  "Corrected medium error during recovery on PD 0c",
  "Consistency Check progress on VD 02/2 is 3.13%(109s)",
];
const DAYS = ["Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"];
const MONTHS = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"];

function written(time) {
  const d = new Date(time);
  const clock = d.toISOString().slice(11, 19);
  return `${DAYS[d.getUTCDay()]} ${MONTHS[d.getUTCMonth()]} ${String(d.getUTCDate()).padStart(2)} ${clock} ${d.getUTCFullYear()}`;
}

export function writeLarge(directory, events, lines) {
  mkdirSync(directory, {recursive: true});
  const start = Date.UTC(2020, 0, 1);
  const log = [];
  for (let at = 0; at < events; ++at) {
    log.push(
      `seqNum: 0x${at.toString(16).padStart(8, "0")}\nTime: ${written(start + at * 600_000)}\n\nCode: 0x0000008e\n` +
        `Class: ${at % 97 === 0 ? 2 : at % 11 === 0 ? 1 : 0}\nLocale: 0x20\nEvent Description: ${DESCRIPTIONS[at % 4]} #${at}\n` +
        "Event Data:\n===========\nNone\n\n\n",
    );
  }
  writeFileSync(join(directory, "events.txt"), log.join(""));
  const term = ["\nFirmware Term Log Information on controller 0:\n"];
  for (let at = 0; at < lines; ++at)
    term.push(
      `11/17/26  21:12:03: C0:iopiEvent: MPI2_EVENT_SAS_TOPOLOGY_CHANGE_LIST line ${at} of the firmware's log\n`,
    );
  writeFileSync(join(directory, "term.txt"), term.join(""));
  writeFileSync(join(directory, "count.txt"), "Controller Count = 1\n");
  writeFileSync(
    join(directory, "machine.json"),
    JSON.stringify({
      description: "Many events",
      uname: "x86_64",
      commands: [
        {tool: "storcli", args: "/c0 show events", stdout: "events.txt"},
        {tool: "storcli", args: "/c0 show termlog", stdout: "term.txt"},
      ],
    }),
  );
}
