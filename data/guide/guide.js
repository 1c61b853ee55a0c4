// What the pages do with a script: search, sorting, filters, one result of a mapping at a time, copying.
"use strict";

const root = document.body.dataset.root;

function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

// --- search

let entries = null;
let whenLoaded = () => {};

// search.js calls this; a page that was opened from a folder cannot read it in another way.
function guideEntries(list) {
  entries = list.map(([name, kind, href, text]) => ({ name, kind, href, text, key: name.toLowerCase(), words: text.toLowerCase() }));
  whenLoaded();
}

function loadEntries() {
  if (!document.querySelector("script[data-search]"))
    document.head.append(element("script", { src: root + "search.js", "data-search": "" }));
}

// Blocks before their pins, names before descriptions, beginnings before middles. Every word has to be there.
function rankOf(entry, words) {
  let rank = entry.kind === "block" ? 0 : 1;
  for (const word of words) {
    const at = entry.key.indexOf(word);
    if (at < 0 && !entry.words.includes(word) && !entry.kind.toLowerCase().includes(word)) return -1;
    rank += entry.key === word ? 0 : at === 0 ? 2 : at > 0 ? 4 : 6;
  }
  return rank;
}

function found(text, most) {
  const words = text.toLowerCase().split(/\s+/).filter(Boolean);
  if (!entries || words.length === 0) return [];
  const ranked = entries.map((entry) => ({ entry, rank: rankOf(entry, words) })).filter(({ rank }) => rank >= 0);
  ranked.sort((a, b) => a.rank - b.rank || a.entry.name.length - b.entry.name.length);
  return ranked.slice(0, most).map(({ entry }) => entry);
}

function addSearch() {
  const input = element("input", { type: "search", id: "search", role: "combobox", "aria-expanded": "false",
    "aria-controls": "results", "aria-autocomplete": "list", "aria-label": "Search", placeholder: "Search ( / )", autocomplete: "off" });
  const list = element("ul", { class: "results", id: "results", role: "listbox", "aria-label": "Results" });
  const status = element("p", { class: "status", role: "status", hidden: "" });
  document.querySelector(".top").append(element("div", { class: "search", role: "search" }, input, list, status));
  let chosen = -1;
  const choose = (index) => {
    chosen = list.children.length === 0 ? -1 : (index + list.children.length) % list.children.length;
    [...list.children].forEach((item, i) => item.setAttribute("aria-selected", String(i === chosen)));
    if (chosen < 0) return input.removeAttribute("aria-activedescendant");
    input.setAttribute("aria-activedescendant", list.children[chosen].id);
    list.children[chosen].scrollIntoView({ block: "nearest" });
  };
  const open = (item) => { if (item) location.href = root + item.dataset.href; };
  const show = () => {
    const hits = found(input.value, 50);
    list.replaceChildren(...hits.map((hit, i) => element("li", { role: "option", id: "result-" + i, "aria-selected": "false",
      "data-href": hit.href }, element("b", {}, hit.name), element("span", { class: "kind" }, hit.kind + (hit.text ? ": " + hit.text : "")))));
    input.setAttribute("aria-expanded", String(hits.length > 0));
    choose(-1 + (hits.length > 0 ? 1 : 0));
    status.hidden = !input.value || !entries || hits.length > 0;
    status.textContent = status.hidden ? "" : "Nothing found";
  };
  whenLoaded = show;
  input.addEventListener("focus", loadEntries);
  input.addEventListener("input", () => { loadEntries(); show(); });
  input.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") choose(chosen + 1);
    else if (event.key === "ArrowUp") choose(chosen - 1);
    else if (event.key === "Enter") open(list.children[chosen]);
    else if (event.key === "Escape") { input.value = ""; show(); input.blur(); }
    else return;
    event.preventDefault();
  });
  list.addEventListener("mousedown", (event) => open(event.target.closest("li")));
  document.addEventListener("keydown", (event) => {
    const writes = event.target.closest("input, select, textarea");
    if (event.key !== "/" || writes || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    input.focus();
  });
}

// --- tables

function textOf(row, column) { return row.cells[column] ? row.cells[column].textContent.trim() : ""; }

function sortBy(table, column, header) {
  const ascending = header.getAttribute("aria-sort") !== "ascending";
  for (const other of table.tHead.rows[0].cells) other.removeAttribute("aria-sort");
  header.setAttribute("aria-sort", ascending ? "ascending" : "descending");
  const numeric = header.dataset.sort === "number";
  const compare = (a, b) => numeric ? Number(textOf(a, column)) - Number(textOf(b, column))
    : textOf(a, column).localeCompare(textOf(b, column), "en", { numeric: true });
  const rows = [...table.tBodies[0].rows].sort((a, b) => (ascending ? compare(a, b) : compare(b, a)));
  table.tBodies[0].append(...rows);
}

function makeSortable(table) {
  [...table.tHead.rows[0].cells].forEach((header, column) => {
    const button = element("button", { type: "button" }, ...header.childNodes);
    header.replaceChildren(button);
    button.addEventListener("click", () => sortBy(table, column, header));
  });
}

function valuesIn(table, column, kind) {
  const values = new Set();
  for (const row of table.tBodies[0].rows)
    for (const value of kind === "words" ? textOf(row, column).split(", ") : [textOf(row, column)]) if (value) values.add(value);
  return [...values].sort();
}

function filterFor(table, column, header) {
  const kind = header.dataset.filter;
  const name = header.textContent;
  const control = kind === "text" ? element("input", { type: "text" })
    : element("select", {}, element("option", { value: "" }, "all"), ...valuesIn(table, column, kind).map((value) => element("option", {}, value)));
  const holds = (row) => {
    const wanted = control.value.trim();
    const text = textOf(row, column);
    if (!wanted) return true;
    if (kind === "text") return text.toLowerCase().includes(wanted.toLowerCase());
    return kind === "words" ? text.split(", ").includes(wanted) : text === wanted;
  };
  return { label: element("label", {}, name, control), control, holds };
}

function makeFiltered(table) {
  const headers = [...table.tHead.rows[0].cells];
  const filters = headers.map((header, column) => header.dataset.filter ? filterFor(table, column, header) : null).filter(Boolean);
  const status = element("p", { role: "status", class: "count" });
  const apply = () => {
    let shown = 0;
    for (const row of table.tBodies[0].rows) {
      row.hidden = !filters.every((filter) => filter.holds(row));
      shown += row.hidden ? 0 : 1;
    }
    status.textContent = shown + " of " + table.tBodies[0].rows.length;
  };
  const form = element("form", { class: "filters", "aria-label": "Filters" }, ...filters.map((filter) => filter.label));
  form.addEventListener("input", apply);
  form.addEventListener("submit", (event) => event.preventDefault());
  table.closest(".scroll").before(form, status);
  apply();
}

// --- choices: one of several sections at a time

function makeChoices(group, number) {
  const sections = [...group.querySelectorAll(":scope > .choice")];
  if (sections.length < 2) return;
  const set = element("fieldset", { class: "tabs" }, element("legend", {}, "Shown"));
  const show = (wanted) => sections.forEach((section) => { section.hidden = section !== wanted; });
  const buttons = sections.map((section, i) => {
    const button = element("input", { type: "radio", name: "choice-" + number });
    button.checked = i === 0;
    button.addEventListener("change", () => show(section));
    set.append(element("label", {}, button, " " + section.querySelector("h3").textContent));
    return button;
  });
  const reveal = () => {
    const target = document.getElementById(decodeURIComponent(location.hash.slice(1)));
    const index = sections.findIndex((section) => section.contains(target));
    if (target && index >= 0) { buttons[index].checked = true; show(sections[index]); target.scrollIntoView(); }
  };
  group.prepend(set);
  show(sections[0]);
  addEventListener("hashchange", reveal);
  reveal();
}

function makeCopied(block) {
  if (!navigator.clipboard) return;
  const button = element("button", { type: "button", class: "copy" }, "Copy");
  button.addEventListener("click", async () => {
    await navigator.clipboard.writeText(block.textContent);
    button.textContent = "Copied";
    setTimeout(() => { button.textContent = "Copy"; }, 2000);
  });
  block.before(button);
}

addSearch();
document.querySelectorAll("table.filtered").forEach(makeFiltered);
document.querySelectorAll("table.sorted").forEach(makeSortable);
document.querySelectorAll(".choices").forEach(makeChoices);
document.querySelectorAll("pre.copied").forEach(makeCopied);
