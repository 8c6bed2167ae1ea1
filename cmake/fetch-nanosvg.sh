#!/usr/bin/env bash
# fetch-nanosvg.sh [DEST]: puts nanosvg.h and nanosvgrast.h into DEST (default: build/third_party/nanosvg), unless this
# machine has them already.
#
# A distribution with a package of nanosvg provides it as a package (libnanosvg-dev). Debian 12 has none, but its source
# package libsdl2-image carries both headers: apt-get fetches and verifies that source through a temporary list made
# from the machine's own apt sources, with "deb" turned into "deb-src". Nothing outside DEST and a temporary folder
# changes, so this needs no rights of the superuser, except for installing a package where there is one.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
dest=${1:-$top/build/third_party/nanosvg}
headers=(nanosvg.h nanosvgrast.h)
source_package=libsdl2-image

have_both() { for h in "${headers[@]}"; do [ -s "$1/$h" ] || return 1; done; }

for folder in "$dest" /usr/include /usr/include/nanosvg /usr/local/include /usr/local/include/nanosvg; do
    have_both "$folder" && exit 0
done

command -v apt-get >/dev/null || { echo "nanosvg: no apt-get here; install nanosvg's headers by hand" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; elif command -v sudo >/dev/null; then sudo -n "$@"; else return 1; fi
}

# A package, where the distribution has one.
if apt-cache show libnanosvg-dev >/dev/null 2>&1; then
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q libnanosvg-dev && exit 0
    echo "nanosvg: could not install libnanosvg-dev; trying the source package" >&2
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/parts" "$work/lists/partial" "$work/cache/archives/partial" "$work/source"

# One-line entries: "deb [options] uri suite components".
one_line_entries() {
    local file
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -r "$file" ] && sed -nE 's/^[[:space:]]*deb[[:space:]]+/deb-src /p' "$file"
    done
    return 0
}

# Paragraphs of the deb822 form: kept when their Types name "deb" and nothing switches them off.
paragraph_entries() {
    local file
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -r "$file" ] || continue
        grep -v '^#' "$file" | awk '
            BEGIN { RS = ""; FS = "\n" }
            {
                binary = 0; enabled = 1
                for (i = 1; i <= NF; i++) {
                    line = tolower($i)
                    if (line ~ /^types:(.*[ \t])?deb([ \t]|$)/) { binary = 1; $i = "Types: deb-src" }
                    if (line ~ /^enabled:[ \t]*(no|false|0|off)/) enabled = 0
                }
                if (binary && enabled) { for (i = 1; i <= NF; i++) print $i; print "" }
            }'
    done
    return 0
}

one_line_entries >"$work/parts/machine.list"
paragraph_entries >"$work/parts/machine.sources"

options=(
    -o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$work/parts"
    -o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work/cache" -o "APT::Sandbox::User=$(id -un)"
    -o "APT::Get::List-Cleanup=0" -o "Acquire::Languages=none"
)

# A third-party entry without sources makes the update fail as a whole; what counts is whether the package is found.
apt-get "${options[@]}" -q update >"$work/update.log" 2>&1 || true
if ! (cd "$work/source" && apt-get "${options[@]}" -q source --download-only "$source_package") >"$work/source.log" 2>&1; then
    echo "nanosvg: apt could not fetch the source package $source_package:" >&2
    tail -n 5 "$work/update.log" "$work/source.log" >&2
    exit 1
fi

archive=$(find "$work/source" -name '*.orig.tar.*' ! -name '*.asc' | head -n 1)
tar -xf "$archive" -C "$work/source" --wildcards '*/nanosvg.h' '*/nanosvgrast.h'
mkdir -p "$dest"
for header in "${headers[@]}"; do
    # First complete, then in its place: an interrupted run leaves nothing that looks finished.
    cp "$(find "$work/source" -name "$header" | head -n 1)" "$dest/$header.new"
    mv "$dest/$header.new" "$dest/$header"
done
have_both "$dest"
echo "nanosvg: headers of $source_package are in $dest"
