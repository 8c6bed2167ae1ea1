#!/usr/bin/env bash
# make_corpus.sh OUT FILE.264...: the first bytes of each stream, behind the target's choice byte, become an input.
set -euo pipefail
out=$1; shift
mkdir -p "$out"
for file in "$@"; do
    for size in 3000 12000; do
        { printf '\0'; head -c "$size" "$file"; } > "$out/$(basename "$file" .264)_$size"
    done
done
