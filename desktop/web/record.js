// Writes down what the user does as a script for --script: touches with their pauses, settings, and the text commands
// that came of them as expectations.

const shortestWait = 15; // ms; below it is only the noise of two events in a row
const verbs = { 1: "down", 2: "move", 4: "up" };

export class Recorder {
  constructor() { this.lines = null; }

  get isOn() { return this.lines !== null; }

  start(houseName) {
    this.lines = [`# recorded on ${new Date().toLocaleString()}, house ${houseName}`];
    this.time = performance.now();
  }

  // The script so far; recording ends.
  finish() {
    const text = `${this.lines.join("\n")}\n`;
    this.lines = null;
    return text;
  }

  note(line) {
    if (!this.isOn)
      return;
    const now = performance.now(), pause = Math.round(now - this.time);
    if (pause >= shortestWait)
      this.lines.push(`wait ${pause}`);
    this.lines.push(line);
    this.time = now;
  }

  touch(kind, point) { this.note(`${verbs[kind]} ${point.x} ${point.y}`); }

  command(text) {
    if (this.isOn)
      this.lines.push(`expect ${text}`);
  }

  settings(set) {
    const runtime = {};
    if (set.color !== undefined) { // the display wants blue in the high byte
      const value = parseInt(set.color.slice(1), 16);
      runtime.color = (value & 0xff) << 16 | value & 0xff00 | value >> 16;
    }
    if (set.restMode !== undefined)
      runtime.restmode = set.restMode;
    if (set.restDelay !== undefined)
      runtime.restModeDelay = set.restDelay;
    if (Object.keys(runtime).length > 0)
      this.note(`runtime ${JSON.stringify(runtime)}`);
    if (set.night !== undefined)
      this.note(`night ${set.night ? 1 : 0}`);
    if (set.logLevel !== undefined)
      this.note(`log-level ${set.logLevel}`);
    if (set.rest)
      this.note("rest");
  }

  // Formats go to the display all together.
  formats(all) {
    const wallslate = {
      "24hFormat": all.hours24 === false ? 0 : 1,
      dateFormat: (all.dateFormat ?? 0) + (all.fahrenheit ? 256 : 0),
      country: all.country ?? "01",
      language: all.language ?? "ENG",
    };
    this.note(`settings ${JSON.stringify({ wallslate })}`);
  }
}
