#import "removal/AppDelegate+Completion.h"

#import "app/AppDelegate+ActivityLog.h"
#import "removal/AppDelegate+RemovalFlow.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"

namespace fs = std::filesystem;

/// Prints its log on standard error when the application ends.
@interface ControllerWithLastWords : AppDelegate
- (void)removeAndBeGone;
@end

@implementation ControllerWithLastWords
- (void)applicationWillTerminate:(NSNotification *)notification
{
    fprintf(stderr, "%s", [[[self logView] string] UTF8String]);
}
- (void)removeAndBeGone
{
    [self removeQuorlen3:nil];
    fprintf(stderr, "the tool is still running\n");
    _exit(1);
}
@end

namespace
{

constexpr int secondsAt221412 = (22 * 60 + 14) * 60 + 12;

class RemovalLogFile : public RoomTest
{
protected:
    void log(const std::string &line) { [controller.get() appendLog:ns(line)]; }
    void writeFile() { [controller.get() writeRemovalLogToDesktop]; }
    std::string wholeLog() const { return RoomTest::log(); }
};

class Completion : public RoomTest
{
protected:
    explicit Completion(Class type = [AppDelegate class]) : RoomTest(type) { }
    void show(BOOL success) { [controller.get() showCompletionWithSuccess:success]; }
};

class RestartThatIsGranted : public Completion
{
protected:
    RestartThatIsGranted() : Completion([ControllerWithLastWords class])
    {
        // The test continues in a new process, because the process ends with the application.
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }
};

}

TEST_F(RemovalLogFile, IsNamedByTheSecondAndHasTheWholeLog)
{
    const StoppedClock clock(secondsAt221412);
    log("a line");

    writeFile();

    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings { "Quorlen-3-Removal-Log-20261115-221412.txt" });
    EXPECT_EQ(contents(desktop() / "Quorlen-3-Removal-Log-20261115-221412.txt"),
        "version: 1.0\nupdated: 2026.06.14\nReady.\na line\n");
}

TEST_F(RemovalLogFile, UsesTheTwentyFourHourClock)
{
    const StoppedClock clock(3 * 60 + 4);

    writeFile();

    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings { "Quorlen-3-Removal-Log-20261115-000304.txt" });
}

TEST_F(RemovalLogFile, IsUtf8WithoutAByteOrderMark)
{
    const StoppedClock clock(secondsAt221412);
    const std::string awkward = "Zoë \u2019 \u65e5\u672c \U0001F600 tab\there";
    log(awkward);

    writeFile();

    const auto bytes = contents(desktop() / "Quorlen-3-Removal-Log-20261115-221412.txt");
    EXPECT_EQ(bytes, wholeLog());
    EXPECT_TRUE(bytes.starts_with("version: "));
    EXPECT_TRUE(bytes.ends_with(awkward + "\n"));
}

TEST_F(RemovalLogFile, OfTheSameSecondIsReplacedAsAWhole)
{
    const StoppedClock clock(secondsAt221412);
    const auto file = desktop() / "Quorlen-3-Removal-Log-20261115-221412.txt";
    writeFile();
    const auto first = contents(file);
    const auto link = desktop() / "Quorlen-second-name-of-the-first-file";
    fs::create_hard_link(file, link);

    log("later");
    writeFile();

    EXPECT_EQ(contents(file), first + "later\n");
    EXPECT_EQ(contents(link), first) << "the tool must replace the file, not write into it";
    EXPECT_EQ(filesOfTheToolOnTheDesktop().size(), 2u);
}

TEST_F(RemovalLogFile, OfALaterSecondHasTheLinesOfTheFirst)
{
    StoppedClock clock(secondsAt221412);
    writeFile();
    log("later");
    clock.moveTo(secondsAt221412 + 1);

    writeFile();

    EXPECT_EQ(filesOfTheToolOnTheDesktop(),
        (Strings { "Quorlen-3-Removal-Log-20261115-221412.txt", "Quorlen-3-Removal-Log-20261115-221413.txt" }));
    EXPECT_EQ(contents(desktop() / "Quorlen-3-Removal-Log-20261115-221413.txt"),
        contents(desktop() / "Quorlen-3-Removal-Log-20261115-221412.txt") + "later\n");
}

TEST_F(RemovalLogFile, IsSilentlyMissingIfTheDesktopCannotTakeIt)
{
    for (const char *state : { "missing", "read-only", "full" }) {
        const Desktop staged(state);

        writeFile();

        EXPECT_EQ(newLines(), Strings()) << state;
        EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings()) << state;
        EXPECT_EQ(fs::exists(desktop()), std::string(state) != "missing") << "the tool must not make the folder";
    }
}

TEST_F(RemovalLogFile, IsSilentlyMissingIfThereIsNoDesktopFolder)
{
    const NoDesktopFound none;

    writeFile();

    EXPECT_EQ(newLines(), Strings());
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(RemovalLogFile, CanFailWithoutFailingTheRemoval)
{
    const Desktop readOnly("read-only");
    write(locations()[10], "a log");
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    [controller.get() removeQuorlen3:nil];

    EXPECT_FALSE(fs::exists(locations()[10]));
    ASSERT_EQ(answers.seen().size(), 2u);
    EXPECT_EQ(answers.seen()[1].texts.front(), "Quorlen 3 has been removed successfully.");
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(RemovalLogFile, EndsWithTheCompletionLine)
{
    write(locations()[10], "a log");
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });

    [controller.get() removeQuorlen3:nil];

    const auto files = filesOfTheToolOnTheDesktop();
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].size(), std::string("Quorlen-3-Removal-Log-yyyyMMdd-HHmmss.txt").size());
    EXPECT_TRUE(files[0].starts_with("Quorlen-3-Removal-Log-20") && files[0].ends_with(".txt"));
    EXPECT_TRUE(contents(desktop() / files[0]).ends_with("\nQuorlen 3 removal completed.\n"));
    EXPECT_TRUE(wholeLog().starts_with(contents(desktop() / files[0])));
}

TEST_F(Completion, AfterSuccessOffersARestartAndRestartLaterDoesNothing)
{
    const auto restartsBefore = callsOf("/sbin/shutdown").size();
    AlertAnswers answers({ "Restart Later" });

    show(YES);

    EXPECT_EQ(answers.seen(),
        (std::vector {
            SeenPanel { { "Quorlen 3 has been removed successfully.", "A restart is recommended to complete cleanup." },
                { "Restart Now", "Restart Later" } } }));
    EXPECT_EQ(newLines(), Strings());
    EXPECT_EQ(callsOf("/sbin/shutdown").size(), restartsBefore);
}

TEST_F(Completion, AfterFailureOffersNoRestart)
{
    AlertAnswers answers({ "OK" });

    show(NO);

    EXPECT_EQ(answers.seen(),
        (std::vector { SeenPanel {
            { "Quorlen 3 removal did not complete.", "Please contact Vendrel Support if the problem continues." },
            { "OK" } } }));
    EXPECT_EQ(newLines(), Strings());
}

TEST_F(Completion, ARefusedRestartIsLoggedAndKeepsTheToolOpen)
{
    const RightsRefused refused;
    AlertAnswers answers({ "Restart Now" });

    show(YES);

    ASSERT_FALSE(newLines().empty());
    EXPECT_TRUE(newLines()[0].starts_with("Restart request failed: {"));
    EXPECT_NE(log().find("User canceled."), std::string::npos);
    EXPECT_EQ(answers.seen().size(), 1u) << "another alert was shown";
    EXPECT_TRUE([[controller.get() window] isVisible]);
}

TEST_F(Completion, ARestartThatCannotBeAskedForIsLoggedWithAnEmptyRecord)
{
    const NoScripts none;

    [controller.get() restartNow];

    EXPECT_EQ(none.source(),
        "do shell script \"/bin/sh -c '/bin/sleep 1; /sbin/shutdown -r now' >/dev/null 2>&1 &\""
        " with administrator privileges");
    EXPECT_TRUE(log().ends_with("\nRestart request failed: " + utf8([[NSDictionary dictionary] description]) + "\n"));
}

TEST_F(RestartThatIsGranted, EndsTheToolAtOnceAndItsLineIsNotInTheLogFile)
{
    write(locations()[10], "a log");
    const auto restartsBefore = callsOf("/sbin/shutdown").size();

    EXPECT_EXIT(
        {
            [NSApp setDelegate:controller.get()];
            AlertAnswers answers({ "Remove Quorlen 3", "Restart Now" });
            [controller.get() performSelector:@selector(removeAndBeGone) withObject:nil afterDelay:0];
            [NSApp run];
        },
        testing::ExitedWithCode(0),
        "Quorlen 3 removal completed\\.\nRestart requested\\. Closing Quorlen 3 Removal Tool before restart\\.\n$");

    const auto files = filesOfTheToolOnTheDesktop();
    ASSERT_EQ(files.size(), 1u);
    EXPECT_TRUE(contents(desktop() / files[0]).ends_with("\nQuorlen 3 removal completed.\n"));
    stage({ "await", "shutdown", std::to_string(restartsBefore + 1) });
    const auto restarts = callsOf("/sbin/shutdown");
    EXPECT_EQ(restarts.size(), restartsBefore + 1);
    EXPECT_EQ(restarts.back(), (Strings { "-r", "now" }));
}
