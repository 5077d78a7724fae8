#import <Cocoa/Cocoa.h>

// The values in Apple's headers of the names that Cocoa.h supplies.
static_assert((NSEventMaskMouseMoved | NSEventMaskKeyDown | NSEventMaskFlagsChanged) == 0x1420);
static_assert(NSEventModifierFlagShift == 1 << 17);
static_assert(NSBezelStyleRounded == 1 && NSBezelStyleCircular == 7);
