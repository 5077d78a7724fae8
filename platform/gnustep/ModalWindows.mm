#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#import "platform/gnustep/MethodExchange.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#undef Status

#include <algorithm>
#include <vector>

static Display *display()
{
    return static_cast<Display *>([GSCurrentServer() serverDevice]);
}

/// The X server's name for a window that is on the screen.
static Window xWindow(NSWindow *window)
{
    return reinterpret_cast<Window>([GSCurrentServer() windowDevice:static_cast<int>([window windowNumber])]);
}

/// Lists WM_DELETE_WINDOW among a window's protocols. GNUstep leaves it out for windows without a close button, and a
/// window manager that paints such a button all the same then ends the whole program when it is pressed.
static void letManagerAskToClose(NSWindow *window)
{
    const Atom deleteWindow = XInternAtom(display(), "WM_DELETE_WINDOW", False);
    std::vector<Atom> protocols;
    Atom *listed = nullptr;
    int count = 0;
    if (XGetWMProtocols(display(), xWindow(window), &listed, &count)) {
        protocols.assign(listed, listed + count);
        XFree(listed);
    }
    if (std::ranges::find(protocols, deleteWindow) != protocols.end()) {
        return;
    }
    protocols.push_back(deleteWindow);
    XSetWMProtocols(display(), xWindow(window), protocols.data(), static_cast<int>(protocols.size()));
    XFlush(display()); // The window may be on the screen already: no press must come before this.
}

/// The window that a modal one belongs to: the modal window before it, else the program's main window on the screen;
/// nil when there is none.
static NSWindow *parentOfNextModalWindow()
{
    if ([NSApp modalWindow]) {
        return [NSApp modalWindow];
    }
    for (NSWindow *window in [NSApp windows]) {
        if ([window isVisible] && [window canBecomeMainWindow]) {
            return window;
        }
    }
    return nil;
}

/// GNUstep's own, in no header: makes the X server's window of a window that has none yet.
@interface NSWindow (Backend)
- (void)_initBackendWindow;
@end

@interface NSApplication (ModalWindows)
@end

@implementation NSApplication (ModalWindows)

+ (void)load
{
    exchangeInstanceMethods(
        self, @selector(beginModalSessionForWindow:), @selector(beginManagedModalSessionForWindow:));
}

/// In the place of `beginModalSessionForWindow:`. The window manager learns which window the modal one belongs to: it
/// then keeps the modal one above it, where a click would otherwise hide it and the program would look dead, and gives
/// it the keyboard when it appears. For that it must be told before it sees the window.
- (NSModalSession)beginManagedModalSessionForWindow:(NSWindow *)window
{
    NSWindow *parent = parentOfNextModalWindow();
    if (parent && parent != window) {
        if ([window windowNumber] == 0) { // An alert's window is not made before it is shown.
            [window _initBackendWindow];
        }
        XSetTransientForHint(display(), xWindow(window), xWindow(parent));
    }
    return [self beginManagedModalSessionForWindow:window];
}

@end

@interface NSWindow (ModalWindows)
@end

@implementation NSWindow (ModalWindows)

+ (void)load
{
    exchangeInstanceMethods(self, @selector(orderWindow:relativeTo:), @selector(orderManagedWindow:relativeTo:));
    exchangeInstanceMethods(self, @selector(performClose:), @selector(performManagedClose:));
    exchangeInstanceMethods(self, @selector(sendEvent:), @selector(sendManagedEvent:));
}

/// In the place of `sendEvent:`. When the window manager gives the keyboard to a window behind a modal one, the modal
/// one gets it: GNUstep leaves it where nobody may use it.
- (void)sendManagedEvent:(NSEvent *)event
{
    NSWindow *modal = [NSApp modalWindow];
    if (modal && modal != self && [event type] == NSAppKitDefined && [event subtype] == GSAppKitWindowFocusIn) {
        // Not by the display server's own method, which takes a focus that was taken away for one that is still to
        // come.
        XSetInputFocus(display(), xWindow(modal), RevertToParent, CurrentTime);
    } else {
        [self sendManagedEvent:event];
    }
}

/// In the place of `orderWindow:relativeTo:`, which every way of bringing a window to the screen or to the front comes
/// to, and in which GNUstep states the window's protocols anew.
- (void)orderManagedWindow:(NSWindowOrderingMode)place relativeTo:(NSInteger)otherWindow
{
    [self orderManagedWindow:place relativeTo:otherWindow];
    if (place != NSWindowOut && [self isVisible] && ([self styleMask] & NSTitledWindowMask)) {
        letManagerAskToClose(self);
    }
}

/// In the place of `performClose:`, which is what the window manager's close button comes to. On a modal window without
/// a close button of its own it presses what changes nothing: "Cancel" of a panel, the last button of an alert.
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

/// The button that was added last to the alert whose window this is: alerts number their buttons from
/// NSAlertFirstButtonReturn. Nil in a window that is no alert's.
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
