#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace
{

bool shiftHeld()
{
    return ([NSEvent modifierFlags] & NSEventModifierFlagShift) != 0;
}

}

TEST(ModifierFlags, ReportEitherShiftKeyWhileItIsHeld)
{
    EXPECT_FALSE(shiftHeld());
    for (const char *key : { "Shift_L", "Shift_R" }) {
        {
            const HeldKey held(key);
            EXPECT_TRUE(shiftHeld()) << key;
        }
        EXPECT_FALSE(shiftHeld()) << key;
    }
}

TEST(ModifierFlags, DoNotReportCapsLockOrControlAsShift)
{
    pressKey("Caps_Lock");
    EXPECT_EQ([NSEvent modifierFlags], static_cast<NSEventModifierFlags>(NSAlphaShiftKeyMask));
    pressKey("Caps_Lock");
    const HeldKey held("Control_L");
    EXPECT_EQ([NSEvent modifierFlags], static_cast<NSEventModifierFlags>(NSControlKeyMask));
}

TEST(ModifierFlags, AreRightInsideAHandlerOfTheirChange)
{
    const TestWindow shown;
    std::vector<bool> held;
    std::vector<bool> *const noted = &held;
    id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskFlagsChanged
                                                       handler:^(NSEvent *event) {
                                                           noted->push_back(shiftHeld());
                                                           return event;
                                                       }];
    {
        const HeldKey shift("shift");
        EXPECT_TRUE(handleEventsUntil([&] { return held.size() == 1; }));
    }
    EXPECT_TRUE(handleEventsUntil([&] { return held.size() == 2; }));
    [NSEvent removeMonitor:monitor];
    EXPECT_EQ(held, (std::vector<bool> { true, false }));
}
