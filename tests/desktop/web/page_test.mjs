// The live page in a real browser. With --display of the real display it tries the whole way from finger to picture;
// with the fake one of tests/desktop it also knows to the pixel where touches arrive.
//
//   node page_test.mjs --bin BUILD_FOLDER --source SOURCE_FOLDER --display PROGRAM --kind real|fake [--only WORDS]
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { existsSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import {
  Host, cleanUp, commandsOf, dragToAndFro, folder, openBrowser, openPage, options, pictureOf, pictureOfPng, placeOf, serialOf, sleep,
  tap, until,
} from "./harness.mjs";

const given = options();
const real = given.kind === "real";
const program = join(given.bin, "wallslate-host");
const houses = join(given.source, "tests/houses");
const setup = { program, display: given.display, house: join(houses, "six-pages") };
const skipped = 77; // what ctest takes for "not here"

if (!existsSync(process.env.CHROMIUM ?? "/usr/bin/chromium")) {
  console.log("no browser here");
  process.exit(skipped);
}

const browser = await openBrowser();
let host = await Host.start(setup);
let page = await openPage(browser, host.url);
let failures = 0;

async function step(name, act) {
  if (given.only && !name.includes(given.only))
    return;
  try {
    await act();
    assert.deepEqual(page.problems, [], "errors on the page");
    console.log(`ok      ${name}`);
  } catch (error) {
    failures++;
    console.log(`FAILED  ${name}\n${error.stack}`);
    await page.screenshot({ path: join(given.bin, `page-failure-${failures}.png`) }).catch(() => {});
  }
}

function dropHouse(path) {
  const names = ["categories.json", "rooms.json", "symbols.json", "structure.json"];
  const files = names.map(name => ({ name, text: readFileSync(join(path, name), "utf8") }));
  return page.evaluate(list => {
    const transfer = new DataTransfer();
    for (const { name, text } of list)
      transfer.items.add(new File([text], name, { type: "application/json" }));
    const fire = kind => document.body.dispatchEvent(new DragEvent(kind, { dataTransfer: transfer, bubbles: true }));
    fire("dragover");
    fire("drop");
  }, files);
}

const n = value => value.toFixed(1);
const bannerText = () => page.textContent("#banner");
const phase = () => page.evaluate(() => document.documentElement.dataset.display);
const rested = async () => { // no new picture for a while
  let last = -1;
  await until("a picture at rest", async () => {
    const now = await serialOf(page), same = now === last;
    last = now;
    await sleep(200);
    return same;
  });
};

await step("the canvas shows what --shot shows", async () => {
  const shot = join(folder, "shot.png");
  execFileSync(program, ["-q", "--display", given.display, "--shot", shot, setup.house]);
  await rested();
  assert.equal(await pictureOf(page), await pictureOfPng(page, shot));
});

await step("one pixel of the display is one pixel of the screen, border hidden", async () => {
  const size = await page.evaluate(() => {
    const area = document.getElementById("screen").getBoundingClientRect();
    return [area.width * devicePixelRatio, area.height * devicePixelRatio, area.left * devicePixelRatio % 1,
      area.top * devicePixelRatio % 1];
  });
  assert.deepEqual(size.map(Math.round), [720, 720, 0, 0]);
});

await step("a click on a switch changes the picture and shows its command in words", async () => {
  const before = await pictureOf(page);
  await tap(page, 360, 415);
  const [command] = await until("a command", async () => (await commandsOf(page)).length && commandsOf(page));
  if (real) {
    assert.equal(command.text, '{"U":101,"E":0,"T":2,"V":1.0}');
    assert.equal(command.words, "Kitchen, Switch 1: on");
  } else {
    assert.equal(command.text, '{"at":[392,447]}');
  }
  await until("a changed picture", async () => (await pictureOf(page)) !== before);
  await until("the answer's time", async () => /answer \d+ ms/.test(await page.textContent("#figures")));
});

await step("a drag moves the menu and sends nothing", async () => {
  await rested();
  const count = (await commandsOf(page)).length, serial = await serialOf(page), before = await pictureOf(page);
  const from = await placeOf(page, 500, 50), to = await placeOf(page, 250, 50);
  await page.mouse.move(from.x, from.y);
  await page.mouse.down();
  for (let i = 1; i <= 20; i++) {
    await page.mouse.move(from.x + (to.x - from.x) * i / 20, from.y);
    await sleep(15);
  }
  await page.mouse.up();
  await until("a moved menu", async () => (await pictureOf(page)) !== before);
  if (real) {
    assert.ok(await serialOf(page) > serial + 3, "it moved in steps");
    assert.equal((await commandsOf(page)).length, count);
  }
});

await step("the finger is lifted wherever the pointer ends", async () => {
  const ups = async () => (await commandsOf(page)).length;
  if (real)
    return; // the fake display answers each up with a command
  for (const end of ["outside", "blur", "second"]) {
    const before = await ups();
    const place = await placeOf(page, 600, 300);
    await page.mouse.move(place.x, place.y);
    await page.mouse.down();
    if (end === "outside") {
      await page.mouse.move(1399, 899);
      await page.mouse.up();
    } else if (end === "blur") {
      await page.evaluate(() => window.dispatchEvent(new Event("blur")));
      await until("an up", async () => (await ups()) > before);
      await page.mouse.up();
    } else {
      await page.evaluate(() => document.getElementById("screen").dispatchEvent(new PointerEvent("pointerdown",
        { pointerId: 99, isPrimary: false, button: 0, clientX: 400, clientY: 400 })));
      await page.mouse.up();
    }
    await until(`an up after ${end}`, async () => (await ups()) > before);
    await sleep(100);
    assert.equal(await ups(), before + 1, `one up after ${end}`);
  }
});

await step("the display can be worked from the keyboard", async () => {
  const before = (await commandsOf(page)).length;
  await page.focus("#screen");
  await page.keyboard.press("Shift+ArrowDown");
  await page.keyboard.press("Space");
  assert.ok(await page.isVisible("#cross"));
  await until("a command", async () => (await commandsOf(page)).length > before);
});

await step("settings reach the display and its log is shown", async () => {
  await page.click("#tab-log");
  await page.selectOption("#log-level", "4");
  await page.click("#tab-settings");
  const day = await pictureOf(page);
  await page.click("[name=night]");
  if (real)
    await until("the picture of the night", async () => (await pictureOf(page)) !== day);
  const dark = await pictureOf(page);
  await page.click("#tab-log");
  await until("log lines", async () => (await page.$$("#log li")).length > 0);
  await page.fill("#log-filter", "no line says this");
  assert.equal(await page.$$eval("#log li:not([hidden])", rows => rows.length), 0);
  await page.fill("#log-filter", "");
  await page.click("#tab-settings");
  await page.click("[name=night]");
  if (real)
    await until("the picture of the day", async () => (await pictureOf(page)) !== dark);
  await page.click("#rest");
  await rested();
  if (real) {
    const before = (await commandsOf(page)).length;
    await tap(page, 360, 415);
    await until("a page that still works", async () => (await commandsOf(page)).length > before);
  }
  await page.click("#tab-commands");
});

await step("a drag is shown as fast as the browser paints, and nothing queues up behind it", async () => {
  await rested();
  const left = await placeOf(page, 150, 50), right = await placeOf(page, 560, 50);
  await page.mouse.move(right.x, right.y);
  await page.mouse.down();
  const before = (await host.info()).frames;
  const { moves, shown, seconds } = await dragToAndFro(page, left, right, 2000);
  const made = (await host.info()).frames - before;
  await page.mouse.up();
  console.log(`        ${n(moves / seconds)} moves, ${n(made / seconds)} pictures made, ${n(shown / seconds)} shown a second`);
  if (real)
    assert.ok(shown >= Math.min(made, moves) * 0.4, "what is made is shown, also on a busy machine");
  await rested();
  const screenshot = join(folder, "after-drag.png");
  writeFileSync(screenshot, Buffer.from(await (await fetch(`${host.url}screenshot.png`)).arrayBuffer()));
  assert.equal(await pictureOf(page), await pictureOfPng(page, screenshot), "the newest picture is shown");
});

await step("a second viewer sees the same and both see each other's commands", async () => {
  const first = page, second = await openPage(browser, host.url, { deviceScaleFactor: 2 });
  await rested();
  assert.equal(await pictureOf(second), await pictureOf(first));
  const before = (await commandsOf(first)).length;
  await tap(second, 360, 415);
  await until("a command", async () => (await commandsOf(first)).length > before);
  assert.deepEqual((await commandsOf(second)).at(-1), (await commandsOf(first)).at(-1));
  assert.deepEqual(second.problems, []);
  await second.close();
});

await step("what I do becomes a script that runs again", async () => {
  await rested();
  await page.click("#record");
  await sleep(50);
  await tap(page, 360, 415);
  const before = (await commandsOf(page)).length;
  await until("the command", async () => (await commandsOf(page)).length >= before && before > 0);
  await sleep(300);
  const download = page.waitForEvent("download");
  await page.click("#record");
  const file = join(folder, "recorded.script");
  await (await download).saveAs(file);
  const text = readFileSync(file, "utf8");
  assert.match(text, /down 360 415\n(wait \d+\n)?up 360 415\nexpect /);
  // the state of the switch depends on what was tapped before, so only the touches are run again
  writeFileSync(file, text.replace(/^expect .*$/gm, ""));
  const out = execFileSync(program, ["-q", "--display", given.display, "--script", file, setup.house], { encoding: "utf8" });
  assert.match(out, /^command /m);
});

await step("a broken house is refused in words, and the display stays", async () => {
  const id = host.displayId();
  await dropHouse(join(houses, "broken/type-is-string"));
  await until("the verdict", async () => /not shown/.test(await page.textContent("#verdict")));
  assert.match(await page.textContent("#findings"), /structure\.json:3:9.*\[1\]\.T.*is a string/);
  assert.equal(await page.textContent("#fault-badge"), "1");
  assert.ok(await page.isVisible("#panel-house"));
  assert.equal(host.displayId(), id);
});

await step("a good house takes its place", async () => {
  const before = await pictureOf(page);
  await dropHouse(join(houses, "one-switch"));
  await until("the new house", async () => /no faults/.test(await page.textContent("#verdict")) && (await phase()) === "running");
  if (real)
    await until("its picture", async () => (await pictureOf(page)) !== before);
  assert.match(await page.textContent("#tree"), /Kitchen light/);
  await page.fill("#house-search", "no such item");
  assert.match(await page.textContent("#tree"), /Nothing found/);
  await page.fill("#house-search", "");
});

await step("a display that dies comes back with a word about it", async () => {
  process.kill(host.displayId(), "SIGKILL");
  await until("a banner", async () => /signal 9/.test(await bannerText()));
  await until("the display", async () => (await phase()) === "running");
  await until("no banner", async () => !(await page.isVisible("#banner")));
  const before = (await commandsOf(page)).length;
  await tap(page, 360, 360);
  await until("a command", async () => (await commandsOf(page)).length > before);
});

await step("a host that goes is missed, and found again", async () => {
  const port = new URL(host.url).port;
  assert.equal(await host.stop(), 0);
  await until("a banner", async () => /cannot be reached/.test(await bannerText()));
  host = await Host.start({ ...setup, port });
  await until("the page again", async () => !(await page.isVisible("#banner")));
  const before = (await commandsOf(page)).length;
  await tap(page, 360, 415);
  await until("a command", async () => (await commandsOf(page)).length > before);
});

if (!real)
  await step("touches arrive at the right pixel at every zoom and size", async () => {
    for (const [width, height, deviceScaleFactor] of [[1400, 900, 1], [1000, 500, 1], [1400, 900, 1.5], [1920, 1100, 2],
      [700, 1200, 1], [390, 800, 3]]) {
      const viewer = await openPage(browser, host.url, { viewport: { width, height }, deviceScaleFactor });
      for (const button of ["", "#fill", "#border"]) {
        if (button)
          await viewer.click(button);
        // where a display pixel is smaller than one of the page's, the pointer cannot meet it exactly
        const scale = await viewer.evaluate(() => {
          const canvas = document.getElementById("screen");
          return canvas.getBoundingClientRect().width / canvas.width;
        });
        const slack = scale < 1 ? Math.ceil(1 / scale) : 0;
        for (const [x, y] of [[slack, slack], [719 - slack, 719 - slack], [123, 456]]) {
          const count = (await commandsOf(viewer)).length;
          await tap(viewer, x, y);
          const where = `${x},${y} at ${width}x${height}x${deviceScaleFactor}${button}`;
          await until(`a tap on ${where}`, async () => (await commandsOf(viewer)).length > count, 4000);
          const [ax, ay] = JSON.parse((await commandsOf(viewer)).at(-1).text).at;
          assert.ok(Math.abs(ax - 32 - x) <= slack && Math.abs(ay - 32 - y) <= slack, `${where} came as ${ax - 32},${ay - 32}`);
        }
      }
      assert.deepEqual(viewer.problems, []);
      await viewer.close();
    }
  });

await step("Ctrl-C ends host and display", async () => {
  const id = host.displayId();
  assert.equal(await host.stop("SIGINT"), 0);
  assert.ok(!existsSync(`/proc/${id}`));
});

await browser.close();
if (host.exitCode === undefined)
  await host.stop("SIGKILL");
cleanUp();
process.exit(failures > 0 ? 1 : 0);
