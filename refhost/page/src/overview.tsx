// The first view: what the collection lacks, how each subsystem is, what is wrong, which machine it is,
// what was collected.
import type {Overview} from "./data";
import {FindingsView} from "./findings";
import {HealthView} from "./health";
import {tableHash, viewHash} from "./route";
import {hostName, productName} from "./server_name";
import {count, seconds, visible} from "./text";
import {missing} from "./verdict";

// What the collection did not bring, so that nobody takes silence for health.
function Lacking({overview}: {overview: Overview}) {
  const status = overview.meta["status"] ?? "";
  const incomplete = status !== "" && status !== "complete";
  const partial = overview.modules
    .flatMap(module => module.tables)
    .filter(table => table.records > 0 && table.reason !== "");
  const unjudged = missing(overview);
  if (!incomplete && partial.length === 0 && unjudged.length === 0) return null;
  const some = 4;
  const lines = unjudged.map(({words, subsystems}) => (
    <li key={words}>
      <bdi>{visible(words)}</bdi> <small>({visible(subsystems.join(", "))})</small>
    </li>
  ));
  return (
    <div class="problem" role="alert">
      {incomplete && (
        <p>
          This collection is <bdi>{visible(status)}</bdi>.
        </p>
      )}
      {partial.length > 0 && (
        <p>
          Partial:{" "}
          {partial.map((table, at) => (
            <span key={table.id}>
              {at > 0 && ", "}
              <a href={tableHash(table.id)}>{visible(table.id)}</a>
            </span>
          ))}
          .
        </p>
      )}
      {unjudged.length > 0 && (
        <>
          <p>This collection lacks what a verdict needs:</p>
          <ul class="dashed">{lines.slice(0, some)}</ul>
          {lines.length > some && (
            <details>
              <summary>{lines.length - some} more</summary>
              <ul class="dashed">{lines.slice(some)}</ul>
            </details>
          )}
        </>
      )}
    </div>
  );
}

// The health of the subsystems and the findings, or that the report holds none.
export function Verdict({overview}: {overview: Overview}) {
  if (overview.health === undefined)
    return <p class="empty">This report holds no verdict: nothing in it says how the server is.</p>;
  return (
    <>
      <section aria-labelledby="health">
        <h2 id="health">Health</h2>
        <HealthView overview={overview} />
      </section>
      <section aria-labelledby="findings">
        <h2 id="findings">Findings</h2>
        <FindingsView overview={overview} />
      </section>
    </>
  );
}

// What the page itself knows of the machine, before what its captures say of it.
function machineFacts(overview: Overview) {
  const own = [
    {label: "Host name", value: overview.meta["host"] ?? ""},
    {label: "Operating system", value: overview.meta["os"] ?? ""},
  ].map(fact => ({...fact, source: ""}));
  return [...own.filter(fact => fact.value !== ""), ...overview.facts];
}

export function OverviewView({overview}: {overview: Overview}) {
  const {meta} = overview;
  const all = overview.modules.flatMap(module => module.tables);
  const records = all.reduce((sum, table) => sum + table.records, 0);
  const started = Date.parse(meta["started"] ?? "");
  const took = Number.parseFloat(meta["seconds"] ?? "");
  const facts = machineFacts(overview);
  const [host, product] = [hostName(overview), productName(overview)];
  const failed = overview.commands.filter(command => command.outcome !== "").length;

  return (
    <>
      <h1>
        <bdi>{host || product || "Server report"}</bdi>
        {host !== "" && product !== "" && (
          <small class="product">
            {" "}
            <bdi>{product}</bdi>
          </small>
        )}
      </h1>
      <p class="lead">
        Collected{" "}
        {Number.isNaN(started) ? "at an unknown time" : <time dateTime={meta["started"]}>{when(started)}</time>}
        {!Number.isNaN(took) && ` in ${seconds(took)}`}
        {": "}
        {count(records, "record")} in {count(all.filter(table => table.records > 0).length, "table")}
        {", "}
        <a href="#/captures">{count(overview.captures.length, "capture")}</a>.
      </p>
      <Lacking overview={overview} />
      <Verdict overview={overview} />
      {facts.length > 0 && (
        <section aria-labelledby="machine">
          <h2 id="machine">The machine</h2>
          <dl class="facts">
            {facts.map(fact => (
              <div key={fact.label}>
                <dt>{fact.label}</dt>
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
        </section>
      )}
      <section aria-labelledby="collected">
        <h2 id="collected">What was collected</h2>
        {failed > 0 && (
          <p>
            {count(failed, "command")} of {overview.commands.length} did not end well:{" "}
            <a href="#/captures">see the captures</a>.
          </p>
        )}
        <div class="scroll" tabIndex={0} role="region" aria-label="Tables">
          <table class="list">
            <thead>
              <tr>
                <th scope="col">Module</th>
                <th scope="col">Table</th>
                <th scope="col" class="number">
                  Records
                </th>
                <th scope="col">Note</th>
              </tr>
            </thead>
            {overview.modules.map(module => (
              <tbody key={module.name}>
                {module.tables.map((table, at) => (
                  <tr key={table.id} class={table.records === 0 ? "nothing" : ""}>
                    {at === 0 && (
                      <th scope="rowgroup" rowSpan={module.tables.length}>
                        {visible(module.display || module.name)}
                      </th>
                    )}
                    <td>
                      <a href={tableHash(table.id)}>{visible(table.id)}</a>
                    </td>
                    <td class="number">{table.records.toLocaleString("en")}</td>
                    <td class={table.records > 0 ? "raised" : ""}>
                      {table.records > 0 && table.reason !== "" && "partial: "}
                      {visible(table.reason)}
                    </td>
                  </tr>
                ))}
              </tbody>
            ))}
          </table>
        </div>
      </section>
      <footer>
        qvhost {visible(meta["qvhost"] ?? "")}. Limits: {visible(meta["limits"] ?? "")}.{standIns(meta["stand_ins"])}
        {!overview.apart && (
          <>
            {" "}
            The same records: <a href="report.json">report.json</a> and report.sqlite beside this page.
          </>
        )}
        <br />A page can run whatever its sender put into it. If this report came from somebody else, read the page that{" "}
        <code>qvhost open</code> makes from its store instead.
      </footer>
    </>
  );
}

// "uname\nmv": the tools that scripts stood in for, which hardly anybody has to know.
function standIns(tools: string | undefined): string {
  return tools ? ` Compatibility: stand-ins for ${visible(tools.split("\n").join(", "))}.` : "";
}

function when(time: number): string {
  return `${new Date(time).toISOString().slice(0, 19).replace("T", " ")} UTC`;
}
