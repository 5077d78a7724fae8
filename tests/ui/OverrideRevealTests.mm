// Real keys on a real X server: xdotool presses and releases them.

#import "detection/AppDelegate+DetectionStatus.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"
#import "ui/AppDelegate+OverrideReveal.h"

#include <gtest/gtest.h>

/// Counts the key presses that reach it as the window's first responder.
@interface KeyCounter : NSView {
@public
    int _presses;
}
@end

@implementation KeyCounter
- (BOOL)acceptsFirstResponder
{
    return YES;
}
- (void)keyDown:(NSEvent *)event
{
    ++_presses;
}
@end

namespace
{

class OverrideReveal : public testing::Test
{
protected:
    // One window for all tests: the window manager takes its time to give a new one the keyboard.
    static void SetUpTestSuite()
    {
        controller = new Retained<AppDelegate>(adopt([[AppDelegate alloc] init]));
        [it() buildWindow];
        [it() installModifierMonitor];
        ASSERT_TRUE(handleEventsUntil([] {
            const auto name = run({ "xdotool", "getwindowfocus", "getwindowname" }).output;
            return name == utf8([[it() window] title]) + "\n";
        }));
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
        for (const char *key : { "Shift_L", "Shift_R", "Control_L", "Alt_L" }) {
            run({ "xdotool", "keyup", key });
        }
        handleEverythingPressed();
        std::filesystem::remove_all(planted);
    }

    static AppDelegate *it() { return controller->get(); }
    static bool removeShown() { return ![[it() removeButton] isHidden]; }
    static bool overrideShown() { return ![[it() overrideButton] isHidden]; }
    /// A view that has the window's keyboard.
    static KeyCounter *addCounter()
    {
        KeyCounter *counter = [[[KeyCounter alloc] initWithFrame:NSMakeRect(0, 0, 560, 430)] autorelease];
        [[[it() window] contentView] addSubview:counter];
        [[it() window] makeFirstResponder:counter];
        return counter;
    }
    /// Presses a key that is handled after all that was pressed before it, and handles events until it has arrived.
    static void handleEverythingPressed()
    {
        KeyCounter *counter = addCounter();
        run({ "xdotool", "key", "a" });
        EXPECT_TRUE(handleEventsUntil([counter] { return counter->_presses > 0; }));
        [[it() window] makeFirstResponder:nil];
        [counter removeFromSuperview];
    }

    static Retained<AppDelegate> *controller;
    const std::filesystem::path planted = home() / "Library/Logs/Quorlen";
};

Retained<AppDelegate> *OverrideReveal::controller;

}

TEST_F(OverrideReveal, ShowsTheOverrideInTheRemoveButtonsPlaceWhileShiftIsHeld)
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

TEST_F(OverrideReveal, IgnoresEveryOtherModifier)
{
    run({ "xdotool", "key", "Caps_Lock" });
    handleEverythingPressed();
    EXPECT_FALSE(overrideShown()) << "Caps Lock";
    run({ "xdotool", "key", "Caps_Lock" });

    int changes = 0;
    int *const counted = &changes;
    const id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskFlagsChanged
                                                             handler:^(NSEvent *event) {
                                                                 ++*counted;
                                                                 return event;
                                                             }];
    for (const char *key : { "Control_L", "Alt_L" }) {
        const int before = changes;
        run({ "xdotool", "keydown", key });
        ASSERT_TRUE(handleEventsUntil([&] { return changes > before; })) << key;
        EXPECT_FALSE(overrideShown()) << key;
        EXPECT_TRUE(removeShown()) << key;
        run({ "xdotool", "keyup", key });
        ASSERT_TRUE(handleEventsUntil([&] { return changes > before + 1; })) << key;
    }
    [NSEvent removeMonitor:monitor];
}

TEST_F(OverrideReveal, HidesTheOverrideWhenAScanFindsTheProductThoughShiftIsHeld)
{
    run({ "xdotool", "keydown", "Shift_L" });
    ASSERT_TRUE(handleEventsUntil([] { return overrideShown(); }));

    write(planted / "log.txt", "x");
    [it() updateDetectionStatus];

    EXPECT_TRUE(removeShown());
    EXPECT_FALSE(overrideShown());
}

TEST_F(OverrideReveal, LeavesTitlesEnabledStatesStatusAndLogAlone)
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

TEST_F(OverrideReveal, LetsKeysReachTheWindow)
{
    KeyCounter *counter = addCounter();

    run({ "xdotool", "key", "b" });
    run({ "xdotool", "key", "c" });

    EXPECT_TRUE(handleEventsUntil([counter] { return counter->_presses == 2; }));
}

TEST_F(OverrideReveal, WatchesMouseMovesKeyPressesAndModifierChanges)
{
    // Shift pressed where no event tells of it: while the program handles nothing.
    run({ "xdotool", "keydown", "Shift_L" });
    NSEvent *moved = [NSEvent mouseEventWithType:NSMouseMoved
                                        location:NSMakePoint(10, 10)
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:[[it() window] windowNumber]
                                         context:nil
                                     eventNumber:0
                                      clickCount:0
                                        pressure:0];
    ASSERT_FALSE(overrideShown());

    [NSApp sendEvent:moved];

    EXPECT_TRUE(overrideShown()) << "the keys are asked for as they are held now, not as the event says";
}
