// What the page's tests and its latency bench share: hosts on free ports, a browser, waiting.
import { spawn } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { chromium } from "playwright-core";

export const sleep = ms => new Promise(resolve => setTimeout(resolve, ms));

// "--name value" pairs of the command line.
export function options() {
  const given = {};
  for (let i = 2; i + 1 < process.argv.length; i += 2)
    given[process.argv[i].replace(/^--/, "")] = process.argv[i + 1];
  return given;
}

export async function until(what, holds, ms = 15000) {
  const end = Date.now() + ms;
  for (;;) {
    const value = await holds();
    if (value)
      return value;
    if (Date.now() > end)
      throw new Error(`waited in vain: ${what}`);
    await sleep(20);
  }
}

export const folder = mkdtempSync(join(tmpdir(), "wallslate-page-"));

export class Host {
  // One that serves `house`; resolves when its display shows it.
  static async start({ program, display, house, port = 0, state = join(folder, "state") }) {
    const host = new Host();
    host.pidFile = join(folder, `display-${Math.random()}`);
    host.process = spawn(program, ["--display", display, "--state-dir", state, "--listen", `127.0.0.1:${port}`, house], {
      env: { ...process.env, FAKE_PID_FILE: host.pidFile },
    });
    host.words = "";
    host.process.stdout.on("data", data => { host.words += data; });
    host.process.stderr.on("data", data => { host.words += data; });
    host.ended = new Promise(resolve => host.process.on("exit", code => { host.exitCode = code; resolve(code); }));
    await until(`a host for ${house}; it said: ${host.words}`,
      () => /the display shows/.test(host.words) || host.exitCode !== undefined, 40000);
    host.url = /http:\/\/\S+/.exec(host.words)?.[0];
    if (!host.url)
      throw new Error(`the host did not start: ${host.words}`);
    return host;
  }

  async info() { return (await fetch(`${this.url}api/info`)).json(); }

  // The process id of the display: the host's only child.
  displayId() {
    const children = readFileSync(`/proc/${this.process.pid}/task/${this.process.pid}/children`, "utf8");
    return Number(children.trim().split(" ")[0]);
  }

  async stop(signal = "SIGINT") {
    this.process.kill(signal);
    return this.ended;
  }
}

export async function openBrowser() {
  const program = process.env.CHROMIUM ?? "/usr/bin/chromium";
  return chromium.launch({ executablePath: program, args: ["--no-sandbox", "--disable-gpu"] });
}

// A page on the host, with the display's picture on it; errors of the page become failures.
export async function openPage(browser, url, context = {}) {
  const page = await (await browser.newContext({ viewport: { width: 1400, height: 900 }, ...context })).newPage();
  page.problems = [];
  page.on("pageerror", error => page.problems.push(error.message));
  page.on("console", message => {
    if (message.type() === "error" && !/WebSocket|ERR_CONNECTION|status of 422/.test(message.text()))
      page.problems.push(message.text());
  });
  await page.goto(url);
  // not waitForFunction: it evaluates a string, which the page's policy forbids
  await until("a running display on the page", () => page.evaluate(() =>
    document.documentElement.dataset.display === "running" && Number(document.getElementById("screen").dataset.serial) > 0));
  return page;
}

// The place of a screen pixel on the page.
export async function placeOf(page, x, y) {
  return page.evaluate(([px, py]) => {
    const canvas = document.getElementById("screen"), area = canvas.getBoundingClientRect();
    const inset = canvas.width === 784 ? 32 : 0, scale = area.width / canvas.width;
    // a pointer stands on whole pixels of the page
    const within = value => scale < 1 ? Math.floor(value) : value;
    return { x: within(area.left + (px + inset + 0.5) * scale), y: within(area.top + (py + inset + 0.5) * scale) };
  }, [x, y]);
}

export async function tap(page, x, y) {
  const place = await placeOf(page, x, y);
  await page.mouse.click(place.x, place.y);
}

// To and fro between two places for a while, the mouse being down: one move for every paint of the browser. Moves sent
// from outside would come at the pace of this program, not of a hand. Tells how many pictures were shown meanwhile.
export const dragToAndFro = (page, left, right, ms) => page.evaluate(([left, right, ms]) => new Promise(resolve => {
  const canvas = document.getElementById("screen"), span = right.x - left.x, start = performance.now();
  let moves = 0, shown = 0;
  const watcher = new MutationObserver(() => shown++);
  watcher.observe(canvas, { attributes: true, attributeFilter: ["data-serial"] });
  const step = () => {
    const passed = performance.now() - start;
    if (passed >= ms) {
      watcher.disconnect();
      return resolve({ moves, shown, seconds: passed / 1000 });
    }
    moves++;
    const clientX = left.x + Math.abs(span - moves * 7 % (2 * span));
    canvas.dispatchEvent(new PointerEvent("pointermove", { pointerId: 1, clientX, clientY: left.y, bubbles: true }));
    requestAnimationFrame(step);
  };
  requestAnimationFrame(step);
}), [left, right, ms]);

export const serialOf = page => page.evaluate(() => Number(document.getElementById("screen").dataset.serial));
export const commandsOf = page => page.$$eval("#commands li", rows => rows.map(row => ({
  words: row.querySelector(".words").textContent, text: row.querySelector("code").textContent,
})));

// A number that stands for the screen's 720 x 720 pixels on the canvas.
export const pictureOf = page => page.evaluate(() => {
  const canvas = document.getElementById("screen"), inset = canvas.width === 784 ? 32 : 0;
  const data = new Uint32Array(canvas.getContext("2d").getImageData(inset, inset, 720, 720).data.buffer);
  let hash = 0;
  for (const pixel of data)
    hash = Math.imul(hash ^ pixel, 16777619) >>> 0;
  return hash;
});

// The same number for the screen inside a PNG file, of a whole frame or of the screen alone.
export const pictureOfPng = (page, file) => page.evaluate(async base64 => {
  const bytes = Uint8Array.from(atob(base64), c => c.charCodeAt(0));
  const bitmap = await createImageBitmap(new Blob([bytes], { type: "image/png" }), { colorSpaceConversion: "none" });
  const context = new OffscreenCanvas(bitmap.width, bitmap.height).getContext("2d");
  context.drawImage(bitmap, 0, 0);
  const inset = (bitmap.width - 720) / 2;
  const data = new Uint32Array(context.getImageData(inset, inset, 720, 720).data.buffer);
  let hash = 0;
  for (const pixel of data)
    hash = Math.imul(hash ^ pixel, 16777619) >>> 0;
  return hash;
}, readFileSync(file).toString("base64"));

export function cleanUp() { rmSync(folder, { recursive: true, force: true }); }
