// GNUstep's `+[NSEvent modifierFlags]` always returns 0. This file is unnecessary when it returns the keys held now.
#import <AppKit/AppKit.h>

#import "platform/gnustep/XDisplay.hpp"

#include <utility>

// The method below replaces GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSEvent (ModifierKeysNow)

/// The modifier keys that are held now, as the X server reports them. Queued events do not matter. Command is Alt, as
/// in GNUstep, and Option is the key with the logo. Debian's key maps have these as the modifiers 1 and 4.
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
    constexpr std::pair<unsigned int, NSEventModifierFlags> keys[] = {
        { ShiftMask, NSShiftKeyMask },
        { LockMask, NSAlphaShiftKeyMask },
        { ControlMask, NSControlKeyMask },
        { Mod1Mask, NSCommandKeyMask },
        { Mod4Mask, NSAlternateKeyMask },
    };
    NSEventModifierFlags flags = 0;
    for (const auto &[mask, flag] : keys) {
        flags |= state & mask ? flag : 0;
    }
    return flags;
}

@end
