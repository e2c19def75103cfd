#!/bin/sh
# Builds the stream-loader fuzzer with clang (preset "fuzz") and runs it.
# Usage: scripts/fuzz.sh [seconds [seed]]   (default 600 s; seed also from
# OXA_FUZZ_SEED, 0 or unset lets the fuzzer pick one)
# Exits non-zero and prints the saved input's path when the fuzzer finds a crash,
# leak, timeout or sanitizer report.
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-600}"
seed="${2:-${OXA_FUZZ_SEED:-0}}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j2 --target fuzz_load_stream stream_seed_images
corpus=build/fuzz/corpus
artifacts=build/fuzz/artifacts
mkdir -p "$corpus" "$artifacts"
build/fuzz/tests/fuzz/stream_seed_images "$corpus"
marker="$artifacts/.started"
touch "$marker"
status=0
build/fuzz/tests/fuzz/fuzz_load_stream -max_total_time="$seconds" -max_len=8192 \
  -rss_limit_mb=2048 -print_final_stats=1 -seed="$seed" -artifact_prefix="$artifacts/" \
  "$corpus" || status=$?
found=$(find "$artifacts" -type f ! -name .started -newer "$marker")
if [ "$status" -ne 0 ] || [ -n "$found" ]; then
  echo "fuzz.sh: the fuzzer stopped with status $status; input saved as:" >&2
  for f in $found; do echo "  $f" >&2; done
  exit $((status ? status : 1))
fi
