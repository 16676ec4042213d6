#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds animhost and its plug-in, and poses the shipped rigged
# cut-out character (examples/scenes/character-rig.xml) with the IK tool:
#   - with a display, in the window, the IK tool current and the rig's root selected at frame 5;
#   - without one (or with --batch), by running examples/scripts/character-ik.txt, which drags
#     the left hand and renders the character before and after; the folder of the pictures is
#     printed at the end.
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
# The IK tool is switched on by a preference, read before the plug-in loads.
[ -f "$out/preferences.xml" ] || cat > "$out/preferences.xml" <<'PREFS'
<?xml version="1.0" encoding="UTF-8"?>
<preferences version="1">
 <bool key="QV_HAS_NEW_IK_TOOL" value="true"/>
</preferences>
PREFS
if [ "$batch" = false ]; then
  exec ./build/default/bin/animhost --prefs "$out/preferences.xml" \
    --run examples/scripts/character-ik-start.txt examples/scenes/character-rig.xml
fi
QT_QPA_PLATFORM=offscreen ./build/default/bin/animhost --batch examples/scripts/character-ik.txt \
  --output "$out" --prefs "$out/preferences.xml"
echo "The character before and after the IK drag, and the posed scene, are in $out:"
ls -1 "$out"
