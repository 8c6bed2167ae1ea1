// The connection to the host: one WebSocket that comes back by itself.
//
// Events: "open", "gone", and one for each kind of message ("hello", "state", "house", "commands", "log", "notice",
// "picture"), with the message as detail.

const firstPause = 400, longestPause = 5000; // ms

// The host prints an address with the token behind the "#", where it never leaves the browser in a request.
function takeToken() {
  const found = new URLSearchParams(location.hash.slice(1)).get("token");
  if (found) {
    sessionStorage.setItem("token", found);
    history.replaceState(null, "", location.pathname);
  }
  return sessionStorage.getItem("token") ?? "";
}

export class Link extends EventTarget {
  constructor() {
    super();
    this.token = takeToken();
    this.pause = firstPause;
    this.socket = null;
    this.connect();
  }

  get isOpen() { return this.socket?.readyState === WebSocket.OPEN; }

  connect() {
    const protocols = this.token ? ["wallslate", `token.${this.token}`] : ["wallslate"];
    this.socket = new WebSocket(`ws://${location.host}/live`, protocols);
    this.socket.binaryType = "arraybuffer";
    this.socket.onopen = () => {
      this.pause = firstPause;
      this.tell("open");
    };
    this.socket.onmessage = event => {
      if (typeof event.data !== "string")
        return this.tell("picture", event.data);
      const message = JSON.parse(event.data);
      this.tell(message.t, message);
    };
    this.socket.onclose = () => {
      this.tell("gone");
      setTimeout(() => this.connect(), this.pause);
      this.pause = Math.min(this.pause * 2, longestPause);
    };
  }

  tell(kind, detail) { this.dispatchEvent(new CustomEvent(kind, { detail })); }

  send(message) {
    if (this.isOpen)
      this.socket.send(JSON.stringify(message));
  }

  // An HTTP call to the host, with the token if there is one.
  fetch(path, options = {}) {
    const headers = new Headers(options.headers);
    if (this.token)
      headers.set("Authorization", `Bearer ${this.token}`);
    return fetch(path, { ...options, headers });
  }
}
