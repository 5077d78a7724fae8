#import "removal/AppDelegate+RemovalFlow.h"

#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+DetectionStatus.h"
#import "removal/AppDelegate+CleanupScript.h"
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

/// Records each log line.
@interface NotingController : AppDelegate
@end

@implementation NotingController
- (void)appendLog:(NSString *)message
{
    events.push_back("log: " + utf8(message));
    [super appendLog:message];
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

class RemovalFlow : public RoomTest
{
protected:
    explicit RemovalFlow(Class type = [AppDelegate class]) : RoomTest(type) { }

    void installSomethingSmall() { write(locations()[10] / "a.log", "a line"); }
    void installLicence() { write(licence(), "the licence"); }
    void scan() { [controller.get() updateDetectionStatus]; }
    void remove() { [controller.get() removeQuorlen3:nil]; }
    void override() { [controller.get() overrideRemoveQuorlen3:nil]; }

    /// All that a cancelled confirmation must not change.
    auto state() const
    {
        return std::tuple(
            log(), statusLine(), enabled(), filesOfTheToolOnTheDesktop(), temporaryFolders(), fs::exists(licence()));
    }

    /// Expects that a run fails and that the error in its log line starts like this.
    void expectFailedRun(const std::string &error)
    {
        installLicence();
        scan();
        const auto before = log();
        std::string logWhileReporting;
        std::pair<bool, bool> enabledWhileReporting;
        AlertAnswers answers({ "Remove Quorlen 3", "OK" }, [&](std::size_t) {
            logWhileReporting = log();
            enabledWhileReporting = enabled();
        });

        remove();

        EXPECT_EQ(answers.seen(), (std::vector { confirmation, failureAlert }));
        const auto archive = onlyArchive();
        EXPECT_TRUE(logWhileReporting.starts_with(before + "Starting Quorlen 3 removal...\nLicense detected.\n" +
            "License backup created: " + archive.string() + "\nRemoval encountered an error: " + error))
            << logWhileReporting;
        EXPECT_EQ(log(), logWhileReporting + "Detected 1 Quorlen 3 item(s).\nLicense detected.\n");
        EXPECT_EQ(enabledWhileReporting, std::pair(false, false));
        EXPECT_EQ(enabled(), std::pair(true, true));
        EXPECT_EQ(statusLine(), "Quorlen 3 detected. 1 related item(s) found. License detected.");
        EXPECT_EQ(contents(licence()), "the licence") << "the product must stay";
        EXPECT_EQ(licenceInside(archive), "the licence");
        EXPECT_EQ(filesOfTheToolOnTheDesktop().size(), 1u) << "no log file after a failure";
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

TEST_F(RemovalFlow, RemovesTheProductAndSavesTheLicenceAndTheLog)
{
    scan(); // The product appears after the last scan.
    stage({ "plant", "--no-agent", "--no-daemon" });
    const auto installedLicence = contents(licence());
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    remove();

    EXPECT_EQ(answers.seen(), (std::vector { confirmation, successAlert }));
    for (const auto &location : locations()) {
        EXPECT_FALSE(fs::exists(location)) << location;
    }
    const auto archive = onlyArchive();
    EXPECT_EQ(licenceInside(archive), installedLicence);
    EXPECT_EQ(newLines(),
        nothingFoundLines +
            (Strings { "Starting Quorlen 3 removal...", "License detected.",
                 "License backup created: " + archive.string(), "Quorlen 3 removal completed." } +
                nothingFoundLines));
    ASSERT_EQ(filesOfTheToolOnTheDesktop().size(), 2u);
    const auto logFile = contents(desktop() / filesOfTheToolOnTheDesktop().front());
    EXPECT_TRUE(log().starts_with(logFile));
    EXPECT_TRUE(logFile.ends_with("\nQuorlen 3 removal completed.\n")) << logFile;
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.");
    EXPECT_FALSE([controller.get() quorlenDetected]);
    EXPECT_EQ(enabled(), std::pair(false, true));
}

TEST_F(RemovalFlow, NoticesThatTheProductVanishedSinceTheLastScan)
{
    installSomethingSmall();
    scan();
    fs::remove_all(locations()[10]);
    const auto before = state();
    AlertAnswers answers({ "OK" }, [&](std::size_t) { EXPECT_EQ(state(), before) << "the alert comes first"; });

    remove();

    EXPECT_EQ(answers.seen(), std::vector { notDetectedAlert });
    EXPECT_EQ(statusLine(), "Quorlen 3 was not detected.");
    EXPECT_EQ(newLines(), Strings { "Detected 1 Quorlen 3 item(s)." } + nothingFoundLines);
    EXPECT_EQ(enabled(), std::pair(false, true));
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(RemovalFlow, GoesOnOnlyIfAnAlertReturnsTheFirstButtonsCode)
{
    static NSInteger code;
    const SwizzledMethod alert([NSAlert class], @selector(runModal), +[](id, SEL) { return code; });

    for (const bool installed : { false, true }) {
        if (installed) {
            installLicence();
        }
        scan();
        const auto before = state();
        for (const NSInteger other : { 1001, 1002, 999, 1, 0, -1, -1000, -1001 }) {
            code = other;
            override();
            if (installed) {
                remove();
            }
            EXPECT_EQ(state(), before) << other;
        }
    }
}

TEST_F(RemovalFlow, OverrideRunsWhetherOrNotTheProductIsInstalled)
{
    stage({ "plant", "--locations", "1,3,6,11", "--no-agent", "--no-daemon" });
    scan();
    AlertAnswers answers({ "Run Cleanup", "Restart Later", "Run Cleanup", "Restart Later" });

    override();
    override();

    EXPECT_EQ(answers.seen(), (std::vector { overrideConfirmation, successAlert, overrideConfirmation, successAlert }));
    const auto run = Strings {
        "Starting override cleanup...", "No license file found to back up.", "Quorlen 3 removal completed."
    } + nothingFoundLines;
    EXPECT_EQ(newLines(), Strings { "Detected 4 Quorlen 3 item(s)." } + run + run);
    EXPECT_EQ(enabled(), std::pair(false, true));
}

TEST_F(RemovalFlow, GoesOnWhenNeitherTheBackupNorTheLogCanBeSaved)
{
    const Desktop readOnly("read-only");
    installLicence();
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    remove();

    EXPECT_EQ(answers.seen(), (std::vector { confirmation, successAlert }));
    EXPECT_EQ(newLines(),
        (Strings { "Starting Quorlen 3 removal...", "License detected.", "License backup was not created.",
             "Quorlen 3 removal completed." } +
            nothingFoundLines));
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(RemovalFlow, RefusedRightsKeepTheProductTheArchiveAndTheButtonsAndWriteNoLogFile)
{
    const RightsRefused refused;
    expectFailedRun("{");
    EXPECT_NE(log().find("User canceled."), std::string::npos);
    EXPECT_NE(log().find("-128"), std::string::npos);
}

TEST_F(RemovalFlow, AScriptObjectThatCannotBeMadeIsAFailureWithAnEmptyRecord)
{
    const NoScripts none;
    expectFailedRun(utf8([[NSDictionary dictionary] description]) + "\n");
    NSString *literal = [controller.get() appleScriptQuotedString:[controller.get() cleanupShellScript]];
    EXPECT_EQ(none.source(), "do shell script " + utf8(literal) + " with administrator privileges");
}

TEST_F(OrderOfARemoval, WithRightsGranted)
{
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" }, [](std::size_t) {
        events.push_back("an alert over a Desktop with files: " + std::to_string(filesOfTheToolOnTheDesktop().size()));
    });

    remove();

    EXPECT_EQ(events,
        (Strings {
            "an alert over a Desktop with files: 0",
            "Remove disabled",
            "Override disabled",
            "log: Starting Quorlen 3 removal...",
            "log: No license file found to back up.",
            "log: Quorlen 3 removal completed.",
            "an alert over a Desktop with files: 1",
            "Override enabled",
            "Remove disabled",
            "log: " + nothingFoundLines[0],
            "log: " + nothingFoundLines[1],
        }));
}
