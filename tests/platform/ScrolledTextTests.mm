#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace
{

/// A text view in a bordered scroll view with a vertical scroller, made with the calls of a Mac program.
struct ScrolledText : testing::Test {
    Retained<NSScrollView> scrollView = adopt([[NSScrollView alloc] initWithFrame:NSMakeRect(36, 82, 488, 120)]);
    Retained<NSTextView> textView;

    ScrolledText()
    {
        [scrollView.get() setHasVerticalScroller:YES];
        [scrollView.get() setBorderType:NSBezelBorder];
        textView = adopt([[NSTextView alloc] initWithFrame:[scrollView.get() bounds]]);
        [textView.get() setString:[@"" stringByPaddingToLength:2000 withString:@"words " startingAtIndex:0]];
        [scrollView.get() setDocumentView:textView.get()];
    }
};

}

TEST_F(ScrolledText, WrapsWithinTheVisibleWidth)
{
    NSLayoutManager *layout = [textView.get() layoutManager];
    NSTextContainer *container = [textView.get() textContainer];
    const NSRect used =
        (void([layout glyphRangeForTextContainer:container]), [layout usedRectForTextContainer:container]);
    EXPECT_GT(NSWidth(used), 300) << "the text is too short for this test";
    EXPECT_LE(NSMaxX(used) + [textView.get() textContainerOrigin].x, [scrollView.get() contentSize].width);
}

TEST_F(ScrolledText, KeepsItsFrames)
{
    EXPECT_EQ(NSWidth([textView.get() frame]), 488);
    EXPECT_TRUE(NSEqualRects([scrollView.get() frame], NSMakeRect(36, 82, 488, 120)));
}

TEST_F(ScrolledText, HasItsScrollerOnTheRight)
{
    EXPECT_GT(NSMinX([[scrollView.get() verticalScroller] frame]), NSMidX([scrollView.get() bounds]));
}
