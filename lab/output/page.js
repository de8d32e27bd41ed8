"use strict";
// Draws the grid of VLANs from the tables of VLANs, where readers without a script find the same.
const drawGrid = (grid) => {
  const COLUMNS = 64;
  const COUNT = 4096;
  const LEGEND_INSTANCES = 24;
  const [picture, named, legend] = ["picture", "named", "legend"].map((id) => document.getElementById(id));
  const sides = picture.dataset;
  const hint = named.textContent;

  const make = (tag, className, text, attributes = {}) => {
    const element = document.createElement(tag);
    element.className = className;
    element.textContent = text;
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
    return element;
  };

  // How a cell shows the state of a VLAN on one switch.
  const instanceOf = (fact) => Number(/^instance (\d+)$/.exec(fact)?.[1] ?? 0);
  const lookOf = (fact) => {
    const instance = instanceOf(fact) - 1;
    if (instance >= 0) return `hue${instance % 8} pattern${Math.floor(instance / 8) % 4}`;
    return fact === "disabled" ? "off" : fact === "not sent" ? "unsent" : "";
  };
  const makeCell = ({ left, right, state }, attributes) => {
    if (left === right) return make("span", `cell ${state} ${lookOf(left)}`, "", attributes);
    const cell = make("span", `cell ${state}`, "", attributes);
    cell.append(make("i", `half upper ${lookOf(left)}`), make("i", `half lower ${lookOf(right)}`));
    return cell;
  };
  const sentence = ({ left, right, meaning }) => {
    const other = left.startsWith("instance ") ? right.replace("instance ", "") : right;
    const where = left === right ? `${left} on both` : `${left} on ${sides.left}, ${other} on ${sides.right}`;
    return `${where}: ${meaning}`;
  };

  const groupOf = new Array(COUNT);
  const groups = [...document.querySelectorAll("tr[data-state]")].map((row) => {
    const [, left, right, meaning] = [...row.cells].map((cell) => cell.textContent);
    const group = { left, right, meaning, state: row.dataset.state };
    for (const range of row.dataset.vlans.split(",")) {
      const [first, last = first] = range.split("-").map(Number);
      groupOf.fill(group, first, last + 1);
    }
    return group;
  });

  // --- the grid ---

  const cells = groupOf.map((group, vlan) =>
    makeCell(group, { role: "gridcell", tabindex: -1, "aria-label": `VLAN ${vlan}: ${sentence(group)}` }));
  const ticks = make("div", "line ticks", "", { "aria-hidden": true });
  ticks.append(make("span", "head", ""), ...cells.slice(0, COLUMNS).map(
    (cell, column) => make("span", "tick", column % 8 === 0 ? `+${column}` : "")));
  grid.append(ticks);
  for (let start = 0; start < COUNT; start += COLUMNS) {
    const line = make("div", "line", "", { role: "row" });
    const label = `VLANs ${start} to ${start + COLUMNS - 1}`;
    line.append(make("span", "head", start, { role: "rowheader", "aria-label": label }),
      ...cells.slice(start, start + COLUMNS));
    grid.append(line);
  }
  // Where an instance begins in a row its number is written, if there is room for it.
  groupOf.forEach((group, vlan) => {
    const column = vlan % COLUMNS;
    const instance = instanceOf(group.left);
    if (group.left !== group.right || instance === 0 || (column > 0 && groupOf[vlan - 1] === group)) return;
    const hasRoom = column < COLUMNS - 1 && groupOf[vlan + 1] === group;
    if (instance < 100 || hasRoom) cells[vlan].append(make("b", "number", instance));
  });

  // --- the legend ---

  const explain = (group, text) => {
    const item = make("li", "", "");
    item.append(makeCell(group), text);
    legend.append(item);
  };
  const facts = [...new Set(groups.flatMap(({ left, right }) => [left, right]))];
  facts.sort((a, b) => instanceOf(a) - instanceOf(b));
  for (const fact of facts.slice(0, LEGEND_INSTANCES)) explain({ left: fact, right: fact, state: "same" }, fact);
  if (facts.length > LEGEND_INSTANCES) {
    legend.append(make("li", "", `and ${facts.length - LEGEND_INSTANCES} more instances`));
  }
  const split = groups.find(({ left, right }) => left !== right);
  if (split) explain({ ...split, state: "same" }, `upper left: ${sides.left}; lower right: ${sides.right}`);
  for (const [state, meaning] of new Map(groups.map(({ state, meaning }) => [state, meaning]))) {
    if (state !== "same") explain({ left: "", right: "", state }, meaning);
  }

  // --- hover and focus ---

  let active = Math.max(0, cells.findIndex((cell) => cell.matches(".different, .fail")));
  cells[active].tabIndex = 0;
  const name = (cell = document.activeElement.closest("#grid .cell")) => {
    named.textContent = cell?.ariaLabel ?? hint;
  };
  // A pointer that rests while the page scrolls below it does not move.
  let pointer = "";
  grid.addEventListener("mousemove", ({ screenX, screenY, target }) => {
    if (pointer !== `${screenX},${screenY}`) name(target.closest(".cell") ?? undefined);
    pointer = `${screenX},${screenY}`;
  });
  grid.addEventListener("mouseleave", () => name());
  grid.addEventListener("focusout", () => { named.textContent = hint; });
  grid.addEventListener("focusin", (event) => {
    cells[active].tabIndex = -1;
    active = cells.indexOf(event.target);
    cells[active].tabIndex = 0;
    name(cells[active]);
  });
  grid.addEventListener("keydown", (event) => {
    const column = active % COLUMNS;
    const to = {
      ArrowLeft: active - 1,
      ArrowRight: active + 1,
      ArrowUp: active - COLUMNS,
      ArrowDown: active + COLUMNS,
      Home: event.ctrlKey ? 0 : active - column,
      End: event.ctrlKey ? COUNT - 1 : active - column + COLUMNS - 1,
      PageUp: Math.max(active - 8 * COLUMNS, column),
      PageDown: Math.min(active + 8 * COLUMNS, COUNT - COLUMNS + column),
    }[event.key];
    if (to === undefined || event.altKey || event.metaKey || event.shiftKey) return;
    event.preventDefault();
    cells[to]?.focus();
  });

  picture.hidden = false;
  const scroll = grid.parentElement;
  new ResizeObserver(() => {
    document.getElementById("more").hidden = scroll.scrollWidth <= scroll.clientWidth;
  }).observe(scroll);
};
if (document.getElementById("grid")) drawGrid(document.getElementById("grid"));

// Reads the page of watched pairs again. Its filter is the server's, so that it is the same without a script.
const keepFresh = (name) => {
  const PAUSE = 5000;
  let timer = 0;
  let last = 0;
  const replace = (page) => {
    const focus = document.activeElement?.getAttribute("href");
    for (const part of document.querySelectorAll("[data-live]")) {
      part.replaceWith(page.getElementById(part.id));
    }
    document.title = page.title;
    document.querySelector("header").className = page.querySelector("header").className;
    const link = focus && document.querySelector(`a[href="${CSS.escape(focus)}"]`);
    if (link) link.focus({ preventScroll: true });
  };
  const refresh = async () => {
    clearTimeout(timer);
    const number = ++last;
    let page = null;
    try {
      const answer = await fetch(location.href);
      if (answer.ok) page = new DOMParser().parseFromString(await answer.text(), "text/html");
    } catch {
      // The server may come back.
    }
    if (number !== last) return;
    if (page) replace(page);
    document.getElementById("stale").hidden = page !== null;
    timer = setTimeout(refresh, PAUSE);
  };
  name.addEventListener("input", () => {
    const url = new URL(location.href);
    url.searchParams.set("name", name.value);
    history.replaceState(null, "", url);
    refresh();
  });
  timer = setTimeout(refresh, PAUSE);
};
if (document.getElementById("stale")) keepFresh(document.getElementById("name"));

// Paper has no folds to open: long values are printed whole.
let opened = [];
addEventListener("beforeprint", () => {
  opened = [...document.querySelectorAll("details:not(.fold, [open])")];
  for (const fold of opened) fold.open = true;
});
addEventListener("afterprint", () => {
  for (const fold of opened) fold.open = false;
});
