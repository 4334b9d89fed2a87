#!/bin/sh
# Builds the wheel of the Python package: it has no compiled code and runs on every system that has the
# libraries.
#
#   python.sh [OUTPUT [WORK]]
#
# OUTPUT is build/package by default, WORK, which is emptied, build/package-python. The bytes depend on the
# sources and on their time (source_date.sh). Needs setuptools and wheel, of the first Python that has them:
# PYTHON, python3, /usr/bin/python3.
set -eu

cd "$(dirname "$0")/.."
root=$(pwd)
absolute() {
  mkdir -p "$1" && (cd "$1" && pwd)
}
rm -rf "${2:-build/package-python}"
output=$(absolute "${1:-build/package}")
work=$(absolute "${2:-build/package-python}")

for python in "${PYTHON:-python3}" python3 /usr/bin/python3; do
  if "$python" -c 'import setuptools, wheel' 2>/dev/null; then break; fi
  python=
done
[ -n "$python" ] || {
  echo "python.sh needs a Python with setuptools and wheel (python3-setuptools, python3-wheel)" >&2
  exit 1
}
. "$root/packaging/source_date.sh"

# A copy, which the build writes into, with the same permissions everywhere.
umask 022
mkdir -p "$work/python/mirolta"
cp python/mirolta/*.py python/mirolta/py.typed "$work/python/mirolta"
cp python/pyproject.toml python/setup.py LICENSE "$work/python"
cp VERSION "$work"
chmod -R u=rwX,go=rX "$work"

rm -f "$output"/mirolta-*.whl
cd "$work/python"
"$python" -B -c 'import sys, setuptools.build_meta as backend; backend.build_wheel(sys.argv[1])' \
  "$output" >"$work/build.log" 2>&1 || {
  cat "$work/build.log" >&2
  exit 1
}
