#!/usr/bin/env python3
"""compare.py [ROUNDS]: jpegdump against djpeg with its vector code switched off, whole processes, in turns.

Both decode the 1000 x 1000 pictures of the shared folder (WALLSLATE_SHARED_DIR, default ../shared beside the
checkout) to /dev/null. Printed are the least processor time of each (user and system) and their ratio; exit code 1
if a ratio is above the goal.
"""
import os
import pathlib
import sys

GOAL = 1.5
ROOT = pathlib.Path(__file__).resolve().parents[2]
SHARED = pathlib.Path(os.environ.get("WALLSLATE_SHARED_DIR", ROOT.parent / "shared"))
PICTURES = sorted((SHARED / "video" / "speed").glob("*.jpg"))


def processor_time(command, extra_environment):
    """Milliseconds of processor time of one run."""
    pid = os.fork()
    if pid == 0:
        os.execvpe(command[0], command, dict(os.environ, **extra_environment))
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit(f"{command[0]} failed")
    return (usage.ru_utime + usage.ru_stime) * 1000


def main():
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 40
    if not PICTURES:
        sys.exit(f"no pictures in {SHARED / 'video' / 'speed'}")
    dump = str(ROOT / "build" / "release" / "jpegdump")
    worst = 0.0
    for picture in PICTURES:
        ours, theirs = [], []
        for _ in range(rounds):
            ours.append(processor_time([dump, str(picture), "/dev/null"], {}))
            theirs.append(processor_time(["djpeg", "-ppm", "-outfile", "/dev/null", str(picture)],
                                         {"JSIMD_FORCENONE": "1"}))
        ratio = min(ours) / min(theirs)
        worst = max(worst, ratio)
        print(f"{picture.name}: jpegdump {min(ours):.1f} ms, djpeg {min(theirs):.1f} ms, ratio {ratio:.2f}")
    sys.exit(1 if worst > GOAL else 0)


if __name__ == "__main__":
    main()
