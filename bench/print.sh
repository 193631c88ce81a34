#!/usr/bin/env bash
# Headless printing, whole process: the benchmark project (booklet, inlay,
# disc label; 20 text blocks, 5 pictures of 1600x1200, a numeric field)
# printed into a PDF, 1 copy and 50 copies. Median of the runs, peak RSS
# and PDF size. Usage: bench/print.sh [runs]
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BIN="${JEWLKIT_BUILD_DIR:-$ROOT/build}/bin"
RUNS="${1:-10}"
DIR="$(mktemp -d)"
trap 'rm -rf "$DIR"' EXIT
export QT_QPA_PLATFORM=offscreen JEWLKIT_HOME="$DIR/home" XDG_RUNTIME_DIR="$DIR"
PRJ="$("$BIN/make_print_project" "$DIR")"
STOCK="Avery L6015 (A4, 2 per sheet)"
for copies in 1 50; do
  times=()
  for i in $(seq "$RUNS"); do
    start=$(date +%s%N)
    "$BIN/jewlkit" --print "$PRJ" --pdf "$DIR/out.pdf" --stock "$STOCK" --copies "$copies" 2>/dev/null
    end=$(date +%s%N)
    times+=($(( (end - start) / 1000000 )))
  done
  median=$(printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR+1)/2] : (a[NR/2] + a[NR/2+1]) / 2}')
  rss=$( { /usr/bin/time -f '%M' "$BIN/jewlkit" --print "$PRJ" --pdf "$DIR/out.pdf" --stock "$STOCK" --copies "$copies" 2>&1 >/dev/null; } | tail -1)
  images=$(grep -ac '/Subtype /Image' "$DIR/out.pdf" || true)
  echo "copies $copies: median ${median} ms over $RUNS runs, peak RSS $((rss / 1024)) MB, PDF $(( $(stat -c %s "$DIR/out.pdf") / 1024 )) KiB, $images image objects"
done
