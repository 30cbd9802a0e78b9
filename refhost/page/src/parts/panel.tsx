// What is open beside or above a list: one record, one drive, one event. Esc closes it.
import type {ComponentChildren} from "preact";
import {useLayoutEffect, useRef} from "preact/hooks";

export function Panel({
  title,
  detail,
  actions,
  close,
  children,
  focus = true,
}: {
  title: string;
  detail?: string;
  actions?: ComponentChildren;
  close: () => void;
  children: ComponentChildren;
  focus?: boolean; // whether the cursor goes there; beside a grid it stays in the grid
}) {
  const panel = useRef<HTMLElement>(null);
  const latest = useRef(close);
  latest.current = close;
  useLayoutEffect(() => {
    if (focus) {
      panel.current?.focus({preventScroll: true});
      panel.current?.scrollIntoView({block: "nearest"});
    }
    const pressed = (event: KeyboardEvent) => {
      if (event.key !== "Escape" || event.defaultPrevented || document.querySelector("dialog[open]")) return;
      if ((event.target as Element).closest("input, select, textarea")) return;
      event.preventDefault();
      latest.current();
    };
    window.addEventListener("keydown", pressed);
    return () => window.removeEventListener("keydown", pressed);
  }, []);
  return (
    <section class="chosen" ref={panel} tabIndex={-1} aria-label={title}>
      <header>
        <h2>
          {title} {detail !== undefined && <small>{detail}</small>}
        </h2>
        {actions}
        <button type="button" onClick={close}>
          Close
        </button>
      </header>
      {children}
    </section>
  );
}
