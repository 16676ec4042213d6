#!/usr/bin/env bash
# docs/writing-a-plugin.md shows every file of examples/plugin whole, after a line naming it
# ("`examples/plugin/<file>`:"): each block must be the file as it stands.
# Usage: walkthrough-test.sh SOURCE_DIR
set -euo pipefail
source=$1
source "$source/tests/install/common.sh"
doc=$source/docs/writing-a-plugin.md

for file in "$source"/examples/plugin/*; do
  name=$(basename "$file")
  shown=$(awk -v marker="\`examples/plugin/$name\`:" '
    $0 == marker { named = 1; next }
    named && !inside && /^```/ { inside = 1; next }
    inside && /^```$/ { exit }
    inside { print }' "$doc")
  [ -n "$shown" ] || fail "docs/writing-a-plugin.md does not show examples/plugin/$name"
  difference=$(diff <(printf '%s\n' "$shown") "$file") \
    || fail "docs/writing-a-plugin.md shows examples/plugin/$name otherwise than it is:" "$difference"
done
step "docs/writing-a-plugin.md shows each file of examples/plugin as it is"
