#import "platform/Retained.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

TEST(ScrolledText, WrapsBesideTheScrollerOnTheRight)
{
    const auto scrollView = adopt([[NSScrollView alloc] initWithFrame:NSMakeRect(36, 82, 488, 120)]);
    [scrollView.get() setHasVerticalScroller:YES];
    [scrollView.get() setBorderType:NSBezelBorder];
    const auto textView = adopt([[NSTextView alloc] initWithFrame:[scrollView.get() bounds]]);
    [textView.get() setString:[@"" stringByPaddingToLength:2000 withString:@"words " startingAtIndex:0]];

    [scrollView.get() setDocumentView:textView.get()];
    [textView.get() setFrameSize:NSMakeSize(488, 700)]; // as when it grows

    NSLayoutManager *layout = [textView.get() layoutManager];
    NSTextContainer *container = [textView.get() textContainer];
    [layout ensureLayoutForTextContainer:container];
    const NSRect used = [layout usedRectForTextContainer:container];
    EXPECT_GT(NSWidth(used), 300) << "the text is too short for this test";
    EXPECT_LE(NSMaxX(used) + [textView.get() textContainerOrigin].x, [scrollView.get() contentSize].width);
    EXPECT_GT(NSMinX([[scrollView.get() verticalScroller] frame]), NSMidX([scrollView.get() bounds]));
}
