// The first view: what the collection lacks, how each subsystem is, what is wrong, which machine it is.
import type {Overview} from "../base/report";
import {hostName, productName, serialNumber} from "../base/server_name";
import {count, seconds, visible, written} from "../base/text";
import {FindingsView} from "../parts/findings";
import {HealthView} from "../parts/health";
import {IncompleteNotice} from "../parts/incomplete_notice";
import {MachineFacts} from "../parts/machine";

// The health of the subsystems and the findings, or that the report holds none.
export function Verdict({overview}: {overview: Overview}) {
  if (overview.health === undefined)
    return <p class="empty">This report holds no verdict: nothing in it says how the server is.</p>;
  return (
    <>
      <section aria-labelledby="health">
        <h2 id="health">Health</h2>
        <HealthView overview={overview} health={overview.health} />
      </section>
      <section aria-labelledby="findings">
        <h2 id="findings">Findings</h2>
        <FindingsView overview={overview} findings={overview.findings ?? []} />
      </section>
    </>
  );
}

// "kp220c", and small behind it product and serial number.
export function ServerHeading({overview}: {overview: Overview}) {
  const [host, product, serial] = [hostName(overview), productName(overview), serialNumber(overview)];
  const first = host || product || "Server report";
  const rest = [first === product ? "" : product, serial && `serial ${serial}`].filter(text => text !== "").join(", ");
  return (
    <h1>
      <bdi>{first}</bdi>
      {rest !== "" && (
        <small class="product">
          {" "}
          <bdi>{rest}</bdi>
        </small>
      )}
    </h1>
  );
}

export function Collected({overview}: {overview: Overview}) {
  const {meta} = overview;
  const started = Date.parse(meta["started"] ?? "");
  const took = Number.parseFloat(meta["seconds"] ?? "");
  return (
    <>
      Collected{" "}
      {Number.isNaN(started) ? "at an unknown time" : <time dateTime={meta["started"]}>{written(started)} UTC</time>}
      {!Number.isNaN(took) && ` in ${seconds(took)}`}
      {meta["recorded"] && `, from what was recorded at ${visible(meta["recorded"].replace("T", " "))}`}
    </>
  );
}

export function OverviewView({overview}: {overview: Overview}) {
  const {meta} = overview;
  const all = overview.modules.flatMap(module => module.tables);
  const records = all.reduce((sum, table) => sum + table.records, 0);
  const failed = overview.commands.filter(command => command.outcome !== "").length;
  return (
    <>
      <ServerHeading overview={overview} />
      <p class="lead">
        <Collected overview={overview} />.
      </p>
      <IncompleteNotice overview={overview} />
      <Verdict overview={overview} />
      <section aria-labelledby="machine">
        <h2 id="machine">The machine</h2>
        <MachineFacts overview={overview} />
      </section>
      <section aria-labelledby="collected">
        <h2 id="collected">What was collected</h2>
        <p>
          <a href="#/tables">{count(records, "record")}</a> in{" "}
          {count(all.filter(table => table.records > 0).length, "table")},{" "}
          <a href="#/captures">{count(overview.captures.length, "capture")}</a>
          {failed > 0 && (
            <>
              ; {count(failed, "command")} of {overview.commands.length} did not end well:{" "}
              <a href="#/captures">see the captures</a>
            </>
          )}
          .
        </p>
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
