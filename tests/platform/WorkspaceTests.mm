#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/wait.h>

TEST(Workspace, OpensAnAddressWithTheDesktopsOpenerAndWaitsForItsEnd)
{
    EXPECT_TRUE([[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:@"https://example.com/a%20b?c=d&e"]]);
    stage({ "await", "xdg-open" });
    EXPECT_NE(
        run({ "pkexec", "/opt/practice/stage", "report", "--json" }).output.find("https://example.com/a%20b?c=d&e\""),
        std::string::npos);
    EXPECT_TRUE(handleEventsUntil([] {
        siginfo_t child; // WNOWAIT: the test itself must not reap the process.
        return waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
    })) << "the ended opener was not reaped";
}

TEST(Workspace, ReportsFailureWhenThereIsNoOpenerOrNoAddress)
{
    EXPECT_FALSE([[NSWorkspace sharedWorkspace] openURL:nil]);
    EXPECT_FALSE([[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:@"-no-scheme"]]);
    stage({ "tool", "xdg-open", "missing" });
    EXPECT_FALSE([[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:@"https://example.com/"]]);
    stage({ "tool", "xdg-open", "real" });
}
