#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <X11/Xlib.h>
#undef Status

// This override of GNUstep's method is meant.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSEvent (ModifierKeysNow)

/// The modifier keys held now, whatever events say that are still on their way. GNUstep's own answers 0; this one asks
/// the X server. Shift, Caps Lock and Control are told; the keys that act as Option and Command differ from one X
/// server's key map to the next and are left out.
+ (NSEventModifierFlags)modifierFlags
{
    auto *display = static_cast<Display *>([GSCurrentServer() serverDevice]);
    if (!display) {
        return 0;
    }
    Window root, child;
    int rootX, rootY, x, y;
    unsigned int state = 0;
    XQueryPointer(display, DefaultRootWindow(display), &root, &child, &rootX, &rootY, &x, &y, &state);
    NSEventModifierFlags flags = 0;
    if (state & ShiftMask) {
        flags |= NSShiftKeyMask;
    }
    if (state & LockMask) {
        flags |= NSAlphaShiftKeyMask;
    }
    if (state & ControlMask) {
        flags |= NSControlKeyMask;
    }
    return flags;
}

@end
