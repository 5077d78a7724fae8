#import "platform/gnustep/missing/EventMonitors.h"

#import "platform/gnustep/missing/Blocks.hpp"
#import "platform/gnustep/Swizzling.hpp"

#include <memory>

/// One installed monitor: the result of `addLocalMonitorForEventsMatchingMask:handler:`.
@interface LocalEventMonitor : NSObject {
@public
    NSEventMask _mask;
    std::shared_ptr<const BlockCopy> _handler; // Empty once the monitor has been removed.
}
@end

@implementation LocalEventMonitor
@end

namespace
{

/// The installed monitors, in the order of their installation.
NSMutableArray *installedMonitors()
{
    static NSMutableArray *monitors = [[NSMutableArray alloc] init];
    return monitors;
}

}

@implementation NSEvent (LocalMonitors)

+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(NSEvent * (^)(NSEvent *event))block
{
    LocalEventMonitor *monitor = [[[LocalEventMonitor alloc] init] autorelease];
    monitor->_mask = mask;
    monitor->_handler = std::make_shared<const BlockCopy>(static_cast<const void *>(block));
    [installedMonitors() addObject:monitor];
    return monitor;
}

+ (void)removeMonitor:(id)eventMonitor
{
    if (![installedMonitors() containsObject:eventMonitor]) {
        return;
    }
    [[eventMonitor retain] autorelease];
    [installedMonitors() removeObjectIdenticalTo:eventMonitor];
    static_cast<LocalEventMonitor *>(eventMonitor)->_handler.reset();
}

@end

@interface NSApplication (LocalMonitors)
@end

@implementation NSApplication (LocalMonitors)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(sendEvent:), @selector(sendEventPastLocalMonitors:));
}

/// Replaces `sendEvent:`. The application's loop and its modal sessions dispatch every event through it.
- (void)sendEventPastLocalMonitors:(NSEvent *)event
{
    // A copy, since a handler may add and remove monitors.
    for (LocalEventMonitor *monitor in [NSArray arrayWithArray:installedMonitors()]) {
        // Kept during the call, because the handler may remove its own monitor.
        const auto handler = monitor->_handler;
        if (!handler || !(monitor->_mask & NSEventMaskFromType([event type]))) {
            continue;
        }
        event = ((NSEvent * (^)(NSEvent *)) handler->get())(event);
        if (!event) {
            return;
        }
    }
    [self sendEventPastLocalMonitors:event];
}

@end
