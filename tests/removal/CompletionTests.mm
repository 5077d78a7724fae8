#import "removal/AppDelegate+Completion.h"

#import "app/AppDelegate+ActivityLog.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"

namespace fs = std::filesystem;

namespace
{

constexpr int secondsAt221412 = (22 * 60 + 14) * 60 + 12;

class RemovalLogFile : public RoomTest
{
protected:
    void append(const std::string &line) { [controller.get() appendLog:ns(line)]; }
    void writeFile() { [controller.get() writeRemovalLogToDesktop]; }
    void expectNoFileAndNoWord()
    {
        writeFile();

        EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
        EXPECT_EQ(newLines(), Strings());
    }
};

using Completion = RoomTest;

}

TEST_F(RemovalLogFile, IsNamedByTheSecondAndHasTheWholeLogInUtf8)
{
    StoppedClock clock(3 * 60 + 4);
    append("Zoë \u2019 \u65e5\u672c \U0001F600 tab\there");
    writeFile();
    clock.moveTo(secondsAt221412);
    append("later");
    writeFile();

    const std::string first = "Quorlen-3-Removal-Log-20261115-000304.txt";
    const std::string second = "Quorlen-3-Removal-Log-20261115-221412.txt";
    const std::string text =
        "version: 1.0\nupdated: 2026.06.14\nReady.\nZoë \u2019 \u65e5\u672c \U0001F600 tab\there\n";
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), (Strings { first, second }));
    EXPECT_EQ(contents(desktop() / first), text);
    EXPECT_EQ(contents(desktop() / second), text + "later\n");
}

TEST_F(RemovalLogFile, OfTheSameSecondIsReplacedAsAWhole)
{
    const StoppedClock clock(secondsAt221412);
    const auto file = desktop() / "Quorlen-3-Removal-Log-20261115-221412.txt";
    writeFile();
    const auto first = contents(file);
    const auto link = desktop() / "Quorlen-second-name-of-the-first-file";
    fs::create_hard_link(file, link);

    append("later");
    writeFile();

    EXPECT_EQ(contents(file), first + "later\n");
    EXPECT_EQ(contents(link), first) << "the tool must replace the file, not write into it";
    EXPECT_EQ(filesOfTheToolOnTheDesktop().size(), 2u);
}

TEST_F(RemovalLogFile, IsSilentlyMissingIfTheDesktopCannotTakeIt)
{
    for (const std::string state : { "missing", "read-only", "full" }) {
        SCOPED_TRACE(state);
        const Desktop staged(state);
        expectNoFileAndNoWord();
        EXPECT_EQ(fs::exists(desktop()), state != "missing") << "the tool must not make the folder";
    }
    const NoDesktopFound none;
    expectNoFileAndNoWord();
}

TEST_F(Completion, RestartNowIsLoggedAndThenEndsTheTool)
{
    static std::function<void()> onTerminate;
    Strings linesAtTheEnd;
    onTerminate = [&] { linesAtTheEnd = newLines(); };
    const SwizzledMethod terminate([NSApplication class], @selector(terminate:), +[](id, SEL, id) { onTerminate(); });
    AlertAnswers answers({ "Restart Now" });

    [controller.get() showCompletionWithSuccess:YES];

    EXPECT_EQ(linesAtTheEnd, Strings { "Restart requested. Closing Quorlen 3 Removal Tool before restart." });
}

TEST_F(Completion, ARestartThatCannotBeAskedForIsLoggedWithAnEmptyRecord)
{
    const NoScripts none;
    const SwizzledMethod terminate(
        [NSApplication class], @selector(terminate:), +[](id, SEL, id) { ADD_FAILURE() << "the tool must stay"; });

    [controller.get() restartNow];

    EXPECT_EQ(none.source(),
        "do shell script \"/bin/sh -c '/bin/sleep 1; /sbin/shutdown -r now' >/dev/null 2>&1 &\""
        " with administrator privileges");
    EXPECT_TRUE(log().ends_with("\nRestart request failed: " + utf8([[NSDictionary dictionary] description]) + "\n"));
}
