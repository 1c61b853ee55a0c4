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

const mostShown = 50;
let entries = null;
let whyNone = "Reading the names";
let whenLoaded = () => {};

// search.js calls this; a page that was opened from a folder cannot read it in another way. Short names come first, so
// that a search needs no sorting.
function guideEntries(list) {
  entries = list.map(([name, kind, href, text]) =>
    ({ name, kind, href, text, key: name.toLowerCase(), words: (kind + " " + text).toLowerCase() }));
  entries.sort((a, b) => a.name.length - b.name.length);
  whenLoaded();
}

function loadEntries() {
  if (document.querySelector("script[data-search]")) return;
  const script = element("script", { src: root + "search.js", "data-search": "" });
  script.addEventListener("error", () => {
    whyNone = "search.js cannot be read";
    whenLoaded();
  });
  document.head.append(script);
}

// Blocks before their pins, names before descriptions, beginnings before middles. Every word has to be there.
function rankOf(entry, words) {
  let rank = entry.kind === "block" ? 0 : 1;
  for (const word of words) {
    const at = entry.key.indexOf(word);
    if (at < 0 && !entry.words.includes(word)) return -1;
    rank += at < 0 ? 6 : at > 0 ? 4 : entry.key === word ? 0 : 2;
  }
  return rank;
}

function found(text) {
  const words = text.toLowerCase().split(/\s+/).filter(Boolean);
  const byRank = [];
  if (words.length === 0) return byRank;
  for (const entry of entries) {
    const rank = rankOf(entry, words);
    if (rank >= 0) (byRank[rank] ??= []).push(entry);
  }
  return byRank.flat();
}

function resultItem(hit, index) {
  return element("li", { role: "option", id: "result-" + index, "aria-selected": "false", "data-href": hit.href },
    element("b", {}, hit.name), element("span", { class: "kind" }, hit.kind + (hit.text ? ": " + hit.text : "")));
}

function countText(hits) {
  if (hits.length === 0) return "Nothing found";
  return hits.length > mostShown ? "The first " + mostShown + " of " + hits.length : hits.length + " found";
}

function addSearch() {
  const input = element("input", { type: "search", id: "search", role: "combobox", "aria-expanded": "false",
    "aria-controls": "results", "aria-autocomplete": "list", "aria-label": "Search", placeholder: "Search ( / )", autocomplete: "off" });
  const list = element("ul", { class: "results", id: "results", role: "listbox", "aria-label": "Results" });
  const status = element("p", { class: "count", role: "status" });
  const answers = element("div", { class: "answers" }, status, list);
  document.querySelector(".top").append(element("div", { class: "search", role: "search" }, input, answers));
  let chosen = -1;
  const choose = (index) => {
    const count = list.children.length;
    if (chosen >= 0) list.children[chosen].setAttribute("aria-selected", "false");
    chosen = count === 0 ? -1 : (index + count) % count;
    if (chosen < 0) return input.removeAttribute("aria-activedescendant");
    list.children[chosen].setAttribute("aria-selected", "true");
    list.children[chosen].scrollIntoView({ block: "nearest" });
    input.setAttribute("aria-activedescendant", list.children[chosen].id);
  };
  const fill = (hits, text) => {
    list.replaceChildren(...hits.slice(0, mostShown).map(resultItem));
    input.setAttribute("aria-expanded", String(hits.length > 0));
    status.textContent = text;
    chosen = -1;
    choose(0);
  };
  const close = () => fill([], "");
  const show = () => {
    if (!input.value.trim()) return close();
    if (!entries) return fill([], whyNone);
    const hits = found(input.value);
    fill(hits, countText(hits));
  };
  const open = (item) => {
    if (!item) return;
    input.value = "";
    input.blur();
    location.href = root + item.dataset.href;
  };
  whenLoaded = show;
  input.addEventListener("focus", () => { loadEntries(); show(); });
  input.addEventListener("blur", close);
  input.addEventListener("input", show);
  input.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") choose(chosen + 1);
    else if (event.key === "ArrowUp") choose(chosen - 1);
    else if (event.key === "Enter") open(list.children[chosen]);
    else if (event.key === "Escape") { input.value = ""; input.blur(); }
    else return;
    event.preventDefault();
  });
  // The field keeps the focus, or the list were gone before the click.
  answers.addEventListener("mousedown", (event) => event.preventDefault());
  list.addEventListener("click", (event) => open(event.target.closest("li")));
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
  const { compare } = new Intl.Collator("en", { numeric: true });
  const order = (a, b) => compare(textOf(a, column), textOf(b, column));
  const rows = [...table.tBodies[0].rows].sort((a, b) => (ascending ? order(a, b) : order(b, a)));
  table.tBodies[0].append(...rows);
}

function makeSortable(table) {
  [...table.tHead.rows[0].cells].forEach((header, column) => {
    const button = element("button", { type: "button" }, ...header.childNodes);
    header.replaceChildren(button);
    button.addEventListener("click", () => sortBy(table, column, header));
  });
}

// "A:B" is in the group A as well.
function valuesOf(row, column, kind) {
  const text = textOf(row, column);
  if (kind === "words") return text.split(", ");
  return text.includes(":") ? [text.split(":")[0], text] : [text];
}

function filterFor(table, column, header) {
  const kind = header.dataset.filter;
  const name = header.textContent;
  const values = new Set([...table.tBodies[0].rows].flatMap((row) => valuesOf(row, column, kind)));
  const control = kind === "text" ? element("input", { type: "text" })
    : element("select", {}, element("option", { value: "" }, "all"),
      ...[...values].filter(Boolean).sort().map((value) => element("option", {}, value)));
  const holds = (row) => {
    const wanted = control.value.trim();
    if (!wanted) return true;
    return kind === "text" ? textOf(row, column).toLowerCase().includes(wanted.toLowerCase())
      : valuesOf(row, column, kind).includes(wanted);
  };
  return { label: element("label", {}, name, control), holds };
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
    set.append(element("label", {}, button, section.querySelector("h3").textContent));
    return button;
  });
  const reveal = () => {
    const target = document.getElementById(location.hash.slice(1));
    const index = sections.findIndex((section) => section.contains(target));
    if (index < 0) return;
    buttons[index].checked = true;
    show(sections[index]);
    target.scrollIntoView();
  };
  group.prepend(set);
  show(sections[0]);
  addEventListener("hashchange", reveal);
  reveal();
}

function makeCopied(block) {
  if (!navigator.clipboard) return;
  const button = element("button", { type: "button", class: "copy" }, "Copy");
  const say = (text) => {
    button.textContent = text;
    setTimeout(() => { button.textContent = "Copy"; }, 2000);
  };
  button.addEventListener("click", () =>
    navigator.clipboard.writeText(block.textContent).then(() => say("Copied"), () => say("Not copied")));
  block.before(button);
}

addSearch();
// One row may be the one that says there are none.
const hasRows = (table) => table.tBodies[0].rows.length > 1;
[...document.querySelectorAll("table.filtered")].filter(hasRows).forEach(makeFiltered);
[...document.querySelectorAll("table.sorted")].filter(hasRows).forEach(makeSortable);
document.querySelectorAll(".choices").forEach(makeChoices);
document.querySelectorAll("pre.copied").forEach(makeCopied);
