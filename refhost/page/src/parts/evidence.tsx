// Links to what a capture says: to the line, where the report holds the capture.
import type {ComponentChildren} from "preact";
import type {Overview, Place} from "../base/report";
import {captureHash} from "../base/route";
import {visible} from "../base/text";

export function Evidence({overview, place}: {overview: Overview; place: Place}) {
  const says = `${visible(place.capture)}${place.line > 0 ? `, line ${place.line}` : ""}`;
  if (!overview.captures.some(capture => capture.name === place.capture)) return <bdi>{says}</bdi>;
  return (
    <a class="evidence" href={captureHash(place.capture, place.line)}>
      <bdi>{says}</bdi>
    </a>
  );
}

// The address of where an entity stands; undefined: the report does not hold that capture.
export function addressOf(overview: Overview, {capture, line}: Place): string | undefined {
  return overview.captures.some(({name}) => name === capture) ? captureHash(capture, line) : undefined;
}

// What leads to where an entity stands, if the report holds that capture.
export function Standing({
  overview,
  place,
  title,
  children,
}: {
  overview: Overview;
  place: Place;
  title?: string;
  children: ComponentChildren;
}) {
  const address = addressOf(overview, place);
  if (address === undefined)
    return (
      <span class="standing" title={title}>
        {children}
      </span>
    );
  return (
    <a class="standing" href={address} title={title}>
      {children}
    </a>
  );
}
