#!/usr/bin/env bash
# Checks the formatting, the order of includes and the share of tests, and runs the tests, plain and under
# the sanitizers.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-packages.sh

scripts/count-tests
scripts/check-includes
find src simulator tests bench fuzz -name '*.cpp' -o -name '*.h' | xargs clang-format --dry-run -Werror
for preset in asan debug; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" --parallel "$(nproc)"
done
