/// Adds to a method of GNUstep's.
#pragma once

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

/// Exchanges the implementations of two instance methods of a class. The platform's callers then reach `addition`, and
/// `addition` reaches the platform's own implementation by sending itself `addition`.
///
/// Call it from `+load`; the libraries' classes are loaded by then. If the class lacks one of the methods, this is
/// another version of GNUstep, and the program ends with a message on standard error.
inline void swizzleInstanceMethod(Class changed, SEL original, SEL addition)
{
    const Method originalMethod = class_getInstanceMethod(changed, original);
    const Method additionMethod = class_getInstanceMethod(changed, addition);
    if (!originalMethod || !additionMethod) {
        fprintf(stderr, "This program needs another GNUstep: %s has no method %s.\n", class_getName(changed),
            sel_getName(original));
        abort();
    }
    method_exchangeImplementations(originalMethod, additionMethod);
}
