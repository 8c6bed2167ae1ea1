// The house: its items as a tree, its faults, and the loading of another one.
import { element } from "./panels.js";

const fileNames = ["categories.json", "rooms.json", "symbols.json", "structure.json"];
const mostShown = 3000; // items in the tree at once; the search finds the rest
const mostDepth = 60;

export class HousePanel {
  // offer(texts) sends a house to the host and returns its answer.
  constructor(offer) {
    this.offer = offer;
    this.tree = document.getElementById("tree");
    this.verdict = document.getElementById("verdict");
    this.findings = document.getElementById("findings");
    this.search = document.getElementById("house-search");
    this.items = [];
    this.search.addEventListener("input", () => this.showItems());
    const choose = document.getElementById("choose");
    choose.addEventListener("change", () => {
      this.take([...choose.files], choose.files[0]?.webkitRelativePath.split("/")[0]);
      choose.value = "";
    });
    this.listenForDrops(document.getElementById("drop-veil"));
  }

  // ---- what is loaded ----

  setItems(items) {
    this.items = items;
    this.showItems();
  }

  showItems() {
    const wanted = this.search.value.trim().toLowerCase();
    this.tree.replaceChildren(wanted ? this.foundList(wanted) : this.wholeTree());
  }

  foundList(wanted) {
    const list = element("ul");
    for (const item of this.items) {
      const text = `${item.n} ${item.r} ${item.c} ${item.k} ${item.u}`.toLowerCase();
      if (text.includes(wanted) && list.childElementCount < mostShown)
        list.append(this.leaf(item));
    }
    if (list.childElementCount === 0)
      list.append(element("li", "what", "Nothing found."));
    return list;
  }

  wholeTree() {
    const top = element("ul");
    const lists = [top]; // [depth]
    this.items.slice(0, mostShown).forEach((item, i) => {
      const depth = Math.min(item.d, mostDepth, lists.length - 1);
      lists.length = depth + 1;
      const hasMembers = this.items[i + 1]?.d > item.d;
      lists[depth].append(hasMembers ? this.branch(item, lists) : this.leaf(item));
    });
    if (this.items.length > mostShown)
      top.append(element("li", "what", `${this.items.length - mostShown} more; search for them.`));
    return top;
  }

  branch(item, lists) {
    const row = element("li"), details = element("details"), members = element("ul");
    const summary = element("summary");
    summary.append(...this.words(item));
    details.open = item.d === 0;
    details.append(summary, members);
    row.append(details);
    lists.push(members);
    return row;
  }

  leaf(item) {
    const row = element("li");
    row.append(...this.words(item));
    return row;
  }

  words(item) {
    const what = [item.k || (item.t === 0 ? "group" : `type ${item.t}`), item.r].filter(Boolean).join(", ");
    const parts = [element("span", "name", item.n || "(no name)"), element("span", "what", what)];
    if (item.u)
      parts.unshift(element("span", "number", item.u));
    return parts;
  }

  // ---- faults ----

  showVerdict(house) {
    const errors = house.findings.filter(finding => finding.error).length;
    const badge = document.getElementById("fault-badge");
    badge.hidden = errors === 0;
    badge.textContent = errors;
    badge.setAttribute("aria-label", errors === 1 ? ", one fault" : `, ${errors} faults`);
    badge.setAttribute("role", "img");
    const faulty = house.findings.length > 0;
    this.verdict.className = `verdict ${errors > 0 ? "bad" : faulty ? "" : "good"}`;
    this.verdict.textContent = house.shown
      ? `${house.name}: ${house.summary}`
      : `The new house is not shown, ${house.name} stays: ${house.summary}`;
    this.findings.replaceChildren(...house.findings.map(finding => {
      const row = element("li", finding.error ? "error" : "warning");
      const path = finding.path ? ` ${finding.path}` : "";
      row.append(element("span", "place", `${finding.file}:${finding.line}:${finding.column}${path}`), finding.text);
      return row;
    }));
  }

  say(text) {
    this.verdict.className = "verdict bad";
    this.verdict.textContent = text;
  }

  // ---- another house ----

  listenForDrops(veil) {
    const hasFiles = event => event.dataTransfer?.types.includes("Files");
    document.addEventListener("dragover", event => {
      if (!hasFiles(event))
        return;
      event.preventDefault();
      veil.hidden = false;
    });
    document.addEventListener("dragleave", event => {
      if (event.relatedTarget === null)
        veil.hidden = true;
    });
    document.addEventListener("drop", async event => {
      veil.hidden = true;
      if (!hasFiles(event))
        return;
      event.preventDefault();
      const entries = [...event.dataTransfer.items].map(item => item.webkitGetAsEntry?.()).filter(Boolean);
      const plain = [...event.dataTransfer.files];
      const folder = entries.find(entry => entry.isDirectory);
      this.take(folder ? await filesOf(folder) : plain, folder?.name);
    });
  }

  async take(files, name) {
    this.onTake?.();
    const house = { name: name || "dropped house" };
    for (const fileName of fileNames) {
      const file = files.find(candidate => candidate.name === fileName);
      if (!file)
        return this.say(`${fileName} is missing: a house is a folder with ${fileNames.join(", ")}.`);
      house[fileName.replace(".json", "")] = await file.text();
    }
    try {
      const reply = await this.offer(house);
      if (reply.status !== 200 && reply.status !== 422)
        this.say((await reply.text()).trim());
    } catch {
      this.say("The host cannot be reached.");
    }
  }
}

async function filesOf(folder) {
  const reader = folder.createReader();
  const entries = [];
  for (;;) { // a folder comes in portions
    const portion = await new Promise((resolve, reject) => reader.readEntries(resolve, reject));
    if (portion.length === 0)
      break;
    entries.push(...portion);
  }
  const wanted = entries.filter(entry => entry.isFile && fileNames.includes(entry.name));
  return Promise.all(wanted.map(entry => new Promise((resolve, reject) => entry.file(resolve, reject))));
}
