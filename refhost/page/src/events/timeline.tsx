// The events that are shown, over time: a bar a bin, the severe ones at its foot. A bar leads to its span.
import {utcTicks} from "d3-time";
import {scale} from "../base/scale";
import {count, written} from "../base/text";
import {levelOfEvent} from "./severity_dot";
import {BINS, LEVELS, type Bins} from "./shown";

const WIDTH = 900;
const HEIGHT = 84;
const FOOT = 20;

const MONTHS = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"];

// What begins there: "2026", "Nov", "Nov 18", "09:30", "09:30:15".
export function tickWords(tick: Date): string {
  const [month, day] = [MONTHS[tick.getUTCMonth()]!, tick.getUTCDate()];
  const clock = tick.toISOString().slice(11, 19);
  if (!clock.endsWith(":00")) return clock;
  if (clock !== "00:00:00") return clock.slice(0, 5);
  if (day > 1) return `${month} ${day}`;
  return month === "Jan" ? String(tick.getUTCFullYear()) : month;
}

export function Timeline({
  bins: {start, end, counts},
  hrefOf,
}: {
  bins: Bins;
  hrefOf: (from: number, to: number) => string;
}) {
  if (Number.isNaN(start)) return null;
  const x = scale(start, end, WIDTH);
  // Logs tell whole seconds.
  const ticks = utcTicks(new Date(start), new Date(end), 6).filter(tick => tick.getUTCMilliseconds() === 0);
  const step = WIDTH / BINS;
  const totals = Array.from({length: BINS}, (_, bin) =>
    LEVELS.reduce((sum, _level, level) => sum + counts[bin * LEVELS.length + level]!, 0),
  );
  const highest = Math.log1p(Math.max(...totals));
  return (
    <div class="scroll over-time" tabIndex={0} role="region" aria-label="Events over time">
      <svg
        class="timeline"
        viewBox={`0 0 ${WIDTH} ${HEIGHT + FOOT}`}
        role="group"
        aria-label={`Events from ${written(start)} to ${written(end)}`}
      >
        {totals.map((total, bin) => {
          if (total === 0) return null;
          const [from, to] = [0, 1].map(more => start + ((end - start) * (bin + more)) / BINS);
          const own = LEVELS.map((_, level) => counts[bin * LEVELS.length + level]!);
          const says = `${count(total, "event")} from ${written(from!)} to ${written(to!)}: ${own[0]} critical, ${own[1]} warning`;
          // Single events stay visible beside thousands; within a bar parts are as their numbers are.
          const tall = 6 + ((HEIGHT - 6) * Math.log1p(total)) / highest;
          let top = HEIGHT;
          return (
            <a key={bin} href={hrefOf(from!, to!)} tabIndex={-1} aria-label={says}>
              <title>{says}</title>
              {LEVELS.map((severity, level) => {
                if (own[level] === 0) return null;
                const part = Math.max(2, (tall * own[level]!) / total);
                top -= part;
                return (
                  <rect
                    key={level}
                    class={`event ${levelOfEvent(severity)}`}
                    x={bin * step}
                    width={step - 1}
                    y={Math.max(0, top)}
                    height={part}
                  />
                );
              })}
            </a>
          );
        })}
        <line class="base" x1={0} x2={WIDTH} y1={HEIGHT} y2={HEIGHT} />
        {ticks.map(tick => (
          <text
            key={+tick}
            class="tick"
            x={Math.min(Math.max(x(+tick), 24), WIDTH - 24)}
            y={HEIGHT + 14}
            text-anchor="middle"
          >
            {tickWords(tick)}
          </text>
        ))}
      </svg>
    </div>
  );
}
