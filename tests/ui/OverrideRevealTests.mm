// Real keys on a real X server: xdotool presses and releases them.

#import "detection/AppDelegate+DetectionStatus.h"
#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"
#import "ui/AppDelegate+OverrideReveal.h"

#include <gtest/gtest.h>

namespace
{

using Titles = std::vector<std::string>;
const Titles removeButton { "Remove Quorlen 3" };
const Titles overrideButton { "Override Cleanup" };

class OverrideReveal : public testing::Test
{
protected:
    // One window for all tests: the window manager is slow to focus a new one.
    static void SetUpTestSuite()
    {
        controller = new Retained<AppDelegate>(adopt([[AppDelegate alloc] init]));
        [it() buildWindow];
        [it() installModifierMonitor];
        AppDelegate *gone = [[AppDelegate alloc] init];
        [gone installModifierMonitor];
        [gone release];
        // Monitors see an event in the order of their installation, if the earlier ones pass it on.
        laterMonitor = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown | NSEventMaskMouseMoved
                                                             handler:^NSEvent *(NSEvent *event) {
                                                                 passedOn.push_back(event);
                                                                 return nil;
                                                             }];
        [[it() window] setAcceptsMouseMovedEvents:YES];
        ASSERT_TRUE(handleEventsUntil([] { return focusedTitle() == utf8([[it() window] title]) + "\n"; }));
    }
    static void TearDownTestSuite()
    {
        [it() applicationWillTerminate:nil];
        [NSEvent removeMonitor:laterMonitor];
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
    /// The titles of the two removal buttons, as far as they are shown.
    static Titles shown()
    {
        Titles titles;
        for (NSButton *button in @[ [it() removeButton], [it() overrideButton] ]) {
            if (![button isHidden]) {
                titles.push_back(utf8([button title]));
            }
        }
        return titles;
    }
    /// Handles events until only this button is shown.
    static void expectSoon(const Titles &titles)
    {
        EXPECT_TRUE(handleEventsUntil([&] { return shown() == titles; })) << testing::PrintToString(shown());
    }
    /// What Shift must not change.
    static auto state()
    {
        return std::tuple([[it() removeButton] isEnabled], [[it() overrideButton] isEnabled],
            utf8([[it() statusLabel] stringValue]), utf8([[it() logView] string]));
    }
    static std::string focusedTitle() { return run({ "xdotool", "getwindowfocus", "getwindowname" }).output; }
    /// Presses a marker key and handles events until it arrives. All earlier key presses are handled then.
    static void handleEverythingPressed()
    {
        passedOn.clear();
        run({ "xdotool", "key", "a" });
        EXPECT_TRUE(handleEventsUntil([] { return !passedOn.empty(); }));
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
    static inline id laterMonitor;
    /// The key presses and mouse moves that the controller's monitor passed on.
    static inline std::vector<NSEvent *> passedOn; // Owned by the event queue's pool: compare, don't message.
    const std::filesystem::path planted = home() / "Library/Logs/Quorlen";
};

Retained<AppDelegate> *OverrideReveal::controller;

}

TEST_F(OverrideReveal, DependsOnEitherShiftKeyAndOnNoOtherModifier)
{
    for (const char *other : { "Caps_Lock", "Control_L", "Alt_L", "Super_L" }) { // Control, Command and Option
        SCOPED_TRACE(other);
        run({ "xdotool", "keydown", other });
        handleEverythingPressed();
        EXPECT_EQ(shown(), removeButton);
        for (const char *shift : { "Shift_L", "Shift_R" }) {
            run({ "xdotool", "keydown", shift });
            expectSoon(overrideButton);
            run({ "xdotool", "keyup", shift });
            expectSoon(removeButton);
            ASSERT_FALSE(HasFailure()) << "the other keys would each wait as long";
        }
        run({ "xdotool", "keyup", other });
    }
    run({ "xdotool", "key", "Caps_Lock" }); // off again
}

TEST_F(OverrideReveal, DoesNotChangeTitlesEnabledStatesStatusOrLog)
{
    const auto before = state();

    run({ "xdotool", "keydown", "Shift_L" });
    expectSoon(overrideButton);

    EXPECT_EQ(state(), before);
}

TEST_F(OverrideReveal, EndsWhenAScanFindsTheProductEvenIfShiftIsHeld)
{
    run({ "xdotool", "keydown", "Shift_L" });
    expectSoon(overrideButton);

    write(planted / "log.txt", "x");
    [it() updateDetectionStatus];
    EXPECT_EQ(shown(), removeButton);

    handleEverythingPressed();
    EXPECT_NE([NSEvent modifierFlags] & NSEventModifierFlagShift, 0u) << "Shift must be held";
    EXPECT_EQ(shown(), removeButton);
}

TEST_F(OverrideReveal, WaitsForTheNextEventOfThisApplicationWhileAnotherIsInFront)
{
    const auto other = run({ "sh", "-c", "xev -name Other -event keyboard >/tmp/xev.txt & echo $!" }).output;
    run({ "timeout", "20", "xdotool", "search", "--sync", "--name", "^Other$", "windowactivate" });
    ASSERT_TRUE(handleEventsUntil([] { return focusedTitle() == "Other\n" && ![[it() window] isKeyWindow]; }));

    run({ "xdotool", "keydown", "Shift_L" });
    ASSERT_TRUE(handleEventsUntil([] { return contents("/tmp/xev.txt").find("Shift_L") != std::string::npos; }));
    EXPECT_EQ(shown(), removeButton);
    [NSApp sendEvent:mouseMoved()];
    EXPECT_EQ(shown(), overrideButton);

    run({ "kill", other.substr(0, other.find('\n')) });
    run({ "xdotool", "search", "--name", "^Quorlen 3 Removal Tool$", "windowactivate" });
    EXPECT_TRUE(handleEventsUntil([] { return [[it() window] isKeyWindow] && focusedTitle() != "Other\n"; }));
}

TEST_F(OverrideReveal, PassesTheSameEventOnEvenIfItsControllerIsGone)
{
    NSEvent *move = mouseMoved();
    passedOn.clear();

    [NSApp sendEvent:move];

    EXPECT_EQ(passedOn, std::vector<NSEvent *> { move });
}
