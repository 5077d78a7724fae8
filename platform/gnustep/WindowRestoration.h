/// The part of window restoration that AppKit has and GNUstep 0.29 lacks.
#pragma once

#import <AppKit/AppKit.h>

@interface NSWindow (Restoration)

/// Says whether the window's state is to be kept from one run to the next. GNUstep never keeps it, so this does
/// nothing.
- (void)setRestorable:(BOOL)restorable;

@end
