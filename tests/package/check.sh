#!/bin/sh
# Installs the build tree and runs the README's section "Installing and
# using it from another project" as a user would: its files are written
# (a fenced block whose first line is a comment naming the file), its sh
# blocks run with DIR replaced (the `cmake --install build` block in a
# folder where build is this build tree, the others in the user's folder),
# and each `$ command` of its text blocks must print exactly the lines
# under it. Then every installed header must compile cleanly under
# -Wshadow, and the installed zoldump must run.
#   check.sh SOURCE_DIR BUILD_DIR CXX [FLAGS]
# CXX, with FLAGS (the sanitizers of a sanitized build), stands in for the
# README's `c++` and for CMake's compiler.
set -eu
src=$1 build=$2 cxx=$(command -v "$3") flags=${4-}

work=$build/package-test
rm -rf "$work"
mkdir -p "$work/zol" "$work/app" "$work/blocks" "$work/bin"
prefix=$work/DIR
ln -s "$build" "$work/zol/build"

cat >"$work/bin/c++" <<EOF
#!/bin/sh
exec "$cxx" $flags "\$@"
EOF
chmod +x "$work/bin/c++"
PATH=$work/bin:$PATH CXX=$work/bin/c++
export PATH CXX

fail() {
  echo "package: $*" >&2
  exit 1
}

# The section's fenced blocks, one file each, numbered in order and named
# by their language: blocks/01.sh, blocks/02.cpp ...
awk -v out="$work/blocks" '
  /^## / { inside = ($0 == "## Installing and using it from another project") }
  !inside { next }
  /^```/ {
    if (file) { close(file); file = "" }
    else { n++; file = sprintf("%s/%02d.%s", out, n, substr($0, 4)) ; printf "" > file }
    next
  }
  file { print > file }
' "$src/README.md"
[ -n "$(ls "$work/blocks")" ] || fail "no blocks found in the README's section"

# Runs each `$ command` of a transcript in the user's folder and compares
# what it prints with the lines under it.
transcript() {
  cmd= expected=$work/expected actual=$work/actual
  while IFS= read -r line || [ -n "$line" ]; do
    case "$line" in
      '$ '*)
        [ -z "$cmd" ] || compare "$cmd"
        cmd=${line#\$ }
        : >"$expected" ;;
      *) printf '%s\n' "$line" >>"$expected" ;;
    esac
  done <"$1"
  [ -z "$cmd" ] || compare "$cmd"
}
compare() {
  compared=$((compared + 1))
  (cd "$work/app" && sh -c "$1") <"/dev/null" >"$actual" 2>&1 || fail "$1 failed: $(cat "$actual")"
  cmp -s "$expected" "$actual" || fail "$1 printed
$(cat "$actual")
where the README shows
$(cat "$expected")"
}

ran=0 compared=0
for block in "$work"/blocks/*; do
  case "$block" in
    *.cpp | *.cmake)
      name=$(sed -n '1s,^\(//\|#\) \([A-Za-z0-9_.]*\)$,\2,p' "$block")
      [ -z "$name" ] || cp "$block" "$work/app/$name" ;;
    *.sh)
      sed 's,\<DIR\>,'"$prefix"',g' "$block" >"$work/commands"
      where=$work/app
      if grep -q '^cmake --install build ' "$work/commands"; then
        where=$work/zol
      fi
      (cd "$where" && sh -e "$work/commands") >"$work/log" 2>&1 ||
        fail "$(cat "$block") failed:
$(cat "$work/log")"
      ran=$((ran + 1)) ;;
    *.text)
      transcript "$block" ;;
  esac
done
[ "$ran" -ge 3 ] && [ "$compared" -ge 4 ] ||
  fail "ran $ran command blocks and $compared programs; expected the install, CMake and pkg-config ones"

# Every installed header, generated ones included, in one translation unit.
(cd "$prefix/include" && find zol -name '*.h' | sort | sed 's,.*,#include <&>,') >"$work/headers.cpp"
PKG_CONFIG_PATH=$prefix/lib/pkgconfig
export PKG_CONFIG_PATH
c++ -std=c++17 -fsyntax-only -Wall -Wextra -Wshadow -Werror $(pkg-config --cflags zol-json) \
  "$work/headers.cpp" >"$work/log" 2>&1 || fail "the installed headers warn:
$(cat "$work/log")"

# The tool, through its own run path.
"$prefix/bin/zoldump" --hex --json <"$src/tests/package/reply.hex" >"$work/log" 2>&1 &&
  grep -q '"infoMessage": "OK"' "$work/log" || fail "installed zoldump failed: $(cat "$work/log")"
