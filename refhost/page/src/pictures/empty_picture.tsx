// What a picture says that has nothing to draw.
import type {Overview} from "../base/report";

export function EmptyPicture({overview, of}: {overview: Overview; of: string}) {
  return (
    <p class="empty">
      {overview.inventory === undefined
        ? `This report holds no inventory: there is nothing to draw of ${of}.`
        : `No capture tells of ${of}: there is nothing to draw.`}
    </p>
  );
}
