// The side sheet's tabs, the list of text commands and the log.

const mostCommands = 500, mostLines = 2000;

export function setUpTabs(tablist) {
  const tabs = [...tablist.querySelectorAll("[role=tab]")];
  const select = chosen => {
    for (const tab of tabs) {
      const is = tab === chosen;
      tab.setAttribute("aria-selected", is);
      tab.tabIndex = is ? 0 : -1;
      document.getElementById(tab.getAttribute("aria-controls")).hidden = !is;
    }
    chosen.dispatchEvent(new Event("shown"));
  };
  tablist.addEventListener("click", event => {
    const tab = event.target.closest("[role=tab]");
    if (tab)
      select(tab);
  });
  tablist.addEventListener("keydown", event => {
    const by = { ArrowLeft: -1, ArrowRight: 1, Home: -tabs.length, End: tabs.length }[event.key];
    if (!by)
      return;
    event.preventDefault();
    const now = tabs.indexOf(document.activeElement);
    const next = Math.abs(by) > 1 ? (by < 0 ? 0 : tabs.length - 1) : (now + by + tabs.length) % tabs.length;
    tabs[next].focus();
    select(tabs[next]);
  });
  return name => select(document.getElementById(`tab-${name}`));
}

export function element(tag, className, text) {
  const made = document.createElement(tag);
  if (className)
    made.className = className;
  if (text !== undefined)
    made.textContent = text;
  return made;
}

// Keeps the newest line in sight unless the user has scrolled up to read.
class StickyList {
  constructor(list, scroller, most) {
    this.list = list;
    this.scroller = scroller;
    this.most = most;
  }

  add(items) {
    const box = this.scroller;
    const atEnd = box.scrollHeight - box.scrollTop - box.clientHeight < 40;
    this.list.append(...items);
    while (this.list.childElementCount > this.most)
      this.list.firstElementChild.remove();
    if (atEnd)
      box.scrollTop = box.scrollHeight;
  }
}

export class CommandPanel {
  constructor() {
    this.list = document.getElementById("commands");
    this.empty = document.getElementById("no-commands");
    this.sticky = new StickyList(this.list, document.getElementById("panel-commands"), mostCommands);
    this.seen = -1;
  }

  add(commands) {
    const fresh = commands.filter(command => command.n > this.seen);
    if (fresh.length === 0)
      return [];
    this.seen = fresh.at(-1).n;
    this.empty.hidden = true;
    this.sticky.add(fresh.map(command => this.row(command)));
    return fresh;
  }

  // A new run of the host counts anew.
  restart() {
    this.seen = -1;
    this.list.replaceChildren();
  }

  row(command) {
    const row = element("li");
    const wire = element("div", "wire");
    wire.append(element("code", "", command.text), element("time", "", new Date(command.at).toLocaleTimeString()));
    row.append(element("div", "words", command.words), wire);
    return row;
  }
}

export class LogPanel {
  constructor(setLevel) {
    this.list = document.getElementById("log");
    this.empty = document.getElementById("no-log");
    this.filter = document.getElementById("log-filter");
    this.level = document.getElementById("log-level");
    this.sticky = new StickyList(this.list, this.list, mostLines);
    this.filter.addEventListener("input", () => this.applyFilter());
    this.level.addEventListener("change", () => setLevel(Number(this.level.value)));
    document.getElementById("log-clear").addEventListener("click", () => this.clear());
  }

  add(lines, lost) {
    const rows = lines.map(line => this.row(line));
    if (lost > 0)
      rows.unshift(element("li", "lost", `${lost} earlier lines are gone`));
    this.empty.hidden = true;
    this.sticky.add(rows);
  }

  clear() {
    this.list.replaceChildren();
    this.empty.hidden = false;
  }

  // "12345ms RK CLASS::OPERATION: TEXT"
  row(line) {
    const row = element("li");
    const parts = /^(\d+ms) RK (\S+): ([^]*)$/.exec(line);
    if (parts)
      row.append(element("span", "stamp", `${parts[1]} `), element("span", "tag", `${parts[2]} `), parts[3]);
    else
      row.textContent = line;
    row.hidden = !this.matches(row);
    return row;
  }

  matches(row) { return row.textContent.toLowerCase().includes(this.filter.value.toLowerCase()); }

  applyFilter() {
    for (const row of this.list.children)
      row.hidden = !this.matches(row);
    this.list.scrollTop = this.list.scrollHeight;
  }
}
