// Message sends with the interface of Apple's runtime: a jump to the method with the caller's registers and stack.
// GNU's runtime only looks up methods. Which registers hold arguments and results: System V x86-64 psABI, 3.2.3.

// Defines a send that gets the method from `lookup`, with receiver (or super reference) and selector as its arguments.
// With `super`, the method gets the receiver instead of the super reference. The reference begins with the receiver.
.macro SEND name, lookup, super
    .globl \name
\name:
    .irp register, rdi, rsi, rdx, rcx, r8, r9, rax
    push %\register
    .endr
    sub $64, %rsp
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7
    movsd %xmm\number, 8 * \number(%rsp)
    .endr
    call \lookup@PLT
    mov %rax, %r11
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7
    movsd 8 * \number(%rsp), %xmm\number
    .endr
    add $64, %rsp
    .irp register, rax, r9, r8, rcx, rdx, rsi, rdi
    pop %\register
    .endr
    .ifnb \super
    mov (%rdi), %rdi
    .endif
    jmp *%r11
.endm

    .text
    .globl sendMessage
sendMessage:
    test %rdi, %rdi
    jnz sendToObject
    xor %eax, %eax
    xor %edx, %edx
    pxor %xmm0, %xmm0
    pxor %xmm1, %xmm1
    ret
SEND sendToObject, objc_msg_lookup
SEND sendSuper, lookUpSuperMethod, super

    .section .note.GNU-stack, "", @progbits
