#!/usr/bin/env python3
"""Draws what bench_fling has measured as an SVG.

    build/release/bench_fling fling.csv && bench/fling/plot.py fling.csv docs/pictures/fling.svg
"""
import csv
import math
import sys

WIDTH, LEFT, RIGHT = 960, 70, 20
PANELS = {"offset": (56, 170), "time": (280, 260)}  # top, height
INK, FAINT, GRID = "#2b2a28", "#7f7c77", "#e4ddd4"
COLORS = {"menu": "#1f7f83", "page": "#e1512f", "pass": "#273f7a", "touch": "#e8973a"}


def percentile(values, share):
    values = sorted(values)
    return values[min(len(values) - 1, int(share * len(values)))]


class Panel:
    def __init__(self, name, x_end, low, high):
        self.top, self.height = PANELS[name]
        self.x_end, self.low, self.high = x_end, low, high

    def x(self, value):
        return LEFT + value / self.x_end * (WIDTH - LEFT - RIGHT)

    def y(self, value):
        return self.top + self.height - (value - self.low) / (self.high - self.low) * self.height


def text(x, y, words, anchor="start", color=INK, size=13, weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{color}" font-size="{size}" '
            f'font-weight="{weight}">{words}</text>')


def axes(panel, unit, step, title):
    out = [text(LEFT, panel.top - 12, title, weight="bold")]
    value = panel.low
    while value <= panel.high + 1e-9:
        y = panel.y(value)
        out.append(f'<line x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" y2="{y:.1f}" stroke="{GRID}"/>')
        out.append(text(LEFT - 8, y + 4, f"{value:g}", "end", FAINT, 12))
        value += step
    out.append(text(LEFT - 8, panel.top - 12, unit, "end", FAINT, 12))
    for second in range(int(panel.x_end / 1000) + 1):
        x = panel.x(second * 1000)
        out.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{panel.top}" y2="{panel.top + panel.height}" stroke="{GRID}"/>')
        out.append(text(x, panel.top + panel.height + 18, f"{second} s", "middle", FAINT, 12))
    return out


def dots(panel, rows, color, radius):
    return [f'<circle cx="{panel.x(at):.1f}" cy="{panel.y(min(took, panel.high)):.1f}" r="{radius}" fill="{color}"/>'
            for at, took in rows]


def line(panel, rows, color):
    points = " ".join(f"{panel.x(at):.1f},{panel.y(value):.1f}" for at, value in rows)
    return f'<polyline points="{points}" fill="none" stroke="{color}" stroke-width="1.5"/>'


def legend(entries, y):
    out, x = [], WIDTH - RIGHT
    for words, color in reversed(entries):
        out.append(text(x, y, words, "end"))
        x -= 7.8 * len(words) + 12
        out.append(f'<circle cx="{x:.1f}" cy="{y - 4}" r="4" fill="{color}"/>')
        x -= 20
    return out


def steps(rows):
    """An offset holds until the next frame."""
    out = []
    for at, value in rows:
        if out:
            out.append((at, out[-1][1]))
        out.append((at, value))
    return out


def main():
    with open(sys.argv[1], newline="") as file:
        rows = list(csv.DictReader(file))
    frames = [row for row in rows if row["kind"] == "pass"]
    passes = [(float(row["at_ms"]), float(row["took_ms"])) for row in frames]
    touches = [(float(row["at_ms"]), float(row["took_ms"])) for row in rows if row["kind"] == "touch"]
    offsets = {name: [(float(row["at_ms"]), float(row[f"{name}_offset"])) for row in frames] for name in ("menu", "page")}

    x_end = max(at for at, _ in passes) + 200
    lowest = min(value for values in offsets.values() for _, value in values)
    top = max(2.0, 1.5 * max(percentile([t for _, t in passes], 0.99), percentile([t for _, t in touches], 0.99)))
    step = next(s for s in (0.5, 1, 2, 5, 10, 20, 50) if top / s <= 8)
    top = step * math.ceil(top / step)
    offset = Panel("offset", x_end, 200 * math.floor(lowest / 200), 200)
    time = Panel("time", x_end, 0, top)

    out = axes(offset, "px", 200 if offset.high - offset.low <= 1200 else 400, "Where the content stands")
    out += [line(offset, steps(offsets[name]), COLORS[name]) for name in ("menu", "page")]
    out += legend([("menu row", COLORS["menu"]), ("page", COLORS["page"])], offset.top - 12)
    out += axes(time, "ms", step, "How long it takes")
    out += dots(time, passes, COLORS["pass"], 1.6) + dots(time, touches, COLORS["touch"], 2.4)
    out += legend([("pass", COLORS["pass"]), ("touch to frame", COLORS["touch"])], time.top - 12)

    y = time.top + time.height + 44
    for name, values in (("pass", passes), ("touch to frame", touches)):
        took = [t for _, t in values]
        figures = "   ".join(f"{label} {percentile(took, share):.2f} ms"
                             for label, share in (("p50", 0.5), ("p95", 0.95), ("p99", 0.99)))
        out.append(text(LEFT, y, f"{name}: {figures}   ({len(took)})".replace("   ", "&#160;&#160;&#160;")))
        y += 20
    with open(sys.argv[2], "w") as file:
        file.write(f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{y:.0f}" '
                   f'viewBox="0 0 {WIDTH} {y:.0f}" font-family="sans-serif">\n'
                   f'<rect width="100%" height="100%" fill="#fffaf4"/>\n' + "\n".join(out) + "\n</svg>\n")


if __name__ == "__main__":
    main()
