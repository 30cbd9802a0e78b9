// The frame: what the report is about, where one is in it, and the way to everything else.
import type {FunctionComponent} from "preact";
import {useLayoutEffect, useMemo, useRef, useState} from "preact/hooks";
import type {Overview} from "./base/report";
import {routeOf, viewHash, visit, type Route, type View} from "./base/route";
import {serverName} from "./base/server_name";
import {subjects} from "./base/subjects";
import {oneLine, visible} from "./base/text";
import {applyTheme, nextTheme, savedTheme} from "./base/theme";
import type {ViewProps} from "./base/view_props";
import {Help} from "./parts/help";
import {isIncomplete} from "./parts/incomplete_notice";
import {Navigation} from "./parts/navigation";
import {SubjectView} from "./parts/subject_view";
import {EventsPicture} from "./events/view";
import {MemoryPicture} from "./pictures/memory";
import {PowerPicture} from "./pictures/power";
import {SensorsPicture} from "./pictures/sensors";
import {StoragePicture} from "./pictures/storage";
import {SystemPicture} from "./pictures/system";
import {CaptureView} from "./views/capture_view";
import {CapturesView} from "./views/captures";
import {OverviewView} from "./views/overview";
import {PrintView} from "./views/print";
import {SearchView} from "./views/search";
import {TablesView} from "./views/tables";
import {TableView} from "./table/view";

const pictures: Partial<Record<View, FunctionComponent<ViewProps>>> = {
  storage: StoragePicture,
  sensors: SensorsPicture,
  power: PowerPicture,
  memory: MemoryPicture,
  events: EventsPicture,
  system: SystemPicture,
};

const places = ({view, name}: Route) => `${view} ${name}`;

function Content({overview, route, nonce}: ViewProps) {
  const captures = useMemo(() => new Map(overview.captures.map(capture => [capture.name, capture])), [overview]);
  const subject = subjects.find(({view}) => view === route.view);
  const Picture = pictures[route.view];
  if (Picture !== undefined)
    return (
      <SubjectView key={route.view} subject={subject!} overview={overview}>
        <Picture overview={overview} route={route} nonce={nonce} />
      </SubjectView>
    );
  if (route.view === "table") {
    const module = overview.modules.find(({tables}) => tables.some(({id}) => id === route.name));
    const table = module?.tables.find(({id}) => id === route.name);
    if (!module || !table) return <p class="empty">There is no table {visible(route.name)}.</p>;
    return (
      <TableView
        key={route.name}
        table={table}
        module={visible(module.display)}
        route={route}
        captures={captures}
        nonce={nonce}
      />
    );
  }
  if (route.view === "capture") {
    const capture = captures.get(route.name);
    if (!capture) return <p class="empty">There is no capture {visible(route.name)}.</p>;
    return <CaptureView key={route.name} capture={capture} route={route} overview={overview} />;
  }
  if (route.view === "captures") return <CapturesView overview={overview} />;
  if (route.view === "tables") return <TablesView overview={overview} />;
  if (route.view === "search") return <SearchView key={route.name} overview={overview} text={route.name} />;
  if (route.view === "print") return <PrintView overview={overview} />;
  return <OverviewView overview={overview} />;
}

export function App({overview, nonce}: {overview: Overview; nonce: string}) {
  const [route, setRoute] = useState<Route>(() => routeOf(location.hash));
  const [theme, setTheme] = useState(savedTheme);
  const [menu, setMenu] = useState(false);
  const [help, setHelp] = useState(false);
  const main = useRef<HTMLElement>(null);
  const search = useRef<HTMLInputElement>(null);

  // What is drawn can be used: no address and no key is missed, and the colours come with it.
  useLayoutEffect(() => {
    let last = places(routeOf(location.hash));
    const moved = () => {
      const next = routeOf(location.hash);
      setRoute(next);
      setMenu(false);
      // Within a view the eye and the cursor stay where they are.
      if (places(next) !== last) {
        main.current?.focus({preventScroll: true});
        window.scrollTo(0, 0);
      }
      last = places(next);
    };
    window.addEventListener("hashchange", moved);
    return () => window.removeEventListener("hashchange", moved);
  }, []);
  useLayoutEffect(() => {
    const pressed = (event: KeyboardEvent) => {
      if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented) return;
      const typing = (event.target as Element).closest("input, select, textarea") !== null;
      if (event.key === "Escape") {
        setMenu(false);
        if (typing) main.current?.focus({preventScroll: true});
      } else if (typing) {
        return;
      } else if (event.key === "/") {
        event.preventDefault();
        search.current?.select();
        search.current?.focus();
      } else if (event.key === "?") {
        setHelp(true);
      }
    };
    window.addEventListener("keydown", pressed);
    return () => window.removeEventListener("keydown", pressed);
  }, []);
  useLayoutEffect(() => applyTheme(theme), [theme]);
  useLayoutEffect(() => {
    document.title = `${oneLine(titleOf(route))} - ${serverName(overview)}`;
  }, [route]);

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
            visit(viewHash("search", String(text ?? "").trim()));
          }}
        >
          <label>
            <span class="unseen">Search everything</span>
            <input
              ref={search}
              type="search"
              name="text"
              placeholder="Search everything"
              aria-keyshortcuts="/"
              spellcheck={false}
              defaultValue={route.view === "search" ? route.name : ""}
            />
          </label>
          <button type="submit">Search</button>
        </form>
        <button type="button" onClick={() => setTheme(nextTheme(theme))} aria-label={`Colours: ${theme}`}>
          {{light: "Light", dark: "Dark", system: "System"}[theme]}
        </button>
        <button type="button" class="keys" aria-keyshortcuts="?" aria-label="Keys" onClick={() => setHelp(true)}>
          ?
        </button>
      </header>
      {help && <Help close={() => setHelp(false)} />}
      <div class="body">
        <Navigation overview={overview} route={route} open={menu} />
        <main ref={main} tabIndex={-1}>
          {isIncomplete(overview) && route.view !== "overview" && route.view !== "print" && (
            <p class="problem short">
              This collection is incomplete: <a href="#/overview">what it lacks</a>.
            </p>
          )}
          <Content overview={overview} route={route} nonce={nonce} />
        </main>
      </div>
    </>
  );
}

const TITLES: Partial<Record<View, string>> = {tables: "All tables", search: "Search", print: "For paper"};

function titleOf({view, name}: Route): string {
  return name || subjects.find(subject => subject.view === view)?.title || TITLES[view] || "";
}
