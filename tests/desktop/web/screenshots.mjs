// Pictures of the live page, light and dark, with the demonstration house: those of the README, or with
// --widths every panel at these widths, to look at.
//
//   node screenshots.mjs --bin BUILD_FOLDER --source SOURCE_FOLDER --out FOLDER [--widths 1600,800] [--house FOLDER]
import { mkdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { Host, cleanUp, openBrowser, openPage, options, sleep, tap } from "./harness.mjs";

const given = options();
const panels = ["commands", "house", "settings", "log"];
const height = { 1600: 1000, 1280: 860, 800: 1280, 400: 860 };
const sizes = given.widths ? given.widths.split(",").map(width => [Number(width), height[width] ?? 900]) : [[1280, 840]];
mkdirSync(given.out, { recursive: true });

const browser = await openBrowser();
const host = await Host.start({
  program: join(given.bin, "wallslate-host"), display: join(given.bin, "wallslate"),
  house: given.house ?? join(given.source, "demo"),
});

async function dropBrokenHouse(page) {
  const folder = join(given.source, "tests/houses/broken/small-slips");
  const names = ["categories.json", "rooms.json", "symbols.json", "structure.json"];
  await page.evaluate(list => {
    const transfer = new DataTransfer();
    for (const { name, text } of list)
      transfer.items.add(new File([text], name, { type: "application/json" }));
    for (const kind of ["dragover", "drop"])
      document.body.dispatchEvent(new DragEvent(kind, { dataTransfer: transfer, bubbles: true }));
  }, names.map(name => ({ name, text: readFileSync(join(folder, name), "utf8") })));
}

// A light: its brightness by hand, which ends all moods, then a mood, then a second one by its corner.
async function showSomething(page) {
  await tap(page, 590, 660);
  await sleep(3200); // the slider closes by itself
  for (const [x, y] of [[130, 300], [450, 140]]) {
    await tap(page, x, y);
    await sleep(500);
  }
}

async function pictures(colorScheme, [width, height]) {
  const page = await openPage(browser, host.url, { colorScheme, viewport: { width, height } });
  const save = name => page.screenshot({ path: join(given.out, `${name}.png`) });
  await sleep(500);
  if (!given.widths) {
    await showSomething(page);
    await save(`page-${colorScheme}`);
  } else {
    await tap(page, 360, 300);
    await tap(page, 240, 50);
    await sleep(300);
    await page.selectOption("#log-level", "4").catch(() => {});
    for (const panel of panels) {
      await page.click(`#tab-${panel}`);
      await sleep(300);
      await save(`${width}-${colorScheme}-${panel}`);
    }
    await page.click("#record");
    await page.focus("#screen");
    await page.keyboard.press("ArrowDown");
    await sleep(200);
    await save(`${width}-${colorScheme}-record`);
    if (width === 1280 && colorScheme === "dark") {
      await dropBrokenHouse(page);
      await sleep(600);
      await save(`${width}-${colorScheme}-faults`);
    }
  }
  await page.close();
}

for (const size of sizes)
  for (const colorScheme of ["light", "dark"])
    await pictures(colorScheme, size);
await browser.close();
await host.stop();
cleanUp();
