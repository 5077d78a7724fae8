#import "platform/Retained.hpp"
#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#import <GNUstepGUI/GSTheme.h>

#include <gtest/gtest.h>

#include <cmath>

namespace
{

/// The lightness of a colour, from 0 to 1.
double lightness(NSColor *color)
{
    NSColor *rgb = [color colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    return ([rgb redComponent] + [rgb greenComponent] + [rgb blueComponent]) / 3;
}

bool isBlue(NSColor *color)
{
    NSColor *rgb = [color colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    return [rgb blueComponent] > [rgb redComponent] + 0.3;
}

/// The colour of a view at a point, in the view's coordinates.
NSColor *pixel(NSView *view, NSPoint place)
{
    [[view window] display];
    [view lockFocus];
    const auto picture = adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(place.x, place.y, 1, 1)]);
    [view unlockFocus];
    return [picture.get() colorAtX:0 y:0];
}

/// A push button in the middle of a window on the screen.
struct ShownButton {
    TestWindow shown;
    Retained<NSButton> button = adopt([[NSButton alloc] initWithFrame:NSMakeRect(80, 100, 140, 36)]);

    ShownButton()
    {
        [button.get() setTitle:@"A"];
        [button.get() setBezelStyle:NSBezelStyleRounded];
        [[shown.window() contentView] addSubview:button.get()];
    }

    NSColor *colorInside() { return pixel(button.get(), NSMakePoint(20, 18)); }
};

}

TEST(Appearance, IsLight)
{
    EXPECT_NEAR(lightness([NSColor windowBackgroundColor]), 0.925, 0.01);
    EXPECT_EQ(lightness([NSColor textBackgroundColor]), 1);
    EXPECT_LT(lightness([NSColor controlTextColor]), 0.2);
    const TestWindow shown;
    EXPECT_NEAR(lightness(pixel([shown.window() contentView], NSMakePoint(5, 5))), 0.925, 0.01);
}

TEST(Appearance, DoesNotChangeWhenADefaultChanges)
{
    GSTheme *const theme = [GSTheme theme];
    [[NSUserDefaults standardUserDefaults] setObject:@"/" forKey:@"NSDefaultOpenDirectory"];
    [[NSUserDefaults standardUserDefaults] synchronize];
    EXPECT_EQ([GSTheme theme], theme);
    [[NSUserDefaults standardUserDefaults] removeObjectForKey:@"NSDefaultOpenDirectory"];
    [[NSUserDefaults standardUserDefaults] synchronize];
}

TEST(Appearance, ShowsAButtonsState)
{
    ShownButton shown;
    const double enabled = lightness(shown.colorInside());
    EXPECT_EQ(enabled, 1);
    [[shown.button.get() cell] setHighlighted:YES];
    EXPECT_LT(lightness(shown.colorInside()), enabled - 0.1) << "pressed";
    [[shown.button.get() cell] setHighlighted:NO];
    [shown.button.get() setKeyEquivalent:@"\r"];
    EXPECT_TRUE(isBlue(shown.colorInside())) << "the default button";
    EXPECT_FALSE([shown.button.get() image]) << "the button must not show a key symbol";
    [shown.button.get() setEnabled:NO];
    EXPECT_FALSE(isBlue(shown.colorInside())) << "disabled";
    EXPECT_LT(lightness(shown.colorInside()), enabled);
}

TEST(Appearance, DrawsAButtonAtItsOwnHeight)
{
    ShownButton shown;
    EXPECT_EQ(lightness(pixel(shown.button.get(), NSMakePoint(70, 7))), 1);
    EXPECT_NEAR(lightness(pixel(shown.button.get(), NSMakePoint(70, 1))), 0.925, 0.01);
}

/// Records whether a button is drawn pressed during its action.
@interface PressNoter : NSObject {
@public
    bool pressed;
}
@end

@implementation PressNoter

- (void)act:(NSButton *)button
{
    pressed = [[button cell] isHighlighted];
}

@end

TEST(Appearance, ReleasesAButtonBeforeItActs)
{
    ShownButton shown;
    const auto noter = adopt([[PressNoter alloc] init]);
    noter.get()->pressed = true;
    [shown.button.get() setTarget:noter.get()];
    [shown.button.get() setAction:@selector(act:)];
    [[shown.button.get() cell] setHighlighted:YES];
    [shown.button.get() sendAction:@selector(act:) to:noter.get()];
    EXPECT_FALSE(noter.get()->pressed);
}

TEST(Appearance, HasSlimScrollersWithoutArrows)
{
    const auto scroller = adopt([[NSScroller alloc] initWithFrame:NSMakeRect(0, 0, 12, 200)]);
    EXPECT_LE([NSScroller scrollerWidth], 12);
    [scroller.get() setEnabled:YES];
    [scroller.get() setFloatValue:0 knobProportion:0.5];
    EXPECT_TRUE(NSIsEmptyRect([scroller.get() rectForPart:NSScrollerIncrementLine]));
    EXPECT_TRUE(NSIsEmptyRect([scroller.get() rectForPart:NSScrollerDecrementLine]));
}

TEST(Appearance, ShowsAKnobOnlyWhenThereIsSomethingToScroll)
{
    const TestWindow shown;
    const auto scroller = adopt([[NSScroller alloc] initWithFrame:NSMakeRect(50, 50, 12, 200)]);
    [[shown.window() contentView] addSubview:scroller.get()];
    [scroller.get() setEnabled:YES];
    [scroller.get() setFloatValue:0 knobProportion:0.5];
    EXPECT_LT(lightness(pixel(scroller.get(), NSMakePoint(6, 40))), 0.9);
    EXPECT_EQ(lightness(pixel(scroller.get(), NSMakePoint(6, 190))), 1);
    [scroller.get() setFloatValue:0 knobProportion:0.98];
    EXPECT_EQ(lightness(pixel(scroller.get(), NSMakePoint(6, 40))), 1);
}

TEST(Appearance, DrawsVectorPictures)
{
    const TestWindow shown;
    const auto view = adopt([[NSImageView alloc] initWithFrame:NSMakeRect(50, 50, 16, 15)]);
    [view.get() setImage:[[NSWorkspace sharedWorkspace] iconForFile:@"/"]];
    [[shown.window() contentView] addSubview:view.get()];
    EXPECT_TRUE(isBlue(pixel(view.get(), NSMakePoint(8, 6)))) << "a folder";
}

TEST(ToolTip, ShowsItsLastWord)
{
    const TestWindow shown;
    for (const CGFloat fontSize : { 8, 9, 10 }) {
        const auto text = adopt([[NSAttributedString alloc]
            initWithString:@"Run cleanup even though Quorlen 3 was not detected"
                attributes:@ { NSFontAttributeName : [NSFont toolTipsFontOfSize:fontSize] }]);
        const NSSize size = [text.get() size];
        // Sizes the window as GNUstep does when the pointer rests. The X server rounds the size to whole pixels, which
        // may be less than the text needs.
        const auto tip = adopt(static_cast<NSPanel *>(
            [[NSClassFromString(@"GSTTPanel") alloc] initWithContentRect:NSMakeRect(0, 0, 100, 25)
                                                               styleMask:NSBorderlessWindowMask
                                                                 backing:NSBackingStoreBuffered
                                                                   defer:YES]));
        [tip.get() setFrame:NSMakeRect(100, 100, std::floor(size.width) + 4, std::floor(size.height) + 4) display:NO];
        // Shows the tip's view in another window: the tip's own window would take the focus from it.
        NSView *inTip = [tip.get() contentView];
        const auto view = adopt([[[inTip class] alloc] initWithFrame:[inTip bounds]]);
        [view.get() performSelector:@selector(setText:) withObject:text.get()];
        [[shown.window() contentView] addSubview:view.get()];
        bool inkOfLastWord = false;
        for (double y = 4; y < size.height; ++y) {
            for (double x = size.width - 8; x < size.width; ++x) {
                inkOfLastWord |= lightness(pixel(view.get(), NSMakePoint(x, y))) < 0.6;
            }
        }
        EXPECT_TRUE(inkOfLastWord) << "in size " << fontSize << " of width " << size.width;
        [view.get() performSelector:@selector(setText:) withObject:nil]; // The view is shared and keeps its text.
        [view.get() removeFromSuperview];
    }
}
