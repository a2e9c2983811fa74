#!/usr/bin/env bash
# Runs the libFuzzer targets of a fuzz build, each for SECONDS, as many at
# a time as there are cores, and fails if any finds a fault.
#
#   fuzz/run.sh [SECONDS] [TARGET...]
#
# SECONDS defaults to 600; TARGET to every target built. The build
# directory is $ZOL_FUZZ_BUILD, by default build-fuzz beside this folder:
#
#   CC=clang CXX=clang++ cmake -S . -B build-fuzz -DZOL_FUZZ=ON -DZOL_BUILD_TESTS=OFF \
#       -DCMAKE_BUILD_TYPE=RelWithDebInfo && cmake --build build-fuzz -j2 --target fuzz
#
# Each target starts from its seeds in fuzz/corpus/<target>/ and keeps what
# it learns in <build>/fuzz-corpus/<target>/, so later runs go on from
# there; the seeds are never written. A finding is left in
# <build>/fuzz-findings/; copy it into fuzz/repro/ once it is understood, so
# that the test suite replays it for good.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${ZOL_FUZZ_BUILD:-$here/../build-fuzz}"
seconds="${1:-600}"
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for t in "$build"/fuzz/fuzz_*; do
    [ -x "$t" ] && targets+=("$(basename "$t")")
  done
fi
[ ${#targets[@]} -gt 0 ] || { echo "no fuzz targets in $build/fuzz" >&2; exit 1; }

mkdir -p "$build/fuzz-findings"
# As many targets at once as the machine has cores ($ZOL_FUZZ_JOBS), each
# for its full time.
jobs="${ZOL_FUZZ_JOBS:-$(nproc)}"

# Runs target $1 and prints its summary line; on a finding, the log's tail
# and exit status 1.
fuzz_one() {
  local t="$1" corpus="$build/fuzz-corpus/$1" log="$build/fuzz-findings/$1.log"
  mkdir -p "$corpus"
  # Decoders write a line for each refused input: standard error is closed
  # (-close_fd_mask=2); libFuzzer, the sanitizers and the target's own
  # findings keep writing to a copy of it. The entropic schedule spends
  # most of its time weighing the library's ninety thousand counters;
  # without it a target runs about five times as many inputs.
  if ! "$build/fuzz/$t" "$corpus" "$here/corpus/$t" \
      -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -entropic=0 \
      -close_fd_mask=2 -print_final_stats=1 -artifact_prefix="$build/fuzz-findings/$t-" \
      >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "FAILED: $t (log $log, input in $build/fuzz-findings/)" >&2
    return 1
  fi
  local runs rate cov
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  cov=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1)
  echo "$t: $runs runs in $seconds s, $rate exec/s, $cov, clean"
}
export -f fuzz_one
export build here seconds

echo "== ${#targets[@]} targets, $seconds s each, $jobs at a time"
failed=0
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'fuzz_one {}' || failed=1
[ "$failed" = 0 ] || { echo "fuzz: a target found a fault" >&2; exit 1; }
echo "fuzz: ${#targets[@]} passed, 0 failed"
