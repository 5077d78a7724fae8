#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace
{

/// The title of the focused window, as the X server reports it.
std::string focusedTitle()
{
    return run({ "xdotool", "getwindowfocus", "getwindowname" }).output;
}

}

TEST(ModalPanel, GetsTheFocusThatTheManagerOffersToTheWindowBehind)
{
    const TestWindow shown;
    EXPECT_TRUE(handleEventsUntil([] { return focusedTitle() == "Test window\n"; }));
    const auto panel = adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 200, 100)
                                                        styleMask:NSWindowStyleMaskTitled
                                                          backing:NSBackingStoreBuffered
                                                            defer:NO]);
    [panel.get() setTitle:@"Panel"];
    const NSModalSession session = [NSApp beginModalSessionForWindow:panel.get()];
    EXPECT_TRUE(handleEventsUntil([looks = 0]() mutable {
        if (++looks == 100) { // Seldom, the manager leaves the focus where it is.
            run({ "xdotool", "search", "--name", "^Panel$", "windowfocus" });
        }
        return focusedTitle() == "Panel\n";
    }));
    // The manager handles requests in their order. It no longer moves the focus once it has changed this number.
    run({ "xdotool", "set_num_desktops", "3" });
    EXPECT_TRUE(handleEventsUntil([] { return run({ "xdotool", "get_num_desktops" }).output == "3\n"; }));
    run({ "xdotool", "search", "--name", "^Test window$", "windowfocus" });
    EXPECT_TRUE(handleEventsUntil([] { return focusedTitle() == "Test window\n"; }));
    // The event by which the platform reports the manager's offer to the window.
    [NSApp sendEvent:otherEvent(NSAppKitDefined, [shown.window() windowNumber], GSAppKitWindowFocusIn)];
    EXPECT_TRUE(handleEventsUntil([] { return focusedTitle() == "Panel\n"; }));
    [NSApp endModalSession:session];
    [panel.get() orderOut:nil];
}
