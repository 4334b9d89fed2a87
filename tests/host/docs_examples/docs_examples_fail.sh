#!/bin/sh
# docs_examples_fail.sh HOST SCRATCH: docs_examples.sh passes a good page and fails each bad one.
set -u

host=$1 scratch=$2
here=$(dirname "$0")
rm -rf "$scratch"
failures=0

# page NAME EXPECTED-STATUS: a project whose only page docs/NAME is standard input.
page() {
  rm -rf "$scratch"
  mkdir -p "$scratch/project/docs"
  cat > "$scratch/project/docs/$1"
  printf '%s\n' '```js' 'WScript.Echo(1);' '```' '```text' '1' '```' > "$scratch/project/README.md"
  sh "$here/docs_examples.sh" "$host" "$scratch/project" "$scratch/run" > "$scratch/said" 2>&1
  status=$?
  if [ $status -ne "$2" ]; then
    echo "FAILED: status $status where $2 was expected"
    cat "$scratch/said"
    failures=1
  fi
}

page Good.md 0 << 'END'
```js
WScript.Echo("a");
```
It prints
```text
a
```
```
no script
```
END
page plain.md 0 << 'END'
No script.
END
page Class.md 1 << 'END'
The page of a class without an example.
END
page Other.md 1 << 'END'
```js
WScript.Echo("a");
```
```text
b
```
END
page Loose.md 1 << 'END'
```js
WScript.Echo("a");
```
END
page Quiet.md 1 << 'END'
```js
WScript.StdErr.WriteLine("a");
```
```text
```
END
page Status.md 1 << 'END'
```js
WScript.Quit(3);
```
```text
```
END
exit $failures
