// The main function of every test program: a real application object, and an autorelease pool around each test.

#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace
{

class PoolPerTest : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo &) override { _pool = [[NSAutoreleasePool alloc] init]; }
    void OnTestEnd(const testing::TestInfo &) override { [_pool drain]; }
    NSAutoreleasePool *_pool = nil;
};

}

int main(int argc, char **argv)
{
    @autoreleasepool {
        testing::InitGoogleTest(&argc, argv);
        // A C++ catch around Objective-C frames breaks on Debian's runtime. An unexpected exception ends the program.
        GTEST_FLAG_SET(catch_exceptions, false);
        testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest);
        [[NSApplication sharedApplication] finishLaunching];
        // Without AppKit's handler, which asks in a panel that no one would answer here, Foundation ends the program.
        NSSetUncaughtExceptionHandler(nullptr);
        return RUN_ALL_TESTS();
    }
}
