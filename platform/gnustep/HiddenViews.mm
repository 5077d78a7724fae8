#import <AppKit/AppKit.h>

#import "platform/gnustep/MethodExchange.h"

/// The view that is being hidden; not owned.
static NSView *viewBeingHidden;

@interface NSView (HiddenViews)
@end

@implementation NSView (HiddenViews)

+ (void)load
{
    exchangeInstanceMethods(self, @selector(setHidden:), @selector(setHiddenInItsPlace:));
    exchangeInstanceMethods(self, @selector(setNeedsDisplay:), @selector(setNeedsDisplayWhereHidden:));
}

/// In the place of `setHidden:`. GNUstep has the whole superview drawn anew, with all that is in it, where only the
/// view's own place is to be.
- (void)setHiddenInItsPlace:(BOOL)hidden
{
    viewBeingHidden = self;
    [self setHiddenInItsPlace:hidden];
    viewBeingHidden = nil;
}

/// In the place of `setNeedsDisplay:`.
- (void)setNeedsDisplayWhereHidden:(BOOL)needed
{
    if (needed && viewBeingHidden && [viewBeingHidden superview] == self) {
        [self setNeedsDisplayInRect:[viewBeingHidden frame]];
    } else {
        [self setNeedsDisplayWhereHidden:needed];
    }
}

@end
