// One removal or one restore, in a program that a test can kill in the middle and start again.
//
//   tracer --kill N operation --gtest_filter=*Removal|*Restore
//
// The removal confirms its first alert and refuses the restart. The restore uses the archive QUORLEN_ARCHIVE.
#import "app/AppDelegate.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "licence/AppDelegate+LicenceRestore.h"
#import "platform/Retained.hpp"
#import "removal/AppDelegate+RemovalFlow.h"
#import "tests/faults/FaultWindow.hpp"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"

#include <gtest/gtest.h>

namespace
{

TEST(Operation, Removal)
{
    const auto controller = adopt([[AppDelegate alloc] init]);
    [controller.get() buildWindow];
    const bool present = [[controller.get() existingQuorlenPaths] count] > 0;
    AlertAnswers answers(
        present ? std::vector<std::string> { "Remove Quorlen 3", "Restart Later" } : std::vector<std::string> { "OK" });
    FaultWindow window;
    [controller.get() removeQuorlen3:nil];
    window.close();
    EXPECT_EQ([[controller.get() existingQuorlenPaths] count], 0u) << utf8([[controller.get() logView] string]);
}

TEST(Operation, Restore)
{
    const auto controller = adopt([[AppDelegate alloc] init]);
    [controller.get() buildWindow];
    FaultWindow window;
    const BOOL restored = [controller.get() restoreLicenseFromZip:ns(std::getenv("QUORLEN_ARCHIVE"))
                                                           toPath:[controller.get() licensePath]];
    window.close();
    EXPECT_TRUE(restored) << utf8([[controller.get() logView] string]);
}

}
