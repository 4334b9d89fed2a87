#!/usr/bin/env python3
"""Runs unaligned_access with the alignment plugin: every unaligned access ends it, aligned ones do not.

    alignment_test.py PLUGIN EMULATOR... PROGRAM
"""
import os
import subprocess
import sys

PLUGIN, *COMMAND = sys.argv[1:]
ENVIRONMENT = {**os.environ, "QEMU_PLUGIN": f"file={PLUGIN}"}
# How each kind must be aligned.
KINDS = {"byte": 1, "read16": 2, "write16": 2, "read32": 4, "write32": 4, "multiple": 4, "pair": 8}
# The plugin's status, and the signal of QEMU's own checks.
ENDED = (86, -7, 128 + 7)


def main():
    wrong = []
    for kind, alignment in KINDS.items():
        for offset in (0, 1, 2, 4, 8):
            run = subprocess.run([*COMMAND, kind, str(offset)], env=ENVIRONMENT, text=True,
                                 capture_output=True)
            aligned = offset % alignment == 0
            fine = (run.returncode == 0 and run.stdout == "accessed\n" if aligned
                    else run.returncode in ENDED and run.stdout == "")
            if not fine:
                wrong.append(f"{kind} at {offset}: status {run.returncode}, {run.stdout!r}, {run.stderr!r}")
            elif not aligned and run.returncode == 86 and "unaligned access" not in run.stderr:
                wrong.append(f"{kind} at {offset}: no message")
    if wrong:
        sys.exit("\n".join(wrong))
    print(f"{len(KINDS)} kinds of access")


if __name__ == "__main__":
    main()
