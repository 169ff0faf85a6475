#!/usr/bin/env bash
# Builds the tool and starts it; arguments go to the tool, such as --simulate.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-packages.sh
cmake --preset release >/dev/null
cmake --build --preset release
exec build/release/src/VORAII_Tool "$@"
