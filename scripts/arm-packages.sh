#!/bin/sh
# arm-packages.sh PRESET...: unpacks what each ARM build links into its folder below build/packages. A
# preset may also be called by Debian's name of its architecture.
set -eu
cd "$(dirname "$0")/.."
for preset; do
  case $preset in arm) architecture=armel ;; *) architecture=$preset ;; esac
  scripts/target-packages.sh "$architecture" "build/packages/$architecture" \
    libssl-dev libgmp-dev duktape-dev libedit-dev libstdc++6
done
