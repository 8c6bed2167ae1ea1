#!/usr/bin/env bash
# make.sh: draws the covers anew and writes them to resources/cover as baseline JPEG files. Needs cjpeg.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
cmake --preset release -S "$root" >/dev/null
cmake --build "$root/build/release" --target covers
jpeg() { cjpeg -baseline -optimize -sample 2x2 -quality 88; }
for number in 0 1 2 3 4 5 6 7 8 9; do
    "$root/build/release/covers" "$number" | jpeg >"$root/resources/cover/default_$number.jpg"
done
"$root/build/release/covers" builtin | jpeg >"$root/resources/cover/builtin.jpg"
