#!/usr/bin/env bash
# Builds and runs the whole test suite: the release preset (unit tests,
# exports test, install test) and the asan preset (ASan + UBSan).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh
for preset in release asan; do
  echo "== $preset =="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j "$(nproc)"
done
