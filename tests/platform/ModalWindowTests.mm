#import "platform/Retained.hpp"
#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace
{

Retained<NSAlert> alertWithButtons(NSArray *titles)
{
    auto alert = adopt([[NSAlert alloc] init]);
    [alert.get() setMessageText:@"A question"];
    [alert.get() setInformativeText:@"And what it means."];
    for (NSString *title in titles) {
        [alert.get() addButtonWithTitle:title];
    }
    return alert;
}

/// Presses the window manager's close button of the alert once the alert is focused.
bool pressClose()
{
    if (!alertKeepsTheKeyboard()) {
        return false;
    }
    pressKey("alt+F4");
    return true;
}

/// The title of the topmost window, as the window manager reports it.
std::string uppermostTitle()
{
    std::string list = run({ "xprop", "-root", "_NET_CLIENT_LIST_STACKING" }).output;
    return run({ "xdotool", "getwindowname", list.substr(list.rfind(' ') + 1, list.rfind('\n') - list.rfind(' ') - 1) })
        .output;
}

}

TEST(Alert, TreatsTheManagersCloseButtonAsItsLastButton)
{
    const TestWindow shown;
    const auto two = alertWithButtons(@[ @"Remove", @"Cancel" ]);
    EXPECT_EQ(runModalWhile(two.get(), pressClose), NSAlertSecondButtonReturn);
    const auto three = alertWithButtons(@[ @"Remove", @"Keep", @"Cancel" ]);
    EXPECT_EQ(runModalWhile(three.get(), pressClose), NSAlertThirdButtonReturn);
    const auto one = alertWithButtons(@[ @"OK" ]);
    EXPECT_EQ(runModalWhile(one.get(), pressClose), NSAlertFirstButtonReturn);
    EXPECT_TRUE([shown.window() isVisible]) << "only the alert must close";
}

TEST(Alert, IsAnsweredByReturnAndEscape)
{
    const TestWindow shown;
    for (const auto &[key, button] :
        { std::pair { "Return", NSAlertFirstButtonReturn }, { "Escape", NSAlertSecondButtonReturn } }) {
        const auto alert = alertWithButtons(@[ @"Remove", @"Cancel" ]);
        EXPECT_EQ(runModalWhile(alert.get(),
                      [key = key] {
                          if (!alertKeepsTheKeyboard()) {
                              return false;
                          }
                          pressKey(key);
                          return true;
                      }),
            button)
            << key;
    }
}

TEST(Alert, StaysInFrontAndFocusedWhenTheWindowBehindIsClicked)
{
    const TestWindow shown;
    const auto alert = alertWithButtons(@[ @"Remove", @"Cancel" ]);
    std::string uppermost;
    runModalWhile(alert.get(), [&] {
        if (!alertKeepsTheKeyboard()) {
            return false;
        }
        // A corner of the screen: the alert is in the middle.
        run({ "xdotool", "search", "--name", "^Test window$", "mousemove", "--window", "%1", "20", "280" });
        run({ "xdotool", "mousedown", "1", "mouseup", "1" });
        letManagerFinish();
        uppermost = uppermostTitle();
        return pressClose();
    });
    EXPECT_EQ(uppermost, alertTitle() + "\n");
}

TEST(ModalPanel, GetsTheFocusThatTheManagerOffersToTheWindowBehind)
{
    const TestWindow shown;
    const auto panel = adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 200, 100)
                                                        styleMask:NSWindowStyleMaskTitled
                                                          backing:NSBackingStoreBuffered
                                                            defer:NO]);
    [panel.get() setTitle:ns(alertTitle())];
    const NSModalSession session = [NSApp beginModalSessionForWindow:panel.get()];
    EXPECT_TRUE(handleEventsUntil(alertHasTheKeyboard));
    run({ "xdotool", "search", "--name", "^Test window$", "windowfocus" });
    EXPECT_TRUE(handleEventsUntil([] { return focusedTitle() == "Test window\n"; }));
    // The event by which the platform reports the manager's offer to the window.
    [NSApp sendEvent:[NSEvent otherEventWithType:NSAppKitDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:[shown.window() windowNumber]
                                         context:nil
                                         subtype:GSAppKitWindowFocusIn
                                           data1:0
                                           data2:0]];
    EXPECT_TRUE(handleEventsUntil(alertHasTheKeyboard));
    [NSApp endModalSession:session];
    [panel.get() orderOut:nil];
}

TEST(OpenPanel, TreatsTheManagersCloseButtonAsCancel)
{
    const TestWindow shown;
    NSOpenPanel *panel = [NSOpenPanel openPanel];
    [panel setTitle:ns(alertTitle())];
    EXPECT_EQ(runModalWhile(panel, pressClose), NSModalResponseCancel);
    EXPECT_TRUE([shown.window() isVisible]) << "only the panel must close";
}

TEST(MainWindow, DoesNotCloseBehindAnAlert)
{
    const TestWindow shown;
    const auto alert = alertWithButtons(@[ @"Remove", @"Cancel" ]);
    runModalWhile(alert.get(), [] {
        if (!alertKeepsTheKeyboard()) {
            return false;
        }
        run({ "xdotool", "search", "--name", "^Test window$", "windowquit" });
        letManagerFinish();
        return pressClose();
    });
    EXPECT_TRUE([shown.window() isVisible]);
}
