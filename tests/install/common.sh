# Shared by the install and package tests: each checks an installed animhost the same way.
# Sourced, not run. Every check that fails says what it expected and exits with status 1.

# Nothing from the developer's environment may help the installed animhost find its parts.
unset LD_LIBRARY_PATH ANIMHOST_PLUGIN_PATH
export QT_QPA_PLATFORM=offscreen

fail() {
  printf 'FAIL: %s\n' "$1" >&2
  shift
  [ $# -eq 0 ] || printf '%s\n' "$@" >&2
  exit 1
}

step() {
  printf 'ok: %s\n' "$*"
}

# Sets `work` to a new temporary folder, removed when the script exits.
make_work_folder() {
  work=$(mktemp -d "${TMPDIR:-/tmp}/$1.XXXXXX")
  work=$(cd "$work" && pwd -P)
  trap 'rm -rf "$work"' EXIT
}

# check_libraries_resolve_inside PREFIX BUILD SOURCE BINARY...: ldd finds every library of each
# binary, and none in the build or source tree; the host's own libraries come from the prefix.
check_libraries_resolve_inside() {
  local prefix=$1 build=$2 source=$3
  shift 3
  local binary resolved
  for binary in "$@"; do
    [ -f "$binary" ] || fail "expected the installed file $binary"
    resolved=$(ldd "$binary") || fail "ldd cannot read $binary"
    if grep -q "not found" <<< "$resolved"; then
      fail "$binary: libraries not found" "$resolved"
    fi
    if grep -q -F -e "$build/" -e "$source/" <<< "$resolved"; then
      fail "$binary: libraries resolved in the build or source tree" "$resolved"
    fi
    if grep "libanimhost_" <<< "$resolved" | grep -v -q -F "=> $prefix/"; then
      fail "$binary: host libraries resolved outside $prefix" "$resolved"
    fi
  done
}

# run_animhost ANIMHOST ARGS...: runs it and fails with its output unless it succeeds.
run_animhost() {
  local output status=0
  output=$("$@" 2>&1) || status=$?
  [ "$status" -eq 0 ] || fail "exit status $status of: $*" "$output"
}

# run_character_example ANIMHOST EXAMPLES OUTPUT PLUGIN BUILD SOURCE: poses the rigged character of
# EXAMPLES (the README's run command) with the IK tool of the plug-in library PLUGIN. The dynamic
# linker records each object that the run loads: PLUGIN must be one, and none may come from the
# build or source tree.
run_character_example() {
  local animhost=$1 examples=$2 output=$3 plugin=$4 build=$5 source=$6
  mkdir -p "$output"
  cat > "$output/prefs.xml" << 'PREFS'
<?xml version="1.0" encoding="UTF-8"?>
<preferences version="1">
 <bool key="QV_HAS_NEW_IK_TOOL" value="true"/>
</preferences>
PREFS
  LD_DEBUG=libs LD_DEBUG_OUTPUT="$output/ld" run_animhost "$animhost" --batch "$examples/scripts/character-ik.txt" \
    --output "$output" --prefs "$output/prefs.xml"
  local file
  for file in character-ik-before.png character-ik-after.png character-ik-posed.xml; do
    [ -s "$output/$file" ] || fail "the character example wrote no $file"
  done
  local loaded
  loaded=$(sed -n 's/.*calling init: //p' "$output"/ld.* | sort -u)
  grep -q -x -F "$plugin" <<< "$loaded" || fail "the run did not load $plugin; it loaded:" "$loaded"
  if grep -q -F -e "$build/" -e "$source/" <<< "$loaded"; then
    fail "the run loaded objects of the build or source tree:" "$loaded"
  fi
}
