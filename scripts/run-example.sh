#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds animhost and its plug-in, and poses the shipped rigged
# cut-out character (examples/scenes/character-rig.xml) with the IK tool:
#   - with a display, in the window, on a copy of the rig in the output folder (so that File > Save
#     leaves the shipped file alone), the IK tool current and the rig's root selected at frame 5;
#   - without one (or with --batch), by running examples/scripts/character-ik.txt, which drags
#     the left hand and renders the character before and after; the folder of the pictures is
#     printed at the end.
# With --prefix PREFIX, the animhost installed in PREFIX runs its installed examples instead, and
# nothing is set up or built (e.g. --prefix /usr for the Debian package).
# Usage: scripts/run-example.sh [--prefix PREFIX] [--batch] [--no-build] [--show-command] [OUTPUT_FOLDER]
#   (default OUTPUT_FOLDER: build/default/example-output, or example-output in the current folder
#   with --prefix). --no-build skips the set-up and the build (an animhost already built);
#   --show-command prints the window's command line instead of running it.
set -euo pipefail
prefix=
if [ "${1:-}" = "--prefix" ]; then prefix=$(cd "$2" && pwd); shift 2; fi
# From the source tree; an installed animhost needs none of it.
[ -n "$prefix" ] || cd "$(dirname "$0")/.."
batch=false
build=true
show=false
while [ $# -gt 0 ]; do
  case "$1" in
    --batch) batch=true ;;
    --no-build) build=false ;;
    --show-command) show=true ;;
    *) break ;;
  esac
  shift
done
[ -n "${DISPLAY:-}" ] || batch=true

if [ -n "$prefix" ]; then
  animhost=$prefix/bin/animhost
  examples=$prefix/share/animhost/examples
  out=${1:-example-output}
else
  animhost=./build/default/bin/animhost
  examples=examples
  out=${1:-build/default/example-output}
fi
if [ -z "$prefix" ] && [ "$build" = true ]; then
  bash scripts/setup-debian.sh
  cmake --preset default
  cmake --build --preset default --target animhost
fi
mkdir -p "$out"
# The IK tool is switched on by a preference, read before the plug-in loads.
[ -f "$out/preferences.xml" ] || cat > "$out/preferences.xml" <<'PREFS'
<?xml version="1.0" encoding="UTF-8"?>
<preferences version="1">
 <bool key="QV_HAS_NEW_IK_TOOL" value="true"/>
</preferences>
PREFS
if [ "$batch" = false ]; then
  # The window works on a copy in the output folder: File > Save never writes over the shipped rig.
  cp "$examples/scenes/character-rig.xml" "$out/character-rig.xml"
  command=("$animhost" --prefs "$out/preferences.xml"
           --run "$examples/scripts/character-ik-start.txt" "$out/character-rig.xml")
  if [ "$show" = true ]; then echo "${command[*]}"; exit 0; fi
  exec "${command[@]}"
fi
QT_QPA_PLATFORM=offscreen "$animhost" --batch "$examples/scripts/character-ik.txt" \
  --output "$out" --prefs "$out/preferences.xml"
echo "The character before and after the IK drag, and the posed scene, are in $out:"
ls -1 "$out"
