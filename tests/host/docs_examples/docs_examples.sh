#!/bin/sh
# docs_examples.sh HOST PROJECT SCRATCH: runs each script of docs/*.md and the first one of README.md
# on HOST and compares its output with the page.
#
# A script is a code block of language js; the next block, of language text, has its standard output.
# It must end with status 0 and print nothing on standard error. The page of a class, whose name
# starts with a capital letter, has at least one script. Scripts of a page run in one empty folder.
set -u

host=$1 project=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
failures=0
scripts=0

failed() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# split PAGE FOLDER MOST: writes FOLDER/N.js and FOLDER/N.text; reports scripts without output.
split() {
  awk -v folder="$2" -v most="$3" '
    function loose() { print FILENAME ":" line ": a script without its output"; bad = 1 }
    /^```/ {
      if (inside) { inside = 0; close(file); file = ""; next }
      inside = 1
      file = ""
      if ($0 == "```js") {
        if (waits) loose()
        if (count >= most) { waits = 0; next }
        waits = 1
        line = FNR
        file = folder "/" ++count ".js"
      } else if (waits) {
        if ($0 != "```text") loose()
        waits = 0
        file = folder "/" count ".text"
      }
      if (file != "") printf "" > file
      next
    }
    file != "" { print > file }
    END {
      if (waits) loose()
      if (inside) { print FILENAME ": a block without end"; bad = 1 }
      exit bad
    }' "$1" || failed "$1"
}

check_page() {
  page=$1
  name=$(basename "$page" .md)
  folder=$scratch/$name
  mkdir -p "$folder/work"
  split "$page" "$folder" "$2"
  case $name in
    README | [!A-Z]*) ;;
    *) [ -e "$folder/1.js" ] || failed "$page: the page of a class without an example" ;;
  esac
  for script in "$folder"/*.js; do
    [ -e "$script" ] || continue
    scripts=$((scripts + 1))
    expected=${script%.js}.text
    (cd "$folder/work" && "$host" "$script") > "$folder/out" 2> "$folder/err"
    status=$?
    [ $status -eq 0 ] || failed "$page, $(basename "$script"): status $status"
    [ ! -s "$folder/err" ] || failed "$page, $(basename "$script"): $(cat "$folder/err")"
    diff -u "$expected" "$folder/out" || failed "$page, $(basename "$script"): prints other text"
  done
}

check_page "$project/README.md" 1
for page in "$project"/docs/*.md; do
  check_page "$page" 1000
done

[ -e "$scratch/README/1.js" ] || failed "README.md has no script"
echo "$scripts scripts run"
[ $failures -eq 0 ]
