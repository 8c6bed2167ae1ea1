// Picture updates as the host sends them (desktop/tile_store.h has the format), taken into a picture of 784 x 784.

export const frameSize = 784;
const tileSize = 16;
const tilesPerRow = frameSize / tileSize;
const tilePixels = tileSize * tileSize;
const opaque = 0xff000000;

// Canvas pixels lie in memory as red, green, blue, alpha: on every machine with a browser 0xAABBGGRR as a number.
const pack = (red, green, blue) => (opaque | blue << 16 | green << 8 | red) >>> 0;

function decodePlain(bytes, at, out) {
  for (let i = 0; i < out.length; i++, at += 3)
    out[i] = pack(bytes[at], bytes[at + 1], bytes[at + 2]);
}

function decodeCoded(bytes, at, out) {
  const table = new Uint32Array(64).fill(opaque);
  let red = 0, green = 0, blue = 0, pixel = opaque >>> 0, i = 0;
  while (i < out.length && at < bytes.length) {
    const op = bytes[at++];
    if (op >= 0x80 && op < 0xff) { // a run of the last pixel
      const run = op < 0xc0 ? (op & 0x3f) + 1 : ((op & 0x1f) << 8 | bytes[at++]) + 65;
      out.fill(pixel, i, i + run);
      i += run;
      continue;
    }
    if (op === 0xff) { // in full
      red = bytes[at];
      green = bytes[at + 1];
      blue = bytes[at + 2];
      at += 3;
      pixel = pack(red, green, blue);
    } else if (op >= 0x40) { // a change
      const change = (op & 0x3f) - 32, rest = bytes[at++];
      red = red + change + (rest >> 4) - 8 & 0xff;
      blue = blue + change + (rest & 15) - 8 & 0xff;
      green = green + change & 0xff;
      pixel = pack(red, green, blue);
    } else { // seen before
      pixel = table[op];
      red = pixel & 0xff;
      green = pixel >> 8 & 0xff;
      blue = pixel >> 16 & 0xff;
    }
    table[(3 * red + 5 * green + 7 * blue) & 63] = pixel;
    out[i++] = pixel;
  }
}

let scratch = new Uint32Array(tilePixels * tilesPerRow * tilesPerRow);

// Takes an update into `picture`, a Uint32Array of 784 x 784. Returns the serial number and the rectangle that changed.
export function takeUpdate(buffer, picture) {
  const head = new DataView(buffer);
  const coded = head.getUint8(1) === 1;
  const tiles = head.getUint16(2, true);
  const serial = head.getUint32(4, true);
  const bytes = new Uint8Array(buffer);
  const pixels = scratch.subarray(0, tiles * tilePixels);
  (coded ? decodeCoded : decodePlain)(bytes, 8 + 2 * tiles, pixels);
  let left = frameSize, top = frameSize, right = 0, bottom = 0;
  for (let t = 0; t < tiles; t++) {
    const index = head.getUint16(8 + 2 * t, true);
    const x = index % tilesPerRow * tileSize, y = Math.floor(index / tilesPerRow) * tileSize;
    for (let row = 0; row < tileSize; row++) {
      const from = t * tilePixels + row * tileSize;
      picture.set(pixels.subarray(from, from + tileSize), (y + row) * frameSize + x);
    }
    left = Math.min(left, x);
    top = Math.min(top, y);
    right = Math.max(right, x + tileSize);
    bottom = Math.max(bottom, y + tileSize);
  }
  return { serial, x: left, y: top, width: Math.max(right - left, 0), height: Math.max(bottom - top, 0) };
}
