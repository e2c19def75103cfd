#!/usr/bin/env bash
# Installs what is missing, builds the library and runs the C quickstart.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target quickstart
./build/default/examples/quickstart/quickstart
