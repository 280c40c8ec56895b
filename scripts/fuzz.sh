#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each of them, one after the
# other, for a bounded time. Usage: scripts/fuzz.sh [seconds-per-target] [target...]
# Seeds are written afresh into build-fuzz/corpus/<target>/ (from the fixture
# generators and the shared samples); what a run adds stays in
# build-fuzz/fuzz-work/<target>/ for the next run. A crash, leak, hang or
# sanitizer report stops the script with a non-zero status; the input is
# written beside the work folder as crash-*, leak-*, timeout-* or oom-*.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
seconds="${1:-60}"
shift || true
build="${VLC_FUZZ_BUILD:-$here/build-fuzz}"

VLC_ARTIFACTS_EXTRA=1 "$here/scripts/install-deps.sh"
CC=clang CXX=clang++ cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVLC_ARTIFACTS_FUZZ=ON -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" --target fuzz_all -j"$(nproc)"

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  # Every target fuzz/CMakeLists.txt builds, so a new one is run without being listed twice.
  while IFS= read -r name; do
    targets+=("$name")
  done < <(find "$build/fuzz" -maxdepth 1 -type f -name 'fuzz_*' ! -name fuzz_seeds -perm -u+x -printf '%f\n' | sort)
fi

rm -rf "$build/corpus"
"$build/fuzz/fuzz_seeds" "$build/corpus"

export ASAN_OPTIONS="detect_leaks=1:halt_on_error=1:abort_on_error=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"
# Leaks of the packaged libraries themselves are listed there, one by one.
export LSAN_OPTIONS="suppressions=$here/fuzz/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
status=0
for target in "${targets[@]}"; do
  work="$build/fuzz-work/$target"
  mkdir -p "$work"
  log="$build/fuzz-work/$target.log"
  echo "== $target: ${seconds}s"
  # One target at a time, modest memory: the machine is shared.
  if "$build/fuzz/$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -print_final_stats=1 \
       -artifact_prefix="$work/" "$work" "$build/corpus/$target" >"$log" 2>&1; then
    grep -E '^stat::number_of_executed_units|^#[0-9]+ +DONE' "$log" | tail -2
  else
    status=1
    echo "!! $target found a problem; the input is in $work/ and the report in $log"
    grep -E 'ERROR|SUMMARY|runtime error' "$log" | head -5
  fi
  echo "   corpus: $(find "$work" -maxdepth 1 -type f ! -name 'crash-*' ! -name 'leak-*' ! -name 'timeout-*' ! -name 'oom-*' ! -name 'slow-unit-*' | wc -l) inputs"
done
exit $status
