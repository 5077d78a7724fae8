#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "tests/support/SwizzledMethod.hpp"
#import "ui/AppDelegate+MainWindow.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

void expectFrame(NSView *view, NSRect frame)
{
    EXPECT_EQ(utf8(NSStringFromRect([view frame])), utf8(NSStringFromRect(frame)));
    EXPECT_EQ([view autoresizingMask], 0u);
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

class Window : public testing::Test
{
protected:
    void SetUp() override
    {
        [controller.get() buildWindow];
        ASSERT_EQ([[[window() contentView] subviews] count], 11u);
    }
    void TearDown() override { [[controller.get() window] close]; }

    NSWindow *window() const { return [controller.get() window]; }
    /// A view by its place in the window, from back to front.
    id view(NSUInteger place) const { return [[[window() contentView] subviews] objectAtIndex:place]; }
    /// Builds the window again and expects these images in it.
    void expectImages(NSImage *icon, NSImage *wordmark)
    {
        [controller.get() buildWindow];
        expectFrame(view(0), NSMakeRect(36, 286, 104, 104));
        expectFrame(view(1), NSMakeRect(154, 332, 330, 52));
        EXPECT_EQ([view(0) image], icon);
        EXPECT_EQ([view(1) image], wordmark);
        EXPECT_EQ([view(0) imageScaling], NSImageScaleProportionallyUpOrDown);
        EXPECT_EQ([view(1) imageScaling], NSImageScaleProportionallyUpOrDown);
    }

    const Retained<AppDelegate> controller = adopt([[AppDelegate alloc] init]);
};

void expectLabel(NSTextField *label, NSRect frame, const char *text, NSFont *font)
{
    expectFrame(label, frame);
    EXPECT_EQ(utf8([label stringValue]), text);
    EXPECT_TRUE([[label font] isEqual:font]) << utf8([[label font] description]);
    EXPECT_EQ([label alignment], NSTextAlignmentLeft);
    EXPECT_FALSE([label isEditable]);
    EXPECT_FALSE([label isSelectable]);
    EXPECT_FALSE([label isBezeled]);
    EXPECT_FALSE([label drawsBackground]);
}

void expectButton(NSButton *button, NSRect frame, const char *title, id target, SEL action, const char *toolTip)
{
    expectFrame(button, frame);
    EXPECT_EQ(utf8([button title]), title);
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
    EXPECT_TRUE(NSEqualSizes([[window() contentView] frame].size, NSMakeSize(560, 430)));
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

TEST_F(Window, SaysWhatItIsAndWhatItDoes)
{
    expectLabel(view(2), NSMakeRect(154, 296, 360, 28), "Quorlen 3 Removal Tool", [NSFont boldSystemFontOfSize:20]);
    expectLabel(view(3), NSMakeRect(36, 248, 488, 32),
        "This tool removes Quorlen 3 and related support files from this Mac.", [NSFont systemFontOfSize:14]);
    EXPECT_EQ([[view(3) cell] lineBreakMode], NSLineBreakByWordWrapping);
    expectLabel(view(4), NSMakeRect(36, 215, 488, 22), "Checking for Quorlen 3...", [NSFont systemFontOfSize:13]);
    EXPECT_EQ([controller.get() statusLabel], view(4));
}

TEST_F(Window, ShowsALogThatCanBeReadAndCopiedButNotEdited)
{
    NSScrollView *scrollView = view(5);
    expectFrame(scrollView, NSMakeRect(36, 82, 488, 120));
    EXPECT_TRUE([scrollView hasVerticalScroller]);
    EXPECT_FALSE([scrollView hasHorizontalScroller]);
    EXPECT_EQ([scrollView borderType], NSBezelBorder);

    NSTextView *log = [controller.get() logView];
    EXPECT_EQ([scrollView documentView], log);
    expectFrame(log, NSMakeRect(0, 0, 488, 120));
    EXPECT_FALSE([log isEditable]);
    EXPECT_TRUE([log isSelectable]);
    EXPECT_TRUE([[log font] isEqual:[NSFont userFixedPitchFontOfSize:11]]) << utf8([[log font] description]);
}

TEST_F(Window, HasItsRowOfButtons)
{
    AppDelegate *it = controller.get();
    const NSRect shared = NSMakeRect(242, 28, 180, 36);
    expectButton(view(6), NSMakeRect(36, 30, 30, 30), "?", it, @selector(openSupportPage:), "Open Vendrel Support");
    expectButton(view(7), NSMakeRect(78, 28, 132, 36), "Restore License", it, @selector(restoreLicense:),
        "Restore a Quorlen 3 license backup");
    expectButton(view(8), shared, "Remove Quorlen 3", it, @selector(removeQuorlen3:), "");
    expectButton(view(9), shared, "Override Cleanup", it, @selector(overrideRemoveQuorlen3:),
        "Run cleanup even though Quorlen 3 was not detected");
    expectButton(view(10), NSMakeRect(434, 28, 90, 36), "Cancel", NSApp, @selector(terminate:), "");
    EXPECT_EQ([it restoreLicenseButton], view(7));
    EXPECT_EQ([it removeButton], view(8));
    EXPECT_EQ([it overrideButton], view(9));
    EXPECT_EQ([window() defaultButtonCell], nil);
    for (NSUInteger place = 0; place < 11; ++place) {
        EXPECT_EQ([view(place) isHidden], view(place) == [it overrideButton]) << place;
        if (place >= 6) {
            EXPECT_EQ([(NSButton *)view(place) bezelStyle], place == 6 ? NSBezelStyleCircular : NSBezelStyleRounded);
        }
    }
}

TEST_F(Window, GivesNoButtonAnEmptyToolTip)
{
    // GNUstep's button does not report an empty tool tip, so the test records the calls.
    static std::vector<std::string> given;
    given.clear();
    const SwizzledMethod toolTip(
        [NSView class], @selector(setToolTip:), +[](id, SEL, NSString *text) { given.push_back(utf8(text)); });

    [controller.get() buildWindow];

    EXPECT_EQ(given.size(), 3u);
    EXPECT_EQ(std::ranges::count(given, ""), 0);
}

TEST_F(Window, WrapsItsDescriptionInsteadOfCuttingItOff)
{
    NSTextField *description = view(3);
    const NSSize wanted = [[description cell] cellSizeForBounds:NSMakeRect(0, 0, 488, 1000)];

    EXPECT_LE(wanted.width, 488);
    EXPECT_LE(wanted.height, 32);
    EXPECT_TRUE([[description cell] wraps]);
}

TEST_F(Window, ShowsTheRemovalIconOrElseTheProductsIconAndTheWordmark)
{
    expectImages(nil, nil);
    const NamedImage product(@"icon_2024");
    {
        const NamedImage wordmark(@"quorlen-typeface_1024");
        expectImages(product.get(), wordmark.get());
    }
    expectImages(product.get(), nil);
    const NamedImage removal(@"icon_removal_2024");
    expectImages(removal.get(), nil);
}

TEST(Label, WithoutTextIsEmptyAndKeepsThePlatformsOtherDefaults)
{
    static std::vector<std::string> given;
    given.clear();
    const SwizzledMethod note(
        [NSControl class], @selector(setStringValue:),
        +[](id, SEL, NSString *text) { given.push_back(text ? utf8(text) : "nil"); });
    const auto controller = adopt([[AppDelegate alloc] init]);
    const auto plain = adopt([[NSTextField alloc] initWithFrame:NSMakeRect(1, 2, 3, 4)]);

    NSTextField *label = [controller.get() labelWithFrame:[plain.get() frame]
                                                     text:nil
                                                     font:[NSFont systemFontOfSize:12]
                                                alignment:NSTextAlignmentRight];

    EXPECT_EQ(given, std::vector<std::string> { "" });
    expectFrame(label, [plain.get() frame]);
    EXPECT_EQ([label alignment], NSTextAlignmentRight);
    EXPECT_EQ([[label cell] lineBreakMode], [[plain.get() cell] lineBreakMode]);
    EXPECT_EQ([[label cell] wraps], [[plain.get() cell] wraps]);
    EXPECT_TRUE([[label textColor] isEqual:[plain.get() textColor]]);
    EXPECT_EQ([label superview], nil);
}
