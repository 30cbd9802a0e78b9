// How the list shows what the grid would show as plain text: times, severities, and how often a text is repeated.
import {oneLine, visible} from "../base/text";
import {SEVERITY, TEXT, TIME, type Event} from "./event";
import {levelOfEvent} from "./severity_dot";

function element(tag: string, className: string, text = ""): HTMLElement {
  const made = document.createElement(tag);
  made.className = className;
  made.textContent = text;
  return made;
}

// On a phone the severity stands before the time, which goes to the minute, so that there is room for words.
function timeCell(event: Event, narrow: boolean): Node {
  const words = event.time === "" ? "no clock" : visible(event.time.replace("T", " "));
  if (!narrow) return element("span", "time", words);
  const both = document.createElement("span");
  both.append(
    element("span", `dot ${levelOfEvent(event.severity)}`),
    element("span", "unseen", `${visible(event.severity)} `),
    element("span", "time", words.replace(/(\d\d:\d\d):\d\d.*$/, "$1")),
  );
  return both;
}

function repeatedCell(event: Event, times: number): Node {
  const cell = document.createElement("bdi");
  cell.append(element("b", "times", `x ${times.toLocaleString("en")}`), ` ${oneLine(event.text)}`);
  return cell;
}

// undefined: the value as it is.
export function cellOf(event: Event, column: number, times: number, narrow: boolean): Node | undefined {
  if (column === TIME) return timeCell(event, narrow);
  if (column === SEVERITY)
    return element("span", `event-severity ${levelOfEvent(event.severity)}`, visible(event.severity));
  return column === TEXT && times > 1 ? repeatedCell(event, times) : undefined;
}
