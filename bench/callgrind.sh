#!/bin/sh
# Instructions per operation under callgrind, which counts them exactly
# whatever else the machine is doing.
#   bench/callgrind.sh BUILD_DIR [CASE/OP[@TIMES] ...]  (default: every case and op)
# Each CASE/OP runs TIMES times (default $TIMES, else 200) inside
# zb_profile_loop, the only function counted; the count printed is per
# message (a burst's block holds many). The callgrind.out files stay in
# $OUT (default /tmp/zol-callgrind) for callgrind_annotate.
set -eu
build=$1
shift
bench=$build/bench/zol_bench
out=${OUT:-/tmp/zol-callgrind}
mkdir -p "$out"
if [ $# -eq 0 ]; then
  set --
  for c in 0 1 2 3 4; do
    for op in encode asn1c_encode memcpy decode asn1c_decode print clone merge; do
      set -- "$@" "$c/$op"
    done
  done
  # The burst of 10,000 reports: two blocks of zol, one of asn1c.
  set -- "$@" 5/decode 5/asn1c_decode 6/decode@2 6/asn1c_decode@1
fi
for arg in "$@"; do
  what=${arg%@*}
  times=${TIMES:-200}
  [ "$what" = "$arg" ] || times=${arg#*@}
  file=$out/callgrind.out.$(echo "$what" | tr / _)
  msgs=$(valgrind --tool=callgrind --callgrind-out-file="$file" --toggle-collect=zb_profile_loop \
    "$bench" --profile="$what" --times="$times" 2>/dev/null | sed -n 's/.*, \([0-9]*\) messages each$/\1/p')
  ir=$(sed -n 's/^summary: *\([0-9]*\).*/\1/p' "$file")
  echo "$what $((ir / times / msgs))"
done
