#!/usr/bin/env python3
"""Fails when a file below src/ includes a header of a layer that its own layer does not stand on."""
import pathlib
import re
import sys

# For each layer, the layers it may include besides itself. Media stands on the foundation alone.
BELOW = {
    "platform": set(),
    "foundation": {"platform"},
    "structure": {"foundation", "platform"},
    "gui": {"structure", "foundation", "platform"},
    "media": {"foundation", "platform"},
}
BELOW["shell"] = {"gui", "media"} | BELOW["gui"]
BELOW["controls"] = {"shell"} | BELOW["shell"]
BELOW["app"] = {"controls"} | BELOW["controls"]
BELOW["host"] = {"app"} | BELOW["app"]
BELOW["main"] = {"host"} | BELOW["host"]

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def violations(src: pathlib.Path):
    for path in sorted(src.rglob("*")):
        if path.suffix not in {".h", ".cpp"}:
            continue
        layer = path.relative_to(src).parts[0]
        text = path.read_text(encoding="utf-8")
        for match in INCLUDE.finditer(text):
            target = match.group(1).split("/")[0]
            if target != layer and target not in BELOW[layer]:
                line = text.count("\n", 0, match.start()) + 1
                yield f"{path.relative_to(src)}:{line}: {layer} includes {match.group(1)}"


def main() -> int:
    found = list(violations(pathlib.Path(sys.argv[1])))
    print("\n".join(found) or "all includes point downward")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
