#!/usr/bin/env bash
# Builds the fuzzers and runs each of them for the given number of seconds (600 when none is given).
# What they find interesting is added to build/fuzz/corpus; fuzz/corpus is where they begin.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
for fuzzer in build/fuzz/fuzz/fuzz_*; do
  [ -f "$fuzzer" ] && [ -x "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  mkdir -p "build/fuzz/corpus/$name" "fuzz/corpus/$name"
  "$fuzzer" -max_total_time="${1:-600}" -max_len=4096 -timeout=5 -artifact_prefix="build/fuzz/$name-" \
    -print_final_stats=1 "build/fuzz/corpus/$name" "fuzz/corpus/$name"
done
