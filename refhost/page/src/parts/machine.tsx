// What the captures say of the machine as a whole.
import type {Overview} from "../base/report";
import {viewHash} from "../base/route";
import {visible} from "../base/text";

// What the collection itself knows, before what the captures say.
function machineFacts({meta, facts}: Overview) {
  const own = [
    {label: "Host name", value: meta["host"] ?? ""},
    {label: "Operating system", value: meta["os"] ?? ""},
    {label: "Kernel", value: meta["kernel"] ?? ""},
    {label: "Uptime", value: uptime(Number(meta["uptime_seconds"] || NaN))},
  ].map(fact => ({...fact, source: ""}));
  const told = new Set(facts.map(({label}) => label));
  return [...own.filter(({label, value}) => value !== "" && !told.has(label)), ...facts];
}

function uptime(seconds: number): string {
  if (Number.isNaN(seconds)) return "";
  const [days, hours, minutes] = [seconds / 86_400, (seconds / 3600) % 24, (seconds / 60) % 60].map(Math.floor);
  return days! > 0 ? `${days} d ${hours} h` : `${hours} h ${minutes} min`;
}

export function MachineFacts({overview}: {overview: Overview}) {
  const facts = machineFacts(overview);
  if (facts.length === 0) return <p class="empty">No capture says what machine this is.</p>;
  return (
    <dl class="facts">
      {facts.map(fact => (
        <div key={fact.label}>
          <dt>{visible(fact.label)}</dt>
          <dd>
            <bdi>{visible(fact.value)}</bdi>
            {fact.source !== "" && (
              <a class="source" href={viewHash("capture", fact.source)}>
                {visible(fact.source)}
              </a>
            )}
          </dd>
        </div>
      ))}
    </dl>
  );
}
