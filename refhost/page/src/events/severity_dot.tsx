// An event's severity as its source or its log tells it; the verdict's is another (parts/severity_mark.tsx).
import {visible} from "../base/text";

const LEVELS: Record<string, string> = {critical: "bad", warning: "poor"};

export const levelOfEvent = (severity: string) => LEVELS[severity] ?? "minor";

export function SeverityDot({of}: {of: string}) {
  return (
    <span class={`event-severity ${levelOfEvent(of)}`}>
      <span class={`dot ${levelOfEvent(of)}`} aria-hidden="true" />
      {visible(of)}
    </span>
  );
}
