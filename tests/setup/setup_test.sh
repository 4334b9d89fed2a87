#!/bin/sh
# setup_test.sh SETUP: what scripts/setup.sh does with and without apt-get and root, on systems made of
# folders of commands, and that build folders are configured again after it. Nothing is installed.
set -eu

setup=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
passed=0

check() {
  if [ "$2" = "$3" ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    printf '%s: expected\n%s\nbut it is\n%s\n' "$1" "$2" "$3"
  fi
}

# new_system COMMAND...: a system with the commands that the script itself needs, and these. Each of
# them does nothing but write to called.
new_system() {
  rm -rf "$work/system" "$work/project"
  mkdir -p "$work/system" "$work/project/scripts"
  cp "$setup" "$work/project/scripts/setup.sh"
  cat >"$work/project/scripts/packages.txt" <<'LIST'
# The list of the test.
one/one-old   fedora-one  arch-one  alpine-one  program:one
two           fedora-two  -         alpine-two  program:two
LIST
  for command in cat cut dirname env grep mkdir sed sh sort touch tr; do
    ln -s "$(command -v "$command")" "$work/system/$command"
  done
  for command; do
    printf '#!/bin/sh\necho "%s $*" >>"%s/called"\n' "$command" "$work" >"$work/system/$command"
    chmod +x "$work/system/$command"
  done
  : >"$work/called"
}

# answers COMMAND OUTPUT: the command prints that, too.
answers() {
  echo "$2" >>"$work/system/$1"
}

# changed: the file that build folders are older than, if it is there.
changed() {
  if [ -e "$work/project/build/setup/changed" ]; then echo changed; fi
}

# run_setup: its status and standard error, and what was called, in files.
run_setup() {
  status=0
  (cd "$work/project" && env -i PATH="$work/system" sh scripts/setup.sh) 2>"$work/message" || status=$?
}

message() {
  cat "$work/message"
}

missing="Packages are missing, and cannot be installed without apt-get and root or sudo. Install them by
  Debian, Ubuntu:  apt-get install one two 
  Fedora:          dnf install fedora-one fedora-two 
  Arch:            pacman -S arch-one 
  Alpine:          apk add alpine-one alpine-two "

new_system
run_setup
check "no apt-get: status" 1 "$status"
check "no apt-get: message" "$missing" "$(message)"
check "no apt-get: nothing is made" "" "$(ls "$work/project/build" 2>/dev/null)"

new_system one two
run_setup
check "all is there without apt-get: status" 0 "$status"
check "all is there without apt-get: message" "" "$(message)"
check "all is there now: build folders are older" changed "$(changed)"

new_system two
run_setup
check "one is there: message" \
  "  Debian, Ubuntu:  apt-get install one " "$(message | grep Debian)"

new_system apt-get apt-cache dpkg-query id
answers id "echo 1000"
answers dpkg-query "exit 1"
run_setup
check "apt-get, not root: status" 1 "$status"
check "apt-get, not root: message" "$missing" "$(message)"
check "apt-get, not root: it is not called" "" "$(grep '^apt-get' "$work/called" || true)"

new_system apt-get apt-cache dpkg-query id one two
answers id "echo 1000"
answers dpkg-query "exit 1"
run_setup
check "not root, but all is there: status" 0 "$status"

# The system knows the older name only.
new_system apt-get apt-cache dpkg-query id
answers id "echo 0"
answers dpkg-query "exit 1"
answers apt-cache '[ "$2" != one ]'
run_setup
check "root: status" 0 "$status"
check "root: what is installed" \
  "apt-get -qq -o DPkg::Lock::Timeout=300 install -y --no-install-recommends one-old two" \
  "$(grep '^apt-get.* install' "$work/called")"

check "root: build folders are older" changed "$(changed)"

rm "$work/project/build/setup/changed"
: >"$work/called"
run_setup
check "a second time: nothing is called" "" "$(cat "$work/called")"
touch -d "1 minute" "$work/project/scripts/packages.txt"
run_setup
check "after a change of the list: it is looked at" "dpkg-query" "$(sed -n '/^dpkg-query/{s/ .*//p;q}' "$work/called")"
check "after an installation: build folders are older" changed "$(changed)"
rm "$work/project/build/setup/changed"
answers dpkg-query "echo install ok installed"
sed -i 's/^exit 1$//' "$work/system/dpkg-query"
touch -d "2 minutes" "$work/project/scripts/packages.txt"
run_setup
check "nothing is missing: status" 0 "$status"
check "nothing is missing: build folders are as they were" "" "$(changed)"

new_system apt-get apt-cache dpkg-query id
answers id "echo 0"
answers dpkg-query "exit 1"
answers apt-get 'case $* in *install*) echo "E: no such package"; exit 100 ;; esac'
run_setup
check "apt-get fails: status" 1 "$status"
check "apt-get fails: its message is shown" "E: no such package" "$(message | grep '^E:')"
run_setup
check "apt-get fails: it is not remembered as done" 1 "$status"

# Of the project itself: nothing is run.
configured=$(cd "$(dirname "$setup")/.." && env -u MAKEFLAGS -u MAKELEVEL \
  make -n -W build/setup/changed build/native/build.ninja | grep -c 'cmake --preset native' || true)
check "make configures again what is older" 1 "$configured"

echo "$passed passed, $failed failed"
[ "$failed" = 0 ] && [ "$passed" -gt 0 ]
