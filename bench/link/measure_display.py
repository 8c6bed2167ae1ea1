#!/usr/bin/env python3
"""Figures of the real display over the real socket: frames a second to a host that only reads, time to the first page
of a large house, resident memory and processor time while idle.

    bench/link/measure_display.py [build/release/wallslate] [HOUSE]
"""
import os
import pathlib
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
SPLASH = 0.5  # seconds that the start picture stays, part of every start


class Display:
    def __init__(self, program, house):
        self.path = tempfile.mktemp(prefix="wallslate-bench-")
        self.process = subprocess.Popen([program, "0", "5000", self.path], stderr=subprocess.DEVNULL)
        self.link = socket.socket(socket.AF_UNIX)
        while self.link.connect_ex(self.path):
            time.sleep(0.002)
        self.started = time.monotonic()
        self.send(1)
        self.send(3, b"".join(text + b"\0" for text in house))
        self.stream = self.link.makefile("rb", buffering=1 << 20)

    def send(self, command, payload=b""):
        self.link.sendall(struct.pack("<II", command, len(payload)) + payload)

    def next_frame(self):
        while True:
            command, length = struct.unpack("<II", self.stream.read(8))
            self.stream.read(length)
            if command == 102:
                return

    def cpu_seconds(self):
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def status(self, key):
        for line in pathlib.Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith(key):
                return int(line.split()[1])
        return 0

    def page_faults(self):
        return int(pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()[7])

    def end(self):
        self.send(6)
        self.process.wait(5)


def read_house(folder):
    return [(folder / f"{name}.json").read_bytes() for name in ("categories", "rooms", "symbols", "structure")]


def large_house(items=5000, groups=12):
    each = items // groups
    text = ",".join(
        '{"N":"Group %d","U":%d,"I":1,"sub":[%s]}'
        % (g, 100000 + g, ",".join('{"T":342,"U":%d,"N":"Switch %d","C":1,"R":1}' % (g * each + i + 1, i) for i in range(each)))
        for g in range(groups))
    return [b'[{"U":1,"N":"Light","I":1}]', b'[{"U":1,"N":"Room","I":1}]', b'[{"I":1,"N":"lightbulb.svg"}]',
            f"[{text}]".encode()]


def frames_per_second(display, seconds=5.0):
    """Every night message asks for a whole repaint."""
    stop = threading.Event()

    def ask():
        while not stop.is_set():
            display.send(9, struct.pack("<I", 0))
            time.sleep(0.0002)

    asker = threading.Thread(target=ask)
    asker.start()
    for _ in range(100):
        display.next_frame()
    faults, begin, count = display.page_faults(), time.monotonic(), 0
    while time.monotonic() - begin < seconds:
        display.next_frame()
        count += 1
    rate = count / (time.monotonic() - begin)
    faults = display.page_faults() - faults
    stop.set()
    drain = threading.Thread(target=lambda: display.stream.read(), daemon=True)
    drain.start()
    asker.join()
    return rate, faults / max(count, 1)


def main():
    program = sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release/wallslate"
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else ROOT / "demo"

    display = Display(program, read_house(folder))
    display.next_frame()
    display.next_frame()
    time.sleep(1)
    before = display.cpu_seconds()
    time.sleep(10)
    print(f"idle: {(display.cpu_seconds() - before) * 10:.2f} % of one core")
    print(f"resident memory: {display.status('VmRSS:') / 1024:.1f} MB (peak {display.status('VmHWM:') / 1024:.1f} MB)")
    rate, faults = frames_per_second(display)
    print(f"frames to a host that only reads: {rate:.0f} a second, {faults:.3f} page faults a frame")
    display.process.kill()

    display = Display(program, large_house())
    display.next_frame()
    display.next_frame()
    print(f"first page of 5,000 items in 12 groups: {time.monotonic() - display.started - SPLASH:.3f} s beside the splash")
    display.process.kill()


if __name__ == "__main__":
    main()
