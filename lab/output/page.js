"use strict";
// Draws the grid of VLANs from the tables of VLANs.
const drawGrid = (grid) => {
  const COLUMNS = 64;
  const COUNT = 4096;
  const LEGEND_SETTINGS = 24;
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

  // The style of a cell for the setting of a VLAN on one switch.
  const instanceOf = (setting) => Number(/^instance (\d+)$/.exec(setting)?.[1] ?? 0);
  const styleOf = (setting) => {
    const instance = instanceOf(setting) - 1;
    if (instance >= 0) return `hue${instance % 8} pattern${Math.floor(instance / 8) % 4}`;
    return setting === "disabled" ? "off" : setting === "not sent" ? "unsent" : "";
  };
  const makeCell = ({ left, right, state }, attributes) => {
    if (left === right) return make("span", `cell ${state} ${styleOf(left)}`, "", attributes);
    const cell = make("span", `cell ${state}`, "", attributes);
    cell.append(make("i", `half upper ${styleOf(left)}`), make("i", `half lower ${styleOf(right)}`));
    return cell;
  };
  const describe = ({ left, right, meaning }) => {
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
    makeCell(group, { role: "gridcell", tabindex: -1, "aria-label": `VLAN ${vlan}: ${describe(group)}` }));
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
  // The first cell of an instance in a row has its number, if there is room.
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
  const settings = [...new Set(groups.flatMap(({ left, right }) => [left, right]))];
  settings.sort((a, b) => instanceOf(a) - instanceOf(b));
  for (const setting of settings.slice(0, LEGEND_SETTINGS)) {
    explain({ left: setting, right: setting, state: "same" }, setting);
  }
  if (settings.length > LEGEND_SETTINGS) {
    legend.append(make("li", "", `and ${settings.length - LEGEND_SETTINGS} more instances`));
  }
  const split = groups.find(({ left, right }) => left !== right);
  if (split) explain({ ...split, state: "same" }, `upper left: ${sides.left}; lower right: ${sides.right}`);
  for (const [state, meaning] of new Map(groups.map(({ state, meaning }) => [state, meaning]))) {
    if (state !== "same") explain({ left: "", right: "", state }, meaning);
  }

  // --- hover and focus ---

  let active = Math.max(0, cells.findIndex((cell) => cell.matches(".different, .fail")));
  cells[active].tabIndex = 0;
  const showName = (cell = document.activeElement.closest("#grid .cell")) => {
    named.textContent = cell?.ariaLabel ?? hint;
  };
  // Ignores the events that scrolling sends while the pointer rests.
  let pointer = "";
  grid.addEventListener("mousemove", ({ screenX, screenY, target }) => {
    if (pointer !== `${screenX},${screenY}`) showName(target.closest(".cell") ?? undefined);
    pointer = `${screenX},${screenY}`;
  });
  grid.addEventListener("mouseleave", () => showName());
  grid.addEventListener("focusout", () => { named.textContent = hint; });
  grid.addEventListener("focusin", (event) => {
    cells[active].tabIndex = -1;
    active = cells.indexOf(event.target);
    cells[active].tabIndex = 0;
    showName(cells[active]);
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

// Reloads the page of watched pairs. The server filters, as without scripts.
const refreshPairs = (name) => {
  const PERIOD = 5000;
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
      const response = await fetch(location.href);
      if (response.ok) page = new DOMParser().parseFromString(await response.text(), "text/html");
    } catch {
      // The next request may succeed.
    }
    if (number !== last) return;
    if (page) replace(page);
    document.getElementById("stale").hidden = page !== null;
    timer = setTimeout(refresh, PERIOD);
  };
  name.addEventListener("input", () => {
    const url = new URL(location.href);
    url.searchParams.set("name", name.value);
    history.replaceState(null, "", url);
    refresh();
  });
  timer = setTimeout(refresh, PERIOD);
};
if (document.getElementById("stale")) refreshPairs(document.getElementById("name"));

// Opens the folds of long values for printing.
let opened = [];
addEventListener("beforeprint", () => {
  opened = [...document.querySelectorAll("details:not(.fold, [open])")];
  for (const fold of opened) fold.open = true;
});
addEventListener("afterprint", () => {
  for (const fold of opened) fold.open = false;
});
