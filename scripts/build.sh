#!/usr/bin/env bash
# Configures and builds the project. Usage: scripts/build.sh [build-dir] [extra cmake args...]
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$here/build}"
shift || true
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE="${CMAKE_BUILD_TYPE:-RelWithDebInfo}" "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
