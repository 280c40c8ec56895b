#!/usr/bin/env bash
# Line coverage of the plug-in's own code (plugin/, common/ and the extractor
# folders) by the test suite, on a Debug build instrumented with --coverage.
# Usage: scripts/coverage.sh [build-dir]   (default build-coverage)
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$here/build-coverage}"
if ! command -v gcovr >/dev/null 2>&1; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq && DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends gcovr
fi
"$here/scripts/install-deps.sh"
CMAKE_BUILD_TYPE=Debug "$here/scripts/build.sh" "$build" \
  -DCMAKE_CXX_FLAGS=--coverage -DCMAKE_C_FLAGS=--coverage -DCMAKE_EXE_LINKER_FLAGS=--coverage \
  -DCMAKE_SHARED_LINKER_FLAGS=--coverage
find "$build" -name '*.gcda' -delete
# The suite's output is kept: a test that fails only here can be read afterwards.
if ! (cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j"$(nproc)" --output-on-failure >"$build/ctest.log" 2>&1); then
  grep -E 'FAIL|Loc:|tests failed|\*\*\*' "$build/ctest.log" | head -n 20
  echo "a test failed; its whole output is in $build/ctest.log" >&2
  exit 1
fi
filters=()
for d in plugin common macos winos androidos ios; do filters+=(--filter "$here/$d/"); done
gcovr --root "$here" "${filters[@]}" --exclude '.*_autogen/.*' "$build" --print-summary -s \
  --txt "$build/coverage.txt" | tail -n 3
