// The first view: which machine, what was collected, what wants a look, what is missing and why.
import {Concerns} from "./concerns";
import type {Overview, Table} from "./data";
import {tableHash, viewHash} from "./route";
import {serverName} from "./server_name";
import {count, seconds, visible} from "./text";

export function OverviewView({overview, tables}: {overview: Overview; tables: Map<string, Table>}) {
  const {meta} = overview;
  const status = meta["status"] ?? "";
  const all = overview.modules.flatMap(module => module.tables);
  const records = all.reduce((sum, table) => sum + table.records, 0);
  const started = Date.parse(meta["started"] ?? "");
  const took = Number.parseFloat(meta["seconds"] ?? "");
  const partial = all.filter(table => table.records > 0 && table.reason !== "");
  const failed = overview.commands.filter(command => command.outcome !== "").length;

  return (
    <>
      <h1>{serverName(overview)}</h1>
      <p class="lead">
        Collected{" "}
        {Number.isNaN(started) ? "at an unknown time" : <time dateTime={meta["started"]}>{when(started)}</time>}
        {!Number.isNaN(took) && ` in ${seconds(took)}`}
        {": "}
        {count(records, "record")} in {count(all.filter(table => table.records > 0).length, "table")}
        {", "}
        <a href="#/captures">{count(overview.captures.length, "capture")}</a>.
      </p>
      {status !== "" && status !== "complete" && (
        <p class="problem" role="alert">
          This collection is {visible(status)}.
        </p>
      )}
      {partial.length > 0 && (
        <p class="problem">
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
      {overview.facts.length > 0 && (
        <section aria-labelledby="machine">
          <h2 id="machine">The machine</h2>
          <dl class="facts">
            {overview.facts.map(fact => (
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
      <section aria-labelledby="look">
        <h2 id="look">Worth a look</h2>
        <Concerns tables={tables} />
        {failed > 0 && (
          <p>
            {count(failed, "command")} of {overview.commands.length} did not end well:{" "}
            <a href="#/captures">see the captures</a>.
          </p>
        )}
      </section>
      <section aria-labelledby="collected">
        <h2 id="collected">What was collected</h2>
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
        qvhost {visible(meta["qvhost"] ?? "")}. Limits: {visible(meta["limits"] ?? "")}. The same records:{" "}
        <a href="report.json">report.json</a> and report.sqlite beside this page.
      </footer>
    </>
  );
}

function when(time: number): string {
  return `${new Date(time).toISOString().slice(0, 19).replace("T", " ")} UTC`;
}
