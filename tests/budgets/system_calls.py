#!/usr/bin/env python3
"""system_calls.py NM MODULE SOURCE OPTIONS

Writes, for each function that the module takes from other libraries, assembly that calls it on another stack, and
the linker's options that put it between. What a program then finds on its own stack, the module has used.
"""
import re
import subprocess
import sys

# Data, and what the compiler or the C library must find as it is.
LEFT_OUT = re.compile(r"__stack_chk_guard|_ZSt7nothrow|__tls_get_addr|__aeabi_(read_tp|atexit|unwind.*)|__cxa_finalize|"
                      r"__gmon_start__|_ITM_.*|__register_atfork|__errno_location")

HEAD = """// Written by system_calls.py.
__asm__(R"asm(
        .syntax unified
        .arm
        .text
@ Calls the function in ip: on the system's stack if the caller is on the measured one. Twelve words of
@ arguments on the stack move too.
CallOnSystemStack:
        push {r4, r5, r6, lr}
        mov r4, sp
        ldr r5, =measured_low
        ldr r5, [r5]
        cmp r4, r5
        blo Plain
        ldr r5, =measured_top
        ldr r5, [r5]
        cmp r4, r5
        bhs Plain
        ldr r5, =system_top
        ldr r5, [r5]
        sub r5, r5, #48
"""
TAIL = """        mov sp, r5
        blx ip
        mov sp, r4
        pop {r4, r5, r6, pc}
Plain:  pop {r4, r5, r6, lr}
        bx ip
        .ltorg

@ void RunOnStack(void* top, void (*work)(void*), void* context)
        .globl RunOnStack
        .type RunOnStack, %function
RunOnStack:
        push {r4, lr}
        mov r4, sp
        mov sp, r0
        mov r0, r2
        blx r1
        mov sp, r4
        pop {r4, pc}

"""


def main():
    """Reads the symbols and writes both files."""
    nm, module, source, options = sys.argv[1:]
    listing = subprocess.run([nm, "-D", "--undefined-only", module], check=True, capture_output=True, text=True).stdout
    names = sorted({line.split()[-1].split("@")[0] for line in listing.splitlines() if line.split()[0] in "Uw"})
    names = [name for name in names if not LEFT_OUT.fullmatch(name)]
    if len(names) < 40:
        sys.exit(f"{module} needs only {len(names)} functions")
    with open(source, "w", encoding="utf-8") as file:
        file.write(HEAD)
        for word in range(12):
            file.write(f"        ldr r6, [r4, #{16 + 4 * word}]\n        str r6, [r5, #{4 * word}]\n")
        file.write(TAIL)
        for name in names:
            file.write(f"        .globl __wrap_{name}\n        .type __wrap_{name}, %function\n__wrap_{name}:\n"
                       f"        ldr ip, =__real_{name}\n        b CallOnSystemStack\n        .ltorg\n")
        file.write('        .thumb\n)asm");\n')
    with open(options, "w", encoding="utf-8") as file:
        file.write("".join(f"-Wl,--wrap={name}\n" for name in names))


main()
