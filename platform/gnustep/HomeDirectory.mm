#import <Foundation/Foundation.h>

#include <dlfcn.h>

/// The user's home directory, as the platform finds it when it is first asked for. GNUstep's own reads the password
/// database at each call and answers nil when that fails, with all descriptors in use for instance: half of a removal
/// would then take place in another folder. This definition hides GNUstep's; a program may in turn hide it.
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
