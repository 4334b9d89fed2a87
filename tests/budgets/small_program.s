@ A program whose deepest chain of calls is known: size_test.py has the answer. The frames are those that
@ .stack_sizes states; the instructions matter only as calls.
        .syntax unified
        .thumb

        .macro function name, frame
        .section .text.\name,"ax",%progbits
        .globl \name
        .type \name, %function
        .thumb_func
\name:
.Lbegin_\name:
        .section .stack_sizes,"o",%progbits,.text.\name
        .long .Lbegin_\name
        .uleb128 \frame
        .section .text.\name
        .endm

        function Entry, 16             @ 16 + 40 + 100 + 3 * 24 + 8
        bl Middle
        bl Leaf
        bx lr

        function Middle, 40
        ldr r3, [r0]
        blx r3                         @ one of kTable
        bx lr

        function Leaf, 8
        bx lr

        function FirstOfTable, 60
        bl Leaf
        bx lr

        function SecondOfTable, 100
        b.w Recursive

        function Recursive, 24
        bl Recursive
        bl Leaf
        bl memcpy                      @ not of the program
        bx lr

        function TakesCallback, 32     @ 32 + 12 + 200
        ldr r0, =Callback
        bl RunCallback
        bx lr
        .ltorg

        function RunCallback, 12
        blx r0
        bx lr

        function Callback, 200
        bx lr

        .section .data.rel.ro.kTable,"aw",%progbits
        .type kTable, %object
        .globl kTable
kTable: .word FirstOfTable
        .word SecondOfTable
        .size kTable, 8

        .section .rodata.kConstants,"a",%progbits
        .type kConstants, %object
        .globl kConstants
kConstants: .space 100
        .size kConstants, 100

        .section .bss.scratch,"aw",%nobits
        .type scratch, %object
        .globl scratch
scratch: .space 64
        .size scratch, 64
