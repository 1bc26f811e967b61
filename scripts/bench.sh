#!/usr/bin/env bash
# Builds the benchmarks in a Release tree and prints the import and frame table: reader
# throughput, the library's and the engine's import against assimp's, peak memory per
# polygon corner, and frame times (under its own Xvfb when there is no display).
# Generated model files are kept in <build dir>/bench-data between runs.
#
#   scripts/bench.sh [build dir, default build-bench] [bench_import flags...]
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/install-deps.sh

build=${1:-build-bench}
shift || true
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DENGINE_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j2 --target bench_import

. ./scripts/xvfb.sh
trap stop_display EXIT
ensure_display 120
export LIBGL_ALWAYS_SOFTWARE=1

# Google Benchmark's own report first, then the summary table.
"$build/bench/bench_import" "$@"
