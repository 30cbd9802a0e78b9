// All tables, as the plug-in filed them: those with records first, then the empty ones with their reasons.
import type {Overview, Table} from "../base/report";
import {tableHash} from "../base/route";
import {count, oneLine, visible} from "../base/text";
import {moduleName} from "../parts/navigation";

function TableList({tables, label}: {tables: Table[]; label: string}) {
  return (
    <div class="scroll" tabIndex={0} role="region" aria-label={label}>
      <table class="list">
        <thead>
          <tr>
            <th scope="col">Table</th>
            <th scope="col">Id</th>
            <th scope="col" class="number">
              Records
            </th>
            <th scope="col">Note</th>
          </tr>
        </thead>
        <tbody>
          {tables.map(table => (
            <tr key={table.id} class={table.records === 0 ? "nothing" : ""}>
              <td>{oneLine(table.title)}</td>
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
      </table>
    </div>
  );
}

export function TablesView({overview}: {overview: Overview}) {
  const all = overview.modules.flatMap(module => module.tables);
  const records = all.reduce((sum, table) => sum + table.records, 0);
  return (
    <>
      <h1>All tables</h1>
      <p class="lead">
        {count(records, "record")} in {count(all.filter(table => table.records > 0).length, "table")}, as the plug-in
        filed them.
      </p>
      {overview.modules.map(module => {
        const empty = module.tables.filter(table => table.records === 0);
        const filled = module.tables.filter(table => table.records > 0);
        return (
          <section key={module.name}>
            <h2>{moduleName(module)}</h2>
            {filled.length > 0 && <TableList tables={filled} label={moduleName(module)} />}
            {empty.length > 0 && (
              <details class="empties">
                <summary>{count(empty.length, "empty table")}, and why</summary>
                <TableList tables={empty} label={`${moduleName(module)}, empty tables`} />
              </details>
            )}
          </section>
        );
      })}
    </>
  );
}
