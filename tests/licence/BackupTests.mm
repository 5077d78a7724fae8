#import "licence/AppDelegate+LicenceBackup.h"

#import "app/AppDelegate+ActivityLog.h"
#import "tests/licence/ExceptionWithoutReason.h"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"

namespace fs = std::filesystem;

/// Raises an exception without a reason before it stores the archive's path.
@interface ControllerThatFailsToNote : AppDelegate
@end

@implementation ControllerThatFailsToNote
- (void)setLastBackupPath:(NSString *)path
{
    @throw [[[ExceptionWithoutReason alloc] initWithName:NSGenericException reason:nil userInfo:nil] autorelease];
}
@end

/// Raises an exception when it logs the archive.
@interface ControllerThatFailsToTell : AppDelegate
@end

@implementation ControllerThatFailsToTell
- (void)appendLog:(NSString *)message
{
    if ([message hasPrefix:@"License backup created: "]) {
        [NSException raise:NSGenericException format:@"no ink"];
    }
    [super appendLog:message];
}
@end

/// Throws an object that is not an NSException.
@interface ControllerThatThrowsSomethingElse : AppDelegate
@end

@implementation ControllerThatThrowsSomethingElse
- (void)setLastBackupPath:(NSString *)path
{
    @throw @"something else";
}
@end

namespace
{

constexpr int secondsAt221412 = (22 * 60 + 14) * 60 + 12;
const std::string nameAt221412 = "Quorlen-License-Backup-20261115-221412";

class Backup : public RoomTest
{
protected:
    explicit Backup(Class type = [AppDelegate class]) : RoomTest(type) { }
    void SetUp() override
    {
        RoomTest::SetUp();
        write(licence(), installed);
    }

    void backUp() { [controller.get() backupLicenceIfPresent]; }
    std::string lastBackupPath() const { return utf8([controller.get() lastBackupPath]); }

    /// Expects that the backup failed, removed its files and kept the path of an earlier backup.
    void expectNotCreated(const std::string &when)
    {
        [controller.get() setLastBackupPath:@"/an/earlier.zip"];
        const auto before = newLines().size();

        backUp();

        const auto lines = newLines();
        EXPECT_EQ(Strings(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
            (Strings { "License detected.", "License backup was not created." }))
            << when;
        EXPECT_EQ(temporaryFolders(), Strings()) << when;
        EXPECT_EQ(lastBackupPath(), "/an/earlier.zip") << when;
        EXPECT_TRUE(fs::exists(licence())) << when;
    }

    /// Expects that an exception ended the backup and that the staged copy stays.
    void expectSkipped()
    {
        [controller.get() setLastBackupPath:@"/an/earlier.zip"];
        const StoppedClock clock(secondsAt221412);

        backUp();

        const auto lines = newLines();
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[0], "License detected.");
        EXPECT_TRUE(lines[1].starts_with("License backup skipped: ")) << lines[1];
        EXPECT_GT(lines[1].size(), std::string("License backup skipped: ").size()) << "the line has no reason";
        EXPECT_NE(lines[1], "License backup skipped: unknown error");
        EXPECT_EQ(temporaryFolders(), Strings { nameAt221412 });
        EXPECT_EQ(contents(temporaryFolder() / nameAt221412 / ".licence"), installed);
        EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
        EXPECT_EQ(lastBackupPath(), "/an/earlier.zip");
    }

    const std::string installed { "\0licence\xff\n of ann", 17 };
};

class BackupBeforeItsPathIsStored : public Backup
{
protected:
    BackupBeforeItsPathIsStored() : Backup([ControllerThatFailsToNote class]) { }
};

class BackupBeforeItsPathIsLogged : public Backup
{
protected:
    BackupBeforeItsPathIsLogged() : Backup([ControllerThatFailsToTell class]) { }
};

class BackupWithAnotherThrow : public Backup
{
protected:
    BackupWithAnotherThrow() : Backup([ControllerThatThrowsSomethingElse class]) { }
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

TEST_F(Backup, LeavesOneArchiveWithTheLicenceOnTheDesktop)
{
    const StoppedClock clock(secondsAt221412);

    backUp();

    const auto archive = desktop() / (nameAt221412 + ".zip");
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings { nameAt221412 + ".zip" });
    EXPECT_EQ(licenceInside(archive), installed);
    EXPECT_EQ(newLines(), (Strings { "License detected.", "License backup created: " + archive.string() }));
    EXPECT_EQ(lastBackupPath(), archive);
    EXPECT_EQ(temporaryFolders(), Strings());
    EXPECT_EQ(contents(licence()), installed) << "the licence itself must stay";
}

TEST_F(Backup, PassesTheStagedCopyToTheArchiverInSixArguments)
{
    const StoppedClock clock(secondsAt221412);

    backUp();

    EXPECT_EQ(callsOf("/usr/bin/ditto").back(),
        (Strings { "-c", "-k", "--sequesterRsrc", "--keepParent", temporaryFolder() / nameAt221412 / ".licence",
            desktop() / (nameAt221412 + ".zip") }));
}

TEST_F(Backup, NamesItsFolderAndItsArchiveByOneTimeEvenIfTheClockMoves)
{
    const StoppedClock clock(secondsAt221412);
    StoppedClock::moveOnAtEachReading();

    backUp();

    const auto call = callsOf("/usr/bin/ditto").back();
    EXPECT_EQ(fs::path(call[4]).parent_path().filename(), fs::path(call[5]).stem());
    EXPECT_EQ(onlyArchive(), call[5]);
}

TEST_F(Backup, NeverChangesAnEarlierArchive)
{
    StoppedClock clock(secondsAt221412);
    backUp();
    write(licence(), "a newer licence");
    clock.moveTo(secondsAt221412 + 1);

    backUp();

    EXPECT_EQ(licenceInside(desktop() / (nameAt221412 + ".zip")), installed);
    EXPECT_EQ(licenceInside(desktop() / "Quorlen-License-Backup-20261115-221413.zip"), "a newer licence");
    EXPECT_EQ(lastBackupPath(), desktop() / "Quorlen-License-Backup-20261115-221413.zip");
}

TEST_F(Backup, OfTheSameSecondTakesTheSameNames)
{
    const StoppedClock clock(secondsAt221412);
    backUp();
    write(licence(), "a newer licence");

    backUp();

    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings { nameAt221412 + ".zip" });
    EXPECT_EQ(licenceInside(onlyArchive()), "a newer licence");
    EXPECT_EQ(temporaryFolders(), Strings());
    EXPECT_EQ(newLines().size(), 4u);
}

TEST_F(Backup, IsNotCreatedWhenTheArchiverFails)
{
    const Archiver archiver("fails");
    expectNotCreated("the archiver ends with another status than 0");
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(Backup, IsNotCreatedWhenTheArchiverIsKilled)
{
    const Archiver archiver("dies");
    expectNotCreated("the archiver is killed");
}

TEST_F(Backup, IsNotCreatedWhenTheArchiverSucceedsWithoutAnArchive)
{
    const Archiver archiver("silent");
    expectNotCreated("the archiver makes no file");
}

TEST_F(Backup, IsNotCreatedWhenTheArchiverFailsEvenIfAFileOfThatNameExists)
{
    const StoppedClock clock(secondsAt221412);
    backUp();
    const Archiver archiver("fails");
    expectNotCreated("an archive of the same second exists");
}

TEST_F(Backup, OfAnUnreadableLicenceIsNotCreated)
{
    fs::permissions(licence(), fs::perms::none);
    expectNotCreated("unreadable");
    EXPECT_EQ(filesOfTheToolOnTheDesktop(), Strings());
}

TEST_F(Backup, IsNotCreatedIfTheDesktopCannotTakeIt)
{
    for (const char *state : { "missing", "read-only", "full" }) {
        const Desktop staged(state);
        expectNotCreated(state);
        EXPECT_EQ(fs::exists(desktop()), std::string(state) != "missing") << "the tool must not make the folder";
    }
}

TEST_F(Backup, IsSkippedWithAReasonAndLeavesItsCopyWhenTheArchiverIsMissing)
{
    const Archiver archiver("missing");
    expectSkipped();
}

TEST_F(Backup, IsSkippedWithAReasonAndLeavesItsCopyWhenTheArchiverIsNotAProgram)
{
    const Archiver archiver("not-a-program");
    expectSkipped();
}

TEST_F(Backup, IsSkippedWithAReasonAndLeavesItsCopyIfThereIsNoDesktopFolder)
{
    const NoDesktopFound none;
    expectSkipped();
}

TEST_F(Backup, AfterASkippedBackupMakesANewFolder)
{
    StoppedClock clock(secondsAt221412);
    {
        const Archiver archiver("missing");
        backUp();
    }
    clock.moveTo(secondsAt221412 + 1);

    backUp();

    EXPECT_EQ(licenceInside(onlyArchive()), installed);
    EXPECT_EQ(temporaryFolders(), Strings { nameAt221412 }) << "only the skipped backup leaves a folder";
}

TEST_F(BackupBeforeItsPathIsStored, SaysUnknownErrorIfTheExceptionHasNoReason)
{
    backUp();

    EXPECT_EQ(newLines(), (Strings { "License detected.", "License backup skipped: unknown error" }));
    EXPECT_EQ(temporaryFolders().size(), 1u);
    EXPECT_EQ(lastBackupPath(), "");
}

TEST_F(BackupBeforeItsPathIsLogged, KeepsThePathThatWasStoredBeforeTheException)
{
    backUp();

    EXPECT_EQ(newLines(), (Strings { "License detected.", "License backup skipped: no ink" }));
    EXPECT_EQ(lastBackupPath(), onlyArchive());
    EXPECT_EQ(licenceInside(onlyArchive()), installed);
    EXPECT_EQ(temporaryFolders().size(), 1u);
}

TEST_F(BackupWithAnotherThrow, DoesNotCatchIt)
{
    std::string caught;
    @try {
        backUp();
    } @catch (NSString *thrown) {
        caught = utf8(thrown);
    }

    EXPECT_EQ(caught, "something else");
    EXPECT_EQ(newLines(), Strings { "License detected." });
}
