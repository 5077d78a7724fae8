// Message sends with the interface of Apple's runtime: a jump to the method with the caller's registers and stack.
// GNU's runtime only looks up methods. Which registers hold arguments and results: Arm's AAPCS64, 6.8 and 6.9.

// Defines a send that gets the method from `lookup`, with receiver (or super reference) and selector as its arguments.
// With `super`, the method gets the receiver instead of the super reference. The reference begins with the receiver.
.macro SEND name, lookup, super
    .globl \name
\name:
    stp x29, x30, [sp, #-16]!
    stp x0, x1, [sp, #-208]!
    stp x2, x3, [sp, #16]
    stp x4, x5, [sp, #32]
    stp x6, x7, [sp, #48]
    str x8, [sp, #64] // The address for a returned structure.
    stp q0, q1, [sp, #80]
    stp q2, q3, [sp, #112]
    stp q4, q5, [sp, #144]
    stp q6, q7, [sp, #176]
    bl \lookup
    mov x16, x0
    ldp q6, q7, [sp, #176]
    ldp q4, q5, [sp, #144]
    ldp q2, q3, [sp, #112]
    ldp q0, q1, [sp, #80]
    ldr x8, [sp, #64]
    ldp x6, x7, [sp, #48]
    ldp x4, x5, [sp, #32]
    ldp x2, x3, [sp, #16]
    ldp x0, x1, [sp], #208
    ldp x29, x30, [sp], #16
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
    .irp number, 0, 1, 2, 3
    movi d\number, #0
    .endr
    ret
SEND sendToObject, lookUpMethod
SEND sendSuper, lookUpMethodOfSuper, super

    .section .note.GNU-stack, "", %progbits
