#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

/// Waits for a notification.
@interface Listener : NSObject {
@public
    bool _heard;
}
@end

@implementation Listener

- (void)hear:(NSNotification *)notification
{
    _heard = true;
}

@end

TEST(PasteboardServer, AnnouncesThatItHasStarted)
{
    const auto listener = adopt([[Listener alloc] init]);
    [[NSDistributedNotificationCenter defaultCenter] addObserver:listener.get()
                                                        selector:@selector(hear:)
                                                            name:@"GSStartup-Test"
                                                          object:nil];
    run({ "sh", "-c", "gpbs -GSStartupNotification GSStartup-Test --auto >/dev/null 2>&1 &" });
    EXPECT_TRUE(handleEventsUntil([&] { return listener.get()->_heard; }));
}
