#import "tests/support/AlertAnswers.hpp"
#import "tests/support/RoomTest.hpp"
#import "ui/AppDelegate+SupportPage.h"

namespace
{
using SupportPage = RoomTest;
const std::string browser = "/usr/bin/xdg-open";
}

TEST_F(SupportPage, OpensInTheBrowserAndLogsNothing)
{
    const auto before = callsOf(browser).size();

    [controller.get() openSupportPage:nil];

    stage({ "await", "xdg-open", std::to_string(before + 1) });
    const auto calls = callsOf(browser);
    EXPECT_EQ(calls.size(), before + 1);
    EXPECT_EQ(calls.back(), Strings { "https://www.vendrel.com/tool_qr3_legacy_removal_tool" });
    EXPECT_EQ(newLines(), Strings());
}

TEST_F(SupportPage, FailsSilentlyWithoutABrowser)
{
    const Staged missing({ "tool", "xdg-open", "missing" }, { "tool", "xdg-open", "real" });
    const AlertAnswers noAlerts({});

    [controller.get() openSupportPage:nil];

    EXPECT_EQ(newLines(), Strings());
    EXPECT_TRUE([[controller.get() window] isVisible]);
}
