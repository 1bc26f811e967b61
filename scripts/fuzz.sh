#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build-fuzz and runs each one in turn.
#   scripts/fuzz.sh [SECONDS] [TARGET...]
# SECONDS per target (default 600); TARGET among fuzz_parse fuzz_import fuzz_bitmap
# fuzz_image fuzz_states (default all). Seeds: the FBX corpus, fuzz/seeds/, Assets/ and the
# kept regression inputs. The growing corpus stays in build-fuzz/corpus/<target>; anything a
# target finds lands in build-fuzz/findings/<target>/ (copy it to
# tests/fuzz/regressions/<target>/ once fixed). One fuzzer at a time, one process each.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
seconds=${1:-600}
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(fuzz_parse fuzz_import fuzz_bitmap fuzz_image fuzz_states)
fi

./scripts/install-deps.sh

build="$root/build-fuzz"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DENGINE_FUZZ=ON -DENGINE_BUILD_TESTS=OFF -DENGINE_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j2 --target "${targets[@]}" >/dev/null

corpus_fbx="${ENGINE_CORPUS_DIR:-$root/../shared/corpus}"
seeds_for() {
  case "$1" in
    fuzz_parse | fuzz_import)
      echo "$corpus_fbx/fbx $corpus_fbx/fbx-malformed $root/fuzz/seeds/fbx" ;;
    fuzz_bitmap) echo "$root/fuzz/seeds/bitmap" ;;
    fuzz_image) echo "$root/fuzz/seeds/image" ;;
    fuzz_states) echo "$root/fuzz/seeds/states" ;;
  esac
  echo "$root/Assets $root/tests/fuzz/regressions/$1"
}

# Inputs longer than this are cut when loaded: long inputs slow every run, and the records
# that matter are near the start of a cut file as much as of a whole one.
max_len_for() {
  case "$1" in
    fuzz_parse | fuzz_import) echo 131072 ;;
    *) echo 16384 ;;
  esac
}

dict_for() {
  case "$1" in
    fuzz_parse | fuzz_import) echo "$root/fuzz/fbx.dict" ;;
    fuzz_bitmap) echo "$root/fuzz/bmp.dict" ;;
    fuzz_image) echo "$root/fuzz/image.dict" ;;
    fuzz_states) echo "$root/fuzz/xml.dict" ;;
  esac
}

status=0
for target in "${targets[@]}"; do
  corpus="$build/corpus/$target"
  findings="$build/findings/$target"
  run="$build/run/$target"  # an empty working directory: relative names in inputs find nothing
  mkdir -p "$corpus" "$findings" "$run"
  rm -f "$run"/fuzz-*.log
  seeds=()
  for dir in $(seeds_for "$target"); do
    if [ -d "$dir" ]; then seeds+=("$dir"); fi
  done
  marker="$run/started"
  touch "$marker"
  result=0
  # The outer limit catches a run that hangs while reporting a finding.
  # Closing the targets' own output (progress and "Fatal error" lines) keeps the log to
  # libFuzzer's reports.
  (cd "$run" && timeout --kill-after=30 $((seconds + 300)) "$build/fuzz/$target" -jobs=1 -rss_limit_mb=2048 -timeout=10 \
    -max_len="$(max_len_for "$target")" -dict="$(dict_for "$target")" \
    -max_total_time="$seconds" -close_fd_mask=3 -print_final_stats=1 \
    -artifact_prefix="$findings/" "$corpus" "${seeds[@]}" >/dev/null 2>&1) || result=$?
  log="$run/fuzz-0.log"
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" 2>/dev/null | grep -o '[0-9]*$' || echo 0)
  cov=$(grep -o 'cov: [0-9]*' "$log" 2>/dev/null | tail -n 1 || true)
  found=$(find "$findings" -type f -newer "$marker" 2>/dev/null | head -n 1 || true)
  if [ "$result" -eq 0 ] && [ -z "$found" ]; then
    echo "$target: ok, ${runs:-0} runs in ${seconds} s, ${cov:-cov: ?}, corpus $(ls "$corpus" | wc -l) files"
  else
    echo "$target: FAILED (exit $result) ${found:+input $found}, log $log"
    status=1
  fi
done
exit $status
