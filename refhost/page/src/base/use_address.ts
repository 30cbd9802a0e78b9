// What a view shows, kept in the address: a link opens on the same thing, back and forward work.
import {useLayoutEffect, useRef, useState} from "preact/hooks";
import {note, visit, type Route} from "./route";

export type Change<Shown> = (next: Shown, isStep?: boolean) => void;

// `isStep`: back undoes the change by itself, as for a record that is opened; else it goes with the step before,
// as what is typed does.
export function useAddress<Shown>(
  route: Route,
  read: (route: Route) => Shown,
  hash: (shown: Shown) => string,
): [Shown, Change<Shown>] {
  const [shown, setShown] = useState(() => read(route));
  const current = useRef(shown);
  current.current = shown;
  useLayoutEffect(() => {
    const next = read(route);
    if (hash(next) !== hash(current.current)) setShown(next);
  }, [route]);
  return [
    shown,
    (next, isStep = false) => {
      current.current = next;
      setShown(next);
      if (isStep) visit(hash(next));
      else note(hash(next));
    },
  ];
}
