#import "platform/Retained.hpp"
#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

#include <memory>

namespace
{

using Events = std::vector<NSEvent *>;

NSEvent *keyEvent(NSEventType type, NSWindow *window, NSString *characters)
{
    return [NSEvent keyEventWithType:type
                            location:NSZeroPoint
                       modifierFlags:0
                           timestamp:0
                        windowNumber:[window windowNumber]
                             context:nil
                          characters:characters
         charactersIgnoringModifiers:characters
                           isARepeat:NO
                             keyCode:38];
}

NSEvent *keyDown(NSWindow *window, NSString *characters)
{
    return keyEvent(NSKeyDown, window, characters);
}

/// An installed monitor. Its destructor removes it unless it was removed before.
class Monitor
{
public:
    Monitor(NSEventMask mask, NSEvent * (^handler)(NSEvent *)) :
        _token([[NSEvent addLocalMonitorForEventsMatchingMask:mask handler:handler] retain])
    {
    }
    ~Monitor()
    {
        remove();
        [_token release];
    }
    void remove() { [NSEvent removeMonitor:_token]; }

private:
    id _token;
};

struct EventMonitors : testing::Test {
    TestWindow shown;
    Events seen, laterSeen;
    Events *const seenByMonitor = &seen;
    Events *const seenByLater = &laterSeen;

    void dispatch(NSEvent *event) { [NSApp sendEvent:event]; }
};

/// A monitor whose handler captures an object and a C++ value. The block on this function's stack holds them only until
/// this function returns.
std::unique_ptr<Monitor> monitorHolding(NSObject *object, std::shared_ptr<int> value)
{
    return std::make_unique<Monitor>(NSEventMaskKeyDown, ^(NSEvent *event) {
        EXPECT_TRUE(object && *value == 1);
        return event;
    });
}

}

TEST_F(EventMonitors, ShowAnEventToTheHandlerAndThenToItsWindow)
{
    Events *const byMonitor = seenByMonitor;
    NotingView *const view = shown.view();
    const Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *event) {
        EXPECT_TRUE(view->seen.empty()) << "the window got the event before the handler";
        byMonitor->push_back(event);
        return event;
    });
    NSEvent *event = keyDown(shown.window(), @"j");
    dispatch(event);
    EXPECT_EQ(seen, Events { event });
    EXPECT_EQ(view->seen, Events { event });
}

TEST_F(EventMonitors, IgnoreEventsThatAreNotInTheirMask)
{
    Events *const byMonitor = seenByMonitor;
    const Monitor monitor(NSEventMaskMouseMoved | NSEventMaskFlagsChanged, ^(NSEvent *event) {
        byMonitor->push_back(event);
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(shown.view()->seen.size(), 1U);
}

TEST_F(EventMonitors, SwallowAnEventByReturningNil)
{
    Events *const byLater = seenByLater;
    const Monitor monitor(NSEventMaskKeyDown, ^NSEvent *(NSEvent *) { return nil; });
    const Monitor later(NSAnyEventMask, ^(NSEvent *event) {
        byLater->push_back(event);
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_TRUE(laterSeen.empty());
    EXPECT_TRUE(shown.view()->seen.empty());
}

TEST_F(EventMonitors, ReplaceAnEventForLaterMonitorsAndTheWindow)
{
    Events *const byLater = seenByLater;
    NSEvent *const replacement = keyDown(shown.window(), @"k");
    const Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *) { return replacement; });
    const Monitor later(NSEventMaskKeyDown, ^(NSEvent *event) {
        byLater->push_back(event);
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_EQ(laterSeen, Events { replacement });
    EXPECT_EQ(shown.view()->seen, Events { replacement });
}

TEST_F(EventMonitors, MatchAReplacementByItsOwnType)
{
    Events *const byLater = seenByLater;
    NSEvent *const replacement = keyEvent(NSFlagsChanged, shown.window(), @"");
    const Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *) { return replacement; });
    const Monitor later(NSEventMaskKeyDown, ^(NSEvent *event) {
        byLater->push_back(event);
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_TRUE(laterSeen.empty());
    EXPECT_EQ(shown.view()->seen, Events { replacement });
}

TEST_F(EventMonitors, RunInTheOrderOfTheirInstallation)
{
    std::string order;
    std::string *const noted = &order;
    const Monitor first(NSEventMaskKeyDown, ^(NSEvent *event) {
        noted->push_back('1');
        return event;
    });
    const Monitor second(NSEventMaskKeyDown, ^(NSEvent *event) {
        noted->push_back('2');
        return event;
    });
    const Monitor third(NSEventMaskKeyDown, ^(NSEvent *event) {
        noted->push_back('3');
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_EQ(order, "123");
}

TEST_F(EventMonitors, MayRemoveThemselvesInTheirOwnHandler)
{
    int calls = 0;
    const auto captured = std::make_shared<int>(7);
    [&] {
        int *const counted = &calls;
        __block id token = nil;
        token = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                      handler:^(NSEvent *event) {
                                                          [NSEvent removeMonitor:token];
                                                          // The handler's captures must live until it returns.
                                                          EXPECT_EQ(*captured, 7);
                                                          ++*counted;
                                                          return event;
                                                      }];
        dispatch(keyDown(shown.window(), @"j"));
        dispatch(keyDown(shown.window(), @"j"));
    }();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(captured.use_count(), 1) << "the removed handler was not released";
    EXPECT_EQ(shown.view()->seen.size(), 2U);
}

TEST_F(EventMonitors, AreNotCalledAfterAnEarlierHandlerRemovesThem)
{
    __block id laterToken = nil;
    Events *const byLater = seenByLater;
    const Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *event) {
        [NSEvent removeMonitor:laterToken];
        return event;
    });
    laterToken = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                       handler:^(NSEvent *event) {
                                                           byLater->push_back(event);
                                                           return event;
                                                       }];
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_TRUE(laterSeen.empty());
}

TEST_F(EventMonitors, InstalledInAHandlerStartWithTheNextEvent)
{
    __block id laterToken = nil;
    Events *const byLater = seenByLater;
    Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *event) {
        if (!laterToken) {
            laterToken = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                               handler:^(NSEvent *another) {
                                                                   byLater->push_back(another);
                                                                   return another;
                                                               }];
        }
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_TRUE(laterSeen.empty());
    NSEvent *next = keyDown(shown.window(), @"k");
    dispatch(next);
    EXPECT_EQ(laterSeen, Events { next });
    [NSEvent removeMonitor:laterToken];
}

TEST_F(EventMonitors, MayBeRemovedTwiceAndNilMayBeRemoved)
{
    Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *event) { return event; });
    monitor.remove();
    monitor.remove();
    [NSEvent removeMonitor:nil];
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_EQ(shown.view()->seen.size(), 1U);
}

TEST_F(EventMonitors, CanHoldAWeakReference)
{
    auto owner = std::make_shared<int>(1);
    std::string found;
    std::string *const noted = &found;
    const std::weak_ptr<int> weak = owner;
    const Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *event) {
        noted->push_back(weak.lock() ? 'y' : 'n');
        return event;
    });
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_EQ(owner.use_count(), 1);
    owner.reset();
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_EQ(found, "yn");
}

TEST_F(EventMonitors, ReleaseTheirHandlersObjectsWhenTheyAreRemoved)
{
    const auto object = adopt([[NSObject alloc] init]);
    const auto value = std::make_shared<int>(1);
    const NSUInteger before = [object.get() retainCount];
    const auto monitor = monitorHolding(object.get(), value);
    dispatch(keyDown(shown.window(), @"j"));
    EXPECT_EQ([object.get() retainCount], before + 1);
    EXPECT_EQ(value.use_count(), 2);
    monitor->remove();
    EXPECT_EQ([object.get() retainCount], before);
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(EventMonitors, SeeRealKeysWhileAnAlertIsUp)
{
    Events *const byMonitor = seenByMonitor;
    const Monitor monitor(NSEventMaskFlagsChanged, ^(NSEvent *event) {
        byMonitor->push_back(event);
        return event;
    });
    const auto alert = adopt([[NSAlert alloc] init]);
    [alert.get() setMessageText:@"Press Shift."];
    [alert.get() addButtonWithTitle:@"OK"];
    runModalWhile(alert.get(), [] {
        if (!alertKeepsTheKeyboard()) {
            return false;
        }
        pressKey("shift");
        pressKey("Return");
        return true;
    });
    EXPECT_FALSE(seen.empty());
}

TEST_F(EventMonitors, SeeARealKeyBeforeTheWindow)
{
    Events *const byMonitor = seenByMonitor;
    const Monitor monitor(NSEventMaskKeyDown, ^(NSEvent *event) {
        byMonitor->push_back(event);
        return event;
    });
    pressKey("j");
    EXPECT_TRUE(handleEventsUntil([&] { return !shown.view()->seen.empty(); }));
    EXPECT_EQ(seen, shown.view()->seen);
}
