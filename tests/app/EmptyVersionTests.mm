#import "app/AppDelegate+ActivityLog.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

TEST(Version, AnEmptyVersionInTheBundleReads1Point0)
{
    NSDictionary *information = [[NSBundle mainBundle] infoDictionary];
    ASSERT_EQ(utf8([information objectForKey:@"CFBundleShortVersionString"]), "");
    ASSERT_NE([information objectForKey:@"CFBundleShortVersionString"], nil) << "the bundle must hold the key";

    const auto controller = adopt([[AppDelegate alloc] init]);

    EXPECT_EQ(utf8([controller.get() appVersionString]), "1.0");
}
