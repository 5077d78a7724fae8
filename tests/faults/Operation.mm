// One operation of the tool in a program of its own. A test makes its system calls fail, or kills it and runs it again.
//
//   operation --gtest_filter=*Backup|*LogFile|*Restore|*Removal
//
// It prints its log, and what else it reports, on lines that begin with "said: ". The restore uses the archive
// QUORLEN_ARCHIVE. The removal confirms its first alert and refuses the restart.
#import "app/AppDelegate.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "licence/AppDelegate+LicenceBackup.h"
#import "licence/AppDelegate+LicenceRestore.h"
#import "platform/Retained.hpp"
#import "removal/AppDelegate+Completion.h"
#import "removal/AppDelegate+RemovalFlow.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <sys/prctl.h>

namespace
{

/// The request that opens (1) or closes (0) a window. The kernel does not know it; tracer.py does.
constexpr int windowRequest = 0x51464c54;

void say(const std::string &text)
{
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::cout << "said: " << line << std::endl;
    }
}

class Operation : public testing::Test
{
protected:
    void SetUp() override
    {
        [controller.get() buildWindow];
        [[controller.get() logView] setString:@""];
    }
    void TearDown() override { [[controller.get() window] close]; }

    /// Acts. Only the system calls of this time can fail. Prints the log.
    void inWindow(const std::function<void()> &act)
    {
        prctl(windowRequest, 1, 0, 0, 0);
        act();
        prctl(windowRequest, 0, 0, 0, 0);
        say(utf8([[controller.get() logView] string]));
    }

    const Retained<AppDelegate> controller = adopt([[AppDelegate alloc] init]);
};

TEST_F(Operation, Backup)
{
    inWindow([&] { [controller.get() backupLicenceIfPresent]; });
    say("last backup: " + utf8([controller.get() lastBackupPath]));
}

TEST_F(Operation, LogFile)
{
    [[controller.get() logView] setString:@"Quorlen 3 removal completed.\n"];
    inWindow([&] { [controller.get() writeRemovalLogToDesktop]; });
}

TEST_F(Operation, Restore)
{
    BOOL restored = NO;
    inWindow([&] {
        restored = [controller.get() restoreLicenseFromZip:ns(std::getenv("QUORLEN_ARCHIVE"))
                                                    toPath:[controller.get() licensePath]];
    });
    say(restored ? "restored" : "not restored");
}

TEST_F(Operation, Removal)
{
    const bool present = [[controller.get() existingQuorlenPaths] count] > 0;
    AlertAnswers answers(
        present ? std::vector<std::string> { "Remove Quorlen 3", "Restart Later" } : std::vector<std::string> { "OK" });
    inWindow([&] { [controller.get() removeQuorlen3:nil]; });
    EXPECT_EQ([[controller.get() existingQuorlenPaths] count], 0u);
}

}
