#!/bin/sh
# Turns the protocol's ASN.1 modules into C sources for asn1c's runtime.
#   prepare.sh SOURCE_ROOT OUT_DIR
# Copies zol/values/*.asn and zol/messages/*.asn into OUT_DIR/asn, renames
# what asn1c will not take, and runs asn1c into OUT_DIR/gen (emptied first).
set -eu
root=$1
out=$2

rm -rf "$out/asn" "$out/gen"
mkdir -p "$out/asn" "$out/gen"
cp "$root"/zol/values/*.asn "$root"/zol/messages/*.asn "$out/asn/"

# X.680 identifiers take hyphens, not underscores. The enumerators are
# matched by number on the wire, so their names do not reach the bytes.
sed -i \
  -e 's/\bbool_and(/bool-and(/' \
  -e 's/\bbool_or(/bool-or(/' \
  -e 's/\bbool_not(/bool-not(/' \
  -e 's/\bunconfirmed_buy(/unconfirmed-buy(/' \
  -e 's/\bunconfirmed_sell(/unconfirmed-sell(/' \
  "$out/asn/zoltypes.asn"
if grep -n '[a-zA-Z0-9]_[a-zA-Z0-9]' "$out"/asn/*.asn | grep -v -- '--'; then
  echo "prepare.sh: an identifier above still holds an underscore" >&2
  exit 1
fi

cd "$out/gen"
# -fcompound-names keeps the C names of nested types apart.
asn1c -fcompound-names -fincludes-quoted "$out"/asn/*.asn > "$out/asn1c.log" 2>&1 || {
  cat "$out/asn1c.log" >&2
  exit 1
}
# The sample program has its own main; the Makefile is not used.
rm -f converter-sample.c Makefile.am.sample
