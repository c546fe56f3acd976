#!/usr/bin/env bash
# Builds the release preset, then runs the self-check and the benchmark tables.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
build/release/tools/kfpg check
build/release/tools/kfpg bench "$@"
