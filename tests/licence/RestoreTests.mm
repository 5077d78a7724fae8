#import "licence/AppDelegate+LicenceRestore.h"

#import "detection/AppDelegate+DetectionStatus.h"
#import "licence/AppDelegate+LicenceBackup.h"
#import "tests/licence/ExceptionWithoutReason.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"

namespace fs = std::filesystem;

/// Raises an exception without a reason during the search in the unpacked archive.
@interface ControllerThatLosesItsWay : AppDelegate
@end

@implementation ControllerThatLosesItsWay
- (NSString *)findLicenseFileUnderPath:(NSString *)root
{
    @throw [[[ExceptionWithoutReason alloc] initWithName:NSGenericException reason:nil userInfo:nil] autorelease];
}
@end

/// Throws an object that is not an NSException.
@interface ControllerThatThrowsAString : AppDelegate
@end

@implementation ControllerThatThrowsAString
- (NSString *)findLicenseFileUnderPath:(NSString *)root
{
    @throw @"something else";
}
@end

namespace
{

const SeenPanel replaceQuestion {
    { "Replace existing license?",
        "A Quorlen 3 license file already exists on this Mac. Replace it with the selected backup?" },
    { "Replace", "Cancel" },
};
const SeenPanel restoredAlert {
    { "License restored.", "The Quorlen 3 license file has been restored." },
    { "OK" },
};
const SeenPanel notRestoredAlert {
    { "License was not restored.", "The selected backup did not contain a .licence file or could not be restored." },
    { "OK" },
};

/// An entry of an archive that a test makes.
struct Entry {
    std::string name; ///< The name of a folder ends in a slash.
    std::string text;
    std::string mode = "0100600"; ///< File type and permissions, in octal digits.
};

void makeZip(const fs::path &archive, const std::vector<Entry> &entries)
{
    Strings command { "/usr/bin/python3", "-c", R"(
import sys, zipfile
archive, *words = sys.argv[1:]
with zipfile.ZipFile(archive, "w") as zipped:
    for name, text, mode in zip(words[::3], words[1::3], words[2::3]):
        info = zipfile.ZipInfo(name)
        info.create_system = 3
        info.external_attr = int(mode, 8) << 16
        zipped.writestr(info, text)
)",
        archive };
    for (const auto &entry : entries) {
        command.insert(command.end(), { entry.name, entry.text, entry.mode });
    }
    EXPECT_EQ(run(command).status, 0);
}

/// The first entry below a folder that has a licence's name, in the file system's order. A folder comes before its
/// contents.
fs::path firstLicenceBelow(const fs::path &folder)
{
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().filename() == ".licence") {
            return entry.path();
        }
    }
    return {};
}

template <typename View> View *viewOf(NSView *top)
{
    if ([top isKindOfClass:[View class]]) {
        return static_cast<View *>(top);
    }
    for (NSView *view in [top subviews]) {
        if (View *found = viewOf<View>(view)) {
            return found;
        }
    }
    return nil;
}

/// Selects a file in the browser of the shown open panel.
void choose(const fs::path &file)
{
    NSBrowser *browser = viewOf<NSBrowser>([[NSApp modalWindow] contentView]);
    ASSERT_NE(browser, nil);
    ASSERT_TRUE([browser setPath:ns(file)]) << "the panel does not show " << file;
    ASSERT_TRUE([browser sendAction]);
}

class Restore : public RoomTest
{
protected:
    explicit Restore(Class type = [AppDelegate class]) : RoomTest(type) { }

    void SetUp() override
    {
        RoomTest::SetUp();
        fs::remove_all(folder);
        fs::create_directories(folder);
    }

    /// Restores from an archive that it chooses in the real panel.
    /// @param buttons The buttons to press in the alerts after the panel.
    /// @return The alerts.
    std::vector<SeenPanel> restore(const fs::path &chosen, Strings buttons = { "OK" })
    {
        buttons.insert(buttons.begin(), "Restore License"); // the panel's button
        AlertAnswers answers(buttons, [&](std::size_t number) {
            if (number == 0) {
                choose(chosen);
            }
        });
        [controller.get() restoreLicense:nil];
        return { answers.seen().begin() + 1, answers.seen().end() };
    }

    /// The log lines of an attempt: its start, its result and the next scan.
    Strings linesOfAttempt(const Strings &result) const
    {
        Strings lines { "Restoring license from: " + archive.string() };
        lines.insert(lines.end(), result.begin(), result.end());
        if (fs::exists(licence())) {
            lines.insert(lines.end(), { "Detected 1 Quorlen 3 item(s).", "License detected." });
        } else if (fs::exists(licence().parent_path())) {
            lines.push_back("Detected 1 Quorlen 3 item(s).");
        } else {
            lines.insert(lines.end(), nothingFoundLines.begin(), nothingFoundLines.end());
        }
        return lines;
    }

    /// Expects that an archive is refused and that the existing licence stays.
    void expectRefused(const std::string &why)
    {
        write(licence(), "the old licence");
        const auto before = newLines().size();

        EXPECT_EQ(restore(archive, { "Replace", "OK" }), (std::vector { replaceQuestion, notRestoredAlert })) << why;

        const auto lines = newLines();
        EXPECT_EQ(Strings(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
            linesOfAttempt({ "License restore failed." }))
            << why;
        EXPECT_EQ(contents(licence()), "the old licence") << why;
        EXPECT_EQ(temporaryFolders(), Strings()) << why;
    }

    const fs::path folder = home() / "Documents/Backups";
    const fs::path archive = folder / "backup.zip";
};

class RestoreWhoseSearchFails : public Restore
{
protected:
    RestoreWhoseSearchFails() : Restore([ControllerThatLosesItsWay class]) { }
};

class RestoreWithAnotherThrow : public Restore
{
protected:
    RestoreWithAnotherThrow() : Restore([ControllerThatThrowsAString class]) { }
};

class Search : public Restore
{
protected:
    fs::path found() const { return utf8([controller.get() findLicenseFileUnderPath:ns(folder)]); }
    bool foundNothing() const { return ![controller.get() findLicenseFileUnderPath:ns(folder)]; }
};

}

TEST_F(Restore, AsksForOneZipFileInThePanel)
{
    static NSOpenPanel *shared;
    shared = [NSOpenPanel openPanel];
    [shared setCanChooseFiles:NO];
    [shared setCanChooseDirectories:YES];
    [shared setAllowsMultipleSelection:YES];
    const SwizzledMethod open(
        object_getClass([NSOpenPanel class]), @selector(openPanel), +[](id, SEL) { return shared; });
    AlertAnswers answers({ "Cancel" }, [](std::size_t) {
        ASSERT_TRUE([[NSApp modalWindow] isKindOfClass:[NSOpenPanel class]]);
        NSOpenPanel *panel = static_cast<NSOpenPanel *>([NSApp modalWindow]);
        EXPECT_EQ(utf8([panel title]), "Choose a Quorlen License Backup");
        EXPECT_EQ(utf8([panel message]), "Select a Quorlen license backup zip created by this tool.");
        EXPECT_EQ(utf8([panel prompt]), "Restore License");
        EXPECT_TRUE([panel canChooseFiles]);
        EXPECT_FALSE([panel canChooseDirectories]);
        EXPECT_FALSE([panel allowsMultipleSelection]);
        EXPECT_TRUE([[panel allowedFileTypes] isEqual:@[ @"zip" ]]);
    });

    [controller.get() restoreLicense:nil];

    EXPECT_EQ(answers.seen().size(), 1u);
}

TEST_F(Restore, CancellingThePanelChangesNothing)
{
    write(licence(), "the old licence");
    const auto status = statusLine();
    AlertAnswers answers({ "Cancel" });

    [controller.get() restoreLicense:nil];

    EXPECT_EQ(answers.seen().size(), 1u);
    EXPECT_EQ(newLines(), Strings());
    EXPECT_EQ(statusLine(), status);
    EXPECT_EQ(contents(licence()), "the old licence");
}

TEST_F(Restore, GoesOnOnlyIfThePanelReturnsOkAndAFile)
{
    static NSInteger code;
    static NSURL *chosen;
    const SwizzledMethod run([NSOpenPanel class], @selector(runModal), +[](id, SEL) { return code; });
    const SwizzledMethod url([NSOpenPanel class], @selector(URL), +[](id, SEL) { return chosen; });
    makeZip(archive, { { ".licence", "the new licence" } });
    write(licence(), "the old licence");
    const AlertAnswers noAlerts({});

    for (const NSInteger other : { 0, 2, -1, 1000, -1000, -1001 }) {
        code = other;
        chosen = [NSURL fileURLWithPath:ns(archive)];
        [controller.get() restoreLicense:nil];
        EXPECT_EQ(newLines(), Strings()) << other;
    }
    code = NSModalResponseOK;
    chosen = nil;
    [controller.get() restoreLicense:nil];

    EXPECT_EQ(newLines(), Strings()) << "no file";
    EXPECT_EQ(contents(licence()), "the old licence");
}

TEST_F(Restore, RestoresTheLicenceOfABackupWithoutAQuestionIfThereIsNone)
{
    const std::string original { "\0licence\xff\n of ann", 17 };
    write(licence(), original);
    fs::permissions(licence(), fs::perms::owner_read | fs::perms::owner_write);
    [controller.get() backupLicenceIfPresent];
    fs::rename(onlyArchive(), archive);
    fs::remove_all(locations()[3]);
    const auto before = newLines().size();

    EXPECT_EQ(restore(archive), std::vector { restoredAlert });

    EXPECT_EQ(contents(licence()), original);
    EXPECT_EQ(fs::status(licence()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    const auto lines = newLines();
    EXPECT_EQ(Strings(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
        linesOfAttempt({ "License restored: " + licence().string() }));
    EXPECT_EQ(statusLine(), "Quorlen 3 detected. 1 related item(s) found. License detected.");
    EXPECT_TRUE(enabled().first);
    EXPECT_EQ(temporaryFolders(), Strings());
    EXPECT_TRUE(fs::exists(archive));
}

TEST_F(Restore, ReplacesAnExistingLicenceOnceTheUserAgrees)
{
    write(licence(), "the old licence");
    makeZip(archive, { { "folder/.licence", "the new licence" } });

    [controller.get() setLastBackupPath:@"/an/earlier.zip"];

    EXPECT_EQ(restore(archive, { "Replace", "OK" }), (std::vector { replaceQuestion, restoredAlert }));

    EXPECT_EQ(contents(licence()), "the new licence");
    EXPECT_EQ(utf8([controller.get() lastBackupPath]), "/an/earlier.zip");
    EXPECT_EQ(newLines(), linesOfAttempt({ "License restored: " + licence().string() }));
}

TEST_F(Restore, DecliningToReplaceChangesNothing)
{
    write(licence(), "the old licence");
    makeZip(archive, { { ".licence", "the new licence" } });
    const auto status = statusLine();

    EXPECT_EQ(restore(archive, { "Cancel" }), std::vector { replaceQuestion });

    EXPECT_EQ(contents(licence()), "the old licence");
    EXPECT_EQ(newLines(), Strings());
    EXPECT_EQ(statusLine(), status) << "no scan";
}

TEST_F(Restore, ReplacesOnlyIfTheAlertReturnsReplace)
{
    static NSInteger code;
    static NSURL *chosen;
    const SwizzledMethod run(
        [NSOpenPanel class], @selector(runModal), +[](id, SEL) { return NSInteger(NSModalResponseOK); });
    const SwizzledMethod url([NSOpenPanel class], @selector(URL), +[](id, SEL) { return chosen; });
    const SwizzledMethod alert([NSAlert class], @selector(runModal), +[](id, SEL) { return code; });
    makeZip(archive, { { ".licence", "the new licence" } });
    chosen = [NSURL fileURLWithPath:ns(archive)];
    write(licence(), "the old licence");

    for (const NSInteger other : { 1001, 1002, 1, 0, -1000, -1001 }) {
        code = other;
        [controller.get() restoreLicense:nil];
        EXPECT_EQ(newLines(), Strings()) << other;
        EXPECT_EQ(contents(licence()), "the old licence") << other;
    }
}

TEST_F(Restore, LogsTheOutcomeThenShowsTheAlertAndThenScans)
{
    makeZip(archive, { { ".licence", "the licence" } });
    Strings linesBehindTheAlert;
    std::string statusBehindTheAlert;
    AlertAnswers answers({ "Restore License", "OK" }, [&](std::size_t number) {
        if (number == 0) {
            choose(archive);
        } else {
            linesBehindTheAlert = newLines();
            statusBehindTheAlert = statusLine();
        }
    });

    [controller.get() restoreLicense:nil];

    EXPECT_EQ(linesBehindTheAlert,
        (Strings { "Restoring license from: " + archive.string(), "License restored: " + licence().string() }));
    EXPECT_EQ(statusBehindTheAlert, "Checking for Quorlen 3...");
    EXPECT_EQ(statusLine(), "Quorlen 3 detected. 1 related item(s) found. License detected.");
}

TEST_F(Restore, PassesTheChosenFileToTheArchiverInFourArguments)
{
    const StoppedClock clock(7);
    makeZip(archive, { { ".licence", "the licence" } });

    EXPECT_TRUE([controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]);

    EXPECT_EQ(callsOf("/usr/bin/ditto").back(),
        (Strings { "-x", "-k", archive, temporaryFolder() / "Quorlen-License-Restore-20261115-000007" }));
}

TEST_F(Restore, MakesTheFolderThatTheArchiverUnpacksInto)
{
    static bool made;
    made = false;
    const auto anyTask = adopt([[NSTask alloc] init]);
    const SwizzledMethod launch(
        [anyTask.get() class], @selector(launch), +[](id task, SEL) {
            made = fs::is_directory(utf8([[task arguments] lastObject]));
            [NSException raise:NSInvalidArgumentException format:@"not launched"];
        });

    EXPECT_FALSE([controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]);

    EXPECT_TRUE(made);
    EXPECT_EQ(temporaryFolders(), Strings());
}

TEST_F(Restore, MakesEveryFolderThatTheLicenceNeeds)
{
    const auto support = home() / "Library/Application Support", aside = home() / "Library/aside";
    fs::rename(support, aside);
    makeZip(archive, { { ".licence", "the licence" } });

    EXPECT_TRUE([controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]);

    EXPECT_EQ(contents(licence()), "the licence");
    fs::remove_all(support);
    fs::rename(aside, support);
}

TEST_F(Restore, WorksTwiceInTheSameSecond)
{
    const StoppedClock clock(7);
    makeZip(archive, { { "one/.licence", "the first" } });
    EXPECT_TRUE([controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]);
    makeZip(archive, { { "two/.licence", "the second" } });

    EXPECT_TRUE([controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]);

    EXPECT_EQ(contents(licence()), "the second");
    EXPECT_EQ(temporaryFolders(), Strings());
}

TEST_F(Restore, AcceptsAFolderOfThatNameToo)
{
    makeZip(archive, { { "x/.licence/", "", "040700" }, { "x/.licence/inside", "a file" } });

    EXPECT_EQ(restore(archive), std::vector { restoredAlert });

    EXPECT_TRUE(fs::is_directory(licence()));
    EXPECT_EQ(contents(licence() / "inside"), "a file");
}

TEST_F(Restore, ReplacesAFolderOfThatNameAndItsContents)
{
    write(licence() / "inside", "a file");
    makeZip(archive, { { ".licence", "the licence" } });

    EXPECT_EQ(restore(archive, { "Replace", "OK" }), (std::vector { replaceQuestion, restoredAlert }));

    EXPECT_EQ(contents(licence()), "the licence");
}

TEST_F(Restore, RefusesAFileThatIsNotAZipArchive)
{
    write(archive, "a text that is named like an archive");
    expectRefused("a text");
    write(archive, "");
    expectRefused("an empty file");
}

TEST_F(Restore, RefusesADamagedArchive)
{
    makeZip(archive, { { ".licence", std::string(5000, 'l') } });
    const auto whole = contents(archive);
    write(archive, whole.substr(0, whole.size() / 2));
    expectRefused("cut off");
    auto changed = whole;
    changed[whole.size() / 2] = 'x';
    write(archive, changed);
    expectRefused("a byte is wrong");
}

TEST_F(Restore, RefusesAnUnreadableArchive)
{
    makeZip(archive, { { ".licence", "the new licence" } });
    fs::permissions(archive, fs::perms::none);
    expectRefused("unreadable");
}

TEST_F(Restore, RefusesAnArchiveWithoutALicence)
{
    makeZip(archive, {});
    expectRefused("empty");
    makeZip(archive, { { "folder/.license", "no licence" } });
    expectRefused("another name");
}

TEST_F(Restore, MakesNoFolderForTheLicenceWhenItRefusesTheArchive)
{
    makeZip(archive, { { "readme.txt", "no licence" } });

    EXPECT_EQ(restore(archive), std::vector { notRestoredAlert });

    EXPECT_FALSE(fs::exists(licence().parent_path()));
    EXPECT_EQ(newLines(), linesOfAttempt({ "License restore failed." }));
}

TEST_F(Restore, LosesTheOldLicenceAndSaysWhyWhenTheCopyFails)
{
    write(licence(), "the old licence");
    makeZip(archive, { { ".licence", "an unreadable licence", "0100000" } });

    EXPECT_EQ(restore(archive, { "Replace", "OK" }), (std::vector { replaceQuestion, notRestoredAlert }));

    EXPECT_FALSE(fs::exists(licence())) << "the old licence must be removed before the copy";
    EXPECT_EQ(temporaryFolders(), Strings());
    const auto lines = newLines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_TRUE(lines[1].starts_with("License copy error: ") && lines[1] != "License copy error: unknown error");
    EXPECT_GT(lines[1].size(), std::string("License copy error: ").size());
    EXPECT_EQ(lines, linesOfAttempt({ lines[1], "License restore failed." }));
}

TEST_F(Restore, SaysUnknownErrorWhenTheCopyFailsWithoutAnError)
{
    const SwizzledMethod copy(
        [NSFileManager class], @selector(copyItemAtPath:toPath:error:),
        +[](id, SEL, NSString *, NSString *, NSError **) { return BOOL(NO); });
    makeZip(archive, { { ".licence", "the licence" } });

    EXPECT_FALSE([controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]);

    EXPECT_EQ(newLines(), Strings { "License copy error: unknown error" });
    EXPECT_EQ(temporaryFolders(), Strings());
}

TEST_F(Restore, IsSkippedWithAReasonWhenTheArchiverCannotBeStarted)
{
    makeZip(archive, { { ".licence", "the new licence" } });
    for (const char *state : { "missing", "not-a-program" }) {
        const Archiver archiver(state);
        write(licence(), "the old licence");
        const auto before = newLines().size();

        EXPECT_EQ(restore(archive, { "Replace", "OK" }), (std::vector { replaceQuestion, notRestoredAlert }));

        auto lines = newLines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        ASSERT_GE(lines.size(), 2u);
        EXPECT_TRUE(lines[1].starts_with("License restore skipped: ")) << lines[1];
        EXPECT_NE(lines[1], "License restore skipped: unknown error");
        EXPECT_EQ(lines, linesOfAttempt({ lines[1], "License restore failed." }));
        EXPECT_EQ(contents(licence()), "the old licence");
        EXPECT_EQ(temporaryFolders(), Strings());
    }
}

TEST_F(RestoreWhoseSearchFails, SaysUnknownErrorIfTheExceptionHasNoReason)
{
    makeZip(archive, { { ".licence", "the licence" } });

    EXPECT_EQ(restore(archive), std::vector { notRestoredAlert });

    EXPECT_EQ(newLines(), linesOfAttempt({ "License restore skipped: unknown error", "License restore failed." }));
    EXPECT_EQ(temporaryFolders(), Strings()) << "the handler must remove the folder";
}

TEST_F(RestoreWithAnotherThrow, DoesNotCatchIt)
{
    makeZip(archive, { { ".licence", "the licence" } });
    std::string caught;
    @try {
        [controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())];
    } @catch (NSString *thrown) {
        caught = utf8(thrown);
    }

    EXPECT_EQ(caught, "something else");
    EXPECT_EQ(newLines(), Strings());
}

TEST_F(Search, FindsNothingInAnEmptyOrMissingFolder)
{
    EXPECT_TRUE(foundNothing()) << "an empty folder";
    fs::remove_all(folder);
    EXPECT_TRUE(foundNothing()) << "no folder";
}

TEST_F(Search, FindsOnlyTheExactName)
{
    for (const char *name : { ".license", ".LICENCE", ".licence2", "x.licence", "licence", ".licence.d/file" }) {
        write(folder / name, "");
    }
    EXPECT_TRUE(foundNothing());

    write(folder / "deep/deeper/.licence", "");
    EXPECT_EQ(found(), folder / "deep/deeper/.licence");
}

TEST_F(Search, FindsAFolderAndADanglingLinkToo)
{
    fs::create_directories(folder / "a/.licence");
    EXPECT_EQ(found(), folder / "a/.licence");

    fs::remove_all(folder / "a");
    fs::create_symlink("/nowhere", folder / ".licence");
    EXPECT_EQ(found(), folder / ".licence");
}

TEST_F(Search, FindsTheFirstInTheOrderOfTheFileSystem)
{
    for (const char *name : { "m/.licence", "z/.licence", "a/.licence", "a/b/.licence" }) {
        write(folder / name, "");
    }

    EXPECT_EQ(found(), firstLicenceBelow(folder));
}

TEST_F(Restore, SimpleAlertShowsItsTextsAndOneButton)
{
    AlertAnswers answers({ "OK" });

    [controller.get() showSimpleAlertWithTitle:@"A title" message:@"A message"];

    EXPECT_EQ(answers.seen(), (std::vector { SeenPanel { { "A title", "A message" }, { "OK" } } }));
}

TEST_F(Restore, SimpleAlertShowsNothingForAMissingText)
{
    static Strings shown;
    shown.clear();
    const SwizzledMethod message(
        [NSAlert class], @selector(setMessageText:),
        +[](id, SEL, NSString *text) { shown.push_back(text ? utf8(text) : "nil"); });
    const SwizzledMethod information(
        [NSAlert class], @selector(setInformativeText:),
        +[](id, SEL, NSString *text) { shown.push_back(text ? utf8(text) : "nil"); });
    AlertAnswers answers({ "OK" });

    [controller.get() showSimpleAlertWithTitle:nil message:nil];

    EXPECT_EQ(shown, (Strings { "", "" }));
    ASSERT_EQ(answers.seen().size(), 1u);
    EXPECT_EQ(answers.seen()[0].buttons, Strings { "OK" });
}
