#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/wait.h>

TEST(Workspace, OpensAnAddressWithTheDesktopsOpenerAndCollectsIt)
{
    EXPECT_TRUE([[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:@"https://example.com/a%20b?c=d&e"]]);
    stage({ "await", "xdg-open" });
    EXPECT_NE(
        run({ "pkexec", "/opt/practice/stage", "report", "--json" }).output.find("https://example.com/a%20b?c=d&e\""),
        std::string::npos);
    EXPECT_TRUE(handleEventsUntil([] {
        siginfo_t child; // Looked at only: the test must not collect it itself.
        return waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
    })) << "the ended opener was not collected";
}

TEST(Workspace, SaysNoWhenThereIsNoOpenerOrNoAddress)
{
    EXPECT_FALSE([[NSWorkspace sharedWorkspace] openURL:nil]);
    EXPECT_FALSE([[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:@"-no-scheme"]]);
    stage({ "tool", "xdg-open", "missing" });
    EXPECT_FALSE([[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:@"https://example.com/"]]);
    stage({ "tool", "xdg-open", "real" });
}
