// Real keys on a real X server: xdotool presses and releases them.

#import "detection/AppDelegate+DetectionStatus.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"
#import "ui/AppDelegate+OverrideReveal.h"

#include <gtest/gtest.h>

/// Records the key presses and mouse moves that reach it as the window's first responder.
@interface NotingView : NSView {
@public
    std::vector<NSEvent *> _seen; // Owned by the event queue's pool: compare, don't message.
}
@end

@implementation NotingView
- (BOOL)acceptsFirstResponder
{
    return YES;
}
- (void)keyDown:(NSEvent *)event
{
    _seen.push_back(event);
}
- (void)mouseMoved:(NSEvent *)event
{
    _seen.push_back(event);
}
@end

namespace
{

class OverrideReveal : public testing::Test
{
protected:
    // One window for all tests: the window manager is slow to focus a new one.
    static void SetUpTestSuite()
    {
        controller = new Retained<AppDelegate>(adopt([[AppDelegate alloc] init]));
        [it() buildWindow];
        [it() installModifierMonitor];
        [[it() window] setAcceptsMouseMovedEvents:YES];
        ASSERT_TRUE(handleEventsUntil([] { return focusedTitle() == utf8([[it() window] title]) + "\n"; }));
    }
    static void TearDownTestSuite()
    {
        [it() applicationWillTerminate:nil];
        [[it() window] close];
        delete controller;
    }
    void SetUp() override { [it() updateDetectionStatus]; }
    void TearDown() override
    {
        run({ "xdotool", "keyup", "Shift_L", "keyup", "Shift_R", "keyup", "Control_L", "keyup", "Alt_L", "keyup",
            "Super_L" });
        handleEverythingPressed();
        std::filesystem::remove_all(planted);
    }

    static AppDelegate *it() { return controller->get(); }
    static bool removeShown() { return ![[it() removeButton] isHidden]; }
    static bool overrideShown() { return ![[it() overrideButton] isHidden]; }
    static std::string focusedTitle() { return run({ "xdotool", "getwindowfocus", "getwindowname" }).output; }
    /// A view that is the window's first responder.
    static NotingView *addNotingView()
    {
        NotingView *view = [[[NotingView alloc] initWithFrame:NSMakeRect(0, 0, 560, 430)] autorelease];
        [[[it() window] contentView] addSubview:view];
        [[it() window] makeFirstResponder:view];
        return view;
    }
    static void removeNotingView(NotingView *view)
    {
        [[it() window] makeFirstResponder:nil];
        [view removeFromSuperview];
    }
    /// Presses a marker key and handles events until it arrives. All earlier key presses are handled then.
    static void handleEverythingPressed()
    {
        NotingView *view = addNotingView();
        run({ "xdotool", "key", "a" });
        EXPECT_TRUE(handleEventsUntil([view] { return !view->_seen.empty(); }));
        removeNotingView(view);
    }
    /// A synthetic mouse move.
    static NSEvent *mouseMoved()
    {
        return [NSEvent mouseEventWithType:NSMouseMoved
                                  location:NSMakePoint(10, 10)
                             modifierFlags:0
                                 timestamp:0
                              windowNumber:[[it() window] windowNumber]
                                   context:nil
                               eventNumber:0
                                clickCount:0
                                  pressure:0];
    }

    static Retained<AppDelegate> *controller;
    const std::filesystem::path planted = home() / "Library/Logs/Quorlen";
};

Retained<AppDelegate> *OverrideReveal::controller;

}

TEST_F(OverrideReveal, ShowsTheOverrideInsteadOfTheRemoveButtonWhileShiftIsHeld)
{
    for (const char *shift : { "Shift_L", "Shift_R" }) {
        EXPECT_TRUE(removeShown());
        EXPECT_FALSE(overrideShown());

        run({ "xdotool", "keydown", shift });
        EXPECT_TRUE(handleEventsUntil([] { return overrideShown(); })) << shift;
        EXPECT_FALSE(removeShown());

        run({ "xdotool", "keyup", shift });
        EXPECT_TRUE(handleEventsUntil([] { return !overrideShown(); })) << shift;
        EXPECT_TRUE(removeShown());
    }
}

TEST_F(OverrideReveal, ChangesNothingWhileTheProductIsDetected)
{
    write(planted / "log.txt", "x");
    [it() updateDetectionStatus];
    ASSERT_TRUE([it() quorlenDetected]);

    run({ "xdotool", "keydown", "Shift_L" });
    handleEverythingPressed();

    EXPECT_NE([NSEvent modifierFlags] & NSEventModifierFlagShift, 0u) << "Shift must be held";
    EXPECT_TRUE(removeShown());
    EXPECT_FALSE(overrideShown());
}

TEST_F(OverrideReveal, DependsOnShiftAndOnNoOtherModifier)
{
    for (const char *key : { "Caps_Lock", "Control_L", "Alt_L", "Super_L" }) { // Control, Option and Command
        run({ "xdotool", "keydown", key });
        handleEverythingPressed();
        EXPECT_FALSE(overrideShown()) << key << " alone";
        EXPECT_TRUE(removeShown()) << key << " alone";

        run({ "xdotool", "keydown", "Shift_L" });
        EXPECT_TRUE(handleEventsUntil([] { return overrideShown(); })) << key << " with Shift";
        EXPECT_FALSE(removeShown()) << key << " with Shift";

        run({ "xdotool", "keyup", "Shift_L" });
        EXPECT_TRUE(handleEventsUntil([] { return !overrideShown(); })) << key << " after Shift";
        run({ "xdotool", "keyup", key });
    }
    run({ "xdotool", "key", "Caps_Lock" }); // off again
}

TEST_F(OverrideReveal, WaitsForTheNextEventOfThisApplicationWhileAnotherIsInFront)
{
    const auto other = run({ "sh", "-c", "xev -name Other -event keyboard >/tmp/xev.txt & echo $!" }).output;
    run({ "timeout", "20", "xdotool", "search", "--sync", "--name", "^Other$", "windowactivate" });
    ASSERT_TRUE(handleEventsUntil([] { return focusedTitle() == "Other\n" && ![[it() window] isKeyWindow]; }));

    run({ "xdotool", "keydown", "Shift_L" });
    ASSERT_TRUE(handleEventsUntil([] { return contents("/tmp/xev.txt").find("Shift_L") != std::string::npos; }));
    EXPECT_FALSE(overrideShown());
    [NSApp sendEvent:mouseMoved()];
    EXPECT_TRUE(overrideShown());

    run({ "kill", other.substr(0, other.find('\n')) });
    run({ "xdotool", "search", "--name", "^Quorlen 3 Removal Tool$", "windowactivate" });
    EXPECT_TRUE(handleEventsUntil([] { return [[it() window] isKeyWindow] && focusedTitle() != "Other\n"; }));
}

TEST_F(OverrideReveal, HidesTheOverrideWhenAScanFindsTheProductEvenIfShiftIsHeld)
{
    run({ "xdotool", "keydown", "Shift_L" });
    ASSERT_TRUE(handleEventsUntil([] { return overrideShown(); }));

    write(planted / "log.txt", "x");
    [it() updateDetectionStatus];

    EXPECT_TRUE(removeShown());
    EXPECT_FALSE(overrideShown());
}

TEST_F(OverrideReveal, DoesNotChangeTitlesEnabledStatesStatusOrLog)
{
    [[it() removeButton] setEnabled:NO];
    const auto log = utf8([[it() logView] string]);
    const auto status = utf8([[it() statusLabel] stringValue]);

    run({ "xdotool", "keydown", "Shift_L" });
    ASSERT_TRUE(handleEventsUntil([] { return overrideShown(); }));

    EXPECT_FALSE([[it() removeButton] isEnabled]);
    EXPECT_TRUE([[it() overrideButton] isEnabled]);
    EXPECT_EQ(utf8([[it() removeButton] title]), "Remove Quorlen 3");
    EXPECT_EQ(utf8([[it() overrideButton] title]), "Override Cleanup");
    EXPECT_EQ(utf8([[it() logView] string]), log);
    EXPECT_EQ(utf8([[it() statusLabel] stringValue]), status);
}

TEST_F(OverrideReveal, PassesTheSameEventOnToTheWindow)
{
    NotingView *view = addNotingView();
    NSEvent *key = [NSEvent keyEventWithType:NSKeyDown
                                    location:NSZeroPoint
                               modifierFlags:0
                                   timestamp:0
                                windowNumber:[[it() window] windowNumber]
                                     context:nil
                                  characters:@"b"
                 charactersIgnoringModifiers:@"b"
                                   isARepeat:NO
                                     keyCode:0];
    NSEvent *move = mouseMoved();

    [NSApp sendEvent:key];
    [NSApp sendEvent:move];

    EXPECT_EQ(view->_seen, (std::vector<NSEvent *> { key, move }));
    removeNotingView(view);
}

TEST_F(OverrideReveal, PassesEventsOnAfterTheControllerIsGone)
{
    AppDelegate *other = [[AppDelegate alloc] init];
    [other installModifierMonitor];
    const auto monitor = Retained<NSObject>::sharing([other modifierMonitor]);
    [other release];
    NotingView *view = addNotingView();
    NSEvent *move = mouseMoved();

    [NSApp sendEvent:move];

    EXPECT_EQ(view->_seen, std::vector<NSEvent *> { move });
    removeNotingView(view);
    [NSEvent removeMonitor:monitor.get()];
}

TEST_F(OverrideReveal, ReadsTheKeysThatAreHeldNowAtAMouseMove)
{
    // Presses Shift while the program handles no events, so that no event reports it.
    run({ "xdotool", "keydown", "Shift_L" });
    ASSERT_FALSE(overrideShown());

    [NSApp sendEvent:mouseMoved()];

    EXPECT_TRUE(overrideShown());
}

TEST(OverrideRevealWithoutAWindow, SkipsTheButtons)
{
    const auto controller = adopt([[AppDelegate alloc] init]);

    [controller.get() updateOverrideButtonVisibility];

    EXPECT_EQ([controller.get() overrideButton], nil);
}
