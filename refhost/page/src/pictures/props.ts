// What every picture gets.
import type {Overview} from "../data";
import type {Route} from "../route";

export interface PictureProps {
  overview: Overview;
  route: Route;
  nonce: string;
}
