// GNUstep's scroller covers the end of each line of a text view that is as wide as its scroll view.
// This file is unnecessary when GNUstep breaks scrolled text at the visible width.
#import <AppKit/AppKit.h>

#import "platform/gnustep/Swizzling.hpp"

@interface NSScrollView (ScrolledText)
@end

@implementation NSScrollView (ScrolledText)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(setDocumentView:), @selector(setDocumentViewAndFitText:));
}

/// Replaces `setDocumentView:`. Breaks the text at the visible width; all frames stay as they are.
- (void)setDocumentViewAndFitText:(NSView *)documentView
{
    [self setDocumentViewAndFitText:documentView];
    if (![documentView isKindOfClass:[NSTextView class]]) {
        return;
    }
    NSTextContainer *container = [static_cast<NSTextView *>(documentView) textContainer];
    const CGFloat visibleWidth = [self contentSize].width;
    if ([container containerSize].width <= visibleWidth) {
        return;
    }
    [container setWidthTracksTextView:NO];
    [container setContainerSize:NSMakeSize(visibleWidth, [container containerSize].height)];
}

@end
