/// See stdlib.h.
#pragma once

#include <stddef.h>

extern "C" {
void *memcpy(void *, const void *, size_t);
int memcmp(const void *, const void *, size_t);
}
