// From the pointer's down to the changed pixels on the canvas, over 200 taps, and how many pictures a second a drag
// shows. Prints the figures beside the display's own time; ends with code 1 when a goal is missed.
//
//   node latency_bench.mjs --bin BUILD_FOLDER --source SOURCE_FOLDER
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { Host, cleanUp, dragToAndFro, openBrowser, openPage, options, placeOf, sleep, tap } from "./harness.mjs";

const taps = 200, medianGoal = 40, p95Goal = 80, rateGoal = 60, idleGoal = 1; // ms, ms, pictures/s, percent
const idleTime = 5000; // ms
const ticksPerSecond = 100; // of /proc's processor times, on every Linux

const given = options();
const startHost = house => Host.start({
  program: join(given.bin, "wallslate-host"), display: given.display ?? join(given.bin, "wallslate"),
  house: join(given.source, "tests/houses", house),
});
const at = (sorted, part) => sorted[Math.min(Math.floor(sorted.length * part), sorted.length - 1)];
const figures = list => {
  const sorted = [...list].sort((a, b) => a - b);
  return { median: at(sorted, 0.5), p95: at(sorted, 0.95) };
};

// Milliseconds of processor time that a process has used.
function processorTime(id) {
  const fields = readFileSync(`/proc/${id}/stat`, "utf8").split(") ")[1].split(" ");
  return (Number(fields[11]) + Number(fields[12])) * 1000 / ticksPerSecond;
}

const browser = await openBrowser();
let host = await startHost("switches-1-to-4");
let page = await openPage(browser, host.url);
await tap(page, 240, 50); // the push button's page: it darkens as the finger comes down
await sleep(500);
const place = await placeOf(page, 360, 415);

// The page's own clock: from the event of the pointer to the canvas with the new pixels.
await page.evaluate(() => {
  const canvas = document.getElementById("screen");
  window.answers = [];
  let down = null, serial = 0;
  canvas.addEventListener("pointerdown", event => { down = event.timeStamp; serial = canvas.dataset.serial; }, true);
  new MutationObserver(() => {
    if (down !== null && canvas.dataset.serial !== serial) {
      window.answers.push(performance.now() - down);
      down = null;
    }
  }).observe(canvas, { attributes: true, attributeFilter: ["data-serial"] });
});

const own = [];
for (let i = 0; i < taps; i++) {
  await page.mouse.move(place.x, place.y);
  await page.mouse.down();
  await sleep(40);
  await page.mouse.up();
  await sleep(60);
  own.push((await host.info()).display.answerMs ?? 0);
}
const answers = await page.evaluate(() => window.answers);
const total = figures(answers), display = figures(own);
const over = { median: total.median - display.median, p95: total.p95 - display.median };

await page.close();
await host.stop();

// A drag of a long menu, to and fro.
host = await startHost("twelve-pages");
page = await openPage(browser, host.url);
const left = await placeOf(page, 150, 50), right = await placeOf(page, 560, 50);
await page.mouse.move(right.x, right.y);
await page.mouse.down();
const before = (await host.info()).frames;
const { moves, shown, seconds } = await dragToAndFro(page, left, right, 3000);
const rate = shown / seconds, moved = moves / seconds, made = ((await host.info()).frames - before) / seconds;
await page.mouse.up();
await sleep(1500);

const used = processorTime(host.process.pid);
await sleep(idleTime);
const idle = (processorTime(host.process.pid) - used) / idleTime * 100;

const n = value => value.toFixed(1);
console.log(`pointer down to changed pixels, ${answers.length} of ${taps} taps: median ${n(total.median)} ms, p95 ${n(total.p95)} ms`);
console.log(`the display's own time in it: median ${n(display.median)} ms, p95 ${n(display.p95)} ms`);
console.log(`beside it: median ${n(over.median)} ms (goal ${medianGoal}), p95 ${n(over.p95)} ms (goal ${p95Goal})`);
console.log(`a drag: ${n(rate)} pictures/s on the page, ${n(made)} made by the display, ${n(moved)} moves/s (goal ${rateGoal})`);
console.log(`host at rest with one viewer: ${n(idle)} % of a core (goal ${idleGoal})`);

await browser.close();
await host.stop();
cleanUp();
const met = answers.length >= taps * 0.95 && over.median < medianGoal && over.p95 < p95Goal &&
  rate >= Math.min(rateGoal, moved) * 0.95 && idle < idleGoal;
process.exit(met ? 0 : 1);
