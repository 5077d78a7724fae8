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
    if ([documentView isKindOfClass:[NSTextView class]]) {
        NSTextContainer *container = [static_cast<NSTextView *>(documentView) textContainer];
        [container setWidthTracksTextView:NO];
        [container setContainerSize:NSMakeSize([self contentSize].width, [container containerSize].height)];
    }
}

@end
