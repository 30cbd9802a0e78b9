import type {Capture} from "../base/report";
import {viewHash} from "../base/route";
import {visible} from "../base/text";

// A link that shows the capture in this page.
export function captureLink(capture: Capture): HTMLAnchorElement {
  const link = document.createElement("a");
  link.tabIndex = -1; // the table is one Tab stop; the open record has the link, too
  link.href = viewHash("capture", capture.name);
  link.textContent = visible(capture.name);
  return link;
}
