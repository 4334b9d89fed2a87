#!/bin/sh
# Prints the mirror of Debian that this machine's apt uses.
set -eu
# shellcheck disable=SC2016  # apt-get expands them
mirror=$(apt-get indextargets --format '$(REPO_URI) $(LABEL) $(COMPONENT)' 'Created-By: Packages' |
  awk '$2 == "Debian" && $3 == "main" { print $1; exit }')
[ -n "$mirror" ] || {
  echo "the apt sources of this machine name no mirror of Debian" >&2
  exit 1
}
echo "$mirror"
