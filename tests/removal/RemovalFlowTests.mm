#import "removal/AppDelegate+RemovalFlow.h"

#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+DetectionStatus.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "licence/AppDelegate+LicenceBackup.h"
#import "removal/AppDelegate+CleanupScript.h"
#import "removal/AppDelegate+Completion.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"

namespace fs = std::filesystem;

namespace
{
/// The events of a run, in order.
Strings events;
}

/// Records when it is enabled and disabled.
@interface NotingButton : NSButton
@end

@implementation NotingButton
- (void)setEnabled:(BOOL)enabled
{
    events.push_back(utf8([self title]) + (enabled ? " enabled" : " disabled"));
    [super setEnabled:enabled];
}
@end

/// Records each call and passes it on.
@interface NotingController : AppDelegate
@end

@implementation NotingController
- (NSArray<NSString *> *)existingQuorlenPaths
{
    events.push_back("existingQuorlenPaths");
    return [super existingQuorlenPaths];
}
- (void)appendLog:(NSString *)message
{
    events.push_back("log: " + utf8(message));
    [super appendLog:message];
}
- (void)backupLicenceIfPresent
{
    events.push_back("backupLicenceIfPresent");
    [super backupLicenceIfPresent];
}
- (NSString *)cleanupShellScript
{
    events.push_back("cleanupShellScript");
    return [super cleanupShellScript];
}
- (void)writeRemovalLogToDesktop
{
    events.push_back("writeRemovalLogToDesktop");
    [super writeRemovalLogToDesktop];
}
- (void)showCompletionWithSuccess:(BOOL)success
{
    events.push_back(success ? "showCompletionWithSuccess:YES" : "showCompletionWithSuccess:NO");
    [super showCompletionWithSuccess:success];
}
- (void)updateDetectionStatus
{
    events.push_back("updateDetectionStatus");
    [super updateDetectionStatus];
}
@end

namespace
{

const SeenPanel notDetectedAlert {
    { "Quorlen 3 was not detected.",
        "Cleanup is disabled because no Quorlen 3 files were found in the standard locations." },
    { "OK" },
};
const SeenPanel confirmation {
    { "Remove Quorlen 3?", "This tool removes Quorlen 3 and related support files from this Mac." },
    { "Remove Quorlen 3", "Cancel" },
};
const SeenPanel overrideConfirmation {
    { "Run cleanup anyway?",
        "Quorlen 3 was not detected in the standard locations. Continue only if Vendrel Support directed you to run "
        "cleanup." },
    { "Run Cleanup", "Cancel" },
};
const SeenPanel successAlert {
    { "Quorlen 3 has been removed successfully.", "A restart is recommended to complete cleanup." },
    { "Restart Now", "Restart Later" },
};
const SeenPanel failureAlert {
    { "Quorlen 3 removal did not complete.", "Please contact Vendrel Support if the problem continues." },
    { "OK" },
};

Strings operator+(Strings first, const Strings &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

class RemovalFlow : public RoomTest
{
protected:
    explicit RemovalFlow(Class type = [AppDelegate class]) : RoomTest(type) { }

    void installSomethingSmall() { write(locations()[10] / "a.log", "a line"); }
    void installLicence() { write(licence(), "the licence"); }
    void scan() { [controller.get() updateDetectionStatus]; }
    void remove() { [controller.get() removeQuorlen3:nil]; }
    void removeWithoutRestart()
    {
        AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });
        remove();
    }
    void override() { [controller.get() overrideRemoveQuorlen3:nil]; }

    /// Expects that a run fails and that its log line shows this error.
    void expectFailedRun(const std::string &error)
    {
        installLicence();
        scan();
        const auto before = newLines().size();
        Strings reported;
        std::pair<bool, bool> enabledWhileReporting;
        AlertAnswers answers({ "Remove Quorlen 3", "OK" }, [&](std::size_t panel) {
            if (panel == 1) {
                reported = newLines();
                enabledWhileReporting = enabled();
            }
        });

        remove();

        EXPECT_EQ(answers.seen(), (std::vector { confirmation, failureAlert }));
        reported.erase(reported.begin(), reported.begin() + static_cast<std::ptrdiff_t>(before));
        ASSERT_GE(reported.size(), 4u);
        EXPECT_EQ(Strings(reported.begin(), reported.begin() + 3),
            (Strings { "Starting Quorlen 3 removal...", "License detected.",
                "License backup created: " + onlyArchive().string() }));
        EXPECT_NE(log().find("Removal encountered an error: " + error), std::string::npos) << log();
        EXPECT_EQ(enabledWhileReporting, std::pair(false, false));

        EXPECT_EQ(contents(licence()), "the licence") << "the product must stay";
        EXPECT_EQ(licenceInside(onlyArchive()), "the licence");
        EXPECT_EQ(filesOfTheToolOnTheDesktop().size(), 1u) << "no log file after a failure";
        EXPECT_EQ(enabled(), std::pair(true, true));
        EXPECT_EQ(statusLine(), "Quorlen 3 detected. 1 related item(s) found. License detected.");
        EXPECT_TRUE(log().ends_with("\nDetected 1 Quorlen 3 item(s).\nLicense detected.\n")) << log();
    }
};

class OrderOfARemoval : public RemovalFlow
{
protected:
    OrderOfARemoval() : RemovalFlow([NotingController class]) { }
    void SetUp() override
    {
        RemovalFlow::SetUp();
        installSomethingSmall();
        [controller.get() setRemoveButton:notingButton(@"Remove")];
        [controller.get() setOverrideButton:notingButton(@"Override")];
        events.clear();
    }

private:
    static NSButton *notingButton(NSString *title)
    {
        NotingButton *button = [[[NotingButton alloc] initWithFrame:NSZeroRect] autorelease];
        [button setTitle:title];
        return button;
    }
};

}

TEST_F(RemovalFlow, RemovesTheProductKeepsTheLicenceAndLogsEachStep)
{
    stage({ "plant", "--no-agent", "--no-daemon" });
    const auto installedLicence = contents(licence());
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    remove();

    EXPECT_EQ(answers.seen(), (std::vector { confirmation, successAlert }));
    for (const auto &location : locations()) {
        EXPECT_FALSE(fs::exists(location)) << location;
    }
    EXPECT_EQ(licenceInside(onlyArchive()), installedLicence);
    EXPECT_EQ(newLines(),
        (Strings { "Starting Quorlen 3 removal...", "License detected.",
             "License backup created: " + onlyArchive().string(), "Quorlen 3 removal completed." } +
            nothingFoundLines));
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.");
    EXPECT_FALSE([controller.get() quorlenDetected]);
    EXPECT_EQ(enabled(), std::pair(false, true));
}

TEST_F(RemovalFlow, WithNothingInstalledShowsTheNotDetectedAlertThenScans)
{
    std::string statusBehindTheAlert;
    Strings linesBehindTheAlert;
    AlertAnswers answers({ "OK" }, [&](std::size_t) {
        statusBehindTheAlert = statusLine();
        linesBehindTheAlert = newLines();
    });

    remove();

    EXPECT_EQ(answers.seen(), std::vector { notDetectedAlert });
    EXPECT_EQ(statusBehindTheAlert, "Checking for Quorlen 3...") << "the scan must come after the alert";
    EXPECT_EQ(linesBehindTheAlert, Strings());
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.");
    EXPECT_EQ(newLines(), nothingFoundLines);
    EXPECT_EQ(enabled(), std::pair(false, true));
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(RemovalFlow, NoticesThatTheProductVanishedSinceTheLastScan)
{
    installSomethingSmall();
    scan();
    ASSERT_TRUE(enabled().first);
    fs::remove_all(locations()[10]);
    AlertAnswers answers({ "OK" });

    remove();

    EXPECT_EQ(answers.seen(), std::vector { notDetectedAlert });
    EXPECT_EQ(newLines(), Strings { "Detected 1 Quorlen 3 item(s)." } + nothingFoundLines);
    EXPECT_EQ(enabled(), std::pair(false, true));
}

TEST_F(RemovalFlow, NoticesThatTheProductAppearedSinceTheLastScan)
{
    scan();
    ASSERT_FALSE([controller.get() quorlenDetected]);
    installSomethingSmall();
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    remove();

    EXPECT_EQ(answers.seen(), (std::vector { confirmation, successAlert }));
    EXPECT_FALSE(fs::exists(locations()[10]));
}

TEST_F(RemovalFlow, CancellingAConfirmationChangesNothing)
{
    installLicence();
    scan();
    const auto lines = newLines();
    const auto status = statusLine();
    {
        AlertAnswers answers({ "Cancel", "Cancel" });
        remove();
        override();
        EXPECT_EQ(answers.seen(), (std::vector { confirmation, overrideConfirmation }));
    }
    EXPECT_EQ(newLines(), lines);
    EXPECT_EQ(statusLine(), status);
    EXPECT_EQ(enabled(), std::pair(true, true));
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
    EXPECT_EQ(temporaryFolders(), Strings());
    EXPECT_EQ(contents(licence()), "the licence");
}

TEST_F(RemovalFlow, CancellingTheOverrideLeavesTheRemoveButtonDisabled)
{
    scan();
    AlertAnswers answers({ "Cancel" });

    override();

    EXPECT_EQ(answers.seen(), std::vector { overrideConfirmation });
    EXPECT_EQ(enabled(), std::pair(false, true));
    EXPECT_EQ(newLines(), nothingFoundLines);
}

TEST_F(RemovalFlow, GoesOnOnlyIfAnAlertReturnsTheFirstButtonsCode)
{
    static NSInteger code;
    const SwizzledMethod alert([NSAlert class], @selector(runModal), +[](id, SEL) { return code; });
    installLicence();

    for (const NSInteger other : { 1001, 1002, 999, 1, 0, -1, -1000, -1001 }) {
        code = other;
        remove();
        override();
        EXPECT_EQ(newLines(), Strings()) << other;
        EXPECT_EQ(contents(licence()), "the licence") << other;
    }
}

TEST_F(RemovalFlow, OverrideRunsIfNothingIsInstalled)
{
    AlertAnswers answers({ "Run Cleanup", "Restart Later" });

    override();

    EXPECT_EQ(answers.seen(), (std::vector { overrideConfirmation, successAlert }));
    EXPECT_EQ(newLines(),
        (Strings {
             "Starting override cleanup...", "No license file found to back up.", "Quorlen 3 removal completed." } +
            nothingFoundLines));
    EXPECT_EQ(enabled(), std::pair(false, true));
}

TEST_F(RemovalFlow, OverrideWithTheProductInstalledStillSaysNotDetectedAndRemovesAll)
{
    stage({ "plant", "--locations", "1,3,6,11", "--no-agent", "--no-daemon" });
    scan();
    ASSERT_TRUE([controller.get() quorlenDetected]);
    AlertAnswers answers({ "Run Cleanup", "Restart Later" });

    override();

    EXPECT_EQ(answers.seen(), (std::vector { overrideConfirmation, successAlert }));
    for (const auto &location : locations()) {
        EXPECT_FALSE(fs::exists(location)) << location;
    }
}

TEST_F(RemovalFlow, GoesOnWithoutALicence)
{
    installSomethingSmall();

    removeWithoutRestart();

    EXPECT_FALSE(fs::exists(locations()[10]));
    EXPECT_EQ(newLines(),
        (Strings {
             "Starting Quorlen 3 removal...", "No license file found to back up.", "Quorlen 3 removal completed." } +
            nothingFoundLines));
}

TEST_F(RemovalFlow, GoesOnWhenTheBackupFails)
{
    const Archiver failing("fails");
    installLicence();

    removeWithoutRestart();

    EXPECT_FALSE(fs::exists(licence()));
    EXPECT_EQ(newLines(),
        (Strings { "Starting Quorlen 3 removal...", "License detected.", "License backup was not created.",
             "Quorlen 3 removal completed." } +
            nothingFoundLines));
}

TEST_F(RemovalFlow, GoesOnWhenTheBackupIsSkipped)
{
    const Archiver missing("missing");
    installLicence();

    removeWithoutRestart();

    EXPECT_FALSE(fs::exists(licence()));
    ASSERT_EQ(newLines().size(), 6u);
    EXPECT_TRUE(newLines()[2].starts_with("License backup skipped: "));
    EXPECT_EQ(newLines()[3], "Quorlen 3 removal completed.");
}

TEST_F(RemovalFlow, RefusedRightsKeepTheProductTheArchiveAndTheButtonsAndWriteNoLogFile)
{
    const RightsRefused refused;
    expectFailedRun("{");
    EXPECT_NE(log().find("User canceled."), std::string::npos);
    EXPECT_NE(log().find("-128"), std::string::npos);
}

TEST_F(RemovalFlow, ADismissedPromptIsAFailureLikeARefusal)
{
    const Staged dismissed({ "rights", "dismissed" }, { "rights", "granted" });
    expectFailedRun("{");
    EXPECT_NE(log().find("User canceled."), std::string::npos);
}

TEST_F(RemovalFlow, AShellThatFailsIsAFailureLikeARefusal)
{
    const SwizzledMethod script(
        [AppDelegate class], @selector(cleanupShellScript),
        +[](id, SEL) { return @"echo the words of the shell >&2; exit 3"; });
    expectFailedRun("{");
    EXPECT_NE(log().find("the words of the shell"), std::string::npos);
}

TEST_F(RemovalFlow, AScriptObjectThatCannotBeMadeIsAFailureWithAnEmptyRecord)
{
    const NoScripts none;
    expectFailedRun(utf8([[NSDictionary dictionary] description]) + "\n");
}

TEST_F(RemovalFlow, RemovesTheProductOnceTheRightsAreGranted)
{
    installLicence();
    {
        const RightsRefused refused;
        AlertAnswers answers({ "Remove Quorlen 3", "OK" });
        remove();
        ASSERT_TRUE(fs::exists(licence()));
    }
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    remove();

    EXPECT_FALSE(fs::exists(licence()));
    EXPECT_EQ(enabled(), std::pair(false, true));
    EXPECT_TRUE(filesOfTheToolOnTheDesktop().front().starts_with("Quorlen-3-Removal-Log-"));
}

TEST_F(OrderOfARemoval, WithRightsGranted)
{
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" },
        [](std::size_t panel) { events.push_back("alert " + std::to_string(panel)); });

    remove();

    EXPECT_EQ(events,
        (Strings {
            "existingQuorlenPaths",
            "alert 0",
            "Remove disabled",
            "Override disabled",
            "log: Starting Quorlen 3 removal...",
            "backupLicenceIfPresent",
            "log: No license file found to back up.",
            "cleanupShellScript",
            "log: Quorlen 3 removal completed.",
            "writeRemovalLogToDesktop",
            "showCompletionWithSuccess:YES",
            "alert 1",
            "Override enabled",
            "updateDetectionStatus",
            "existingQuorlenPaths",
            "Remove disabled",
            "log: " + nothingFoundLines[0],
            "log: " + nothingFoundLines[1],
        }));
}

TEST_F(OrderOfARemoval, WithRightsRefused)
{
    const RightsRefused refused;
    AlertAnswers answers(
        { "Run Cleanup", "OK" }, [](std::size_t panel) { events.push_back("alert " + std::to_string(panel)); });

    override();

    ASSERT_EQ(events.size(), 16u);
    EXPECT_TRUE(events[8].starts_with("log: Removal encountered an error: "));
    events.erase(events.begin() + 8);
    EXPECT_EQ(events,
        (Strings {
            "existingQuorlenPaths",
            "alert 0",
            "Remove disabled",
            "Override disabled",
            "log: Starting override cleanup...",
            "backupLicenceIfPresent",
            "log: No license file found to back up.",
            "cleanupShellScript",
            "showCompletionWithSuccess:NO",
            "alert 1",
            "Override enabled",
            "updateDetectionStatus",
            "existingQuorlenPaths",
            "Remove enabled",
            "log: Detected 1 Quorlen 3 item(s).",
        }));
}

TEST_F(RemovalFlow, GivesTheScriptRunnerTheWholeScriptInOneLiteral)
{
    const NoScripts none;
    AlertAnswers answers({ "Run Cleanup", "OK" });

    override();

    EXPECT_TRUE(none.source().starts_with("do shell script \"set -e\\n/bin/launchctl stop ")) << none.source();
    EXPECT_TRUE(none.source().ends_with(" || true\\nexit 0\" with administrator privileges")) << none.source();
    NSString *literal = [controller.get() appleScriptQuotedString:[controller.get() cleanupShellScript]];
    EXPECT_EQ(none.source(), "do shell script " + utf8(literal) + " with administrator privileges");
}
