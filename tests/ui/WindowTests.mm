#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "tests/support/SwizzledMethod.hpp"
#import "ui/AppDelegate+MainWindow.h"

#include <gtest/gtest.h>

namespace
{

class Window : public testing::Test
{
protected:
    void SetUp() override { [controller.get() buildWindow]; }
    void TearDown() override { [[controller.get() window] close]; }

    NSWindow *window() const { return [controller.get() window]; }
    NSArray *views() const { return [[window() contentView] subviews]; }
    /// A view by its number in the window's table, counted from 1. The log view is the scroll view's document view, so
    /// the table's sixth and seventh rows are one subview.
    id view(int number) const
    {
        return number == 7 ? [[view(6) documentView] self]
                           : [views() objectAtIndex:number > 7 ? number - 2 : number - 1];
    }

    const Retained<AppDelegate> controller = adopt([[AppDelegate alloc] init]);
};

void expectFrame(NSView *view, double x, double y, double width, double height)
{
    const NSRect frame = [view frame];
    EXPECT_EQ(frame.origin.x, x);
    EXPECT_EQ(frame.origin.y, y);
    EXPECT_EQ(frame.size.width, width);
    EXPECT_EQ(frame.size.height, height);
    EXPECT_EQ([view autoresizingMask], 0u);
}

void expectLabel(NSTextField *label, const char *text, NSFont *font)
{
    EXPECT_TRUE([label isKindOfClass:[NSTextField class]]);
    EXPECT_EQ(utf8([label stringValue]), text);
    EXPECT_EQ(utf8([[label font] fontName]), utf8([font fontName]));
    EXPECT_EQ([[label font] pointSize], [font pointSize]);
    EXPECT_EQ([label alignment], NSTextAlignmentLeft);
    EXPECT_FALSE([label isEditable]);
    EXPECT_FALSE([label isSelectable]);
    EXPECT_FALSE([label isBezeled]);
    EXPECT_FALSE([label drawsBackground]);
}

void expectButton(NSButton *button, const char *title, NSBezelStyle style, id target, SEL action, const char *toolTip)
{
    EXPECT_TRUE([button isKindOfClass:[NSButton class]]);
    EXPECT_EQ(utf8([button title]), title);
    EXPECT_EQ([button bezelStyle], style);
    EXPECT_EQ([button target], target);
    EXPECT_TRUE(sel_isEqual([button action], action));
    EXPECT_EQ(utf8([button toolTip]), toolTip);
    EXPECT_EQ(utf8([button keyEquivalent]), "");
    EXPECT_TRUE([button isEnabled]);
}

}

TEST_F(Window, IsTitledClosableAndMiniaturizableButNotResizable)
{
    EXPECT_EQ(utf8([window() title]), "Quorlen 3 Removal Tool");
    EXPECT_EQ([window() styleMask], 7u);
    EXPECT_FALSE([window() isReleasedWhenClosed]);
    const NSRect content = [window() contentRectForFrameRect:[window() frame]];
    EXPECT_EQ(content.size.width, 560);
    EXPECT_EQ(content.size.height, 430);
}

TEST_F(Window, IsMadeAtOnceBufferedAndNotRestorable)
{
    // GNUstep's window does not report these settings, so the test records the calls.
    static std::vector<NSUInteger> asked;
    asked.clear();
    {
        const SwizzledMethod restorable(
            [NSWindow class], @selector(setRestorable:), +[](id, SEL, BOOL flag) { asked.push_back(flag); });
        [controller.get() buildWindow];
    }
    const SwizzledMethod make(
        [NSWindow class], @selector(initWithContentRect:styleMask:backing:defer:),
        +[](id window, SEL, NSRect content, NSUInteger, NSBackingStoreType backing, BOOL defer) {
            EXPECT_TRUE(NSEqualRects(content, NSMakeRect(0, 0, 560, 430)));
            asked.insert(asked.end(), { backing, defer });
            [window release];
            return id();
        });
    const auto without = adopt([[AppDelegate alloc] init]);
    [without.get() buildWindow];

    EXPECT_EQ(asked, (std::vector<NSUInteger> { NO, NSBackingStoreBuffered, NO }));
}

TEST_F(Window, IsCenteredInFrontAndKey)
{
    const NSRect screen = [[NSScreen mainScreen] frame];
    EXPECT_TRUE([window() isVisible]);
    EXPECT_TRUE([window() isKeyWindow]) << "it is key before the window manager decides";
    EXPECT_NEAR(NSMidX([window() frame]), NSMidX(screen), 8);
    EXPECT_GE(NSMidY([window() frame]), NSMidY(screen) - 8);
}

TEST_F(Window, HoldsItsViewsInTheirOrder)
{
    ASSERT_EQ([views() count], 11u);
    expectFrame(view(1), 36, 286, 104, 104);
    expectFrame(view(2), 154, 332, 330, 52);
    expectFrame(view(3), 154, 296, 360, 28);
    expectFrame(view(4), 36, 248, 488, 32);
    expectFrame(view(5), 36, 215, 488, 22);
    expectFrame(view(6), 36, 82, 488, 120);
    expectFrame(view(8), 36, 30, 30, 30);
    expectFrame(view(9), 78, 28, 132, 36);
    expectFrame(view(10), 242, 28, 180, 36);
    expectFrame(view(11), 242, 28, 180, 36);
    expectFrame(view(12), 434, 28, 90, 36);
}

TEST_F(Window, LeavesImageViewsEmptyIfTheApplicationHasNoImages)
{
    for (int number : { 1, 2 }) {
        EXPECT_TRUE([view(number) isKindOfClass:[NSImageView class]]);
        EXPECT_EQ([(NSImageView *)view(number) image], nil);
        EXPECT_EQ([(NSImageView *)view(number) imageScaling], 3u);
    }
}

TEST_F(Window, SaysWhatItIsAndWhatItDoes)
{
    expectLabel(view(3), "Quorlen 3 Removal Tool", [NSFont boldSystemFontOfSize:20]);
    expectLabel(
        view(4), "This tool removes Quorlen 3 and related support files from this Mac.", [NSFont systemFontOfSize:14]);
    EXPECT_EQ([[view(4) cell] lineBreakMode], NSLineBreakByWordWrapping);
    expectLabel(view(5), "Checking for Quorlen 3...", [NSFont systemFontOfSize:13]);
    EXPECT_EQ([controller.get() statusLabel], view(5));
}

TEST_F(Window, ShowsALogThatCanBeReadAndCopiedButNotEdited)
{
    NSScrollView *scrollView = view(6);
    EXPECT_TRUE([scrollView hasVerticalScroller]);
    EXPECT_FALSE([scrollView hasHorizontalScroller]);
    EXPECT_EQ([scrollView borderType], NSBezelBorder);

    NSTextView *log = view(7);
    EXPECT_EQ([controller.get() logView], log);
    expectFrame(log, 0, 0, 488, 120);
    EXPECT_FALSE([log isEditable]);
    EXPECT_TRUE([log isSelectable]);
    NSFont *font = [NSFont userFixedPitchFontOfSize:11];
    EXPECT_EQ(utf8([[log font] fontName]), utf8([font fontName]));
    EXPECT_EQ([[log font] pointSize], 11);
}

TEST_F(Window, HasItsRowOfButtons)
{
    AppDelegate *it = controller.get();
    expectButton(view(8), "?", NSBezelStyleCircular, it, @selector(openSupportPage:), "Open Vendrel Support");
    expectButton(view(9), "Restore License", NSBezelStyleRounded, it, @selector(restoreLicense:),
        "Restore a Quorlen 3 license backup");
    expectButton(view(10), "Remove Quorlen 3", NSBezelStyleRounded, it, @selector(removeQuorlen3:), "");
    expectButton(view(11), "Override Cleanup", NSBezelStyleRounded, it, @selector(overrideRemoveQuorlen3:),
        "Run cleanup even though Quorlen 3 was not detected");
    expectButton(view(12), "Cancel", NSBezelStyleRounded, NSApp, @selector(terminate:), "");
    EXPECT_EQ([it restoreLicenseButton], view(9));
    EXPECT_EQ([it removeButton], view(10));
    EXPECT_EQ([it overrideButton], view(11));
    EXPECT_EQ([window() defaultButtonCell], nil);
}

TEST_F(Window, GivesNoButtonAnEmptyToolTip)
{
    static std::vector<std::string> given;
    given.clear();
    const SwizzledMethod toolTip(
        [NSView class], @selector(setToolTip:), +[](id, SEL, NSString *text) { given.push_back(utf8(text)); });

    [controller.get() buildWindow];

    EXPECT_EQ(given,
        (std::vector<std::string> { "Open Vendrel Support", "Restore a Quorlen 3 license backup",
            "Run cleanup even though Quorlen 3 was not detected" }));
}

TEST_F(Window, StartsWithTheRemoveButtonShownAndTheOverrideHidden)
{
    EXPECT_FALSE([[controller.get() removeButton] isHidden]);
    EXPECT_TRUE([[controller.get() overrideButton] isHidden]);
    for (int number : { 8, 9, 12 }) {
        EXPECT_FALSE([view(number) isHidden]);
    }
}

TEST_F(Window, WrapsItsDescriptionInsteadOfCuttingItOff)
{
    NSTextField *description = view(4);
    const NSSize wanted = [[description cell] cellSizeForBounds:NSMakeRect(0, 0, 488, 1000)];

    EXPECT_LE(wanted.width, 488);
    EXPECT_LE(wanted.height, 32);
    EXPECT_TRUE([[description cell] wraps]);
}

TEST_F(Window, SurvivesBeingClosed)
{
    NSWindow *kept = window();
    [kept close];

    EXPECT_EQ([controller.get() window], kept);
    EXPECT_EQ(utf8([kept title]), "Quorlen 3 Removal Tool");
}

/// Registers an image under a name for its own lifetime.
class NamedImage
{
public:
    explicit NamedImage(NSString *name) { [_image.get() setName:name]; }
    ~NamedImage() { [_image.get() setName:nil]; }
    NSImage *get() const { return _image.get(); }

private:
    const Retained<NSImage> _image = adopt([[NSImage alloc] initWithSize:NSMakeSize(8, 8)]);
};

TEST_F(Window, ShowsTheRemovalIconOrElseTheProductsIconAndTheWordmark)
{
    const NamedImage product(@"icon_2024");
    {
        const NamedImage wordmark(@"quorlen-typeface_1024");
        [controller.get() buildWindow];
        EXPECT_EQ([(NSImageView *)view(1) image], product.get());
        EXPECT_EQ([(NSImageView *)view(2) image], wordmark.get());
    }
    const NamedImage removal(@"icon_removal_2024");
    [controller.get() buildWindow];
    EXPECT_EQ([(NSImageView *)view(1) image], removal.get());
    EXPECT_EQ([(NSImageView *)view(2) image], nil) << "nothing replaces a missing wordmark";
}

TEST(Label, WithoutTextIsEmpty)
{
    const auto controller = adopt([[AppDelegate alloc] init]);
    NSFont *font = [NSFont systemFontOfSize:12];

    static std::vector<std::string> given;
    given.clear();
    const SwizzledMethod note(
        [NSControl class], @selector(setStringValue:),
        +[](id, SEL, NSString *text) { given.push_back(text ? utf8(text) : "nil"); });

    NSTextField *label = [controller.get() labelWithFrame:NSMakeRect(1, 2, 3, 4)
                                                     text:nil
                                                     font:font
                                                alignment:NSTextAlignmentRight];

    EXPECT_EQ(given, std::vector<std::string> { "" });
    EXPECT_EQ([label alignment], NSTextAlignmentRight);
    expectFrame(label, 1, 2, 3, 4);
}

TEST(Label, KeepsThePlatformsOtherDefaults)
{
    const auto controller = adopt([[AppDelegate alloc] init]);
    const auto plain = adopt([[NSTextField alloc] initWithFrame:NSMakeRect(0, 0, 100, 20)]);

    NSTextField *label = [controller.get() labelWithFrame:[plain.get() frame]
                                                     text:@"x"
                                                     font:[NSFont systemFontOfSize:12]
                                                alignment:NSTextAlignmentLeft];

    EXPECT_EQ([[label cell] lineBreakMode], [[plain.get() cell] lineBreakMode]);
    EXPECT_EQ([[label cell] wraps], [[plain.get() cell] wraps]);
    EXPECT_TRUE([[label textColor] isEqual:[plain.get() textColor]]);
    EXPECT_EQ([label superview], nil);
}
