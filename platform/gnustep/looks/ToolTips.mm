// GNUstep makes tool tips so small that the last word of a long text is not visible.
// This file is unnecessary when GNUstep's tool tips show their whole text.
#import <AppKit/AppKit.h>

// The methods below replace GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

namespace
{

constexpr CGFloat horizontalPadding = 7;
constexpr CGFloat verticalPadding = 4;

}

/// The window of a tip, and the view in it; no header of GNUstep's declares them.
@interface GSTTPanel : NSPanel
@end

@interface GSTTView : NSView
@end

@implementation GSTTPanel (ToolTips)

/// Makes the tip large enough for the text with space around it. GNUstep leaves only 4 pixels, so that the last word of
/// a long text wraps out of view.
- (void)setFrame:(NSRect)frame display:(BOOL)display
{
    if (!NSIsEmptyRect(frame)) {
        frame = NSInsetRect(frame, 2 - horizontalPadding, 2 - verticalPadding);
    }
    [super setFrame:frame display:display];
}

@end

@implementation GSTTView (ToolTips)

- (void)drawRect:(NSRect)rectangle
{
    [[NSColor toolTipColor] set];
    NSRectFill([self bounds]);
    [[NSColor controlShadowColor] set];
    NSFrameRect([self bounds]);
    // Not in a rectangle: there a text that just fits may be wrapped.
    NSAttributedString *text = [self valueForKey:@"text"];
    [text drawAtPoint:NSMakePoint(horizontalPadding, verticalPadding)];
}

@end
