#import "tests/support/PlatformFolders.hpp"

#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <dlfcn.h>

/// The platform's function, which this program's function of the same name hides.
template <typename Function> static Function *platforms(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

NSString *NSHomeDirectory()
{
    static auto *const original = platforms<decltype(NSHomeDirectory)>("NSHomeDirectory");
    if (!ReportedHome::current) {
        return original();
    }
    ++ReportedHome::current->requests;
    return ns(ReportedHome::current->path);
}

NSArray *NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory folder, NSSearchPathDomainMask domains, BOOL expand)
{
    static auto *const original =
        platforms<decltype(NSSearchPathForDirectoriesInDomains)>("NSSearchPathForDirectoriesInDomains");
    return NoDesktopFound::current && folder == NSDesktopDirectory ? @[] : original(folder, domains, expand);
}
