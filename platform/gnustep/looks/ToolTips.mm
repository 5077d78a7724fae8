// GNUstep gives a tool tip so little room that the last word of a long text is lost.
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

/// Makes room for the text with space around it. GNUstep leaves 4 pixels in all, which breaks the last word of a long
/// text away.
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
    // Not into a rectangle: a text that just fits may be broken there.
    NSAttributedString *text = [self valueForKey:@"text"];
    [text drawAtPoint:NSMakePoint(horizontalPadding, verticalPadding)];
}

@end
