"use strict";
// Draws the grid of VLANs from the tables of VLANs, where readers without a script find the same.
(() => {
  const COLUMNS = 64;
  const COUNT = 4096;
  const HUES = 8;
  const PATTERNS = 4;
  const PAGE_ROWS = 8;
  const LEGEND_INSTANCES = 24;

  const grid = document.getElementById("grid");
  if (!grid) return;
  const named = document.getElementById("named");
  const hint = named.textContent;
  const picture = document.getElementById("picture");
  const sides = picture.dataset;

  const make = (tag, className, text = "") => {
    const element = document.createElement(tag);
    if (className) element.className = className;
    element.textContent = text;
    return element;
  };

  // How a cell shows what one switch says of a VLAN.
  const instanceOf = (fact) => Number(/^instance (\d+)$/.exec(fact)?.[1] ?? 0);
  const lookOf = (fact) => {
    const instance = instanceOf(fact) - 1;
    if (instance >= 0) {
      return `hue${instance % HUES} pattern${Math.floor(instance / HUES) % PATTERNS}`;
    }
    return fact === "disabled" ? "off" : fact === "not sent" ? "unsent" : "";
  };

  const draw = (cell, { left, right, state }) => {
    cell.className = left === right ? `cell ${state} ${lookOf(left)}` : `cell ${state}`;
    if (left === right) return;
    cell.append(make("i", `half upper ${lookOf(left)}`), make("i", `half lower ${lookOf(right)}`));
  };

  const sentence = ({ left, right, says }) => {
    const other = left.startsWith("instance ") ? right.replace("instance ", "") : right;
    const where = left === right ? `${left} on both` : `${left} on ${sides.left}, ${other} on ${sides.right}`;
    return `${where}: ${says}`;
  };

  // --- what the tables say ---

  const groups = [];
  const groupOf = new Array(COUNT);
  for (const row of document.querySelectorAll("tr[data-state]")) {
    const [, left, right, says] = [...row.cells].map((cell) => cell.textContent);
    const group = { left, right, says, state: row.dataset.state };
    groups.push(group);
    for (const range of row.dataset.vlans.split(",")) {
      const [first, last = first] = range.split("-").map(Number);
      for (let vlan = first; vlan <= last; ++vlan) groupOf[vlan] = group;
    }
  }

  // --- the grid ---

  const cells = [];
  const ticks = make("div", "line ticks");
  ticks.setAttribute("aria-hidden", "true");
  ticks.append(make("span", "head"));
  for (let column = 0; column < COLUMNS; ++column) {
    ticks.append(make("span", "tick", column % 8 === 0 ? `+${column}` : ""));
  }
  const lines = [];
  for (let start = 0; start < COUNT; start += COLUMNS) {
    const line = make("div", "line");
    line.setAttribute("role", "row");
    const head = make("span", "head", String(start));
    head.setAttribute("role", "rowheader");
    head.setAttribute("aria-label", `VLANs ${start} to ${start + COLUMNS - 1}`);
    line.append(head);
    for (let vlan = start; vlan < start + COLUMNS; ++vlan) {
      const cell = make("span");
      const group = groupOf[vlan];
      draw(cell, group);
      cell.setAttribute("role", "gridcell");
      cell.setAttribute("aria-label", `VLAN ${vlan}: ${sentence(group)}`);
      cell.tabIndex = -1;
      cells.push(cell);
      line.append(cell);
    }
    lines.push(line);
  }
  // Where an instance begins in a row its number is written, if there is room for it.
  for (let vlan = 0; vlan < COUNT; ++vlan) {
    const group = groupOf[vlan];
    const instance = instanceOf(group.left);
    if (group.left !== group.right || instance === 0) continue;
    if (vlan % COLUMNS > 0 && groupOf[vlan - 1] === group) continue;
    const hasRoom = vlan % COLUMNS < COLUMNS - 1 && groupOf[vlan + 1] === group;
    if (instance < 100 || hasRoom) cells[vlan].append(make("b", "number", String(instance)));
  }
  grid.append(ticks, ...lines);

  // --- the legend ---

  const legend = document.getElementById("legend");
  const explain = (facts, text) => {
    const item = make("li");
    const sample = make("span");
    draw(sample, facts);
    item.append(sample, text);
    legend.append(item);
  };
  const states = new Map(groups.map(({ state, says }) => [state, says]));
  states.delete("same");
  const facts = [...new Set(groups.flatMap(({ left, right }) => [left, right]))];
  facts.sort((a, b) => instanceOf(a) - instanceOf(b));
  for (const fact of facts.slice(0, LEGEND_INSTANCES)) {
    explain({ left: fact, right: fact, state: "same" }, fact);
  }
  if (facts.length > LEGEND_INSTANCES) {
    legend.append(make("li", "", `and ${facts.length - LEGEND_INSTANCES} more instances`));
  }
  const split = groups.find(({ left, right }) => left !== right);
  if (split) {
    explain({ ...split, state: "same" }, `upper left: ${sides.left}; lower right: ${sides.right}`);
  }
  for (const [state, says] of states) explain({ left: "", right: "", state }, says);

  // --- hover and focus ---

  let active = Math.max(0, cells.findIndex((cell) => cell.matches(".different, .fail")));
  cells[active].tabIndex = 0;
  const name = (cell) => { named.textContent = cell?.getAttribute("aria-label") ?? hint; };
  const cellOf = (event) => event.target.closest("[role=gridcell]");
  const focused = () => (grid.contains(document.activeElement) ? document.activeElement : null);

  // A pointer that rests while the page scrolls below it says nothing.
  let pointer = "";
  grid.addEventListener("mousemove", (event) => {
    const before = pointer;
    pointer = `${event.screenX},${event.screenY}`;
    if (pointer !== before) name(cellOf(event) ?? focused());
  });
  grid.addEventListener("mouseleave", () => name(focused()));
  grid.addEventListener("focusout", () => name(null));
  grid.addEventListener("focusin", (event) => {
    cells[active].tabIndex = -1;
    active = cells.indexOf(cellOf(event));
    cells[active].tabIndex = 0;
    name(cells[active]);
  });
  const moves = {
    ArrowLeft: (vlan) => vlan - 1,
    ArrowRight: (vlan) => vlan + 1,
    ArrowUp: (vlan) => vlan - COLUMNS,
    ArrowDown: (vlan) => vlan + COLUMNS,
    Home: (vlan) => vlan - (vlan % COLUMNS),
    End: (vlan) => vlan - (vlan % COLUMNS) + COLUMNS - 1,
    PageUp: (vlan) => Math.max(vlan - PAGE_ROWS * COLUMNS, vlan % COLUMNS),
    PageDown: (vlan) => Math.min(vlan + PAGE_ROWS * COLUMNS, COUNT - COLUMNS + (vlan % COLUMNS)),
  };
  grid.addEventListener("keydown", (event) => {
    const move = moves[event.key];
    if (!move || event.altKey || event.metaKey || event.shiftKey) return;
    event.preventDefault();
    const ends = { Home: 0, End: COUNT - 1 };
    const to = (event.ctrlKey ? ends[event.key] : undefined) ?? move(active);
    if (to >= 0 && to < COUNT) cells[to].focus();
  });
  picture.hidden = false;

  const scroll = grid.parentElement;
  new ResizeObserver(() => {
    document.getElementById("more").hidden = scroll.scrollWidth <= scroll.clientWidth;
  }).observe(scroll);
})();

// Paper has no folds to open: long values are printed whole.
let opened = [];
addEventListener("beforeprint", () => {
  opened = [...document.querySelectorAll("details:not(.fold, [open])")];
  for (const fold of opened) fold.open = true;
});
addEventListener("afterprint", () => {
  for (const fold of opened) fold.open = false;
});
