#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

TEST(PasteboardServer, AnnouncesThatItHasStarted)
{
    static bool heard = false;
    [[NSDistributedNotificationCenter defaultCenter] addObserverForName:@"GSStartup-Test"
                                                                 object:nil
                                                                  queue:nil
                                                             usingBlock:^(NSNotification *) { heard = true; }];
    run({ "sh", "-c", "gpbs -GSStartupNotification GSStartup-Test --auto >/dev/null 2>&1 &" });
    EXPECT_TRUE(handleEventsUntil([&] { return heard; }));
}
