"""Compares what a script prints on two hosts: the module of this machine and that of the handheld.

    compare_hosts.py NATIVE_HOST HANDHELD_HOST LEAST_LINES SCRIPT ARGUMENT...

The output must be the same, have at least so many lines, and name every class.
"""
import os
import subprocess
import sys

CLASSES = ("HashObject", "Symmetric", "Number", "RSA", "ToviStreamDigest", "ToviStreamCrypt")


def lines_of(host: str, registry: str, arguments: list[str]) -> list[str]:
    environment = dict(os.environ, MIROLTA_REGISTRY=registry, TZ="UTC", LC_ALL="C.UTF-8")
    run = subprocess.run([host, *arguments], env=environment, capture_output=True, check=False)
    if run.returncode != 0 or run.stderr:
        sys.exit(f"{host}: status {run.returncode}\n{run.stderr.decode()}")
    return run.stdout.decode().splitlines()


def main() -> None:
    native, handheld, least, *arguments = sys.argv[1:]
    registry = os.environ["MIROLTA_REGISTRY"]
    # The native host has its module beside itself; the handheld's is registered.
    expected = lines_of(native, registry + ".none", arguments)
    found = lines_of(handheld, registry, arguments)
    if len(expected) < int(least):
        sys.exit(f"only {len(expected)} lines to compare")
    for name in CLASSES:
        if not any(f"Vardeko.crypt.{name}" in line for line in expected):
            sys.exit(f"no case of {name}")
    for number, (one, other) in enumerate(zip(expected, found), 1):
        if one != other:
            sys.exit(f"line {number} differs\nhere:     {one[:300]}\nhandheld: {other[:300]}")
    if len(expected) != len(found):
        sys.exit(f"{len(expected)} lines here, {len(found)} by the handheld's module")
    failures = sum(": error " in line for line in expected)
    print(f"{len(expected)} lines are the same, {failures} of them errors")


if __name__ == "__main__":
    main()
