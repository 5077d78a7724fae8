#import "licence/AppDelegate+LicenceBackup.h"

#import "app/AppDelegate+ActivityLog.h"
#import "tests/licence/LicenceTest.hpp"
#import "tests/support/PlatformFolders.hpp"

namespace fs = std::filesystem;

namespace
{

constexpr int secondsAt221412 = (22 * 60 + 14) * 60 + 12;
const std::string nameAt221412 = "Quorlen-License-Backup-20261115-221412";

class Backup : public LicenceTest
{
protected:
    void SetUp() override
    {
        LicenceTest::SetUp();
        write(licence(), installed);
    }

    void backUp() { [controller.get() backupLicenceIfPresent]; }
    std::string lastBackupPath() const { return utf8([controller.get() lastBackupPath]); }

    /// Expects that the backup failed, removed its files and kept the path of an earlier backup.
    void expectNotCreated()
    {
        [controller.get() setLastBackupPath:@"/an/earlier.zip"];

        backUp();

        EXPECT_EQ(nextLines(), (Strings { "License detected.", "License backup was not created." }));
        EXPECT_EQ(temporaryFolders(), Strings());
        EXPECT_EQ(lastBackupPath(), "/an/earlier.zip");
        EXPECT_TRUE(fs::exists(licence()));
    }

    /// Expects that an exception ended the backup, and that the staged copy and the path of an earlier backup stay.
    void expectSkipped(const std::string &reason)
    {
        [controller.get() setLastBackupPath:@"/an/earlier.zip"];
        fs::remove_all(temporaryFolder() / nameAt221412);
        const StoppedClock clock(secondsAt221412);

        backUp();

        EXPECT_EQ(nextLines(), (Strings { "License detected.", "License backup skipped: " + reason }));
        EXPECT_EQ(temporaryFolders(), Strings { nameAt221412 });
        EXPECT_EQ(contents(temporaryFolder() / nameAt221412 / ".licence"), installed);
        EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
        EXPECT_EQ(lastBackupPath(), "/an/earlier.zip");
    }

    const std::string installed { "\0licence\xff\n of ann", 17 };
};

}

TEST_F(Backup, WithoutALicenceSaysSoAndMakesNoFile)
{
    fs::remove(licence());
    [controller.get() setLastBackupPath:@"/an/earlier.zip"];

    backUp();

    EXPECT_EQ(newLines(), Strings { "No license file found to back up." });
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
    EXPECT_EQ(temporaryFolders(), Strings());
    EXPECT_EQ(lastBackupPath(), "/an/earlier.zip");
}

TEST_F(Backup, LeavesOneArchiveNamedByOneTimeOnTheDesktop)
{
    const StoppedClock clock(secondsAt221412);
    StoppedClock::moveOnAtEachReading();

    backUp();

    const auto archive = desktop() / (nameAt221412 + ".zip");
    EXPECT_EQ(callsOf("/usr/bin/ditto").back(),
        (Strings {
            "-c", "-k", "--sequesterRsrc", "--keepParent", temporaryFolder() / nameAt221412 / ".licence", archive }));
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings { nameAt221412 + ".zip" });
    EXPECT_EQ(licenceInside(archive), installed);
    EXPECT_EQ(newLines(), (Strings { "License detected.", "License backup created: " + archive.string() }));
    EXPECT_EQ(lastBackupPath(), archive);
    EXPECT_EQ(temporaryFolders(), Strings());
    EXPECT_EQ(contents(licence()), installed) << "the licence itself must stay";
}

TEST_F(Backup, ChangesNoArchiveAndNoCopyOfAnotherSecond)
{
    StoppedClock clock(secondsAt221412);
    {
        const Archiver archiver("missing");
        backUp();
    }
    clock.moveTo(secondsAt221412 + 1);
    backUp();
    clock.moveTo(secondsAt221412 + 2);
    for (const char *newer : { "a newer licence", "the newest licence" }) {
        write(licence(), newer);
        backUp();
    }

    const Strings archives { "Quorlen-License-Backup-20261115-221413.zip",
        "Quorlen-License-Backup-20261115-221414.zip" };
    EXPECT_EQ(temporaryFolders(), Strings { nameAt221412 }) << "only the skipped backup leaves a folder";
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), archives);
    EXPECT_EQ(licenceInside(desktop() / archives[0]), installed);
    EXPECT_EQ(licenceInside(desktop() / archives[1]), "the newest licence") << "the same second has the same names";
    EXPECT_EQ(lastBackupPath(), desktop() / archives[1]);
}

TEST_F(Backup, IsNotCreatedWhenTheArchiverMakesNoFileOrFailsBesideAFileOfThatName)
{
    const StoppedClock clock(secondsAt221412);
    {
        const Archiver archiver("silent");
        expectNotCreated();
    }
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
    backUp();
    nextLines();
    for (const char *mode : { "fails", "dies" }) {
        SCOPED_TRACE(mode);
        const Archiver archiver(mode);
        expectNotCreated();
        EXPECT_EQ(licenceInside(onlyArchive()), installed);
    }
}

TEST_F(Backup, IsNotCreatedIfTheDesktopCannotTakeItOrTheLicenceIsUnreadable)
{
    for (const std::string state : { "missing", "read-only", "full" }) {
        SCOPED_TRACE(state);
        const Desktop staged(state);
        expectNotCreated();
        EXPECT_EQ(fs::exists(desktop()), state != "missing") << "the tool must not make the folder";
    }
    fs::permissions(licence(), fs::perms::none);
    expectNotCreated();
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(Backup, IsSkippedWithTheReasonAndLeavesItsCopy)
{
    for (const auto &[mode, reason] : reasonsNotToStart) {
        SCOPED_TRACE(mode);
        const Archiver archiver(mode);
        expectSkipped(reason);
    }
    const NoDesktopFound noDesktop;
    expectSkipped("Tried to init array with nil object");
    const SwizzledMethod reason = noReasons();
    expectSkipped("unknown error");
}

TEST_F(Backup, KeepsThePathThatWasStoredBeforeAnException)
{
    static Strings lines;
    const SwizzledMethod log(
        [AppDelegate class], @selector(appendLog:), +[](id, SEL, NSString *line) {
            lines.push_back(utf8(line));
            if ([line hasPrefix:@"License backup created: "]) {
                [NSException raise:NSGenericException format:@"no ink"];
            }
        });

    backUp();

    EXPECT_EQ(lines,
        (Strings { "License detected.", "License backup created: " + onlyArchive().string(),
            "License backup skipped: no ink" }));
    EXPECT_EQ(lastBackupPath(), onlyArchive());
    EXPECT_EQ(licenceInside(onlyArchive()), installed);
    EXPECT_EQ(temporaryFolders().size(), 1u);
}

TEST_F(Backup, DoesNotCatchWhatIsNoException)
{
    const SwizzledMethod store(
        [AppDelegate class], @selector(setLastBackupPath:), +[](id, SEL, NSString *) { @throw @"something else"; });
    @try {
        backUp();
        ADD_FAILURE() << "nothing was thrown";
    } @catch (NSString *thrown) {
        EXPECT_EQ(utf8(thrown), "something else");
    }
    EXPECT_EQ(newLines(), Strings { "License detected." });
}
