#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

TEST(ModifierFlags, ReportTheKeysThatAreHeldNow)
{
    const std::pair<const char *, NSEventModifierFlags> keys[] = {
        { "Shift_L", NSShiftKeyMask },
        { "Shift_R", NSShiftKeyMask },
        { "Control_L", NSControlKeyMask },
        { "Alt_L", NSCommandKeyMask },
        { "Super_L", NSAlternateKeyMask },
        { "Caps_Lock", NSAlphaShiftKeyMask },
    };
    for (const auto &[key, flag] : keys) {
        EXPECT_EQ([NSEvent modifierFlags], 0U) << "before " << key;
        run({ "xdotool", "keydown", key });
        EXPECT_EQ([NSEvent modifierFlags], flag) << key;
        run({ "xdotool", "keyup", key });
    }
    run({ "xdotool", "key", "Caps_Lock" }); // off again
}
