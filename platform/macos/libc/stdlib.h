/// What libc++'s headers ask of the system's C library before they compile for a Mac on Debian.
///
/// Declared as Darwin declares it, and only as far as libc++ names it while it compiles what the product includes.
/// Declaring a function lets nothing link: what the executable may bind to is listed in stubs/symbols.txt.
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
