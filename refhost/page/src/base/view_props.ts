// What every picture, and whoever chooses among views, gets.
import type {Overview} from "./report";
import type {Route} from "./route";

export interface ViewProps {
  overview: Overview;
  route: Route;
  nonce: string;
}
