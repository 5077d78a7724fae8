/// See stdlib.h.
#pragma once

#define EINTR 4
#define errno (*__error())

extern "C" int *__error();
