// Records events that are over before a snapshot can show them: each event monitor that the application installs or
// removes, as a line in the file that the environment names, and the number of pointer events. Each call is passed on
// to the platform unchanged.
#include "Witness.hpp"

#import <AppKit/AppKit.h>
#include <cstdlib>
#include <fstream>
#import <objc/runtime.h>

namespace
{

// The path of the file; without it no method is wrapped.
constexpr const char *fileVariable = "PRACTICE_MAC_WITNESS";

void writeLine(const char *what, id monitor)
{
    if (const char *path = std::getenv(fileVariable)) {
        std::ofstream(path, std::ios::app) << what << ' ' << static_cast<void *>(monitor) << '\n';
    }
}

PointerEvents counted;

void exchange(Method original, Method witnessed)
{
    if (original) {
        method_exchangeImplementations(original, witnessed);
    }
}

void exchangeForClass(SEL original, SEL witnessed)
{
    exchange(class_getClassMethod([NSEvent class], original), class_getClassMethod([NSEvent class], witnessed));
}

} // namespace

const PointerEvents &pointerEvents()
{
    return counted;
}

@interface NSEvent (Witness)
@end

@implementation NSEvent (Witness)

+ (void)load
{
    if (!std::getenv(fileVariable)) {
        return;
    }
    exchangeForClass(
        @selector(addLocalMonitorForEventsMatchingMask:handler:), @selector(witnessedAddMonitorForMask:handler:));
    exchangeForClass(@selector(removeMonitor:), @selector(witnessedRemoveMonitor:));
}

// Each method is exchanged with the platform's, so these messages call the platform's own methods.
+ (id)witnessedAddMonitorForMask:(unsigned long long)mask handler:(id)handler
{
    id monitor = [self witnessedAddMonitorForMask:mask handler:handler];
    writeLine("added", monitor);
    return monitor;
}

+ (void)witnessedRemoveMonitor:(id)monitor
{
    writeLine("removed", monitor);
    [self witnessedRemoveMonitor:monitor];
}

@end

@interface NSWindow (Witness)
@end

@implementation NSWindow (Witness)

+ (void)load
{
    if (std::getenv(fileVariable)) {
        exchange(class_getInstanceMethod([NSWindow class], @selector(sendEvent:)),
            class_getInstanceMethod([NSWindow class], @selector(witnessedSendEvent:)));
    }
}

// A press is counted before it is passed on, because a button returns from it only when the pointer's button goes up.
- (void)witnessedSendEvent:(NSEvent *)event
{
    counted.presses += [event type] == NSLeftMouseDown;
    counted.moves += [event type] == NSMouseMoved;
    [self witnessedSendEvent:event];
}

@end
