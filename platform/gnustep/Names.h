/// AppKit's present names of constants that GNUstep 0.29 knows by their old names only.
#pragma once

#import <AppKit/AppKit.h>

constexpr NSEventMask NSEventMaskMouseMoved = NSMouseMovedMask;
constexpr NSEventMask NSEventMaskKeyDown = NSKeyDownMask;
constexpr NSEventMask NSEventMaskFlagsChanged = NSFlagsChangedMask;
constexpr NSEventModifierFlags NSEventModifierFlagShift = NSShiftKeyMask;
constexpr NSBezelStyle NSBezelStyleRounded = NSRoundedBezelStyle;
constexpr NSBezelStyle NSBezelStyleCircular = NSCircularBezelStyle;
