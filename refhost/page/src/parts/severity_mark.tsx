// A severity or a word of health as a shape, so that it does not depend on colours.
import type {HealthWord, Severity} from "../base/report";

const SHAPES: Record<HealthWord | Severity, {outline: string; sign: string}> = {
  critical: {outline: "M5 1h6l4 4v6l-4 4H5l-4-4V5z", sign: "M5.5 5.5l5 5m0-5l-5 5"},
  warning: {outline: "M8 1l7.5 14H.5z", sign: "M8 6v4.2m0 1.7v1.2"},
  unknown: {outline: "M8 .5L15.5 8 8 15.5.5 8z", sign: "M6.3 6.2c.2-2.4 3.7-2 3.4.2-.2 1.2-1.7 1.4-1.7 2.8m0 1.5v1.2"},
  ok: {outline: "M8 1a7 7 0 110 14A7 7 0 018 1z", sign: "M4.8 8.3l2.3 2.3 4.2-4.9"},
  absent: {outline: "M8 1a7 7 0 110 14A7 7 0 018 1z", sign: "M5 8h6"},
  notice: {outline: "M2 2h12v12H2z", sign: "M8 4.2v1.2m0 1.8v4.6"},
};

export function SeverityMark({of}: {of: HealthWord | Severity}) {
  const {outline, sign} = SHAPES[of];
  return (
    <svg class={`severity ${of}`} viewBox="0 0 16 16" aria-hidden="true">
      <path class="outline" d={outline} />
      <path class="sign" d={sign} />
    </svg>
  );
}
