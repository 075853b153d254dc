"use strict";
// Texts of cards get into the page only as text nodes, so that none of them is ever read as HTML.

const ROWS = 100;

async function unpacked(id) {
  const packed = atob(document.getElementById(id).textContent);
  const bytes = Uint8Array.from(packed, (letter) => letter.charCodeAt(0));
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  return JSON.parse(await new Response(stream).text());
}

function element(name, options = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(options)) {
    if (key === "onclick") made.addEventListener("click", value);
    else made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

const percent = (value) => (value === null ? "-" : value.toFixed(1) + " %");
const number = (value) => value.toLocaleString("en");

function compare(left, right) {
  if (left === right) return 0;
  if (left === null) return -1;
  if (right === null) return 1;
  if (typeof left === "string") return left.localeCompare(right, "en", { numeric: true });
  return left - right;
}

// A table that sorts and filters. Columns have a label, the value of a row to sort by, and a cell.
class DataTable {
  constructor(section, what, columns, rows, choices, first) {
    this.section = section;
    this.what = what;
    this.columns = columns;
    this.rows = rows.map((row) => ({ row, text: columns.map((c) => c.value(row)).join("\n").toLowerCase() }));
    this.sorted = { column: null, descending: false };
    this.shown = ROWS;
    this.makeFilters(choices);
    this.makeHead();
    const more = section.querySelector(".more");
    more.addEventListener("click", () => {
      this.shown += ROWS;
      this.show();
    });
    this.sortBy(first);
  }

  makeFilters(choices) {
    const form = this.section.querySelector(".filters");
    form.addEventListener("submit", (event) => event.preventDefault());
    const filter = () => {
      this.shown = ROWS;
      this.show();
    };
    this.words = element("input", { type: "search", name: "words", autocomplete: "off" });
    // Not "change": leaving the field for a row's button would replace the row before the click.
    this.words.addEventListener("input", filter);
    form.append(element("label", {}, "Contains", this.words));
    this.selects = choices.map(({ label, value, options }) => {
      const select = element("select", { name: label.toLowerCase() }, element("option", { value: "" }, "all"));
      for (const option of options) select.append(element("option", { value: option }, option));
      select.addEventListener("change", filter);
      form.append(element("label", {}, label, select));
      return { select, value };
    });
  }

  makeHead() {
    const row = element("tr", { role: "row" });
    this.heads = this.columns.map((column, index) => {
      const button = element("button", { type: "button", onclick: () => this.sortBy(index) }, column.label);
      const head = element("th", { scope: "col", role: "columnheader", "aria-sort": "none" }, button);
      if (column.isNumber) head.className = "number";
      row.append(head);
      return head;
    });
    this.section.querySelector("thead").append(row);
  }

  sortBy(index) {
    const again = this.sorted.column === index;
    this.sorted = { column: index, descending: again ? !this.sorted.descending : Boolean(this.columns[index].isNumber) };
    this.heads.forEach((head, at) => {
      const direction = this.sorted.descending ? "descending" : "ascending";
      head.setAttribute("aria-sort", at === index ? direction : "none");
    });
    const value = this.columns[index].value;
    const sign = this.sorted.descending ? -1 : 1;
    this.rows.sort((left, right) => sign * compare(value(left.row), value(right.row)));
    this.show();
  }

  show() {
    const words = this.words.value.toLowerCase().split(/\s+/).filter(Boolean);
    const found = this.rows.filter(
      ({ row, text }) =>
        words.every((word) => text.includes(word)) &&
        this.selects.every(({ select, value }) => !select.value || value(row) === select.value));
    const lines = found.slice(0, this.shown).map(({ row }) => this.line(row));
    this.section.querySelector("tbody").replaceChildren(...lines);
    const all = `${number(found.length)} of ${number(this.rows.length)} ${this.what}`;
    const rest = found.length > lines.length ? `, the first ${number(lines.length)} are shown` : "";
    this.section.querySelector(".shown").textContent = all + rest;
    this.section.querySelector(".more").hidden = found.length <= lines.length;
  }

  line(row) {
    return element("tr", { role: "row" }, ...this.columns.map((column) => {
      const cell = element("td", { role: "cell", "data-label": column.label }, column.cell(row));
      if (column.isNumber) cell.className = "number";
      return cell;
    }));
  }
}

function mark(word) {
  return element("span", { class: "mark " + word }, word);
}

function bar(share) {
  if (share === null) return element("span", {}, "not checked");
  const kind = share > 1 ? "over" : share >= 0.8 ? "high" : "";
  const inside = element("div", { class: kind });
  inside.style.width = Math.min(100 * share, 100) + "%";
  const track = element("div", { class: "track", "aria-hidden": "true" }, inside);
  return element("div", { class: "fill" }, track, element("span", {}, percent(100 * share)));
}

function plainTable(labels, rows) {
  const heads = labels.map((label) => element("th", { scope: "col", role: "columnheader" }, label));
  const lines = rows.map((cells) => {
    const made = cells.map((cell, at) => element("td", { role: "cell", "data-label": labels[at] }, cell));
    return element("tr", { role: "row" }, ...made);
  });
  const head = element("thead", { role: "rowgroup" }, element("tr", { role: "row" }, ...heads));
  return element("table", { class: "data", role: "table" }, head, element("tbody", { role: "rowgroup" }, ...lines));
}

const room = (value) => (value === null ? "-" : number(value));

function linksOf(record) {
  if (!record.links.length) return [];
  const rows = record.links.map((link) => {
    const path = element("div", {}, element("code", {}, link.path.replace("/config/interface/", "")));
    if (link.rejected) path.append(element("p", { class: "mark ERROR" }, link.rejected));
    return [path, number(link.onus), bar(link.share), room(link.total_room), room(link.fixed_room)];
  });
  const labels = ["Link", "ONUs", "Fill", "Room, kbit/s", "Fixed room"];
  return [element("h3", {}, "Links"), plainTable(labels, rows)];
}

function findingsOf(record, total, advice) {
  if (!record.findings.length) return [];
  const parts = record.findings.map((finding, index) => {
    const part = element("div", { class: "finding " + finding.result });
    const place = element("code", {}, finding.path);
    part.append(element("p", {}, mark(finding.result), " ", place, ` (${finding.request})`));
    part.append(element("p", { class: "text" }, finding.text || "(no text)"));
    if (advice[index]) part.append(element("p", { class: "advice" }, advice[index]));
    return part;
  });
  const more = total - parts.length;
  if (more > 0) parts.push(element("p", {}, `and ${number(more)} more, which --format jsonl has`));
  return [element("h3", {}, "Findings"), ...parts];
}

async function openCard(data, index) {
  const chunk = await unpacked("chunk-" + Math.floor(index / data.perChunk));
  const { record, advice } = chunk[index % data.perChunk];
  const dialog = document.getElementById("card");
  document.getElementById("card-title").textContent = record.name;
  const ports = `${number(record.service_ports)} of ${number(record.service_port_limit)} service ports`;
  const content = [element("p", {}, mark(record.status), record.links.length ? "; " + ports : "")];
  if (record.why) content.push(element("p", { class: "text" }, record.why));
  const texts = advice.map((at) => data.advice[at]);
  content.push(...findingsOf(record, data.cards[index][2], texts), ...linksOf(record));
  dialog.querySelector(".content").replaceChildren(...content);
  dialog.showModal();
  dialog.scrollTop = 0;
}

async function start() {
  const data = await unpacked("index");
  const dialog = document.getElementById("card");
  dialog.querySelector(".close").addEventListener("click", () => dialog.close());
  const cardButton = (index) =>
    element("button", { type: "button", "aria-haspopup": "dialog", onclick: () => openCard(data, index) }, data.cards[index][0]);
  const text = (row) => {
    const cell = element("div", {}, element("div", { class: "text" }, row[4] || "(no text)"));
    if (data.advice[row[5]]) cell.append(element("p", { class: "advice" }, data.advice[row[5]]));
    return cell;
  };
  new DataTable(document.getElementById("findings"), "findings", [
    { label: "Card", value: (row) => data.cards[row[0]][0], cell: (row) => cardButton(row[0]) },
    { label: "Result", value: (row) => row[1], cell: (row) => mark(row[1]) },
    { label: "Request", value: (row) => data.requests[row[2]], cell: (row) => element("code", {}, data.requests[row[2]]) },
    { label: "Where", value: (row) => row[3], cell: (row) => element("code", {}, row[3].replace("/config/", "")) },
    { label: "What to do", value: (row) => row[4], cell: text },
  ], data.findings, [
    { label: "Result", value: (row) => row[1], options: ["ERROR", "WARNING"] },
    { label: "Request", value: (row) => data.requests[row[2]], options: [...data.requests].sort() },
  ], 0);
  const cards = data.cards.map((card, index) => ({ card, index }));
  const status = ({ card }) => data.statuses[card[1]];
  const column = (label, at, show) =>
    ({ label, value: ({ card }) => card[at], cell: ({ card }) => show(card[at]), isNumber: true });
  new DataTable(document.getElementById("cards"), "cards", [
    { label: "Card", value: ({ card }) => card[0], cell: ({ index }) => cardButton(index) },
    { label: "Status", value: status, cell: (row) => mark(status(row)) },
    column("Findings", 2, number),
    column("ONUs", 3, number),
    column("Service ports", 4, number),
    column("Fullest link", 5, percent),
  ], cards, [{ label: "Status", value: status, options: data.statuses }], 5);
  document.documentElement.dataset.ready = "yes";
}

start();
