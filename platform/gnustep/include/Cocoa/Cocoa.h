/// What `#import <Cocoa/Cocoa.h>` gives on a Mac: GNUstep's AppKit, and what GNUstep lacks of Apple's, under Apple's
/// names.
///
/// The folders of platform/gnustep hold the rest. missing/ supplies what GNUstep lacks, corrected/ changes what it does
/// otherwise than AppKit, and looks/ changes how it appears.
#pragma once

#import <AppKit/AppKit.h>

#import "platform/gnustep/missing/AppleScript.h"
#import "platform/gnustep/missing/EventMonitors.h"
#import "platform/gnustep/missing/Task.h"
#import "platform/gnustep/missing/WindowRestoration.h"

// GNUstep 0.29 knows these constants by their old names only.
constexpr NSEventMask NSEventMaskMouseMoved = NSMouseMovedMask;
constexpr NSEventMask NSEventMaskKeyDown = NSKeyDownMask;
constexpr NSEventMask NSEventMaskFlagsChanged = NSFlagsChangedMask;
constexpr NSEventModifierFlags NSEventModifierFlagShift = NSShiftKeyMask;
constexpr NSBezelStyle NSBezelStyleRounded = NSRoundedBezelStyle;
constexpr NSBezelStyle NSBezelStyleCircular = NSCircularBezelStyle;
