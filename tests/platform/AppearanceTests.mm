#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import "tests/support/SwizzledMethod.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace
{

/// A colour's red, green and blue, each in two hexadecimal digits.
std::string hexadecimal(NSColor *color)
{
    NSColor *rgb = [color colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    std::string digits;
    for (const double part : { [rgb redComponent], [rgb greenComponent], [rgb blueComponent] }) {
        digits += utf8([NSString stringWithFormat:@"%02lX", std::lround(255 * part)]);
    }
    return digits;
}

/// A window in which controls are drawn.
struct Appearance : testing::Test {
    const TestWindow shown;

    template <typename View> Retained<View> show(Retained<View> view)
    {
        [[shown.window() contentView] addSubview:view.get()];
        return view;
    }
    Retained<NSButton> pushButton()
    {
        auto button = show(adopt([[NSButton alloc] initWithFrame:NSMakeRect(80, 100, 140, 36)]));
        [button.get() setTitle:@"A"];
        [button.get() setBezelStyle:NSBezelStyleRounded];
        return button;
    }
    /// The colour of a view's pixel, in the view's coordinates.
    std::string pixel(NSView *view, double x, double y)
    {
        [shown.window() display];
        [view lockFocus];
        const auto picture = adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(x, y, 1, 1)]);
        [view unlockFocus];
        return hexadecimal([picture.get() colorAtX:0 y:0]);
    }
};

const std::string white = "FFFFFF", windowColor = "ECECEC";

}

TEST_F(Appearance, IsLightAndStaysSoWhenADefaultChanges)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults setObject:@"/" forKey:@"NSDefaultOpenDirectory"];
    [defaults synchronize];
    EXPECT_EQ(pixel([shown.window() contentView], 5, 5), windowColor);
    EXPECT_EQ(hexadecimal([NSColor textBackgroundColor]), white);
    EXPECT_EQ(hexadecimal([NSColor controlTextColor]), "1A1A1A");
    [defaults removeObjectForKey:@"NSDefaultOpenDirectory"];
    [defaults synchronize];
}

TEST_F(Appearance, ShowsAButtonsStateAtItsOwnHeight)
{
    const auto button = pushButton();
    EXPECT_EQ(pixel(button.get(), 70, 1), windowColor) << "beside the button";
    EXPECT_EQ(pixel(button.get(), 70, 7), white) << "near its edge";
    EXPECT_EQ(pixel(button.get(), 20, 18), white);
    [[button.get() cell] setHighlighted:YES];
    EXPECT_EQ(pixel(button.get(), 20, 18), "DCDCDC") << "pressed";
    [[button.get() cell] setHighlighted:NO];
    [button.get() setKeyEquivalent:@"\r"];
    EXPECT_EQ(pixel(button.get(), 20, 18), "1E78E6") << "the default button";
    EXPECT_FALSE([button.get() image]) << "the button must not show a key symbol";
    [button.get() setEnabled:NO];
    EXPECT_EQ(pixel(button.get(), 20, 18), "F3F3F3") << "disabled";
}

TEST_F(Appearance, ReleasesAButtonBeforeItActs)
{
    static bool pressed;
    pressed = true;
    const SwizzledMethod act(
        [NSApplication class], @selector(hide:),
        +[](id, SEL, NSButton *sender) { pressed = [[sender cell] isHighlighted]; });
    const auto button = pushButton();
    [[button.get() cell] setHighlighted:YES];
    [button.get() sendAction:@selector(hide:) to:NSApp];
    EXPECT_FALSE(pressed);
}

TEST_F(Appearance, HasSlimScrollersWithoutArrowsAndAKnobOnlyIfThereIsSomethingToScroll)
{
    const auto scroller = show(adopt([[NSScroller alloc] initWithFrame:NSMakeRect(50, 50, 12, 200)]));
    [scroller.get() setEnabled:YES];
    [scroller.get() setFloatValue:0 knobProportion:0.5];
    EXPECT_EQ([NSScroller scrollerWidth], 12);
    EXPECT_TRUE(NSIsEmptyRect([scroller.get() rectForPart:NSScrollerIncrementLine]));
    EXPECT_TRUE(NSIsEmptyRect([scroller.get() rectForPart:NSScrollerDecrementLine]));
    EXPECT_EQ(pixel(scroller.get(), 6, 40), "B8B8B8") << "the knob";
    EXPECT_EQ(pixel(scroller.get(), 6, 190), white);
    [scroller.get() setFloatValue:0 knobProportion:0.98];
    EXPECT_EQ(pixel(scroller.get(), 6, 40), white);
}

TEST_F(Appearance, DrawsVectorPictures)
{
    const auto view = show(adopt([[NSImageView alloc] initWithFrame:NSMakeRect(50, 50, 16, 15)]));
    [view.get() setImage:[[NSWorkspace sharedWorkspace] iconForFile:@"/"]];
    EXPECT_EQ(pixel(view.get(), 8, 6), "5CA8E6") << "a folder";
}

TEST_F(Appearance, ShowsTheLastWordOfAToolTip)
{
    for (const CGFloat fontSize : { 8, 9, 10 }) {
        NSDictionary *attributes = @ { NSFontAttributeName : [NSFont toolTipsFontOfSize:fontSize] };
        const auto text =
            adopt([[NSAttributedString alloc] initWithString:@"Run cleanup even though Quorlen 3 was not detected"
                                                  attributes:attributes]);
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
        const auto view = show(adopt([[[inTip class] alloc] initWithFrame:[inTip bounds]]));
        [view.get() performSelector:@selector(setText:) withObject:text.get()];
        bool inkOfLastWord = false;
        for (double y = 4; y < size.height; ++y) {
            for (double x = size.width - 8; x < size.width; ++x) {
                inkOfLastWord |= pixel(view.get(), x, y) < "999999";
            }
        }
        EXPECT_TRUE(inkOfLastWord) << "in size " << fontSize << " of width " << size.width;
        [view.get() performSelector:@selector(setText:) withObject:nil]; // The view is shared and keeps its text.
        [view.get() removeFromSuperview];
    }
}
