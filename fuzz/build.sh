#!/usr/bin/env bash
# Builds the fuzzers.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh --fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzzers
