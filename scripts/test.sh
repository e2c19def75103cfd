#!/usr/bin/env bash
# Installs what is missing, configures, builds and runs the test suite.
# Usage: scripts/test.sh [preset]   (default, debug, asan or tsan; default: default)
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
bash scripts/setup.sh
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset" --output-on-failure -j "$(nproc)"
