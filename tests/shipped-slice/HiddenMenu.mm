// A Mac shows the main menu at the top of the screen, outside the window. GNUstep would rearrange it and show it in a
// window of its own. Here it stays as the slice makes it and out of sight, so that the window can be compared with the
// native build's, which has no menu.
#import <AppKit/AppKit.h>

// The overrides of GNUstep's methods below are meant.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSMenu (HiddenMenu)
@end

@implementation NSMenu (HiddenMenu)

- (void)display
{
}

/// GNUstep's own: makes the application's menu the main one's items.
- (void)_organizeMenu
{
}

@end
