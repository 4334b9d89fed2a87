#!/bin/sh
# hpp_compilers.sh SOURCE INCLUDE: a program with mirolta.hpp compiles without warnings by the compilers that
# there are, with INCLUDE as the only folder of headers.
set -eu
source=$1 include=$2
warnings="-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Woverloaded-virtual -Wextra-semi -Werror"
number=0

# compiles COMPILER OPTION...: skipped, by name, where there is no such compiler.
compiles() {
  if ! command -v "$1" >/dev/null; then
    echo "skipped: $*"
    return
  fi
  # shellcheck disable=SC2086 # several words
  "$@" $warnings -I "$include" -fsyntax-only "$source"
  echo "compiled: $*"
  number=$((number + 1))
}

if [ -e /usr/include/X11/Xlib.h ]; then
  # Its macros are in the way of many names.
  compiles g++ -std=c++20 -include X11/Xlib.h -include X11/Xutil.h
fi
compiles clang++ -std=c++17
compiles x86_64-w64-mingw32-g++ -std=c++17 -include windows.h
compiles i686-w64-mingw32-g++ -std=c++20
echo "$number compilers"
[ "$number" -gt 0 ]
