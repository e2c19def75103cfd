#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests, the benchmarks and the
# table generators need. Idempotent: when every package is present it only checks
# and returns; `apt-get update` runs only when something is missing.
set -euo pipefail

packages=(
  build-essential g++ cmake ninja-build pkg-config binutils
  libgtest-dev libgmock-dev libbenchmark-dev
  libmpfr-dev libgmp-dev libmpc-dev
  libopenblas-serial-dev
  clang libclang-rt-14-dev
  python3 python3-mpmath python3-scipy
  librandom123-dev libsleef-dev libeigen3-dev libgsl-dev libboost-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all packages present"
  exit 0
fi

echo "setup: installing ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -q
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
