// GNUstep draws bevelled grey windows. This file draws them light and flat.
// It is unnecessary when GNUstep's own theme fits today's desktops.
#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSTheme.h>

#import "platform/gnustep/looks/Appearance.h"
#import "platform/gnustep/looks/ButtonMetrics.hpp"
#import "platform/gnustep/Swizzling.hpp"

#include <algorithm>

namespace
{

/// One of the system's colours, by its GNUstep name.
struct SystemColor {
    NSString *name;
    double red;
    double green;
    double blue;
};

const SystemColor systemColors[] = {
    { @"alternateSelectedControlColor", 0.12, 0.47, 0.90 },
    { @"alternateSelectedControlTextColor", 1, 1, 1 },
    { @"controlBackgroundColor", 1, 1, 1 },
    { @"controlColor", 1, 1, 1 },
    { @"controlDarkShadowColor", 0.76, 0.76, 0.76 },
    { @"controlShadowColor", 0.76, 0.76, 0.76 },
    { @"controlTextColor", 0.1, 0.1, 0.1 },
    { @"disabledControlTextColor", 0.62, 0.62, 0.62 },
    { @"knobColor", 0.72, 0.72, 0.72 },
    { @"scrollBarColor", 1, 1, 1 },
    { @"selectedControlColor", 0.70, 0.84, 1 },
    { @"selectedControlTextColor", 0.1, 0.1, 0.1 },
    { @"selectedTextBackgroundColor", 0.70, 0.84, 1 },
    { @"selectedTextColor", 0.1, 0.1, 0.1 },
    { @"textBackgroundColor", 1, 1, 1 },
    { @"textColor", 0.1, 0.1, 0.1 },
    { @"toolTipColor", 0.97, 0.97, 0.97 },
    { @"toolTipTextColor", 0.1, 0.1, 0.1 },
    { @"windowBackgroundColor", 0.925, 0.925, 0.925 },
};

constexpr CGFloat buttonRadius = 5;
constexpr CGFloat circleInset = 2;
constexpr CGFloat knobRadius = 3;
/// If at least this part of a text is visible, only its margins are hidden, and no knob is drawn.
constexpr CGFloat nearlyAll = 0.96;

NSColor *gray(CGFloat white)
{
    return [NSColor colorWithCalibratedWhite:white alpha:1];
}

/// A shape with an outline of exactly one pixel.
NSBezierPath *roundedRectangle(NSRect frame, CGFloat radius)
{
    return [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(frame, 0.5, 0.5) xRadius:radius yRadius:radius];
}

bool isDefaultButton(NSCell *cell)
{
    return [cell isEnabled] && [[cell keyEquivalent] isEqualToString:@"\r"];
}

}

/// A light, flat theme. All of it is drawn, so no file is read.
@interface LightTheme : GSTheme
@end

@implementation LightTheme

- (NSColorList *)colors
{
    NSColorList *list = [[[NSColorList alloc] initWithName:@"System"] autorelease];
    for (const auto &[name, red, green, blue] : systemColors) {
        [list setColor:[NSColor colorWithCalibratedRed:red green:green blue:blue alpha:1] forKey:name];
    }
    return list;
}

// Buttons.

/// Draws nothing: the colour of the default button marks it, so it needs no picture of the Return key.
- (void)setKeyEquivalent:(NSString *)key forButtonCell:(NSButtonCell *)cell
{
}

- (GSThemeMargins)buttonMarginsForCell:(NSCell *)cell style:(int)style state:(GSThemeControlState)state
{
    return { .left = 8, .right = 8, .top = 2, .bottom = 2 };
}

- (void)drawButton:(NSRect)frame in:(NSCell *)cell view:(NSView *)view style:(int)style state:(GSThemeControlState)state
{
    NSBezierPath *shape = nil;
    if (style == NSCircularBezelStyle) {
        const CGFloat side = std::min(NSWidth(frame), NSHeight(frame)) - 2 * circleInset;
        shape = roundedRectangle(NSMakeRect(NSMidX(frame) - side / 2, NSMidY(frame) - side / 2, side, side), side / 2);
    } else {
        // As on a Mac, the shape's height does not depend on the frame.
        const CGFloat surplus = std::max<CGFloat>(NSHeight(frame) - pushButtonHeight, 0);
        shape = roundedRectangle(NSInsetRect(frame, 0, surplus / 2), buttonRadius);
    }
    NSColor *inside = [cell isEnabled] ? gray([cell isHighlighted] ? 0.86 : 1) : gray(0.95);
    NSColor *outline = gray([cell isEnabled] ? 0.76 : 0.85);
    if (isDefaultButton(cell)) {
        inside = [NSColor alternateSelectedControlColor];
        outline = inside = [cell isHighlighted] ? [inside shadowWithLevel:0.2] : inside;
    }
    [inside set];
    [shape fill];
    [outline set];
    [shape stroke];
}

- (void)drawFocusFrame:(NSRect)frame view:(NSView *)view
{
    [[NSColor alternateSelectedControlColor] set];
    [roundedRectangle(frame, buttonRadius) stroke];
}

// Borders: a thin line.

- (NSSize)sizeForBorderType:(NSBorderType)type
{
    return type == NSNoBorder ? NSZeroSize : NSMakeSize(1, 1);
}

- (void)drawBorderType:(NSBorderType)type frame:(NSRect)frame view:(NSView *)view
{
    if (type != NSNoBorder) {
        [[NSColor controlShadowColor] set];
        NSFrameRect(frame);
    }
}

- (void)drawScrollViewRect:(NSRect)rectangle inView:(NSView *)view
{
    [[NSColor scrollBarColor] set];
    NSRectFill(rectangle);
    [self drawBorderType:[static_cast<NSScrollView *>(view) borderType] frame:[view bounds] view:view];
}

/// Draws no border around the scroller below a list of files.
- (NSRect)drawGrayBezel:(NSRect)border withClip:(NSRect)clip
{
    return border;
}

// Scrollers: a slim knob, and only when there is something to scroll.

- (float)defaultScrollerWidth
{
    return 12;
}

- (void)drawScrollerRect:(NSRect)rectangle
                  inView:(NSView *)view
                 hitPart:(NSScrollerPart)hitPart
            isHorizontal:(BOOL)isHorizontal
{
    NSScroller *scroller = static_cast<NSScroller *>(view);
    [(isHorizontal ? [NSColor windowBackgroundColor] : [NSColor scrollBarColor]) set];
    NSRectFill(rectangle);
    if (![scroller isEnabled] || [scroller knobProportion] > nearlyAll) {
        return;
    }
    const NSRect knob = NSInsetRect([scroller rectForPart:NSScrollerKnob], isHorizontal ? 2 : 3, isHorizontal ? 3 : 2);
    NSColor *color = [NSColor knobColor];
    [(hitPart == NSScrollerKnob ? [color shadowWithLevel:0.25] : color) set];
    [[NSBezierPath bezierPathWithRoundedRect:knob xRadius:knobRadius yRadius:knobRadius] fill];
}

// Lists of files: the mark of a folder.

- (void)drawBranch:(NSCustomImageRep *)picture
{
    NSBezierPath *chevron = [NSBezierPath bezierPath];
    [chevron moveToPoint:NSMakePoint(2.5, 8)];
    [chevron lineToPoint:NSMakePoint(5.5, 5)];
    [chevron lineToPoint:NSMakePoint(2.5, 2)];
    [gray(0.5) set];
    [chevron stroke];
}

- (NSImage *)branchImage
{
    NSImage *image = [[[NSImage alloc] initWithSize:NSMakeSize(8, 10)] autorelease];
    [image addRepresentation:[[[NSCustomImageRep alloc] initWithDrawSelector:@selector(drawBranch:)
                                                                    delegate:self] autorelease]];
    return image;
}

- (NSImage *)highlightedBranchImage
{
    return [self branchImage];
}

@end

@interface NSScroller (Appearance)
@end

@implementation NSScroller (Appearance)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(initWithFrame:), @selector(initWithFrameAndNoArrows:));
}

/// Replaces `initWithFrame:`. A Mac's scrollers have no arrows.
- (id)initWithFrameAndNoArrows:(NSRect)frame
{
    self = [self initWithFrameAndNoArrows:frame];
    [self setArrowsPosition:NSScrollerArrowsNone];
    return self;
}

@end

@interface NSButton (Appearance)
@end

@implementation NSButton (Appearance)

/// Draws the button released before it acts. GNUstep draws it pressed until its action ends, behind an alert too.
- (BOOL)sendAction:(SEL)action to:(id)target
{
    [[self cell] setHighlighted:NO];
    [self display];
    return [super sendAction:action to:target];
}

@end

@interface NSButtonCell (Appearance)
@end

@implementation NSButtonCell (Appearance)

/// The colour of the title.
- (NSColor *)textColor
{
    return isDefaultButton(self) ? [NSColor alternateSelectedControlTextColor] : [super textColor];
}

@end

void showInLightTheme()
{
    // A user who has chosen a GNUstep theme gets that theme.
    if ([[[NSUserDefaults standardUserDefaults] stringForKey:@"GSTheme"] length] > 0) {
        return;
    }
    LightTheme *theme = [[[LightTheme alloc] initWithBundle:nil] autorelease];
    // With another name, GNUstep would return to its own theme when defaults change.
    [theme setName:[[GSTheme theme] name]];
    [GSTheme setTheme:theme];
}
