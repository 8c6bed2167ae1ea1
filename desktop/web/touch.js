// Mouse, pen, finger and keyboard as touches of the display. Whatever happens between, each down gets its up.
//
//   pointer:  down .. move .. up          one pointer at a time; others are ignored until it is up
//             cancel, lost capture,
//             window loses focus, hidden  an up at the last place
//   keyboard: arrows move a cross, Space or Enter holds it down

const Down = 1, Move = 2, Up = 4;
const smallStep = 12, largeStep = 72;
const steps = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };

export class Touch {
  // send(kind, point) passes a touch on.
  constructor(screen, cross, send) {
    this.screen = screen;
    this.cross = cross;
    this.send = send;
    this.pointer = null; // id of the pointer that is down
    this.byKey = false;
    this.last = { x: 360, y: 360 };
    this.waiting = null; // a move that goes out with the next animation frame
    this.listen();
  }

  get isDown() { return this.pointer !== null || this.byKey; }

  listen() {
    const canvas = this.screen.canvas;
    canvas.addEventListener("pointerdown", event => this.onPointerDown(event));
    canvas.addEventListener("pointermove", event => this.onPointerMove(event));
    canvas.addEventListener("pointerup", event => this.onPointerEnd(event));
    canvas.addEventListener("pointercancel", event => this.onPointerEnd(event));
    canvas.addEventListener("lostpointercapture", event => this.onPointerEnd(event));
    canvas.addEventListener("contextmenu", event => event.preventDefault());
    canvas.addEventListener("keydown", event => this.onKeyDown(event));
    canvas.addEventListener("keyup", event => this.onKeyUp(event));
    canvas.addEventListener("focus", () => this.showCross());
    canvas.addEventListener("blur", () => { this.release(); this.showCross(); });
    window.addEventListener("blur", () => this.release());
    document.addEventListener("visibilitychange", () => document.hidden && this.release());
    window.addEventListener("pagehide", () => this.release());
  }

  onPointerDown(event) {
    if (this.isDown || event.button !== 0 || !this.screen.isOnScreen(event.clientX, event.clientY))
      return;
    this.cross.hidden = true;
    this.pointer = event.pointerId;
    this.screen.canvas.setPointerCapture(event.pointerId);
    this.last = this.screen.pixelAt(event.clientX, event.clientY);
    this.send(Down, this.last);
  }

  onPointerMove(event) {
    if (event.pointerId !== this.pointer)
      return;
    const idle = this.waiting === null;
    this.waiting = this.screen.pixelAt(event.clientX, event.clientY);
    if (idle)
      requestAnimationFrame(() => this.flushMove());
  }

  onPointerEnd(event) {
    if (event.pointerId !== this.pointer)
      return;
    if (event.type === "pointerup")
      this.waiting = this.screen.pixelAt(event.clientX, event.clientY);
    this.release();
  }

  flushMove() {
    const to = this.waiting;
    this.waiting = null;
    if (to === null || !this.isDown || (to.x === this.last.x && to.y === this.last.y))
      return;
    this.last = to;
    this.send(Move, to);
  }

  release() {
    if (!this.isDown)
      return;
    this.flushMove();
    this.pointer = null;
    this.byKey = false;
    this.cross.classList.remove("pressed");
    this.send(Up, this.last);
  }

  // The link is gone: the host has lifted the finger itself.
  forget() {
    this.pointer = null;
    this.byKey = false;
    this.waiting = null;
  }

  // ---- keyboard ----

  onKeyDown(event) {
    const direction = steps[event.key];
    if (direction) {
      event.preventDefault();
      this.stepCross(direction, event.shiftKey ? largeStep : smallStep);
    } else if ((event.key === " " || event.key === "Enter") && !event.repeat && !this.isDown) {
      event.preventDefault();
      this.byKey = true;
      this.cross.classList.add("pressed");
      this.send(Down, this.last);
    } else if (event.key === " ") {
      event.preventDefault(); // no scrolling while it is held
    }
    if (direction || event.key === " " || event.key === "Enter")
      this.showCross(true);
  }

  onKeyUp(event) {
    if (this.byKey && (event.key === " " || event.key === "Enter"))
      this.release();
  }

  stepCross([dx, dy], step) {
    if (this.pointer !== null)
      return;
    const held = value => Math.min(Math.max(value, 0), 719);
    this.last = { x: held(this.last.x + dx * step), y: held(this.last.y + dy * step) };
    if (this.byKey)
      this.send(Move, this.last);
  }

  showCross(force = false) {
    const canvas = this.screen.canvas;
    this.cross.hidden = !(document.activeElement === canvas && (force || canvas.matches(":focus-visible")));
    const place = this.screen.placeOf(this.last);
    this.cross.style.left = `${place.left}px`;
    this.cross.style.top = `${place.top}px`;
  }
}
