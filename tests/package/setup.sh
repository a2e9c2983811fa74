#!/bin/sh
# tools/setup where the build and the tests have just run: nothing is
# missing, so it prints nothing and calls neither apt-get nor sudo. With
# dpkg-query made to hide one installed package, it installs exactly that
# one. apt-get, sudo and localedef are stand-ins that only note their call.
# Both README commands start with it, and .ci/run runs the README's test
# command as printed.
#   setup.sh SOURCE_DIR WORK_DIR
set -eu
src=$1 work=$2
rm -rf "$work"
mkdir -p "$work/bin"
fail() {
  echo "setup: $*" >&2
  exit 1
}
stub() {
  printf '#!/bin/sh\n%s\n' "$2" >"$work/bin/$1"
  chmod +x "$work/bin/$1"
}
for tool in apt-get localedef; do stub $tool "echo \"$tool \$*\" >>'$work/calls'"; done
stub sudo "echo \"sudo \$*\" >>'$work/calls'; exec \"\$@\""
PATH=$work/bin:$PATH
export PATH
"$src/tools/setup" >"$work/out" 2>&1 || fail "failed: $(cat "$work/out")"
[ ! -s "$work/out" ] && [ ! -e "$work/calls" ] || fail "with nothing missing: $(cat "$work/out" "$work/calls")"

stub dpkg-query "'$(command -v dpkg-query)' \"\$@\" | grep -v ' pkg-config\$'"
"$src/tools/setup" >"$work/out" 2>&1 || fail "failed: $(cat "$work/out")"
[ "$(cat "$work/out")" = "tools/setup: installing pkg-config" ] || fail "printed: $(cat "$work/out")"
install="apt-get install -y -qq pkg-config"
expected="apt-get update -qq
$install"
[ "$(id -u)" = 0 ] || expected="sudo apt-get update -qq
apt-get update -qq
sudo env DEBIAN_FRONTEND=noninteractive $install
$install"
[ "$(cat "$work/calls")" = "$expected" ] || fail "called: $(cat "$work/calls")"

test_command='tools/setup && cmake -S . -B build && cmake --build build -j2 && ctest --test-dir build --output-on-failure -j2'
grep -qxF "$test_command" "$src/README.md" || fail "the README's test command is not: $test_command"
grep -qx 'tools/setup && cmake -S \. -B build && cmake --build build -j2 --target zoldump && .*' "$src/README.md" ||
  fail "the README's demo command does not start with tools/setup"
grep -qxF "$test_command" "$src/.ci/run" || fail ".ci/run does not run the README's test command"
