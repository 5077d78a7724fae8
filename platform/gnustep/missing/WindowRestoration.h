/// GNUstep 0.29 has no window restoration. This file is unnecessary when GNUstep has `setRestorable:`.
#pragma once

#import <AppKit/AppKit.h>

@interface NSWindow (Restoration)

/// Says whether the window's state is to be kept from one run to the next. GNUstep never keeps it, so this does
/// nothing.
- (void)setRestorable:(BOOL)restorable;

@end
