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

for tool in apt-get sudo localedef; do
  cat >"$work/bin/$tool" <<STUB
#!/bin/sh
echo "$tool \$*" >>"$work/calls"
[ $tool != sudo ] || exec "\$@"
STUB
  chmod +x "$work/bin/$tool"
done
PATH=$work/bin:$PATH
export PATH

"$src/tools/setup" >"$work/out" 2>&1 || fail "failed: $(cat "$work/out")"
[ ! -s "$work/out" ] || fail "printed, with nothing missing: $(cat "$work/out")"
[ ! -e "$work/calls" ] || fail "called, with nothing missing: $(cat "$work/calls")"

real=$(command -v dpkg-query)
cat >"$work/bin/dpkg-query" <<STUB
#!/bin/sh
"$real" "\$@" | grep -v ' pkg-config\$'
STUB
chmod +x "$work/bin/dpkg-query"
"$src/tools/setup" >"$work/out" 2>&1 || fail "failed: $(cat "$work/out")"
[ "$(cat "$work/out")" = "tools/setup: installing pkg-config" ] || fail "printed: $(cat "$work/out")"
if [ "$(id -u)" = 0 ]; then
  expected="apt-get update -qq
apt-get install -y -qq pkg-config"
else
  expected="sudo apt-get update -qq
apt-get update -qq
sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq pkg-config
apt-get install -y -qq pkg-config"
fi
[ "$(cat "$work/calls")" = "$expected" ] || fail "called:
$(cat "$work/calls")"

test_command='tools/setup && cmake -S . -B build && cmake --build build -j2 && ctest --test-dir build --output-on-failure -j2'
grep -qxF "$test_command" "$src/README.md" || fail "the README's test command is not: $test_command"
grep -qx 'tools/setup && cmake -S \. -B build && cmake --build build -j2 --target zoldump && .*' "$src/README.md" ||
  fail "the README's demo command does not start with tools/setup"
grep -qxF "$test_command" "$src/.ci/run" || fail ".ci/run does not run the README's test command"
