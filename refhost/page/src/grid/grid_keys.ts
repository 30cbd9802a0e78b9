// The keyboard of a grid, as WAI-ARIA's grid pattern has it: the grid is one Tab stop, arrows move inside. Above
// the first row are the filters, above those the headings.
import type {SlickGrid} from "slickgrid";

export function oneTabStop(host: HTMLElement, grid: SlickGrid): {restore(): void} {
  const headings = () => [...host.querySelectorAll<HTMLElement>(".slick-header-column")];
  const filters = () => [...host.querySelectorAll<HTMLInputElement>(".slick-headerrow-column input")];
  // Where Tab enters; and elements that the library focuses in place of its active cell.
  const viewport = host.querySelector<HTMLElement>(".slick-viewport-top.slick-viewport-left")!;
  const sinks = [...host.querySelectorAll<HTMLElement>(":scope > div[tabindex]:not([class])")];
  for (const other of host.querySelectorAll<HTMLElement>("[tabindex='0']")) other.removeAttribute("tabindex");
  viewport.tabIndex = 0;
  // Browsers make a stop of what scrolls, as the row of filters does.
  for (const other of [...sinks, ...host.querySelectorAll<HTMLElement>(".slick-headerrow")]) other.tabIndex = -1;

  const focusActive = () => {
    const cell = grid.getActiveCellNode();
    if (!cell) return;
    cell.tabIndex = -1;
    cell.focus({preventScroll: true});
  };
  const toCell = (column: number) => {
    const rows = grid.getDataLength();
    if (rows === 0) return;
    const row = grid.getActiveCell()?.row ?? Math.max(0, grid.getViewport().top);
    grid.setActiveCell(Math.min(row, rows - 1), Math.max(0, column));
    focusActive();
  };
  const toHeading = (column: number) => {
    const heading = headings()[column];
    if (heading === undefined) return;
    heading.tabIndex = -1;
    heading.focus();
  };
  const toFilter = (column: number) => {
    const filter = filters()[column];
    if (filter === undefined) toHeading(column);
    else filter.focus();
  };

  let isPointer = false;
  host.addEventListener("pointerdown", () => {
    isPointer = true;
    setTimeout(() => {
      isPointer = false;
    });
  });
  viewport.addEventListener("focus", () => {
    if (isPointer) return;
    if (grid.getActiveCell() === null) toCell(0);
    else focusActive();
  });
  for (const sink of sinks) sink.addEventListener("focus", focusActive);

  // Focus has moved on: Tab may enter again.
  host.addEventListener("focusout", () => {
    viewport.tabIndex = 0;
  });

  // True: the key has done what it is for.
  const cellKey = (key: string): boolean => {
    const cell = grid.getActiveCell();
    if (key !== "ArrowUp" || cell === null || cell.row > 0) return false;
    toFilter(cell.cell);
    return true;
  };
  const filterKey = (key: string, column: number): boolean => {
    if (key === "ArrowDown" || key === "Enter") toCell(column);
    else if (key === "ArrowUp") toHeading(column);
    else return false;
    return true;
  };
  const headingKey = (key: string, column: number): boolean => {
    if (key === "ArrowDown") {
      if (filters().length > 0) toFilter(column);
      else toCell(column);
    } else if (key === "ArrowLeft") toHeading(column - 1);
    else if (key === "ArrowRight") toHeading(column + 1);
    else if (key === "Enter" || key === " ") headings()[column]!.click();
    else return false;
    return true;
  };

  host.addEventListener(
    "keydown",
    event => {
      const target = event.target as HTMLElement;
      if (event.key === "Tab") {
        // The library would take Tab for its own; here the browser moves on, past the viewport around the cell.
        event.stopPropagation();
        viewport.tabIndex = -1;
        return;
      }
      const filter = target instanceof HTMLInputElement ? filters().indexOf(target) : -1;
      const heading = headings().indexOf(target);
      const done =
        filter >= 0 ? filterKey(event.key, filter) : heading >= 0 ? headingKey(event.key, heading) : cellKey(event.key);
      if (done) event.preventDefault();
      // Of what is typed into a filter the library learns nothing.
      if (done || (filter >= 0 && event.key !== "Escape")) event.stopPropagation();
    },
    true,
  );

  return {restore: focusActive};
}
