#!/bin/sh
# budgets.sh BUILD HANDHELD: measures what the module of a build takes of a device, and compares it with the
# budgets: the file, the stack, computed and measured, and the heap; modules without some classes; file and
# stack of the DLL in the build folder HANDHELD. All figures are printed; it fails if one of them exceeds its
# budget.
set -u
build=$1
handheld=$2
root=$(cd "$(dirname "$0")/.." && pwd)
status=0

run() {
  qemu-arm -L /usr/arm-linux-gnueabi -E LD_LIBRARY_PATH="$build/lib" "$build/tests/$@"
}

export MIROLTA_REGISTRY="$build/registry"
rm -f "$MIROLTA_REGISTRY"
python3 -B "$root/tests/budgets/size_test.py" "$root/scripts" "$root/tests/budgets" "$build/size_test" || status=1
# Bytes of numbers for arithmetic, of numbers for powers, and of an RSA key.
run stack_use 20000 200 128 >"$build/stack_use.txt" || status=1
python3 -B "$root/scripts/size.py" "$build" --measured "$build/stack_use.txt" || status=1
echo
echo "heap, in bytes"
run heap_use || status=1
echo
python3 -B "$root/scripts/size.py" "$handheld" || status=1
echo
"$root/tests/budgets/left_out_test.sh" "$root" "$build-left-out" || status=1
exit $status
