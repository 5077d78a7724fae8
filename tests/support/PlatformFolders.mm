#import "tests/support/PlatformFolders.hpp"

#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <dlfcn.h>
#include <optional>

namespace
{

std::optional<std::string> reportedHome;
int timesHomeWasAsked;
bool noDesktop;

/// The platform's function, which this program's function of the same name hides.
template <typename Function> Function *platforms(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}

NSString *NSHomeDirectory()
{
    ++timesHomeWasAsked;
    static auto *const original = platforms<decltype(NSHomeDirectory)>("NSHomeDirectory");
    return reportedHome ? ns(*reportedHome) : original();
}

NSArray *NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory folder, NSSearchPathDomainMask domains, BOOL expand)
{
    static auto *const original =
        platforms<decltype(NSSearchPathForDirectoriesInDomains)>("NSSearchPathForDirectoriesInDomains");
    return noDesktop && folder == NSDesktopDirectory ? @[] : original(folder, domains, expand);
}

ReportedHome::ReportedHome(const std::string &path)
{
    reportedHome = path;
    timesHomeWasAsked = 0;
}

ReportedHome::~ReportedHome()
{
    reportedHome.reset();
}

int ReportedHome::timesAsked() const
{
    return timesHomeWasAsked;
}

NoDesktopFound::NoDesktopFound()
{
    noDesktop = true;
}

NoDesktopFound::~NoDesktopFound()
{
    noDesktop = false;
}
