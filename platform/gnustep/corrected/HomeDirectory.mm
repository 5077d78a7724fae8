// GNUstep reads the password database at each `NSHomeDirectory()`, and returns nil if no descriptor is free.
// This file is unnecessary when GNUstep keeps the home directory once it has found it.
#import <Foundation/Foundation.h>

#include <dlfcn.h>

/// The user's home directory, as GNUstep finds it at the first call. If a later call returned nil, a part of the
/// removal would work in another folder. This definition hides GNUstep's; a program can hide this one, as some tests
/// do.
extern "C" __attribute__((weak)) NSString *NSHomeDirectory()
{
    static NSString *home;
    if (!home) {
        static auto *const original =
            reinterpret_cast<decltype(NSHomeDirectory) *>(dlsym(RTLD_NEXT, "NSHomeDirectory"));
        home = [original() copy];
    }
    return home;
}
