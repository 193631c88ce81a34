#!/usr/bin/env bash
# Start-up time from process start to the main window shown, the two-second
# splash wait excluded, over several runs. The program, started with
# JEWLKIT_STARTUP_BENCH=1, quits as soon as its main window is shown and
# prints how long it waited on the splash. Usage: bench/startup.sh [runs]
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BIN="${JEWLKIT_BUILD_DIR:-$ROOT/build}/bin/jewlkit"
RUNS="${1:-5}"
HOME_DIR="$(mktemp -d)"
trap 'rm -rf "$HOME_DIR"' EXIT
[ -n "${DISPLAY:-}" ] || export QT_QPA_PLATFORM=offscreen
for i in $(seq "$RUNS"); do
  start=$(date +%s%N)
  wait_ms=$(JEWLKIT_HOME="$HOME_DIR" JEWLKIT_STARTUP_BENCH=1 "$BIN" 2>&1 | sed -n 's/^splash-wait-ms: //p')
  end=$(date +%s%N)
  echo "run $i: $(( (end - start) / 1000000 - ${wait_ms:-0} )) ms to the main window (splash wait ${wait_ms:-?} ms excluded)"
done
