// The events that have something in common, the newest first.
import {useEffect, useState} from "preact/hooks";
import {loadRows} from "../base/load";
import type {Overview} from "../base/report";
import {selected, Slicer} from "../base/slices";
import {eventAt, type Event} from "./event";
import {EventList} from "./list";

export interface FoundEvents {
  found: Event[];
  reading: boolean;
  failure: string;
}

// `about` stands for what `passes` looks for: it looks again when that changes.
export function useEventsWith(overview: Overview, passes: (event: Event) => boolean, about: string): FoundEvents {
  const [state, setState] = useState<FoundEvents>({found: [], reading: true, failure: ""});
  useEffect(() => {
    const abort = new AbortController();
    const look = async () => {
      if (overview.events === undefined) return [];
      const list = new EventList(await loadRows(overview.events));
      const slicer = new Slicer(abort.signal);
      await list.grow(slicer);
      const rows = await selected(list.count, row => passes(eventAt(list.rows, row)), slicer);
      const time = (row: number) => (Number.isNaN(list.times[row]) ? -Infinity : list.times[row]!);
      return [...rows]
        .sort((a, b) => (time(a) === time(b) ? b - a : time(b) - time(a)))
        .map(row => eventAt(list.rows, row));
    };
    setState({found: [], reading: true, failure: ""});
    look()
      .then(found => setState({found, reading: false, failure: ""}))
      .catch((error: Error) => {
        if (!abort.signal.aborted) setState({found: [], reading: false, failure: error.message});
      });
    return () => abort.abort();
  }, [about]);
  return state;
}
