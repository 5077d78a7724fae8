// The script and the quoted texts that the controller returns.

#import "removal/AppDelegate+CleanupScript.h"

#import "platform/Retained.hpp"
#import "platform/Text.hpp"
#include "removal/CleanupScript.hpp"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/Stage.hpp"

#include <gtest/gtest.h>

namespace
{
struct UsersScript : testing::Test {
    const Retained<AppDelegate> controller = adopt([[AppDelegate alloc] init]);
};
}

TEST_F(UsersScript, IsMadeForTheHomeAndAsksForItOncePerCall)
{
    for (const std::string path : { "/Users/bob", "/Users/eve" }) {
        const ReportedHome reported(path);

        EXPECT_EQ(utf8([controller.get() cleanupShellScript]), utf8(nsString(cleanupScript(utf16(ns(path))))));
        EXPECT_EQ(reported.timesAsked(), 1);
    }
}

TEST_F(UsersScript, QuotesStringsOfThePlatform)
{
    NSString *text = ns("o'neil \"\\ \n\U0001F600");

    EXPECT_EQ(utf8([controller.get() shellQuotedString:text]), "'o'\\''neil \"\\ \n\U0001F600'");
    EXPECT_EQ(utf8([controller.get() appleScriptQuotedString:text]), "\"o'neil \\\"\\\\ \\n\U0001F600\"");
}
