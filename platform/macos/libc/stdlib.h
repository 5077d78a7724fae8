/// The declarations of the C library that libc++'s headers need to compile for a Mac on Debian.
///
/// They are Darwin's declarations, only those that libc++ uses for the headers that the product includes. A declaration
/// alone does not link: stubs/symbols.txt lists the symbols that the executable may use.
#pragma once

#include <stddef.h>

typedef struct {
    long quot;
    long rem;
} ldiv_t;

typedef struct {
    long long quot;
    long long rem;
} lldiv_t;

extern "C" {
ldiv_t ldiv(long, long);
lldiv_t lldiv(long long, long long);
}
