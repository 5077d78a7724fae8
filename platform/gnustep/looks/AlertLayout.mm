// GNUstep lays out alerts differently from a Mac. This file puts the icon next to the texts and the first button at the
// right. It is unnecessary when GNUstep's alerts have this layout.
#import <AppKit/AppKit.h>

#import "platform/gnustep/looks/ButtonMetrics.hpp"

#include <algorithm>
#include <cmath>

// The methods below replace GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

namespace
{

constexpr CGFloat width = 460;
constexpr CGFloat margin = 20;
constexpr CGFloat iconSide = 64;
constexpr CGFloat textLeft = margin + iconSide + margin;
constexpr CGFloat textWidth = width - textLeft - margin;
constexpr CGFloat textGap = 8;
constexpr CGFloat buttonGap = 12;

/// Sets a text's font and returns the height of the wrapped text.
CGFloat wrappedHeight(NSTextField *text, NSFont *font)
{
    [text setFont:font];
    [text setAlignment:NSLeftTextAlignment];
    [text setDrawsBackground:NO];
    [[text cell] setLineBreakMode:NSLineBreakByWordWrapping];
    const NSSize room = [[text cell] titleRectForBounds:NSMakeRect(0, 0, textWidth, 10000)].size;
    const NSRect used = [[text attributedStringValue] boundingRectWithSize:room
                                                                   options:NSStringDrawingUsesLineFragmentOrigin];
    return std::ceil(NSHeight(used)) + 2;
}

void place(NSView *view, NSRect frame)
{
    [view setAutoresizingMask:NSViewNotSizable];
    [view setFrame:frame];
}

}

/// The window of GNUstep's alerts; no header of GNUstep's declares it.
@interface GSAlertPanel : NSPanel
@end

@implementation GSAlertPanel (AlertLayout)

/// The buttons in the order in which they were added.
- (NSArray *)addedButtons
{
    NSMutableArray *buttons = [NSMutableArray array];
    for (NSString *key in @[ @"defButton", @"altButton", @"othButton" ]) {
        NSButton *button = [self valueForKey:key];
        if ([button superview]) {
            [buttons addObject:button];
        }
    }
    return buttons;
}

/// Lays the alert out once its texts and buttons are set: as on a Mac, with the icon next to the texts and the buttons
/// below, the first one at the right. The window has the program's name.
- (void)sizePanelToFit
{
    CGFloat right = width - margin;
    for (NSButton *button in [self addedButtons]) {
        [button setImagePosition:NSNoImage];
        const CGFloat buttonWidth = pushButtonWidth(button);
        place(button, NSMakeRect(right - buttonWidth, margin, buttonWidth, pushButtonHeight));
        right -= buttonWidth + buttonGap;
    }

    NSTextField *message = [self valueForKey:@"titleField"];
    NSTextField *informative = [self valueForKey:@"messageField"];
    const CGFloat messageHeight = wrappedHeight(message, [NSFont boldSystemFontOfSize:13]);
    const CGFloat informativeHeight = wrappedHeight(informative, [NSFont systemFontOfSize:12]);
    const CGFloat bodyHeight = std::max(iconSide, messageHeight + textGap + informativeHeight);
    const CGFloat top = margin + pushButtonHeight + margin + bodyHeight;
    NSButton *icon = [self valueForKey:@"icoButton"];
    [[icon cell] setImageScaling:NSImageScaleProportionallyUpOrDown];
    place(icon, NSMakeRect(margin, top - iconSide, iconSide, iconSide));
    place(message, NSMakeRect(textLeft, top - messageHeight, textWidth, messageHeight));
    place(informative,
        NSMakeRect(textLeft, top - messageHeight - textGap - informativeHeight, textWidth, informativeHeight));

    for (NSView *view in [[self contentView] subviews]) {
        if ([view isKindOfClass:[NSBox class]]) {
            [view setHidden:YES]; // GNUstep's line between the texts
        }
    }
    [self setContentSize:NSMakeSize(width, top + margin)];
    [self setTitle:[[NSProcessInfo processInfo] processName]];
}

@end
