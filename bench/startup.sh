#!/usr/bin/env bash
# Start-up time from process start to the main window shown, over several
# runs. The program, started with JEWLKIT_STARTUP_BENCH=1, quits as soon as
# its main window is shown and prints how long the start-up window was up.
# Usage: bench/startup.sh [runs]
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BIN="${JEWLKIT_BUILD_DIR:-$ROOT/build}/bin/jewlkit"
RUNS="${1:-5}"
HOME_DIR="$(mktemp -d)"
trap 'rm -rf "$HOME_DIR"' EXIT
[ -n "${DISPLAY:-}" ] || export QT_QPA_PLATFORM=offscreen
for i in $(seq "$RUNS"); do
  start=$(date +%s%N)
  splash_ms=$(JEWLKIT_HOME="$HOME_DIR" JEWLKIT_STARTUP_BENCH=1 "$BIN" 2>&1 | sed -n 's/^splash-ms: //p')
  end=$(date +%s%N)
  echo "run $i: $(( (end - start) / 1000000 )) ms to the main window (start-up window up ${splash_ms:-?} ms)"
done
