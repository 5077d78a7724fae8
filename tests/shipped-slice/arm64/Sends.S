// Message sends with the interface of Apple's runtime: a jump to the method with the caller's registers and stack.
// GNU's runtime only looks up methods. Which registers hold arguments and results: Arm's AAPCS64, 6.8 and 6.9.

// Defines a send that gets the method from `lookup`, with receiver (or super reference) and selector as its arguments.
// With `super`, the method gets the receiver instead of the super reference. The reference begins with the receiver.
.macro SEND name, lookup, super
    .globl \name
\name:
    stp x29, x30, [sp, #-144]!
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7
    str x\number, [sp, #16 + 8 * \number]
    str d\number, [sp, #80 + 8 * \number]
    .endr
    bl \lookup
    mov x16, x0
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7
    ldr x\number, [sp, #16 + 8 * \number]
    ldr d\number, [sp, #80 + 8 * \number]
    .endr
    ldp x29, x30, [sp], #144
    .ifnb \super
    ldr x0, [x0]
    .endif
    br x16
.endm

    .text
    .globl sendMessage
sendMessage:
    cbnz x0, sendToObject
    mov x1, #0
    movi d0, #0
    movi d1, #0
    ret
SEND sendToObject, lookUpMethod
SEND sendSuper, lookUpSuperMethod, super

    .section .note.GNU-stack, "", %progbits
