/// See stdlib.h.
#pragma once

#define EOF (-1)

extern "C" int remove(const char *);
