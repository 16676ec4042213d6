#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds animhost and its plug-in, and runs the shipped batch
# script examples/scripts/arm.txt: it opens the arm scene, bends the forearm at frame 6, renders
# three frames to PNG and saves the posed scene. No display is needed.
# Usage: scripts/run-example.sh [OUTPUT_FOLDER]     (default: build/default/example-output)
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/default/example-output}

bash scripts/setup-debian.sh
cmake --preset default
cmake --build --preset default --target animhost
mkdir -p "$out"
QT_QPA_PLATFORM=offscreen ./build/default/bin/animhost --batch examples/scripts/arm.txt \
  --output "$out" --prefs "$out/preferences.xml"
echo "Rendered frames and the posed scene are in $out:"
ls -1 "$out"
