#!/usr/bin/env python3
"""compare.py [ROUNDS]: h264dump against ffmpeg's decoder with and without its vector code, in turns.

Each stream of the shared folder's video/speed (WALLSLATE_SHARED_DIR, default ../shared beside the checkout) is
repeated to 3,000 pictures in a temporary file and decoded on one thread, nothing written. Printed, as a table for
docs/performance.md, are pictures a second of user time: the least time of each program over the rounds, less that
of its start-up (a run over the first picture alone). Exit code 1 if h264dump is slower than ffmpeg without vectors.
"""
import os
import pathlib
import sys
import tempfile

PICTURES = 3000
ROOT = pathlib.Path(__file__).resolve().parents[2]
SHARED = pathlib.Path(os.environ.get("WALLSLATE_SHARED_DIR", ROOT.parent / "shared"))
STREAMS = sorted((SHARED / "video" / "speed").glob("*.264"))
DUMP = str(ROOT / "build" / "release" / "h264dump")
FFMPEG = ["ffmpeg", "-loglevel", "error", "-threads", "1"]

PROGRAMS = {
    "h264dump": lambda file: [DUMP, "--quiet", file],
    "h264dump plain": lambda file: [DUMP, "--quiet", "--routines", "plain", file],
    "ffmpeg -cpuflags 0": lambda file: FFMPEG + ["-cpuflags", "0", "-i", file, "-f", "null", "-"],
    "ffmpeg": lambda file: FFMPEG + ["-i", file, "-f", "null", "-"],
}


def user_seconds(command):
    pid = os.fork()
    if pid == 0:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        os.execvp(command[0], command)
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit(f"{command[0]} failed")
    return usage.ru_utime


def first_picture(data):
    """The stream up to the second slice."""
    slices = 0
    at = data.find(b"\0\0\1")
    while at >= 0:
        slices += data[at + 3] & 31 in (1, 5)
        if slices == 2:
            return data[:at]
        at = data.find(b"\0\0\1", at + 3)
    return data


def measure(stream, rounds, folder):
    data = stream.read_bytes()
    pictures = len(stream.with_suffix(".md5").read_text().split("\n")) - 1
    long, short = os.path.join(folder, "long.264"), os.path.join(folder, "short.264")
    pathlib.Path(long).write_bytes(data * (PICTURES // pictures))
    pathlib.Path(short).write_bytes(first_picture(data))
    times = {name: ([], []) for name in PROGRAMS}
    for _ in range(rounds):
        for name, command in PROGRAMS.items():
            times[name][0].append(user_seconds(command(long)))
            times[name][1].append(user_seconds(command(short)))
    total = PICTURES // pictures * pictures
    return {name: total / (min(t[0]) - min(t[1])) for name, t in times.items()}


def main():
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    if not STREAMS:
        sys.exit(f"no streams in {SHARED / 'video' / 'speed'}")
    print(f"| stream | {' | '.join(PROGRAMS)} | against -cpuflags 0 |")
    print("|---" * (len(PROGRAMS) + 2) + "|")
    worst = float("inf")
    with tempfile.TemporaryDirectory() as folder:
        for stream in STREAMS:
            rates = measure(stream, rounds, folder)
            ratio = rates["h264dump"] / rates["ffmpeg -cpuflags 0"]
            worst = min(worst, ratio)
            cells = " | ".join(f"{rate:,.0f}" for rate in rates.values())
            print(f"| {stream.stem} | {cells} | {ratio:.2f} |", flush=True)
    sys.exit(1 if worst < 1 else 0)


if __name__ == "__main__":
    main()
