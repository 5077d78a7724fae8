#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"
#import "ui/AppDelegate+SupportPage.h"

#include <gtest/gtest.h>

TEST(SupportPage, OpensInTheBrowserWithoutAWordInTheLog)
{
    const auto controller = adopt([[AppDelegate alloc] init]);
    [controller.get() buildWindow];
    const auto log = utf8([[controller.get() logView] string]);

    [controller.get() openSupportPage:nil];

    stage({ "await", "xdg-open" });
    const auto calls = run({ "pkexec", "/opt/practice/stage", "report", "--json" });
    EXPECT_NE(calls.output.find("https://www.vendrel.com/tool_qr3_legacy_removal_tool\""), std::string::npos)
        << calls.output;
    EXPECT_EQ(utf8([[controller.get() logView] string]), log);
    [[controller.get() window] close];
}
