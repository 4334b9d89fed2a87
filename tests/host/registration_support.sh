# Sourced by tests of the host's registrations, which name $host and $registry.
# shellcheck shell=sh
fails=0

# expect STATUS PATTERN ARGUMENTS...: the exit status, and a pattern of both outputs
expect() {
  status=$1 pattern=$2
  shift 2
  said=$("$host" "$@" 2>&1)
  got=$?
  if [ $got -ne "$status" ] || ! printf '%s\n' "$said" | grep -q "$pattern"; then
    echo "$*: status $got, expected $status and '$pattern': $said"
    fails=1
  fi
}
# holds COUNT PATTERN: the number of lines of the registry that match the pattern
holds() {
  found=$(grep -c "$2" "$registry")
  if [ "$found" -ne "$1" ]; then
    echo "$found lines match $2, expected $1"
    fails=1
  fi
}
