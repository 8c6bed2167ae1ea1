// The display on the wall: the canvas, its size in whole device pixels, and the way from pointer to screen pixel.
import { frameSize, takeUpdate } from "./pixels.js";

export const screenSize = 720;
const borderSize = (frameSize - screenSize) / 2;
const bezel = 14; // CSS pixels, as in style.css

export class Screen extends EventTarget {
  constructor(canvas, bezelElement, stage) {
    super();
    this.canvas = canvas;
    this.bezel = bezelElement;
    this.stage = stage;
    this.context = canvas.getContext("2d", { alpha: false });
    this.image = new ImageData(frameSize, frameSize);
    this.picture = new Uint32Array(this.image.data.buffer).fill(0xff000000);
    this.serial = 0;
    this.withBorder = false;
    this.fill = false;
    new ResizeObserver(() => this.fit()).observe(stage);
    this.watchPixelRatio();
    this.fit();
  }

  get inset() { return this.withBorder ? 0 : borderSize; }
  get size() { return this.withBorder ? frameSize : screenSize; }

  take(buffer) {
    const change = takeUpdate(buffer, this.picture);
    this.serial = change.serial;
    this.context.putImageData(this.image, -this.inset, -this.inset, change.x, change.y, change.width, change.height);
    this.canvas.dataset.serial = change.serial;
    this.dispatchEvent(new CustomEvent("picture", { detail: change }));
    return change;
  }

  showBorder(on) {
    this.withBorder = on;
    this.canvas.width = this.canvas.height = this.size;
    this.context.putImageData(this.image, -this.inset, -this.inset);
    this.fit();
  }

  setFill(on) {
    this.fill = on;
    this.fit();
  }

  // A change of zoom or of the monitor.
  watchPixelRatio() {
    matchMedia(`(resolution: ${devicePixelRatio}dppx)`).addEventListener("change", () => {
      this.watchPixelRatio();
      this.fit();
    }, { once: true });
  }

  // One pixel of the display becomes a whole number of device pixels, unless there is too little room or the user
  // wants to fill the room; and the canvas begins on a whole device pixel.
  fit() {
    const ratio = devicePixelRatio;
    const room = this.stage.getBoundingClientRect();
    const margin = 2 * bezel + 24;
    const available = Math.max(Math.min(room.width, room.height) - margin, 120) * ratio;
    const whole = Math.floor(available / this.size);
    const device = whole >= 1 && !this.fill ? whole * this.size : Math.floor(available);
    const css = device / ratio;
    this.canvas.style.width = this.canvas.style.height = `${css}px`;
    this.canvas.style.imageRendering = device % this.size === 0 ? "pixelated" : "auto";
    const place = (start, length) =>
      Math.round((start + (length - css) / 2) * ratio) / ratio - start - bezel;
    this.bezel.style.left = `${place(room.left, room.width)}px`;
    this.bezel.style.top = `${place(room.top, room.height)}px`;
  }

  // The screen pixel under a place on the page, held to the screen.
  pixelAt(clientX, clientY) {
    const area = this.canvas.getBoundingClientRect();
    const along = (place, start, length) => {
      const inCanvas = (place - start) / length * this.size + this.inset - borderSize;
      return Math.min(Math.max(Math.floor(inCanvas), 0), screenSize - 1);
    };
    return { x: along(clientX, area.left, area.width), y: along(clientY, area.top, area.height) };
  }

  // Whether that place lies on the screen itself, not on the border around it.
  isOnScreen(clientX, clientY) {
    const area = this.canvas.getBoundingClientRect();
    const inset = (borderSize - this.inset) * area.width / this.size;
    const within = (place, start, length) => place >= start + inset && place < start + length - inset;
    return within(clientX, area.left, area.width) && within(clientY, area.top, area.height);
  }

  // CSS pixels from the bezel's corner to the middle of a screen pixel.
  placeOf(point) {
    const scale = this.canvas.getBoundingClientRect().width / this.size;
    const along = value => bezel + (value + borderSize - this.inset + 0.5) * scale;
    return { left: along(point.x), top: along(point.y) };
  }
}
