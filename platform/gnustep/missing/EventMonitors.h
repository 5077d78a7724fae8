/// GNUstep 0.29 has no local event monitors: these have AppKit's names and meaning. This file is unnecessary when
/// GNUstep has them.
#pragma once

#import <AppKit/AppKit.h>

@interface NSEvent (LocalMonitors)

/// Installs a monitor for events that are dispatched to this application, before their window gets them.
///
/// The handler runs on the main thread, inside the event dispatch of the application, modal sessions included. What it
/// returns is dispatched instead of the event; nil drops the event. Several monitors run in the order of their
/// installation, each with what the one before it returned. A handler may not install or remove monitors. Events that a
/// control takes off the queue itself while it tracks the pointer are not seen, as on macOS.
///
/// @param mask the event types to see, a union of NSEventMask values.
/// @param block the handler; copied, and released with the monitor. Not nil.
/// @return the monitor, by which it is removed. The platform keeps it until then; keep a reference of your own to
/// remove it later.
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(NSEvent * (^)(NSEvent *event))block;

/// Removes a monitor: its handler is not called again.
+ (void)removeMonitor:(id)eventMonitor;

@end
