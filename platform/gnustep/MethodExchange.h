/// The way in which this folder adds to what a method of GNUstep's does.
#pragma once

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

/// Swaps the implementations of two instance methods of a class, so that the platform's callers reach `addition`, which
/// in turn reaches the platform's own implementation by sending itself `addition`. Called from `+load`: the libraries'
/// classes are there by then. Ends the program when the class lacks either method, since the platform is then not the
/// one that this folder was written for.
inline void exchangeInstanceMethods(Class changed, SEL original, SEL addition)
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
