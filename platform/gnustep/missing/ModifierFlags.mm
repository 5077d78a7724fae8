// GNUstep's `+[NSEvent modifierFlags]` always returns 0. This file is unnecessary when it returns the keys held now.
#import <AppKit/AppKit.h>

#import "platform/gnustep/XDisplay.hpp"

// The method below replaces GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSEvent (ModifierKeysNow)

/// The modifier keys that are held now, as the X server reports them. Queued events do not matter. The result has
/// Shift, Caps Lock and Control. Option and Command are left out: which keys act as them differs between key
/// maps.
+ (NSEventModifierFlags)modifierFlags
{
    Display *display = xDisplay();
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
