#import "app/AppDelegate.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "tests/support/SwizzledMethod.hpp"
#import "ui/AppDelegate+OverrideReveal.h"

#include <gtest/gtest.h>

using Strings = std::vector<std::string>;

namespace
{

Strings calls;

void sendKeyPress()
{
    [NSApp sendEvent:keyEvent(NSKeyDown, @"a")];
}

}

/// Records what the launch and the monitor's handler call.
@interface NotingController : AppDelegate
@end

@implementation NotingController
- (void)buildWindow
{
    calls.push_back("buildWindow");
}
- (void)installModifierMonitor
{
    calls.push_back("installModifierMonitor");
    [super installModifierMonitor];
}
- (void)updateDetectionStatus
{
    calls.push_back("updateDetectionStatus");
}
- (void)updateOverrideButtonVisibility
{
    calls.push_back("updateOverrideButtonVisibility");
}
@end

/// Records its own destruction, and sends an event to the application then.
@interface Witness : NSObject <NSCopying> {
    std::string _name;
}
- (id)initWithName:(const std::string &)name;
@end

@implementation Witness
- (id)initWithName:(const std::string &)name
{
    if ((self = [super init])) {
        _name = name;
    }
    return self;
}
- (id)copyWithZone:(NSZone *)zone
{
    return [[Witness allocWithZone:zone] initWithName:"copy of " + _name];
}
- (void)dealloc
{
    calls.push_back(_name);
    sendKeyPress();
    [super dealloc];
}
@end

namespace
{

/// The properties that hold an object, in the order of their declaration. They keep an object of any class.
const Strings properties { "window", "statusLabel", "removeButton", "overrideButton", "restoreLicenseButton", "logView",
    "lastBackupPath", "modifierMonitor" };

struct Controller : testing::Test {
    const Retained<NotingController> controller = adopt([[NotingController alloc] init]);

    Controller() { calls.clear(); }
};

}

TEST_F(Controller, OwnsItsObjectsAndReleasesThemInReverseOrderUnseenByItsMonitor)
{
    AppDelegate *other = [[NotingController alloc] init];
    [other installModifierMonitor];
    const auto monitor = Retained<NSObject>::sharing([other modifierMonitor]);
    sendKeyPress();
    EXPECT_EQ(calls, (Strings { "installModifierMonitor", "updateOverrideButtonVisibility" }));
    @autoreleasepool {
        for (const std::string &property : properties) {
            [other setValue:[[[Witness alloc] initWithName:property] autorelease] forKey:ns(property)];
        }
        calls.clear();
    }
    EXPECT_EQ(calls, (Strings { "lastBackupPath", "updateOverrideButtonVisibility" })) << "it keeps a copy of the path";
    calls.clear();
    [other setValue:adopt([[Witness alloc] initWithName:"new statusLabel"]).get() forKey:@"statusLabel"];
    EXPECT_EQ(calls, (Strings { "statusLabel", "updateOverrideButtonVisibility" })) << "it releases the old object";
    calls.clear();

    [other release];

    sendKeyPress();
    EXPECT_EQ(calls,
        (Strings { "modifierMonitor", "copy of lastBackupPath", "logView", "restoreLicenseButton", "overrideButton",
            "removeButton", "new statusLabel", "window" }));
    [NSEvent removeMonitor:monitor.get()];
}

TEST_F(Controller, LaunchBuildsTheWindowThenTheMonitorThenScans)
{
    [controller.get() applicationDidFinishLaunching:nil];

    EXPECT_EQ(calls, (Strings { "buildWindow", "installModifierMonitor", "updateDetectionStatus" }));
    [controller.get() applicationWillTerminate:nil];
}

TEST_F(Controller, ClosingTheWindowQuits)
{
    EXPECT_TRUE([controller.get() applicationShouldTerminateAfterLastWindowClosed:NSApp]);
}

TEST_F(Controller, TerminationRemovesItsMonitorOnce)
{
    static std::vector<id> removed;
    removed.clear();
    const SwizzledMethod remove(
        object_getClass([NSEvent class]), @selector(removeMonitor:),
        +[](id, SEL, id monitor) { removed.push_back(monitor); });

    [controller.get() applicationWillTerminate:nil];
    EXPECT_EQ(removed, std::vector<id>()) << "there is no monitor";

    const auto monitor = adopt([[NSObject alloc] init]);
    [controller.get() setModifierMonitor:monitor.get()];
    [controller.get() applicationWillTerminate:nil];
    [controller.get() applicationWillTerminate:nil];
    EXPECT_EQ(removed, std::vector<id> { monitor.get() });
    EXPECT_EQ([controller.get() modifierMonitor], nil);
}
