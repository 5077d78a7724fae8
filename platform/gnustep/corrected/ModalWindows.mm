// Under a window manager, GNUstep's modal windows can be hidden, lose the focus, or end the program when closed.
// This file is unnecessary when GNUstep gives its modal windows a parent, WM_DELETE_WINDOW and the focus.
#import <AppKit/AppKit.h>

#import "platform/gnustep/Swizzling.hpp"
#import "platform/gnustep/XDisplay.hpp"

#include <algorithm>
#include <vector>

namespace
{

/// The X server's identifier of a window. The window must exist on the X server; it need not be visible.
Window xWindow(NSWindow *window)
{
    return reinterpret_cast<Window>([GSCurrentServer() windowDevice:static_cast<int>([window windowNumber])]);
}

/// Adds WM_DELETE_WINDOW to a window's protocols. GNUstep leaves it out for windows without a close button. A window
/// manager that still draws such a button then ends the whole program when the user presses it.
void letManagerAskToClose(NSWindow *window)
{
    const Atom deleteWindow = XInternAtom(xDisplay(), "WM_DELETE_WINDOW", False);
    std::vector<Atom> protocols;
    Atom *listed = nullptr;
    int count = 0;
    if (XGetWMProtocols(xDisplay(), xWindow(window), &listed, &count)) {
        protocols.assign(listed, listed + count);
        XFree(listed);
    }
    if (std::ranges::find(protocols, deleteWindow) != protocols.end()) {
        return;
    }
    protocols.push_back(deleteWindow);
    XSetWMProtocols(xDisplay(), xWindow(window), protocols.data(), static_cast<int>(protocols.size()));
    XFlush(xDisplay()); // The window may be visible already, and the user may press its close button at once.
}

/// The program's visible main window, or nil.
NSWindow *visibleMainWindow()
{
    for (NSWindow *window in [NSApp windows]) {
        if ([window isVisible] && [window canBecomeMainWindow]) {
            return window;
        }
    }
    return nil;
}

}

/// GNUstep's own method, in no header: makes the X server's window for a window that has none yet.
@interface NSWindow (Backend)
- (void)_initBackendWindow;
@end

@interface NSApplication (ModalWindows)
@end

@implementation NSApplication (ModalWindows)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(beginModalSessionForWindow:), @selector(beginManagedModalSessionForWindow:));
}

/// Replaces `beginModalSessionForWindow:`. Makes the main window the parent of the modal window before the modal window
/// appears. The window manager then keeps the modal window in front and focuses it. Without this, a click on the main
/// window hides the modal one, and the program looks dead.
- (NSModalSession)beginManagedModalSessionForWindow:(NSWindow *)window
{
    NSWindow *parent = visibleMainWindow();
    if (parent && parent != window) {
        if ([window windowNumber] == 0) { // GNUstep creates the X window of an alert only when it shows the alert.
            [window _initBackendWindow];
        }
        XSetTransientForHint(xDisplay(), xWindow(window), xWindow(parent));
    }
    return [self beginManagedModalSessionForWindow:window];
}

@end

@interface NSWindow (ModalWindows)
@end

@implementation NSWindow (ModalWindows)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(orderWindow:relativeTo:), @selector(orderManagedWindow:relativeTo:));
    swizzleInstanceMethod(self, @selector(performClose:), @selector(performManagedClose:));
    swizzleInstanceMethod(self, @selector(sendEvent:), @selector(sendManagedEvent:));
}

/// Replaces `sendEvent:`. If the window manager focuses a window behind a modal one, GNUstep leaves the focus there and
/// no key works; this passes it on to the modal window.
- (void)sendManagedEvent:(NSEvent *)event
{
    NSWindow *modal = [NSApp modalWindow];
    if (modal && modal != self && [event type] == NSAppKitDefined && [event subtype] == GSAppKitWindowFocusIn) {
        // GNUstep's own method for this ignores the request while it still waits for an earlier focus.
        XSetInputFocus(xDisplay(), xWindow(modal), RevertToParent, CurrentTime);
    } else {
        [self sendManagedEvent:event];
    }
}

/// Replaces `orderWindow:relativeTo:`. Every way to show a window or to bring it to the front ends here, and GNUstep
/// sets the window's protocols again here.
- (void)orderManagedWindow:(NSWindowOrderingMode)place relativeTo:(NSInteger)otherWindow
{
    [self orderManagedWindow:place relativeTo:otherWindow];
    if (place != NSWindowOut && [self isVisible] && ([self styleMask] & NSTitledWindowMask)) {
        letManagerAskToClose(self);
    }
}

/// Replaces `performClose:`, which the window manager's close button triggers. On a modal window without a close button
/// it presses the button that changes nothing: "Cancel" of a panel, the last button of an alert.
- (void)performManagedClose:(id)sender
{
    if (self != [NSApp modalWindow] || ([self styleMask] & NSClosableWindowMask)) {
        [self performManagedClose:sender];
    } else if ([self isKindOfClass:[NSSavePanel class]]) {
        [static_cast<NSSavePanel *>(self) cancel:sender];
    } else {
        [[self lastAlertButton] performClick:sender];
    }
}

/// The last button of the alert that this window shows, or nil when the window shows no alert. Alerts number their
/// buttons from NSAlertFirstButtonReturn.
- (NSButton *)lastAlertButton
{
    NSButton *last = nil;
    for (NSView *view in [[self contentView] subviews]) {
        if ([view isKindOfClass:[NSButton class]] &&
            [view tag] >= std::max<NSInteger>([last tag], NSAlertFirstButtonReturn)) {
            last = static_cast<NSButton *>(view);
        }
    }
    return last;
}

@end
