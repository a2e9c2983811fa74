#!/bin/sh
# Runs the README's section "A first program" and then the page
# docs/install.md as a user would: their files are written (a fenced block
# whose first line is a comment naming the file), their sh blocks run with
# DIR replaced (the `cmake --install build` block where build is this build
# tree, the others in the user's folder), and each `$ command` of their
# text blocks must print exactly the lines under it. Then the installed
# headers must compile under -Wshadow, and the installed zoldump must run.
#   check.sh SOURCE_DIR BUILD_DIR CXX [FLAGS]
# CXX with FLAGS (a sanitized build's) stands in for `c++` and CMake's compiler.
set -eu
src=$1 build=$2 cxx=$(command -v "$3") flags=${4-}
work=$build/package-test
prefix=$work/DIR
rm -rf "$work"
mkdir -p "$work/zol" "$work/app" "$work/blocks" "$work/bin"
ln -s "$build" "$work/zol/build"
printf '#!/bin/sh\nexec "%s" %s "$@"\n' "$cxx" "$flags" >"$work/bin/c++"
chmod +x "$work/bin/c++"
PATH=$work/bin:$PATH CXX=$work/bin/c++
export PATH CXX
fail() {
  echo "package: $*" >&2
  exit 1
}

# The fenced blocks in the order a user meets them, numbered and named by
# language: blocks/01.sh ... Each file is read from its section `heading`,
# or whole where the heading is empty.
awk -v out="$work/blocks" '
  FNR == 1 { inside = heading == "" }
  /^## / && heading != "" { inside = ($0 == heading) }
  inside && /^```/ {
    if (file) { close(file); file = "" } else { file = sprintf("%s/%02d.%s", out, ++n, substr($0, 4)); printf "" > file }
    next
  }
  inside && file { print > file }
' heading="## A first program" "$src/README.md" heading= "$src/docs/install.md"

# Runs a `$ command` in the user's folder; what it prints must be the lines
# gathered under it.
compare() {
  [ -n "$cmd" ] || return 0
  compared=$((compared + 1))
  (cd "$work/app" && sh -c "$cmd") </dev/null >"$work/actual" 2>&1 || fail "$cmd failed: $(cat "$work/actual")"
  cmp -s "$work/expected" "$work/actual" || fail "$cmd printed:
$(cat "$work/actual")
where the documentation shows:
$(cat "$work/expected")"
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
      ! grep -q '^cmake --install build ' "$work/commands" || where=$work/zol
      (cd "$where" && sh -e "$work/commands") >"$work/log" 2>&1 || fail "$(cat "$block") failed: $(cat "$work/log")"
      ran=$((ran + 1)) ;;
    *.text)
      cmd=
      while IFS= read -r line || [ -n "$line" ]; do
        case "$line" in
          '$ '*) compare && cmd=${line#\$ } && : >"$work/expected" ;;
          *) printf '%s\n' "$line" >>"$work/expected" ;;
        esac
      done <"$block"
      compare ;;
  esac
done
[ "$ran" -ge 4 ] && [ "$compared" -ge 5 ] ||
  fail "ran $ran command blocks and $compared programs; expected the install, CMake and pkg-config ones"

# Every installed header, generated ones included, in one translation unit.
(cd "$prefix/include" && find zol -name '*.h' | sort | sed 's,.*,#include <&>,') >"$work/headers.cpp"
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
c++ -std=c++17 -fsyntax-only -Wall -Wextra -Wshadow -Werror $(pkg-config --cflags zol-json) \
  "$work/headers.cpp" >"$work/log" 2>&1 ||
  fail "the installed headers warn: $(cat "$work/log")"

# The tool, through its own run path.
"$prefix/bin/zoldump" --hex --json <"$src/tests/package/reply.hex" >"$work/log" 2>&1 &&
  grep -q '"infoMessage": "OK"' "$work/log" || fail "installed zoldump failed: $(cat "$work/log")"
