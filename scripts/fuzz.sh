#!/usr/bin/env bash
# Runs one fuzz target of tests/fuzz for a bounded time, with clang's libFuzzer under
# AddressSanitizer and UndefinedBehaviorSanitizer (the fuzz preset, built in build/fuzz).
#
#   scripts/fuzz.sh TARGET SECONDS      TARGET: SceneReader, PreferenceReader or BatchParser
#
# The corpus grows in build/fuzz/corpus/TARGET (seeded from the examples and the regression
# inputs); an input that finds a fault is written to build/fuzz/findings/TARGET/ and the script
# exits non-zero. Such an input belongs in tests/fuzz/regressions/ once the fault is fixed.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ $# -ne 2 ] || ! [[ $2 =~ ^[0-9]+$ ]]; then
  echo "usage: scripts/fuzz.sh SceneReader|PreferenceReader|BatchParser SECONDS" >&2
  exit 2
fi
target=$1
seconds=$2
case $target in
  SceneReader) seeds=(examples/scenes tests/fuzz/regressions/scene); dict=tests/fuzz/scene.dict ;;
  PreferenceReader) seeds=(tests/fuzz/regressions/preferences); dict=tests/fuzz/preferences.dict ;;
  BatchParser) seeds=(examples/scripts tests/App/scripts tests/fuzz/regressions/batch); dict=tests/fuzz/batch.dict ;;
  *) echo "scripts/fuzz.sh: expected SceneReader, PreferenceReader or BatchParser, not \"$target\"" >&2; exit 2 ;;
esac

bash scripts/setup-debian.sh fuzz
cmake --preset fuzz > /dev/null
cmake --build --preset fuzz --target "Fuzz$target"

corpus=build/fuzz/corpus/$target
findings=build/fuzz/findings/$target
mkdir -p "$corpus" "$findings"
# Scene inputs are kept small: deep nesting is refused early whatever the size, and small inputs
# keep the runs fast.
QT_QPA_PLATFORM=offscreen \
ASAN_OPTIONS=detect_leaks=1 \
UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp \
  "build/fuzz/bin/Fuzz$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=8192 \
    -dict="$dict" -artifact_prefix="$findings/" -print_final_stats=1 "$corpus" "${seeds[@]}"
