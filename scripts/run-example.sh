#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds animhost and its plug-in, and shows the shipped cut-out
# character (examples/scenes/character.xml):
#   - with a display, in the window;
#   - without one (or with --batch), by running examples/scripts/character.txt, which renders
#     three frames of it to PNG; the folder of the pictures is printed at the end.
# Usage: scripts/run-example.sh [--batch] [OUTPUT_FOLDER]   (default: build/default/example-output)
set -euo pipefail
cd "$(dirname "$0")/.."
batch=false
if [ "${1:-}" = "--batch" ]; then batch=true; shift; fi
[ -n "${DISPLAY:-}" ] || batch=true
out=${1:-build/default/example-output}

bash scripts/setup-debian.sh
cmake --preset default
cmake --build --preset default --target animhost
mkdir -p "$out"
if [ "$batch" = false ]; then
  exec ./build/default/bin/animhost --prefs "$out/preferences.xml" examples/scenes/character.xml
fi
QT_QPA_PLATFORM=offscreen ./build/default/bin/animhost --batch examples/scripts/character.txt \
  --output "$out" --prefs "$out/preferences.xml"
echo "Rendered frames of the character are in $out:"
ls -1 "$out"/*.png
