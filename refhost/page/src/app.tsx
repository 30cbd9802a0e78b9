// The frame: what the report is about, where one is in it, and the way to everything else.
import {useEffect, useMemo, useRef, useState} from "preact/hooks";
import {CapturesView, CaptureView} from "./captures";
import type {Overview} from "./data";
import {OverviewView} from "./overview";
import {pictures} from "./pictures";
import {PrintView} from "./print";
import {routeOf, tableHash, viewHash, type Route} from "./route";
import {SearchView} from "./search";
import {serverName} from "./server_name";
import {TableView} from "./table_view";
import {applyTheme, nextTheme, savedTheme} from "./theme";
import {oneLine, visible} from "./text";

export function App({overview, nonce}: {overview: Overview; nonce: string}) {
  const [route, setRoute] = useState<Route>(() => routeOf(location.hash));
  const [theme, setTheme] = useState(savedTheme);
  const [menu, setMenu] = useState(false);
  const main = useRef<HTMLElement>(null);
  const captures = useMemo(() => new Map(overview.captures.map(capture => [capture.name, capture])), [overview]);
  const all = useMemo(
    () => overview.modules.flatMap(module => module.tables.map(table => ({table, module}))),
    [overview],
  );
  const tables = useMemo(() => new Map(all.map(({table}) => [table.id, table])), [all]);
  const drawn = useMemo(() => pictures.filter(picture => picture.has(overview, tables)), [overview, tables]);

  useEffect(() => {
    const moved = () => {
      setRoute(routeOf(location.hash));
      setMenu(false);
      main.current?.focus();
      window.scrollTo(0, 0);
    };
    window.addEventListener("hashchange", moved);
    return () => window.removeEventListener("hashchange", moved);
  }, []);
  useEffect(() => applyTheme(theme), [theme]);
  useEffect(() => {
    document.title = `${route.name || titleOf(route)} - ${serverName(overview)}`;
  }, [route]);

  const here =
    route.view === "table" ? tableHash(route.name) : viewHash(route.view === "capture" ? "captures" : route.view);
  const entry = (href: string, text: string, detail = "", empty = false, title = "") => (
    <li key={href}>
      <a href={href} class={empty ? "nothing" : ""} aria-current={href === here ? "page" : undefined}>
        <span>
          {text}
          {title !== "" && <small class="title">{title}</small>}
        </span>
        {detail !== "" && <small>{detail}</small>}
      </a>
    </li>
  );
  const found = all.find(({table}) => table.id === route.name);

  return (
    <>
      <header class="top">
        <button type="button" class="skip" onClick={() => main.current?.focus()}>
          Skip to the content
        </button>
        <button type="button" class="menu" aria-expanded={menu} aria-controls="contents" onClick={() => setMenu(!menu)}>
          Contents
        </button>
        <a class="name" href="#/overview">
          {serverName(overview)}
        </a>
        <form
          role="search"
          onSubmit={event => {
            event.preventDefault();
            const text = new FormData(event.currentTarget).get("text");
            location.hash = viewHash("search", String(text ?? "").trim());
          }}
        >
          <label>
            <span class="unseen">Search everything</span>
            <input
              type="search"
              name="text"
              placeholder="Search everything"
              spellcheck={false}
              defaultValue={route.view === "search" ? route.name : ""}
            />
          </label>
          <button type="submit">Search</button>
        </form>
        <button type="button" onClick={() => setTheme(nextTheme(theme))} aria-label={`Colours: ${theme}`}>
          {{light: "Light", dark: "Dark", system: "System"}[theme]}
        </button>
      </header>
      <div class="body">
        <nav id="contents" class={menu ? "open" : ""} aria-label="Contents">
          <ul>
            {entry("#/overview", "Overview")}
            {drawn.map(picture => entry(viewHash(picture.view), picture.title))}
            {entry("#/captures", "Captures", overview.captures.length.toLocaleString("en"))}
            {entry("#/print", "For paper")}
          </ul>
          {overview.modules.map(module => (
            <section key={module.name}>
              <h2>{visible(module.display || module.name || "Other tables")}</h2>
              <ul>
                {module.tables.map(table =>
                  entry(
                    tableHash(table.id),
                    visible(table.id),
                    table.records > 0 ? table.records.toLocaleString("en") : "none",
                    table.records === 0,
                    oneLine(table.title),
                  ),
                )}
              </ul>
            </section>
          ))}
        </nav>
        <main ref={main} tabIndex={-1}>
          {route.view === "overview" && <OverviewView overview={overview} />}
          {route.view === "table" &&
            (found ? (
              <TableView
                key={`${route.name}/${route.search}`}
                table={found.table}
                module={visible(found.module.display)}
                row={route.row}
                search={route.search}
                captures={captures}
                nonce={nonce}
              />
            ) : (
              <p class="empty">There is no table {visible(route.name)}.</p>
            ))}
          {drawn
            .filter(picture => picture.view === route.view)
            .map(picture => (
              <picture.Picture key={picture.view} overview={overview} tables={tables} />
            ))}
          {pictures.some(({view}) => view === route.view) && !drawn.some(({view}) => view === route.view) && (
            <p class="empty">This report has nothing to draw here.</p>
          )}
          {route.view === "captures" && <CapturesView overview={overview} />}
          {route.view === "capture" &&
            (captures.has(route.name) ? (
              <CaptureView
                key={route.name}
                capture={captures.get(route.name)!}
                line={route.row + 1}
                overview={overview}
              />
            ) : (
              <p class="empty">There is no capture {visible(route.name)}.</p>
            ))}
          {route.view === "search" && <SearchView overview={overview} text={route.name} />}
          {route.view === "print" && <PrintView overview={overview} />}
        </main>
      </div>
    </>
  );
}

function titleOf(route: Route): string {
  return (
    pictures.find(picture => picture.view === route.view)?.title ??
    {
      overview: "Overview",
      table: "",
      captures: "Captures",
      capture: "",
      search: "Search",
      print: "For paper",
      sensors: "",
      drives: "",
      events: "",
    }[route.view]
  );
}
