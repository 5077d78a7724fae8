// Observes what is over before anyone can ask, and passes each call on to the platform unchanged: the event monitors
// that the application installs and removes, each a line in the file that the environment names; and the pointer's
// events.
#include "Witness.hpp"

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

PointerEvents counted;

void exchange(Method original, Method witnessed)
{
    if (original) {
        method_exchangeImplementations(original, witnessed);
    }
}

void exchange_for_class(SEL original, SEL witnessed)
{
    exchange(class_getClassMethod([NSEvent class], original), class_getClassMethod([NSEvent class], witnessed));
}

} // namespace

const PointerEvents &pointer_events()
{
    return counted;
}

@interface NSEvent (Witness)
@end

@implementation NSEvent (Witness)

+ (void)load
{
    if (!std::getenv(file_variable)) {
        return;
    }
    exchange_for_class(
        @selector(addLocalMonitorForEventsMatchingMask:handler:), @selector(witnessedAddMonitorForMask:handler:));
    exchange_for_class(@selector(removeMonitor:), @selector(witnessedRemoveMonitor:));
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

@interface NSWindow (Witness)
@end

@implementation NSWindow (Witness)

+ (void)load
{
    if (std::getenv(file_variable)) {
        exchange(class_getInstanceMethod([NSWindow class], @selector(sendEvent:)),
            class_getInstanceMethod([NSWindow class], @selector(witnessedSendEvent:)));
    }
}

// A press is counted before it is passed on: a button keeps it until the pointer's button goes up.
- (void)witnessedSendEvent:(NSEvent *)event
{
    counted.presses += [event type] == NSLeftMouseDown;
    counted.moves += [event type] == NSMouseMoved;
    [self witnessedSendEvent:event];
}

@end
