/// The language runtime's own types, as <objc/objc.h> declares them.
#pragma once

typedef struct objc_class *Class;

struct objc_object {
    Class _Nonnull isa;
};

typedef struct objc_object *id;
typedef struct objc_selector *SEL;

// One signed byte on Intel, a truth value of the language on Arm: the compiler knows which.
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif

#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
#define Nil nullptr
