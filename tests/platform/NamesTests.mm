#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

// The values in Apple's headers. A program that stores them or computes with them needs the same values here.
static_assert((NSEventMaskMouseMoved | NSEventMaskKeyDown | NSEventMaskFlagsChanged) == 0x1420);
static_assert(NSEventModifierFlagShift == 1 << 17);
static_assert(NSBezelStyleRounded == 1 && NSBezelStyleCircular == 7);
static_assert(NSAlertFirstButtonReturn == 1000 && NSAlertSecondButtonReturn == 1001);
static_assert(NSModalResponseOK == 1);
static_assert(NSImageScaleProportionallyUpOrDown == 3 && NSBezelBorder == 2 && NSLineBreakByWordWrapping == 0);
static_assert((NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable) == 7);

TEST(Names, OfTheErrorRecordHaveApplesValues)
{
    EXPECT_TRUE([NSAppleScriptErrorNumber isEqualToString:@"NSAppleScriptErrorNumber"]);
    EXPECT_TRUE([NSAppleScriptErrorMessage isEqualToString:@"NSAppleScriptErrorMessage"]);
    EXPECT_TRUE([NSAppleScriptErrorBriefMessage isEqualToString:@"NSAppleScriptErrorBriefMessage"]);
}
