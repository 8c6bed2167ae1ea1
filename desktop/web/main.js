// Puts the page together: the link to the host, the display, and what stands beside it.
import { HousePanel } from "./house.js";
import { Link } from "./link.js";
import { CommandPanel, LogPanel, setUpTabs } from "./panels.js";
import { Recorder } from "./record.js";
import { Screen } from "./screen.js";
import { SettingsPanel } from "./settings.js";
import { Touch } from "./touch.js";

const $ = id => document.getElementById(id);
const noticeTime = 4000; // ms
const longestAnswer = 1000; // ms; a picture that comes later has another reason
const formatKeys = ["hours24", "dateFormat", "fahrenheit", "country", "language"];

const link = new Link();
const screen = new Screen($("screen"), $("bezel"), $("stage"));
const recorder = new Recorder();
const commands = new CommandPanel();
const showTab = setUpTabs(document.querySelector("[role=tablist]"));
const log = new LogPanel(level => applySettings({ logLevel: level }));
const settings = new SettingsPanel(applySettings);
const house = new HousePanel(texts => link.fetch("/api/house", {
  method: "POST",
  headers: { "Content-Type": "application/json" },
  body: JSON.stringify(texts),
}));
house.onTake = () => showTab("house");

let state = null;
let downAt = null;      // when the finger came down, until a picture follows
let answerTime = null;  // ms from there to the changed pixels
let pictures = [];      // times of the last second's pictures

// ---- touches ----

const touch = new Touch(screen, $("cross"), (kind, point) => {
  link.send({ t: "touch", k: kind, ...point });
  recorder.touch(kind, point);
  if (kind === 1)
    downAt = performance.now();
  showRecording();
});

// ---- what the host says ----

link.addEventListener("open", () => showBanner());
link.addEventListener("gone", () => {
  touch.forget();
  state = null;
  showBanner();
});
link.addEventListener("hello", () => commands.restart());

link.addEventListener("picture", ({ detail }) => {
  screen.take(detail);
  link.send({ t: "ack" });
  const now = performance.now();
  pictures.push(now);
  if (downAt !== null && now - downAt < longestAnswer)
    answerTime = now - downAt;
  downAt = null;
  showFigures();
});

link.addEventListener("state", ({ detail }) => {
  state = detail.state;
  document.documentElement.dataset.display = state.display.phase;
  $("house-name").textContent = state.house.name;
  document.title = `${state.house.name} – WallSlate`;
  house.showVerdict(state.house);
  settings.show(state.settings);
  $("log-level").value = Math.min(Math.max(state.settings.logLevel ?? 1, 1), 5);
  showBanner();
  showFigures();
});

link.addEventListener("house", ({ detail }) => house.setItems(detail.items));
link.addEventListener("log", ({ detail }) => log.add(detail.lines, detail.lost));
link.addEventListener("notice", ({ detail }) => showNotice(detail.text));
link.addEventListener("commands", ({ detail }) => {
  for (const command of commands.add(detail.list))
    recorder.command(command.text);
  showRecording();
});

// ---- settings ----

function applySettings(set) {
  link.send({ t: "settings", set });
  recorder.settings(set);
  if (formatKeys.some(key => key in set))
    recorder.formats({ ...state?.settings, ...set });
  showRecording();
}

// ---- words above and below the display ----

let noticeTimer = 0;

function showNotice(text) {
  clearTimeout(noticeTimer);
  setBanner(text, false);
  noticeTimer = setTimeout(() => showBanner(), noticeTime);
}

function showBanner() {
  const gone = !link.isOpen;
  const ended = state?.display.phase === "ended";
  $("bezel").classList.toggle("stale", gone || ended);
  if (gone)
    setBanner("The host cannot be reached. The page comes back by itself when it can.", true);
  else if (ended)
    setBanner(capital(state.display.words), true);
  else if (state && state.display.phase !== "running")
    setBanner(state.display.words, false);
  else
    setBanner("", false);
}

function setBanner(text, bad) {
  const banner = $("banner");
  banner.hidden = text === "";
  banner.classList.toggle("bad", bad);
  if (banner.textContent !== text)
    banner.textContent = text;
}

const capital = text => text.charAt(0).toUpperCase() + text.slice(1);

// Four times a second at most: more could not be read, and each change costs the browser a layout.
function showFigures() {
  const now = performance.now();
  const since = now - figuresShown;
  clearTimeout(figuresTimer);
  if (since < figuresPeriod) {
    figuresTimer = setTimeout(showFigures, figuresPeriod - since);
    return;
  }
  figuresShown = now;
  pictures = pictures.filter(time => now - time < 1000);
  const rate = pictures.length > 1 ? `${pictures.length} pictures/s` : "at rest";
  const answer = answerTime === null ? "" : ` · answer ${Math.round(answerTime)} ms`;
  const own = answerTime !== null && state?.display.answerMs !== undefined
    ? ` (display ${Math.round(state.display.answerMs)})` : "";
  const text = `${rate}${answer}${own}`;
  if ($("figures").textContent !== text)
    $("figures").textContent = text;
  if (pictures.length > 0)
    figuresTimer = setTimeout(showFigures, 1000);
}
const figuresPeriod = 250; // ms
let figuresShown = -figuresPeriod;
let figuresTimer;

// ---- tools ----

function save(name, blob) {
  const anchor = document.createElement("a");
  anchor.href = URL.createObjectURL(blob);
  anchor.download = name;
  anchor.click();
  setTimeout(() => URL.revokeObjectURL(anchor.href), 10000);
}

const stamp = () => new Date().toISOString().slice(0, 19).replaceAll(":", "-");

$("rest").addEventListener("click", () => applySettings({ rest: true }));

$("shot").addEventListener("click", async () => {
  const reply = await link.fetch(`/screenshot.png?border=${screen.withBorder ? 1 : 0}`).catch(() => null);
  if (reply?.ok)
    save(`wallslate-${stamp()}.png`, await reply.blob());
  else
    showNotice("There is no picture to be had.");
});

$("record").addEventListener("click", () => {
  if (recorder.isOn)
    save(`wallslate-${stamp()}.script`, new Blob([recorder.finish()], { type: "text/plain" }));
  else
    recorder.start(state?.house.name ?? "");
  showRecording();
});

function showRecording() {
  $("record").setAttribute("aria-pressed", recorder.isOn);
  $("record").textContent = recorder.isOn ? `Stop and save (${recorder.lines.length})` : "Record";
}

function toggle(id, act) {
  $(id).addEventListener("click", () => {
    const on = $(id).getAttribute("aria-pressed") !== "true";
    $(id).setAttribute("aria-pressed", on);
    act(on);
  });
}
toggle("fill", on => screen.setFill(on));
toggle("border", on => screen.showBorder(on));

showBanner();
