#!/bin/sh
# Builds the stream-loader fuzzer with clang (preset "fuzz") and runs it.
# Usage: scripts/fuzz.sh [seconds]   (default 600)
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-600}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j2 --target fuzz_load_stream stream_seed_images
corpus=build/fuzz/corpus
mkdir -p "$corpus"
build/fuzz/tests/fuzz/stream_seed_images "$corpus"
exec build/fuzz/tests/fuzz/fuzz_load_stream -max_total_time="$seconds" -max_len=8192 \
  -rss_limit_mb=2048 -print_final_stats=1 "$corpus"
