#import "app/AppDelegate.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "tests/support/SwizzledMethod.hpp"
#import "ui/AppDelegate+OverrideReveal.h"

#include <gtest/gtest.h>

namespace
{
std::vector<std::string> calls;
}

/// Records which operations the launch calls.
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
}
- (void)updateDetectionStatus
{
    calls.push_back("updateDetectionStatus");
}
@end

/// Records what its monitor's handler calls.
@interface WatchingController : AppDelegate
@end

@implementation WatchingController
- (void)updateOverrideButtonVisibility
{
    calls.push_back("updateOverrideButtonVisibility");
}
@end

/// Records its own destruction.
@interface Witness : NSObject <NSCopying> {
    std::string _name;
}
- (id)initWithName:(const char *)name;
@end

@implementation Witness
- (id)initWithName:(const char *)name
{
    if ((self = [super init])) {
        _name = name;
    }
    return self;
}
- (id)copyWithZone:(NSZone *)zone
{
    return [[Witness allocWithZone:zone] initWithName:("copy of " + _name).c_str()];
}
- (void)dealloc
{
    calls.push_back(_name);
    [super dealloc];
}
@end

/// Sends an event to the application when it is destroyed.
@interface LateEvent : NSObject
@end

namespace
{

class Controller : public testing::Test
{
protected:
    void SetUp() override { calls.clear(); }

    /// An object of an unrelated class. The properties keep any object.
    static id witness(const char *name) { return [[[Witness alloc] initWithName:name] autorelease]; }

    const Retained<AppDelegate> controller = adopt([[AppDelegate alloc] init]);
};

NSEvent *keyDown(NSString *characters)
{
    return [NSEvent keyEventWithType:NSKeyDown
                            location:NSZeroPoint
                       modifierFlags:0
                           timestamp:0
                        windowNumber:0
                             context:nil
                          characters:characters
         charactersIgnoringModifiers:characters
                           isARepeat:NO
                             keyCode:0];
}

}

@implementation LateEvent
- (void)dealloc
{
    [NSApp sendEvent:keyDown(@"a")];
    [super dealloc];
}
@end

TEST_F(Controller, StartsEmpty)
{
    EXPECT_EQ([controller.get() window], nil);
    EXPECT_EQ([controller.get() statusLabel], nil);
    EXPECT_EQ([controller.get() removeButton], nil);
    EXPECT_EQ([controller.get() overrideButton], nil);
    EXPECT_EQ([controller.get() restoreLicenseButton], nil);
    EXPECT_EQ([controller.get() logView], nil);
    EXPECT_EQ([controller.get() lastBackupPath], nil);
    EXPECT_FALSE([controller.get() quorlenDetected]);
    EXPECT_EQ([controller.get() modifierMonitor], nil);
}

TEST_F(Controller, RetainsTheNewObjectAndReleasesTheOldOne)
{
    @autoreleasepool {
        [controller.get() setModifierMonitor:witness("first")];
        [controller.get() setWindow:witness("window")];
    }
    EXPECT_TRUE(calls.empty()) << "the old object is still retained after the pool";

    @autoreleasepool {
        [controller.get() setModifierMonitor:witness("second")];
        [controller.get() setWindow:nil];
    }
    EXPECT_EQ(calls, (std::vector<std::string> { "first", "window" }));
}

TEST_F(Controller, KeepsItsOwnCopyOfTheBackupPath)
{
    NSMutableString *path = [NSMutableString stringWithString:@"/Users/ann/Desktop/a.zip"];
    [controller.get() setLastBackupPath:path];

    [path setString:@"changed"];

    EXPECT_EQ(utf8([controller.get() lastBackupPath]), "/Users/ann/Desktop/a.zip");
}

TEST_F(Controller, ReleasesItsObjectsInReverseOrderOfDeclaration)
{
    AppDelegate *other = [[AppDelegate alloc] init];
    @autoreleasepool {
        [other setWindow:witness("window")];
        [other setStatusLabel:witness("statusLabel")];
        [other setRemoveButton:witness("removeButton")];
        [other setOverrideButton:witness("overrideButton")];
        [other setRestoreLicenseButton:witness("restoreLicenseButton")];
        [other setLogView:witness("logView")];
        [other setLastBackupPath:witness("lastBackupPath")];
        [other setModifierMonitor:witness("modifierMonitor")];
    }
    calls.clear();

    [other release];

    EXPECT_EQ(calls,
        (std::vector<std::string> { "modifierMonitor", "copy of lastBackupPath", "logView", "restoreLicenseButton",
            "overrideButton", "removeButton", "statusLabel", "window" }));
}

TEST_F(Controller, LaunchBuildsTheWindowThenTheMonitorThenScans)
{
    const auto noting = adopt([[NotingController alloc] init]);

    [noting.get() applicationDidFinishLaunching:nil];

    EXPECT_EQ(calls, (std::vector<std::string> { "buildWindow", "installModifierMonitor", "updateDetectionStatus" }));
}

TEST_F(Controller, ClosingTheWindowQuits)
{
    EXPECT_TRUE([controller.get() applicationShouldTerminateAfterLastWindowClosed:NSApp]);
}

TEST_F(Controller, TerminationRemovesTheMonitorAndClearsTheProperty)
{
    const auto watching = adopt([[WatchingController alloc] init]);
    [watching.get() installModifierMonitor];
    [NSApp sendEvent:keyDown(@"a")];
    ASSERT_EQ(calls, std::vector<std::string> { "updateOverrideButtonVisibility" });

    [watching.get() applicationWillTerminate:nil];
    EXPECT_EQ([watching.get() modifierMonitor], nil);
    [watching.get() applicationWillTerminate:nil];
    [NSApp sendEvent:keyDown(@"b")];

    EXPECT_EQ(calls.size(), 1u) << "the monitor was still there";
}

TEST_F(Controller, TerminationWithoutAMonitorRemovesNone)
{
    static int removals;
    removals = 0;
    const SwizzledMethod remove(
        object_getClass([NSEvent class]), @selector(removeMonitor:), +[](id, SEL, id) { ++removals; });

    [controller.get() applicationWillTerminate:nil];
    EXPECT_EQ(removals, 0);

    [controller.get() setModifierMonitor:witness("monitor")];
    [controller.get() applicationWillTerminate:nil];
    EXPECT_EQ(removals, 1);
}

TEST_F(Controller, TheMonitorDoesNotCallAControllerThatIsBeingDestroyed)
{
    AppDelegate *watching = [[WatchingController alloc] init];
    [watching installModifierMonitor];
    const auto monitor = Retained<NSObject>::sharing([watching modifierMonitor]);
    @autoreleasepool {
        [watching setModifierMonitor:[[[LateEvent alloc] init] autorelease]];
    }

    [watching release];

    EXPECT_TRUE(calls.empty());
    [NSEvent removeMonitor:monitor.get()];
}

TEST_F(Controller, TheMonitorDoesNotKeepTheControllerAlive)
{
    AppDelegate *watching = [[WatchingController alloc] init];
    [watching installModifierMonitor];
    const auto monitor = Retained<NSObject>::sharing([watching modifierMonitor]);
    ASSERT_EQ([watching retainCount], 1u);

    [watching release];
    [NSApp sendEvent:keyDown(@"a")];

    EXPECT_TRUE(calls.empty());
    [NSEvent removeMonitor:monitor.get()];
}
