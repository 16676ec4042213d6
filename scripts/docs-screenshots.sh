#!/usr/bin/env bash
# Takes the pictures of the window in docs/ anew, from animhost under a virtual display (xvfb),
# each after one of the start scripts of docs/screenshots/. Needs a build of the default preset.
# Usage: scripts/docs-screenshots.sh
set -euo pipefail
cd "$(dirname "$0")/.."
app=${ANIMHOST:-build/default/bin/animhost}
[ -x "$app" ] || { echo "docs-screenshots: expected a build in build/default (cmake --build --preset default)" >&2; exit 1; }
prefs=$(mktemp -d)
trap 'rm -rf "$prefs"' EXIT
printf '<?xml version="1.0" encoding="UTF-8"?>\n<preferences version="1">\n <bool key="QV_HAS_NEW_IK_TOOL" value="true"/>\n</preferences>\n' > "$prefs/prefs.xml"
for mode in manipulation setup interpolation; do
  xvfb-run -a -s "-screen 0 1280x800x24" "$app" --prefs "$prefs/prefs.xml" \
    --run "docs/screenshots/ik-$mode.txt" --screenshot "docs/ik-mode-$mode.png" examples/scenes/character-rig.xml
  echo "docs/ik-mode-$mode.png"
done
# The window zoomed in, with the timeline's key marks of the selected nodes.
xvfb-run -a -s "-screen 0 1280x800x24" "$app" --prefs "$prefs/prefs.xml" \
  --run docs/screenshots/animhost-zoom.txt --screenshot docs/animhost-zoom.png examples/scenes/character-rig.xml
echo "docs/animhost-zoom.png"

# Tracing: the window after the in-between example, and the example's renders before and after.
xvfb-run -a -s "-screen 0 1280x800x24" "$app" --prefs "$prefs/prefs.xml" --output "$prefs" \
  --run examples/scripts/inbetween.txt --screenshot docs/tracing-window.png
for shot in inbetween-before inbetween-after inbetween-drawing-view; do
  cp "$prefs/$shot.png" "docs/$shot.png"
  echo "docs/$shot.png"
done
echo docs/tracing-window.png

# Shift and Trace: the window while the drawing of frame 1 is shifted, and the renders of the
# tool's example before and after its shifts.
xvfb-run -a -s "-screen 0 1280x800x24" "$app" --prefs "$prefs/prefs.xml" --output "$prefs" \
  --run docs/screenshots/shift-and-trace.txt --screenshot docs/shift-and-trace-window.png
echo docs/shift-and-trace-window.png
"$app" --batch examples/scripts/inbetween-shift-and-trace.txt --output "$prefs" --prefs "$prefs/prefs.xml"
for shot in shift-and-trace-before shift-and-trace-after; do
  cp "$prefs/$shot.png" "docs/$shot.png"
  echo "docs/$shot.png"
done

# The Shift and Trace panel with one and with two drawings selected, and the renders of the
# in-between traced over shifted onion drawings.
for n in one two; do
  xvfb-run -a -s "-screen 0 1280x800x24" "$app" --prefs "$prefs/prefs.xml" \
    --run "docs/screenshots/shift-trace-panel-$n.txt" --screenshot "docs/shift-trace-panel-$n.png" examples/scenes/inbetween.xml
  echo "docs/shift-trace-panel-$n.png"
done
"$app" --batch examples/scripts/inbetween-trace.txt --output "$prefs" --prefs "$prefs/prefs.xml"
for shot in inbetween-trace-shifted inbetween-trace-traced; do
  cp "$prefs/$shot.png" "docs/$shot.png"
  echo "docs/$shot.png"
done
