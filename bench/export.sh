#!/usr/bin/env bash
# Headless export, whole process: the print benchmark's project (booklet,
# inlay, disc label; 20 text blocks, 5 pictures of 1600x1200) exported with
# jewlkit --export in every format, rasters at 300 dpi. Median of the runs
# per format, and the size of what was written. Targets: png <= 0.4 s,
# pdf <= 0.2 s, eps <= 0.6 s. Usage: bench/export.sh [runs]
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BIN="${JEWLKIT_BUILD_DIR:-$ROOT/build}/bin"
RUNS="${1:-10}"
DIR="$(mktemp -d)"
trap 'rm -rf "$DIR"' EXIT
mkdir -m 700 "$DIR/run"
export QT_QPA_PLATFORM=offscreen JEWLKIT_HOME="$DIR/home" XDG_RUNTIME_DIR="$DIR/run"
PRJ="$("$BIN/make_print_project" "$DIR")"
for format in png bmp jpg tif pdf svg eps; do
  times=()
  for i in $(seq "$RUNS"); do
    rm -rf "$DIR/out"
    start=$(date +%s%N)
    "$BIN/jewlkit" --export "$DIR/out" "$PRJ" --format "$format" 2>/dev/null
    end=$(date +%s%N)
    times+=($(( (end - start) / 1000000 )))
  done
  median=$(printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR+1)/2] : (a[NR/2] + a[NR/2+1]) / 2}')
  echo "$format: median ${median} ms over $RUNS runs, $(ls "$DIR/out" | wc -l) files, $(( $(du -sk "$DIR/out" | cut -f1) )) KiB"
done
