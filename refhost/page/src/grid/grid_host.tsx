// The grid within a view: what is shown comes in, what people do goes out. Its rows change together with what is around
// them, a count for instance.
import {useLayoutEffect, useRef} from "preact/hooks";
import type {Capture} from "../base/report";
import type {Rows} from "../base/rows";
import type {Sort} from "../base/view_rows";
import {createGrid, type Grid, type Look} from "./grid";

const TYPING_MS = 120;
const NONE: Map<number, string> = new Map();

export function GridHost({
  rows,
  order,
  sort,
  onSort,
  filters = NONE,
  onFilter = () => {},
  visibleColumns,
  captures,
  nonce,
  chosen,
  choose,
  look,
}: {
  rows: Rows;
  order: Int32Array;
  sort: Sort | null;
  onSort: (sort: Sort) => void;
  filters?: Map<number, string>;
  onFilter?: (column: number, text: string) => void;
  visibleColumns: boolean[];
  captures: Map<string, Capture>;
  nonce: string;
  chosen: number;
  choose: (row: number) => void;
  look?: Look;
}) {
  const host = useRef<HTMLDivElement>(null);
  const grid = useRef<Grid | null>(null);
  const latest = useRef({onSort, onFilter, choose});
  latest.current = {onSort, onFilter, choose};
  const jumped = useRef(false);

  useLayoutEffect(() => {
    let typing = 0;
    const made = createGrid(
      host.current!,
      rows,
      captures,
      nonce,
      {
        sort: (column, ascending) => latest.current.onSort({column, ascending}),
        open: row => latest.current.choose(row),
        filter: (column, text) => {
          clearTimeout(typing);
          typing = window.setTimeout(() => latest.current.onFilter(column, text), TYPING_MS);
        },
      },
      look,
    );
    grid.current = made;
    const observer = new ResizeObserver(() => made.resize());
    observer.observe(host.current!);
    return () => {
      clearTimeout(typing);
      observer.disconnect();
      made.destroy();
    };
  }, []);
  useLayoutEffect(() => grid.current?.columns(visibleColumns), [visibleColumns]);
  useLayoutEffect(() => grid.current?.sorting(sort), [sort?.column, sort?.ascending, visibleColumns]);
  useLayoutEffect(() => grid.current?.filters(filters), [filters]);
  useLayoutEffect(() => {
    grid.current?.show(rows, order);
    const isTyping = document.activeElement instanceof HTMLInputElement;
    if (chosen >= 0 && !jumped.current && !isTyping && order.includes(chosen)) {
      jumped.current = true;
      grid.current?.select(chosen);
    }
  }, [rows, order]);
  useLayoutEffect(() => {
    // Its place may come with the next order.
    jumped.current = false;
    if (chosen >= 0 && order.includes(chosen)) grid.current?.select(chosen);
  }, [chosen]);

  // The library gives its element classes of its own.
  return (
    <div class={chosen >= 0 ? "grid short" : "grid"}>
      <div ref={host} />
    </div>
  );
}
