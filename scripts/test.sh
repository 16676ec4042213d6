#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds the project and runs the whole test suite through
# CTest. Usage: scripts/test.sh [preset]   (preset: default or sanitize; default if omitted)
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-default}

bash scripts/setup-debian.sh
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
