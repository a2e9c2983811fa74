#!/usr/bin/env bash
# The Wireshark dissector's speed: tshark over a capture of 100,000 order
# reports (ZolQueryRep orderRep, each another order number, balance and
# average price, one in ten with its statics), sent by the host on port
# 7000 in TCP segments of 1,448 octets, so that most reports straddle two
# segments. Each way of reading it runs three times and the fastest counts,
# with the dissector and without it (tshark then sees only TCP). Times are
# CPU seconds (user and system), which other work on the machine changes
# less than the time on the clock.
#   bench/wireshark.sh BUILD_DIR [REPORTS]
# Needs tshark and text2pcap (tools/setup --ci) and BUILD_DIR's zoldump and
# zol.lua. The capture stays in $OUT (default /tmp/zol-wireshark).
set -euo pipefail
build=$1
reports=${2:-100000}
out=${OUT:-/tmp/zol-wireshark}
lua=$build/wireshark/zol.lua
mkdir -p "$out/config"

# The reports as JSON, through zoldump --encode, then text2pcap's hex dump
# of 1,448-octet segments.
capture=$out/reports-$reports.pcap
if [ ! -s "$capture" ]; then
  awk -v n="$reports" 'BEGIN {
    for (i = 0; i < n; ++i) {
      statics = i % 10 ? "" : sprintf("\"statics\": {\"secBoardId\": {\"secCode\": \"ABC\", \"boardId\": \"MAIN\"}, \"instrId\": \"EQ\", \"userId\": \"TRADER1\", \"firmId\": \"FIRM1\", \"type\": \"limit\", \"buySell\": \"buy\", \"quantity\": 500, \"price\": {\"value\": 101.25, \"decimals\": 2}, \"fillType\": \"fillAny\", \"duration\": \"day\", \"entryTime\": {\"date\": 20240315, \"time\": 93012, \"millisec\": %d}, \"trdAccId\": \"ACC7\"}, ", i % 1000)
      printf "{\"type\": \"ZolQueryRep\", \"value\": {\"orderRep\": {\"seqContext\": {\"seqNum\": %d}, \"orderId\": {\"orderNo\": \"ORD%07d\"}, %s\"dynamics\": {\"orderStatus\": \"open\", \"balance\": %d, \"averagePrice\": {\"value\": %.2f, \"decimals\": 2}}}}}\n", i + 1, i, statics, 500 - i % 500, 100 + (i % 400) / 4
    }
  }' | "$build/tools/zoldump" --encode >"$out/reports.ber"
  od -An -v -tx1 "$out/reports.ber" | awk -v seg=1448 '
    { for (i = 1; i <= NF; ++i) {
        if (n % seg == 0) printf "%sI", n ? "\n\n" : ""
        if (n % seg % 16 == 0) printf "\n%06x", n % seg
        printf " %s", $i
        ++n } }
    END { print "" }' >"$out/reports.txt"
  text2pcap -q -D -T 7000,40000 "$out/reports.txt" "$capture" >/dev/null 2>&1
  rm "$out/reports.txt"
fi
bytes=$(wc -c <"$out/reports.ber")
frames=$(WIRESHARK_CONFIG_DIR=$out/config tshark -r "$capture" 2>/dev/null | wc -l)

# The fastest of three runs of a command, in CPU seconds.
fastest() {
  local TIMEFORMAT=%U+%S
  for _ in 1 2 3; do
    { time WIRESHARK_CONFIG_DIR=$out/config "$@" >/dev/null 2>&1; } 2>&1 | awk -F+ '{ print $1 + $2 }'
  done | sort -n | awk 'NR == 1 { printf "%.2f", $1 }'
}

# Without the dissector there is no field to filter on: the filter's line
# compares it with reading the capture plainly.
dissector="-X lua_script:$lua -o zol.tcp_port:7000"
echo "$reports order reports, $bytes octets in $frames segments; CPU seconds, the fastest of three runs"
printf '%-58s %9s %9s %12s\n' "" "without" "with" "reports/s"
for how in "" "-Y zol.ZolOrderRepDynamic.balance==300" "-V"; do
  # shellcheck disable=SC2086
  without=$(fastest tshark -r "$capture" ${how/-Y*/})
  # shellcheck disable=SC2086
  with=$(fastest tshark $dissector -r "$capture" $how)
  printf '%-58s %8ss %8ss %12.0f\n' "tshark -r capture ${how:-(the summary lines)}" "$without" "$with" \
    "$(awk -v n="$reports" -v t="$with" 'BEGIN { print n / t }')"
done
