#!/usr/bin/env bash
# Builds the fuzzers and runs each of them, or those whose names are given behind it, for the given
# number of seconds: fuzz/run.sh [seconds [fuzzer...]]. Without a number it is 600.
# What they find interesting is added to build/fuzz/corpus; fuzz/corpus is where they begin.
set -euo pipefail
cd "$(dirname "$0")/.."
fuzz/build.sh
fuzzers=("${@:2}")
[ ${#fuzzers[@]} -gt 0 ] || fuzzers=($(basename -s .cpp fuzz/fuzz_*.cpp))
for name in "${fuzzers[@]}"; do
  mkdir -p "build/fuzz/corpus/$name" "fuzz/corpus/$name"
  "build/fuzz/fuzz/$name" -max_total_time="${1:-600}" -max_len=4096 -timeout=5 -artifact_prefix="build/fuzz/$name-" \
    -print_final_stats=1 "build/fuzz/corpus/$name" "fuzz/corpus/$name"
done
