// What the tests run inside a page: many steps in one call, each begun as soon as the one before is drawn.
export function inside() {
  const patience = 600_000; // milliseconds

  // The first that `found` gives: now, or when the page has changed.
  const until = found =>
    new Promise((resolve, reject) => {
      const now = found();
      if (now) return resolve(now);
      const observer = new MutationObserver(() => {
        const then = found();
        if (!then) return;
        end();
        resolve(then);
      });
      const timer = setTimeout(() => {
        end();
        reject(new Error(`${location.hash} never came to ${found}`));
      }, patience);
      const end = () => {
        observer.disconnect();
        clearTimeout(timer);
      };
      observer.observe(document, {subtree: true, childList: true, characterData: true, attributes: true});
    });

  // The page draws a view in the event that tells of the new address; what the view loads comes later.
  const go = async hash => {
    await new Promise(drawn => {
      const before = location.href;
      const heard = ({newURL}) => {
        if (newURL !== location.href) return; // of an earlier step
        window.removeEventListener("hashchange", heard);
        setTimeout(drawn);
      };
      window.addEventListener("hashchange", heard);
      location.hash = hash;
      if (location.href === before) heard({newURL: before});
    });
    await until(() => document.querySelector("main h1, main .empty"));
  };

  const isLoaded = () =>
    [...document.querySelectorAll("main [role=status]")].every(({textContent: said}) => !/^loading|\.\.\.$/.test(said));

  const texts = (selector, under = document) =>
    [...under.querySelectorAll(selector)].map(one => one.textContent.replace(/\s+/g, " ").trim());

  // What a click has the browser save, as text; nothing is saved.
  const saved = async button => {
    const [create, click] = [URL.createObjectURL, HTMLAnchorElement.prototype.click];
    let blob;
    URL.createObjectURL = made => {
      blob = made;
      return create.call(URL, made);
    };
    let name;
    HTMLAnchorElement.prototype.click = function () {
      name = this.download;
    };
    button.click();
    [URL.createObjectURL, HTMLAnchorElement.prototype.click] = [create, click];
    return {name, text: await blob.text()};
  };

  // A table's view: what it says, what it saves, and its first rows.
  const table = async id => {
    await go(`#${encodeURIComponent(id)}`);
    await until(() => texts("main h1").some(title => title.includes(id)));
    await until(isLoaded);
    const empty = document.querySelector("main .empty");
    if (empty) return {empty: empty.innerText};
    const csv = [...document.querySelectorAll("main button")].find(({textContent}) => textContent === "CSV");
    return {
      count: document.querySelector(".tools .count").innerText,
      csv: (await saved(csv)).text,
      // What is on the screen is the beginning of it.
      shown: [...document.querySelectorAll(".slick-row")]
        .sort((a, b) => a.dataset.row - b.dataset.row)
        .slice(0, 5)
        .map(row => row.querySelector(".slick-cell").innerText),
    };
  };

  // A drive's own view: what stands beside each label.
  const drive = async link => {
    await go(link);
    await until(() => document.querySelector(".chosen dl"));
    return [...document.querySelectorAll(".chosen > dl > div")].map(line =>
      [...line.children].map(({textContent}) => textContent),
    );
  };

  // What is marked in a capture's text.
  const marked = async (link, capture, line) => {
    await go(link);
    await until(() => document.querySelector("main h1").textContent.includes(capture));
    return (await until(() => document.querySelector(`.capture-text mark[data-line="${line}"]`))).textContent;
  };

  // How many pixels the view is wider than the window.
  const overflow = async link => {
    await go(link);
    await until(isLoaded);
    return document.documentElement.scrollWidth - innerWidth;
  };

  globalThis.inside = {until, go, isLoaded, texts, table, drive, marked, overflow};
}
