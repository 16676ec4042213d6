#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds the project and runs the shipped example: an arm
# dragged by its hand through the IK solver, printing the pose after each step.
# Usage: scripts/run-example.sh [targetX targetY [steps]]
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup-debian.sh
cmake --preset default
cmake --build --preset default --target drag_arm
./build/default/bin/drag_arm "$@"
