#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

TEST(PrivilegedStatement, ReportsThatPkexecIsMissingAndNotARefusal)
{
    stage({ "tool", "pkexec", "missing" });
    const auto script =
        adopt([[NSAppleScript alloc] initWithSource:@"do shell script \"true\" with administrator privileges"]);
    NSDictionary *record = nil;
    EXPECT_FALSE([script.get() executeAndReturnError:&record]);
    EXPECT_EQ([[record objectForKey:NSAppleScriptErrorNumber] intValue], 100000 + ENOENT);
    EXPECT_EQ(utf8([record objectForKey:NSAppleScriptErrorMessage]), "/usr/bin/pkexec: No such file or directory.");
}
