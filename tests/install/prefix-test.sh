#!/usr/bin/env bash
# An installed animhost runs from wherever its prefix is moved, and builds plug-ins out of the tree:
#   1. installs the build into a temporary prefix and moves the prefix elsewhere;
#   2. every binary of the prefix resolves its libraries inside it (ldd), none from the build tree;
#   3. the installed animhost poses the character example with the installed plug-in, and every
#      object the run loads (recorded by the dynamic linker) is outside the build and source trees;
#   4. the installed SDK: each header compiles, the package has its targets (tests/install/sdk);
#   5. the installed example plug-in builds against the moved prefix, animhost loads it from
#      --plugins and from ANIMHOST_PLUGIN_PATH, its script turns the arm, and after the undo the
#      saved scene is the opened one byte for byte.
# Usage: prefix-test.sh BUILD_DIR SOURCE_DIR CMAKE GENERATOR VERSION
set -euo pipefail
build=$(cd "$1" && pwd -P)
source=$(cd "$2" && pwd -P)
cmake=$3
generator=$4
version=$5

source "$source/tests/install/common.sh"

make_work_folder animhost-prefix
"$cmake" --install "$build" --prefix "$work/installed" > "$work/install.log"
mkdir "$work/moved"
mv "$work/installed" "$work/moved/prefix"
prefix=$(cd "$work/moved/prefix" && pwd -P)
step "installed and moved to $prefix"

check_libraries_resolve_inside "$prefix" "$build" "$source" \
  "$prefix/bin/animhost" "$prefix"/lib*/animhost/*.so "$prefix"/lib*/animhost/plugins/*.so
step "every binary resolves its libraries inside the prefix"

plugin=$(echo "$prefix"/lib*/animhost/plugins/libAnimationTool.so)
run_character_example "$prefix/bin/animhost" "$prefix/share/animhost/examples" "$work/character" \
  "$plugin" "$build" "$source"
step "the character example ran with $plugin"

sdk_flags=(-G "$generator" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=RelWithDebInfo)
if command -v ccache > /dev/null; then sdk_flags+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
"$cmake" -S "$source/tests/install/sdk" -B "$work/sdk" "${sdk_flags[@]}" -DANIMHOST_VERSION="$version" > "$work/sdk.log" \
  || fail "the SDK check does not configure against the prefix:" "$(cat "$work/sdk.log")"
"$cmake" --build "$work/sdk" > "$work/sdk-build.log" 2>&1 \
  || fail "the installed headers do not compile:" "$(cat "$work/sdk-build.log")"
step "every installed header compiles; the package has its targets"

example=$prefix/share/animhost/examples/plugin
"$cmake" -S "$example" -B "$work/turntool" "${sdk_flags[@]}" > "$work/turntool.log" \
  || fail "the example plug-in does not configure against the prefix:" "$(cat "$work/turntool.log")"
"$cmake" --build "$work/turntool" > "$work/turntool-build.log" 2>&1 \
  || fail "the example plug-in does not build:" "$(cat "$work/turntool-build.log")"
step "the example plug-in built against the moved prefix"

scene=$prefix/share/animhost/examples/scenes/arm.xml
run_animhost "$prefix/bin/animhost" --plugins "$work/turntool" --batch "$example/turn-arm.txt" \
  --output "$work/turn" --prefs "$work/turn-prefs.xml"
cmp "$work/turn/turn-arm-undone.xml" "$scene" \
  || fail "after the undo, the saved scene differs from the opened $scene"
# The mark is the tool's, not the scene's: it stays after the undo, and only it tells the two
# pictures of the same scene apart.
! cmp -s "$work/turn/turn-arm-before.png" "$work/turn/turn-arm-undone.png" \
  || fail "the example tool drew no mark where it pressed"
step "the example plug-in, loaded from --plugins, turned the arm; undo restored the file"

ANIMHOST_PLUGIN_PATH="$work/turntool" run_animhost "$prefix/bin/animhost" --batch "$example/turn-arm.txt" \
  --output "$work/turn-env" --prefs "$work/turn-prefs.xml"
cmp "$work/turn-env/turn-arm-undone.xml" "$scene" || fail "after the undo, the saved scene differs from $scene"
step "the example plug-in, loaded from ANIMHOST_PLUGIN_PATH, turned the arm"
