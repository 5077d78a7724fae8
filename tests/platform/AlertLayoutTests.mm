#import "platform/Retained.hpp"
#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <vector>

/// GNUstep's own methods, which no header declares.
@interface NSAlert (GNUstep)
/// Makes the window, as `runModal` does.
- (void)_setupPanel;
@end

namespace
{

/// An alert with its layout done. It is not shown.
struct LaidOutAlert : testing::Test {
    Retained<NSAlert> alert = adopt([[NSAlert alloc] init]);

    NSWindow *layOut(NSString *message, NSString *informative, NSArray *buttons)
    {
        [alert.get() setMessageText:message];
        [alert.get() setInformativeText:informative];
        for (NSString *title in buttons) {
            [alert.get() addButtonWithTitle:title];
        }
        [alert.get() _setupPanel];
        return [alert.get() window];
    }

    std::vector<NSView *> views(Class kind)
    {
        std::vector<NSView *> found;
        for (NSView *view in [[[alert.get() window] contentView] subviews]) {
            if ([view isKindOfClass:kind] && ![view isHidden]) {
                found.push_back(view);
            }
        }
        return found;
    }

    NSTextField *text(NSString *value)
    {
        for (NSView *view : views([NSTextField class])) {
            if ([[static_cast<NSTextField *>(view) stringValue] isEqualToString:value]) {
                return static_cast<NSTextField *>(view);
            }
        }
        return nil;
    }

    NSButton *button(NSString *title)
    {
        for (NSView *view : views([NSButton class])) {
            if ([[static_cast<NSButton *>(view) title] isEqualToString:title]) {
                return static_cast<NSButton *>(view);
            }
        }
        return nil;
    }
};

}

TEST_F(LaidOutAlert, DoesNotOverlapItsViewsAndKeepsThemInTheWindow)
{
    NSString *const sentence = @"Hold this to be a rather long sentence about what is going to happen next. ";
    NSWindow *window = layOut(@"Quorlen 3 has been removed successfully.",
        [@"" stringByPaddingToLength:400 withString:sentence startingAtIndex:0],
        @[ @"Restart Now", @"Restart Later", @"A title that is longer than most" ]);
    std::vector<NSView *> all = views([NSView class]);
    ASSERT_EQ(all.size(), 6u) << "expected an icon, two texts and three buttons";
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_TRUE(NSContainsRect([[window contentView] bounds], [all[i] frame])) << i;
        for (size_t j = 0; j < i; ++j) {
            EXPECT_FALSE(NSIntersectsRect([all[i] frame], [all[j] frame])) << i << " and " << j;
        }
    }
}

TEST_F(LaidOutAlert, ShowsItsTextsInFull)
{
    NSString *const informative = @"This tool removes Quorlen 3 and related support files from this Mac.";
    layOut(@"Remove Quorlen 3?", informative, @[ @"Remove Quorlen 3", @"Cancel" ]);
    for (NSTextField *field : { text(@"Remove Quorlen 3?"), text(informative) }) {
        ASSERT_TRUE(field);
        const NSSize room = [[field cell] titleRectForBounds:[field bounds]].size;
        const NSRect taken = [[field attributedStringValue] boundingRectWithSize:NSMakeSize(room.width, 10000)
                                                                         options:NSStringDrawingUsesLineFragmentOrigin];
        EXPECT_LE(NSHeight(taken), room.height) << utf8([field stringValue]);
    }
}

TEST_F(LaidOutAlert, HasItsFirstButtonRightmostAndDefault)
{
    layOut(@"A question", @"", @[ @"Remove", @"Cancel" ]);
    EXPECT_GT(NSMinX([button(@"Remove") frame]), NSMaxX([button(@"Cancel") frame]));
    EXPECT_EQ(utf8([button(@"Remove") keyEquivalent]), "\r");
    EXPECT_EQ([button(@"Remove") imagePosition], NSNoImage);
}

TEST_F(LaidOutAlert, HasTheProgramsNameAsTitle)
{
    NSWindow *window = layOut(@"A question", @"", @[ @"OK" ]);
    EXPECT_EQ(utf8([window title]), utf8([[NSProcessInfo processInfo] processName]));
}
