// What is over before anyone can ask: the event monitors that the application installs and removes, the last one while
// it ends. When the environment names a file, each call adds a line to it and goes on to the platform unchanged.
#import <AppKit/AppKit.h>
#include <cstdlib>
#include <fstream>
#import <objc/runtime.h>

namespace
{

// The path of the file to write to; without it no method is wrapped.
constexpr const char *file_variable = "PRACTICE_MAC_WITNESS";

void write_line(const char *what, id monitor)
{
    if (const char *path = std::getenv(file_variable)) {
        std::ofstream(path, std::ios::app) << what << ' ' << static_cast<void *>(monitor) << '\n';
    }
}

void exchange(SEL original, SEL witnessed)
{
    if (Method method = class_getClassMethod([NSEvent class], original)) {
        method_exchangeImplementations(method, class_getClassMethod([NSEvent class], witnessed));
    }
}

} // namespace

@interface NSEvent (Witness)
@end

@implementation NSEvent (Witness)

+ (void)load
{
    if (!std::getenv(file_variable)) {
        return;
    }
    exchange(@selector(addLocalMonitorForEventsMatchingMask:handler:), @selector(witnessedAddMonitorForMask:handler:));
    exchange(@selector(removeMonitor:), @selector(witnessedRemoveMonitor:));
}

// Both names are exchanged with the platform's, so each of these messages reaches the platform's own method.
+ (id)witnessedAddMonitorForMask:(unsigned long long)mask handler:(id)handler
{
    id monitor = [self witnessedAddMonitorForMask:mask handler:handler];
    write_line("added", monitor);
    return monitor;
}

+ (void)witnessedRemoveMonitor:(id)monitor
{
    write_line("removed", monitor);
    [self witnessedRemoveMonitor:monitor];
}

@end
