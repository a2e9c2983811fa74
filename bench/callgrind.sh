#!/bin/sh
# Instructions per operation under callgrind, which counts them exactly
# whatever else the machine is doing.
#   bench/callgrind.sh BUILD_DIR [CASE/OP ...]    (default: every case and op)
# Each CASE/OP runs TIMES times (default 200) inside zb_profile_loop, the
# only function counted; the callgrind.out files stay in $OUT (default
# /tmp/zol-callgrind) for callgrind_annotate.
set -eu
build=$1
shift
bench=$build/bench/zol_bench
times=${TIMES:-200}
out=${OUT:-/tmp/zol-callgrind}
mkdir -p "$out"
if [ $# -eq 0 ]; then
  set --
  for c in 0 1 2 3 4; do
    for op in encode asn1c_encode memcpy decode asn1c_decode print clone merge; do
      set -- "$@" "$c/$op"
    done
  done
  set -- "$@" 5/decode 5/asn1c_decode
fi
for what in "$@"; do
  file=$out/callgrind.out.$(echo "$what" | tr / _)
  valgrind --tool=callgrind --callgrind-out-file="$file" --toggle-collect=zb_profile_loop \
    "$bench" --profile="$what" --times="$times" > /dev/null 2>&1
  ir=$(sed -n 's/^summary: *\([0-9]*\).*/\1/p' "$file")
  echo "$what $((ir / times))"
done
