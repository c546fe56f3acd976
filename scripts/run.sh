#!/usr/bin/env bash
# Builds the release preset, runs the self-check and the benchmark tables,
# and draws the tables (bench.csv) as SVG plots in the same results folder.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
build/release/tools/kfpg check
results="results/bench-$(date +%Y%m%d-%H%M%S)"
build/release/tools/kfpg bench --out "$results" "$@"
/usr/bin/python3 tools/plot/plot_bench.py "$results/bench.csv" >/dev/null
echo "plots (one SVG per family and precision): $results/*.svg"
