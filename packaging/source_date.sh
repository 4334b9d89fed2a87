# shellcheck shell=sh disable=SC2154  # the script that sources it sets $root
# Sourced by the scripts beside it, with $root, the folder of the sources: exports SOURCE_DATE_EPOCH, which
# the files of packages have as their time. Unless it is set it is the time of the last commit, and in a
# source archive, which has no commits, that of its files.
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  if [ -e "$root/.git" ]; then
    SOURCE_DATE_EPOCH=$(git -c safe.directory='*' -C "$root" log -1 --format=%ct)
  else
    SOURCE_DATE_EPOCH=$(stat -c %Y "$root/VERSION")
  fi
fi
export SOURCE_DATE_EPOCH
