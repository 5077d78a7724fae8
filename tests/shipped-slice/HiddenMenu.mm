// A Mac shows the main menu at the top of the screen, outside the window. GNUstep would rearrange it and show it in
// another window. This file keeps it unchanged and hidden, so that a test can compare the window with the native
// build's window, which has no menu.
#import <AppKit/AppKit.h>

// The methods below override GNUstep's on purpose.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSMenu (HiddenMenu)
@end

@implementation NSMenu (HiddenMenu)

- (void)display
{
}

/// GNUstep's method: makes the application's menu from the main menu's items.
- (void)_organizeMenu
{
}

@end
