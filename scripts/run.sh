#!/usr/bin/env bash
# Installs what is missing, builds the engine and runs the game in Assets/.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DENGINE_BUILD_TESTS=OFF -DENGINE_BUILD_BENCH=OFF >/dev/null
cmake --build build -j"$(nproc 2>/dev/null || echo 2)" --target engine
exec ./build/shell/engine "$@"
