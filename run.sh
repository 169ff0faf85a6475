#!/usr/bin/env bash
# Builds the tool and starts it; arguments go to the tool. Without any, the window opens, on a simulated
# module where the machine has no serial port; where it has no display either, the tool shows what it
# can do and compares what comes of it.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-packages.sh
cmake --preset release >/dev/null
cmake --build --preset release

tool=build/release/src/VORAII_Tool
if [ $# -gt 0 ]; then
  exec "$tool" "$@"
elif [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "$tool" --simulate-without-ports
else
  QT_QPA_PLATFORM=offscreen exec "$tool" --simulate --tour build/tour
fi
