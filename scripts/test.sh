#!/usr/bin/env bash
# Fresh machine to green tests: installs what is needed, builds, runs every test.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
"$here/scripts/install-deps.sh"
"$here/scripts/build.sh" "$here/build"
cd "$here/build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)"
