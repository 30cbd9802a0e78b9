// The way to everything: subjects with their state, then the raw tables.
import type {ComponentChildren} from "preact";
import type {Module, Overview, Table} from "../base/report";
import {tableHash, viewHash, type Route} from "../base/route";
import {healthOf, subjects} from "../base/subjects";
import {count, oneLine, visible} from "../base/text";
import {SeverityMark} from "./severity_mark";

export function moduleName(module: Module): string {
  return visible(module.display || module.name || "Other tables");
}

function Entry({
  href,
  here,
  class: kind,
  children,
}: {
  href: string;
  here: string;
  class?: string;
  children: ComponentChildren;
}) {
  return (
    <li>
      <a href={href} class={kind} aria-current={href === here ? "page" : undefined}>
        {children}
      </a>
    </li>
  );
}

function TableEntry({table, here}: {table: Table; here: string}) {
  const [title, id] = [oneLine(table.title), visible(table.id)];
  const empty = table.records === 0;
  return (
    <Entry href={tableHash(table.id)} here={here} class={empty ? "nothing" : undefined}>
      <span>
        {title || id}
        {title !== "" && <small class="id">{id}</small>}
      </span>
      <small>{empty ? "none" : table.records.toLocaleString("en")}</small>
    </Entry>
  );
}

function ModuleTables({module, here}: {module: Module; here: string}) {
  const empty = module.tables.filter(table => table.records === 0);
  const entries = (tables: Table[]) => (
    <ul>
      {tables.map(table => (
        <TableEntry key={table.id} table={table} here={here} />
      ))}
    </ul>
  );
  return (
    <section>
      <h3>{moduleName(module)}</h3>
      {entries(module.tables.filter(table => table.records > 0))}
      {empty.length > 0 && (
        <details open={empty.some(table => tableHash(table.id) === here)}>
          <summary>{count(empty.length, "empty table")}</summary>
          {entries(empty)}
        </details>
      )}
    </section>
  );
}

export function Navigation({overview, route, open}: {overview: Overview; route: Route; open: boolean}) {
  const here =
    route.view === "table" ? tableHash(route.name) : viewHash(route.view === "capture" ? "captures" : route.view);
  return (
    <nav id="contents" class={open ? "open" : ""} aria-label="Contents">
      <ul class="subjects">
        {subjects.map(subject => {
          const word = healthOf(overview, subject);
          return (
            <Entry key={subject.view} href={viewHash(subject.view)} here={here}>
              <span>{subject.title}</span>
              {word !== undefined && (
                <small class={`word ${word}`}>
                  {word} <SeverityMark of={word} />
                </small>
              )}
              {subject.view === "events" && overview.events !== undefined && (
                <small>
                  {overview.events.records === 0 ? "none told" : overview.events.records.toLocaleString("en")}
                </small>
              )}
            </Entry>
          );
        })}
        <Entry href="#/print" here={here}>
          For paper
        </Entry>
        <Entry href="#/tables" here={here}>
          All tables
        </Entry>
      </ul>
      {overview.modules.map(module => (
        <ModuleTables key={module.name} module={module} here={here} />
      ))}
    </nav>
  );
}
