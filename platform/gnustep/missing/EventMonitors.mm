#import "platform/gnustep/missing/EventMonitors.h"

#import "platform/gnustep/missing/Blocks.hpp"
#import "platform/gnustep/Swizzling.hpp"
#import "platform/Retained.hpp"

#include <optional>

/// One installed monitor: the result of `addLocalMonitorForEventsMatchingMask:handler:`.
@interface LocalEventMonitor : NSObject {
@public
    NSEventMask _mask;
    std::optional<BlockCopy> _handler;
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
    const auto monitor = adopt([[LocalEventMonitor alloc] init]);
    monitor.get()->_mask = mask;
    monitor.get()->_handler.emplace(static_cast<const void *>(block));
    [installedMonitors() addObject:monitor.get()];
    return monitor.get();
}

+ (void)removeMonitor:(id)eventMonitor
{
    [installedMonitors() removeObjectIdenticalTo:eventMonitor];
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
    for (LocalEventMonitor *monitor in installedMonitors()) {
        if (event && (monitor->_mask & NSEventMaskFromType([event type]))) {
            event = ((NSEvent * (^)(NSEvent *)) monitor->_handler->get())(event);
        }
    }
    if (event) {
        [self sendEventPastLocalMonitors:event];
    }
}

@end
