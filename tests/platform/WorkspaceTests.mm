#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

TEST(Workspace, SaysWhetherTheDesktopsOpenerWasStarted)
{
    const auto opens = [](NSString *address) {
        return [[NSWorkspace sharedWorkspace] openURL:address ? [NSURL URLWithString:address] : nil];
    };
    EXPECT_TRUE(opens(@"https://example.com/"));
    EXPECT_FALSE(opens(nil));
    EXPECT_FALSE(opens(@"-no-scheme"));
    stage({ "tool", "xdg-open", "missing" });
    EXPECT_FALSE(opens(@"https://example.com/"));
}
