// The keys that the page knows.
import {useLayoutEffect, useRef} from "preact/hooks";

const KEYS = [
  ["/", "search everything"],
  ["?", "this list"],
  ["Esc", "close what is open"],
  ["Tab", "to the next control; a table is one stop"],
  ["Arrows, Page Up, Page Down, Home, End", "move in a table; up from its first row to filters and headings"],
  ["Enter", "open the record; on a heading, sort"],
  ["Alt ←, Alt →", "back and forward, as in any page: filters, records and lines are in the address"],
];

export function Help({close}: {close: () => void}) {
  const dialog = useRef<HTMLDialogElement>(null);
  useLayoutEffect(() => dialog.current?.showModal(), []);
  return (
    <dialog ref={dialog} aria-label="Keys" onClose={close}>
      <h2>Keys</h2>
      <dl>
        {KEYS.map(([key, does]) => (
          <div key={key}>
            <dt>
              <kbd>{key}</kbd>
            </dt>
            <dd>{does}</dd>
          </div>
        ))}
      </dl>
      <button type="button" onClick={() => dialog.current?.close()}>
        Close
      </button>
    </dialog>
  );
}
