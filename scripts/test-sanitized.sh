#!/usr/bin/env bash
# Builds the plug-in, host program and tests with AddressSanitizer and
# UndefinedBehaviorSanitizer (leaks checked too) in build-asan and runs the
# whole test suite there. Any report fails the test that caused it, and so
# the run. Usage: scripts/test-sanitized.sh [build-dir]
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$here/build-asan}"
"$here/scripts/install-deps.sh"
"$here/scripts/build.sh" "$build" -DVLC_ARTIFACTS_SANITIZE=ON
# No single allocation beyond 1 GB: evidence that asks for more (a size field
# read from a damaged file) must be refused before it reaches the allocator.
export ASAN_OPTIONS="detect_leaks=1:halt_on_error=1:max_allocation_size_mb=1024${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)"
