#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

/// GNUstep's own methods, which no header declares.
@interface NSAlert (GNUstep)
/// Makes the window, as `runModal` does.
- (void)_setupPanel;
@end

TEST(AlertLayout, ShowsItsTextsInFullBesideTheIconAndTheButtonsBelow)
{
    const auto alert = adopt([[NSAlert alloc] init]);
    [alert.get() setMessageText:@"Quorlen 3 has been removed successfully."];
    [alert.get() setInformativeText:[@"" stringByPaddingToLength:400
                                                      withString:@"Hold this to be a rather long sentence. "
                                                 startingAtIndex:0]];
    for (NSString *title in @[ @"Restart Now", @"Restart Later", @"Third" ]) {
        [alert.get() addButtonWithTitle:title];
    }

    [alert.get() _setupPanel]; // lays the alert out and does not show it

    NSWindow *window = [alert.get() window];
    EXPECT_EQ(utf8([window title]), utf8([[NSProcessInfo processInfo] processName]));
    NSMutableArray *placed = [NSMutableArray array];
    for (NSView *view in [[window contentView] subviews]) {
        if ([view isHidden]) {
            continue;
        }
        const std::string described = utf8([view description]);
        EXPECT_TRUE(NSContainsRect([[window contentView] bounds], [view frame])) << described;
        for (NSView *other in placed) {
            EXPECT_FALSE(NSIntersectsRect([other frame], [view frame])) << described;
        }
        [placed addObject:view];
        if ([view isKindOfClass:[NSTextField class]]) {
            NSTextField *text = static_cast<NSTextField *>(view);
            const NSSize room = [[text cell] titleRectForBounds:[text bounds]].size;
            const NSRect taken =
                [[text attributedStringValue] boundingRectWithSize:NSMakeSize(room.width, 10000)
                                                           options:NSStringDrawingUsesLineFragmentOrigin];
            EXPECT_LE(NSHeight(taken), room.height) << utf8([text stringValue]);
        }
    }
    EXPECT_EQ([placed count], 6U) << "expected an icon, two texts and three buttons";
    NSButton *first = [[window contentView] viewWithTag:NSAlertFirstButtonReturn];
    NSButton *second = [[window contentView] viewWithTag:NSAlertSecondButtonReturn];
    EXPECT_GT(NSMinX([first frame]), NSMaxX([second frame]));
    EXPECT_EQ(utf8([first keyEquivalent]), "\r");
    EXPECT_EQ([first imagePosition], NSNoImage);
}
