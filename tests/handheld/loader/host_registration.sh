#!/bin/sh
# host_registration.sh HOST MODULE FOLDER: the host registers and unregisters the handheld's module, and has
# its classes only in between.
set -u
host=$1 module=$2 folder=$3
rm -rf "$folder" && mkdir -p "$folder" && cd "$folder" || exit 1
export MIROLTA_REGISTRY="$folder/registry.reg"
status=0
fail() {
  echo "$*" >&2
  status=1
}
classes='HashObject Symmetric Number RSA ToviStreamDigest ToviStreamCrypt'
create() {
  for class in $classes; do
    "$host" -e "new ActiveXObject('Vardeko.crypt.$class')" >/dev/null 2>errors
    created=$?
    [ "$created" -eq "$1" ] || fail "$2, creating $class: status $created; $(cat errors)"
  done
}
create 1 "before registration"
"$host" --register "$module" >/dev/null || fail "--register failed"
create 0 "registered"
[ "$(grep -c 'InprocServer32\]' registry.reg)" -eq 12 ] || fail "not 12 classes in the registry"
grep -qF "$module" registry.reg || fail "the registry does not name $module"
"$host" --list >list || fail "--list failed"
for class in $classes; do
  grep -q "Vardeko.crypt.$class\b" list || fail "--list has no $class"
  "$host" --describe "Vardeko.crypt.$class" >description || fail "--describe $class failed"
  grep -q . description || fail "--describe $class says nothing"
done
# The device's automation library removes no type library: its entry stays, and the host says so.
"$host" --unregister "$module" >/dev/null 2>errors
unregistered=$?
if [ "$unregistered" -ne 1 ] || ! grep -q 'still registered in HKEY_CLASSES_ROOT.TypeLib' errors; then
  fail "--unregister: status $unregistered; $(cat errors)"
fi
create 1 "after unregistration"
if grep -q 'InprocServer32\]' registry.reg; then fail "classes are left in the registry"; fi
exit $status
