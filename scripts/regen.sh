#!/usr/bin/env bash
# Regenerates every generated file of the repository from its tool.
#
#   scripts/regen.sh            rewrite the generated files in place
#   scripts/regen.sh --check    regenerate into a temporary tree, print a diff
#                               and fail if anything differs (CI runs this)
#   add --quick to either to skip the slow generators (about a minute of CPU
#   each; several minutes of wall time on a loaded machine).
#
# Needs Debian's python3 with python3-mpmath and python3-scipy (scripts/setup.sh);
# /usr/bin/python3 is preferred over any other python3 on PATH, which may lack
# them. Generators run two at a time.
set -euo pipefail
cd "$(dirname "$0")/.."

# Generators that print one file: "<tool> <output>".
fast=(
  "tools/fit/exp.py src/vector_math/exp/exp_table.inc"
  "tools/fit/ln.py src/vector_math/ln/ln_table.inc"
  "tools/fit/trig.py src/vector_math/trig/trig_tables.inc"
  "tools/mt19937_poly.py src/streams/mt19937_poly.inc"
  "tools/wh_tables.py src/streams/wh_tables.cpp"
  "tests/streams/known_answers.py tests/streams/known_answers.inc"
  "tools/sobol_table.py src/streams/sobol_table.cpp"
  "tests/streams/quasi_random_answers.py tests/streams/quasi_random_answers.inc"
  "tests/data_fitting/spline_reference.py tests/data_fitting/spline_reference.txt"
)
# About 1 minute of CPU on the development machine (mpmath fits of ~2000 rows).
slow=(
  "tools/fit/cdfnorminv.py src/vector_math/cdfnorminv/cdfnorminv_tables.inc"
)

check=0
quick=0
for arg in "$@"; do
  case "$arg" in
    --check) check=1 ;;
    --quick) quick=1 ;;
    *) echo "usage: scripts/regen.sh [--check] [--quick]" >&2; exit 2 ;;
  esac
done

jobs=("${fast[@]}")
if [ "$quick" -eq 0 ]; then
  jobs=("${slow[@]}" "${jobs[@]}")  # the slow ones first, beside the rest
else
  for job in "${slow[@]}"; do echo "regen: skipping ${job%% *} (--quick)"; done
fi

py=python3
[ -x /usr/bin/python3 ] && py=/usr/bin/python3

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# Each tool writes into the scratch tree, two at a time; a failure stops all.
run() {
  local tool=$1 output=$2
  mkdir -p "$out/$(dirname "$output")"
  "$py" "$tool" > "$out/$output" 2> "$out/$output.log" || {
    echo "regen: $tool failed:" >&2
    cat "$out/$output.log" >&2
    return 1
  }
}
pids=()
for job in "${jobs[@]}"; do
  # shellcheck disable=SC2086
  run $job &
  pids+=($!)
  if [ ${#pids[@]} -ge 2 ]; then
    wait "${pids[0]}"
    pids=("${pids[@]:1}")
  fi
done
for pid in "${pids[@]}"; do wait "$pid"; done
"$py" tools/vml_catalogue.py --out "$out"

status=0
for f in $(cd "$out" && find . -type f ! -name '*.log' | sed 's|^\./||' | sort); do
  if [ "$check" -eq 1 ]; then
    if ! diff -u --label "a/$f" --label "b/$f" "$f" "$out/$f"; then status=1; fi
  elif ! cmp -s "$out/$f" "$f"; then
    cp "$out/$f" "$f"
    echo "regen: wrote $f"
  fi
done
if [ "$status" -ne 0 ]; then
  echo "regen: generated files differ from their tools (run scripts/regen.sh)" >&2
  exit 1
fi
[ "$check" -eq 1 ] && echo "regen: every generated file reproduces"
exit 0
