#import "app/AppDelegate+ActivityLog.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "tests/support/SwizzledMethod.hpp"
#import "ui/AppDelegate+MainWindow.h"

#include <gtest/gtest.h>

namespace
{

class ActivityLog : public testing::Test
{
protected:
    void SetUp() override { [controller.get() buildWindow]; }
    void TearDown() override { [[controller.get() window] close]; }

    NSTextView *view() const { return [controller.get() logView]; }
    std::string log() const { return utf8([[view() textStorage] string]); }
    bool scrolledToItsEnd() const
    {
        const NSRect text = [[view() layoutManager] usedRectForTextContainer:[view() textContainer]];
        return NSMaxY([view() visibleRect]) >= NSMaxY(text) - 1;
    }

    const Retained<AppDelegate> controller = adopt([[AppDelegate alloc] init]);
    /// The version is that of this program's own bundle.
    const std::string header = "version: 2.7.31\nupdated: 2026.06.14\nReady.\n";
};

}

TEST_F(ActivityLog, StartsWithVersionDateAndReady)
{
    EXPECT_EQ(log(), header);
}

TEST_F(ActivityLog, ShowsVersion1Point0IfTheBundleStatesNoneOrAnEmptyOne)
{
    static NSString *stated;
    const SwizzledMethod information(
        [NSBundle class], @selector(objectForInfoDictionaryKey:), +[](id, SEL, NSString *) { return stated; });
    for (NSString *version : { static_cast<NSString *>(nil), @"" }) {
        stated = version;
        EXPECT_EQ(utf8([controller.get() appVersionString]), "1.0");
    }
    stated = @"2";
    EXPECT_EQ(utf8([controller.get() appVersionString]), "2") << "any other version is shown";
}

TEST_F(ActivityLog, AppendsEachMessageAsItIsAndOneLineFeed)
{
    for (NSString *message : { @"first", static_cast<NSString *>(nil), @"two\nlines", @"100 %@ %s %d" }) {
        [controller.get() appendLog:message];
    }
    EXPECT_EQ(log(), header + "first\n\ntwo\nlines\n100 %@ %s %d\n");
}

TEST_F(ActivityLog, BeginsWithTheMessageIfTheViewReturnsNoText)
{
    {
        const SwizzledMethod noText([NSTextView class], @selector(string), +[](id, SEL) { return id(); });
        [controller.get() appendLog:@"first"];
    }
    EXPECT_EQ(log(), "first\n");
}

TEST_F(ActivityLog, IsScrolledToItsEndAfterEachLine)
{
    for (int line = 0; line < 40; ++line) {
        [controller.get() appendLog:@"a line"];
        EXPECT_TRUE(scrolledToItsEnd()) << "after line " << line;
    }
    ASSERT_GT(NSHeight([view() bounds]), NSHeight([view() visibleRect])) << "the log must be longer than its view";

    [view() scrollPoint:NSMakePoint(0, 0)];
    ASSERT_FALSE(scrolledToItsEnd());
    [controller.get() appendLog:@"one more"];
    EXPECT_TRUE(scrolledToItsEnd());
}

TEST(ActivityLogWithoutAWindow, IgnoresAMessage)
{
    const auto controller = adopt([[AppDelegate alloc] init]);

    [controller.get() appendLog:@"no one sees this"];

    EXPECT_EQ([controller.get() logView], nil);
}
