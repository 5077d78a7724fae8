// Message sends with the interface of Apple's runtime: a jump to the method with the caller's registers and stack.
// GNU's runtime only looks up methods. Which registers hold arguments and results: System V x86-64 psABI, 3.2.3.

// Defines a send that gets the method from `lookup`, with receiver (or super reference) and selector as its arguments.
// `super` is the register of a super reference. The method gets the receiver, with which the reference begins.
.macro SEND name, lookup, receiver, selector, super
    .globl \name
\name:
    .irp register, rdi, rsi, rdx, rcx, r8, r9, rax
    push %\register
    .endr
    sub $128, %rsp
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7
    movaps %xmm\number, 16 * \number(%rsp)
    .endr
    mov \receiver, %rdi
    mov \selector, %rsi
    call \lookup@PLT
    mov %rax, %r11
    .irp number, 0, 1, 2, 3, 4, 5, 6, 7
    movaps 16 * \number(%rsp), %xmm\number
    .endr
    add $128, %rsp
    .irp register, rax, r9, r8, rcx, rdx, rsi, rdi
    pop %\register
    .endr
    .ifnb \super
    mov (\super), \super
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
SEND sendToObject, objc_msg_lookup, %rdi, %rsi
// The first argument is the structure's address. If the receiver is nil, the caller clears the structure.
SEND sendMessageForStructure, objc_msg_lookup, %rsi, %rdx
SEND sendSuper, lookUpSuperMethod, %rdi, %rsi, %rdi

    .section .note.GNU-stack, "", @progbits
