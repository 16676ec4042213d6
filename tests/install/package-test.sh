#!/usr/bin/env bash
# The Debian packages of animhost:
#   1. CPack makes animhost_<version>_<arch>.deb and animhost-dev_<version>_<arch>.deb;
#   2. each holds what it must (the manual page, desktop entry, icon, copyright, changelog; the
#      SDK), the dependencies come from dpkg-shlibdeps, the changelog's version is the package's;
#   3. lintian finds no error, and each warning it gives is explained in docs/packaging.md;
#   4. animhost, extracted with dpkg-deb -x into a temporary folder, poses the character example
#      with the packaged plug-in, loading nothing from the build or source tree.
# Usage: package-test.sh BUILD_DIR SOURCE_DIR CPACK VERSION
set -euo pipefail
build=$(cd "$1" && pwd -P)
source=$(cd "$2" && pwd -P)
cpack=$3
version=$4

source "$source/tests/install/common.sh"

for tool in dpkg-deb dpkg-shlibdeps lintian; do
  command -v "$tool" > /dev/null || fail "expected $tool (scripts/setup-debian.sh installs it)"
done

make_work_folder animhost-package
"$cpack" --config "$build/CPackConfig.cmake" -B "$work/packages" > "$work/cpack.log" 2>&1 \
  || fail "cpack failed:" "$(cat "$work/cpack.log")"
arch=$(dpkg --print-architecture)
runtime=$work/packages/animhost_${version}_${arch}.deb
sdk=$work/packages/animhost-dev_${version}_${arch}.deb
[ -f "$runtime" ] && [ -f "$sdk" ] || fail "expected the two packages; cpack made:" "$(ls "$work/packages")"
step "cpack made $(basename "$runtime") and $(basename "$sdk")"

# expect_in_package DEB PATH...: each path is a file of the package.
expect_in_package() {
  local deb=$1 listing path
  shift
  listing=$(dpkg-deb -c "$deb" | awk '{print $6}')
  for path in "$@"; do
    grep -q -x -F "./$path" <<< "$listing" || fail "$(basename "$deb") lacks /$path"
  done
}
expect_in_package "$runtime" usr/bin/animhost usr/lib/animhost/libanimhost_scene.so \
  usr/lib/animhost/plugins/libAnimationTool.so usr/lib/animhost/plugins/resources/shortcuts.xml \
  usr/share/animhost/examples/scenes/character-rig.xml usr/share/man/man1/animhost.1.gz \
  usr/share/applications/animhost.desktop usr/share/icons/hicolor/scalable/apps/animhost.svg \
  usr/share/doc/animhost/copyright usr/share/doc/animhost/changelog.gz
expect_in_package "$sdk" usr/include/animhost/scene/MO_Node.h usr/lib/cmake/animhost/animhostConfig.cmake \
  usr/lib/cmake/animhost/animhostConfigVersion.cmake usr/share/animhost/examples/plugin/CMakeLists.txt \
  usr/share/doc/animhost-dev/copyright usr/share/doc/animhost-dev/changelog.gz
depends=$(dpkg-deb -f "$runtime" Depends)
grep -q "libqt5core5a" <<< "$depends" || fail "expected the Qt libraries among the dependencies, not: $depends"
grep -q "animhost (= $version)" <<< "$(dpkg-deb -f "$sdk" Depends)" || fail "animhost-dev must depend on animhost $version"
step "both packages hold what they must; animhost depends on: $depends"

root=$work/root
dpkg-deb -x "$runtime" "$root"
dpkg-deb -x "$sdk" "$root"
changelog_version=$(gzip -dc "$root/usr/share/doc/animhost/changelog.gz" | sed -n '1s/^animhost (\([^)]*\)).*/\1/p')
[ "$changelog_version" = "$version" ] \
  || fail "the changelog's last entry is version \"$changelog_version\"; the package is $version (packaging/changelog)"
gzip -dc "$root/usr/share/man/man1/animhost.1.gz" | grep -q "ANIMHOST_PLUGIN_PATH" \
  || fail "the manual page does not tell of ANIMHOST_PLUGIN_PATH"
step "the changelog and the manual page are those of this version"

lintian_status=0
lintian_report=$(lintian --tag-display-limit 0 "$runtime" "$sdk" 2> "$work/lintian.err") || lintian_status=$?
printf '%s\n' "$lintian_report"
[ "$lintian_status" -eq 0 ] || fail "lintian found errors (status $lintian_status)" "$(cat "$work/lintian.err")"
for tag in $(sed -n 's/^W: [^ ]*: \([^ ]*\).*/\1/p' <<< "$lintian_report" | sort -u); do
  grep -q -F "\`$tag\`" "$source/docs/packaging.md" || fail "lintian warns of $tag, which docs/packaging.md does not explain"
done
step "lintian: no error, and every warning explained in docs/packaging.md"

check_libraries_resolve_inside "$root/usr" "$build" "$source" \
  "$root/usr/bin/animhost" "$root"/usr/lib/animhost/*.so "$root"/usr/lib/animhost/plugins/*.so
run_character_example "$root/usr/bin/animhost" "$root/usr/share/animhost/examples" "$work/character" \
  "$root/usr/lib/animhost/plugins/libAnimationTool.so" "$build" "$source"
[ "$("$root/usr/bin/animhost" --version)" = "animhost $version" ] || fail "the packaged animhost is not version $version"
step "the extracted animhost posed the character example with the packaged plug-in"
