#import <AppKit/AppKit.h>

#import "platform/gnustep/MethodExchange.h"

@interface NSScrollView (ScrolledText)
@end

@implementation NSScrollView (ScrolledText)

+ (void)load
{
    exchangeInstanceMethods(self, @selector(setDocumentView:), @selector(setDocumentViewAndFitText:));
}

/// In the place of `setDocumentView:`. GNUstep's scroller takes its room beside the document view, so that the end of
/// each line of a text view as wide as the scroll view would lie behind it. The text is broken at the visible width
/// instead; all frames stay as they are.
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
