#import "licence/AppDelegate+LicenceRestore.h"

#import "licence/AppDelegate+LicenceBackup.h"
#import "tests/licence/LicenceTest.hpp"
#import "tests/support/AlertAnswers.hpp"

namespace fs = std::filesystem;

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
const Strings licenceFoundLines { "Detected 1 Quorlen 3 item(s).", "License detected." };

/// Ends each open panel at once with a code and a file, for its own lifetime. Only one may exist at a time.
class PanelResult
{
public:
    PanelResult(NSInteger code, const fs::path &file)
    {
        _code = code;
        _url = file.empty() ? nil : [NSURL fileURLWithPath:ns(file)];
    }

private:
    inline static NSInteger _code;
    inline static NSURL *_url;
    const SwizzledMethod _runModal
    {
        [NSOpenPanel class], @selector(runModal), +[](id, SEL) { return _code; }
    };
    const SwizzledMethod _urlOfPanel
    {
        [NSOpenPanel class], @selector(URL), +[](id, SEL) { return _url; }
    };
};

class Restore : public LicenceTest
{
protected:
    void SetUp() override
    {
        LicenceTest::SetUp();
        fs::remove_all(folder);
        fs::create_directories(folder);
    }

    /// Makes the archive, with one file.
    void pack(const fs::path &file = ".licence", const std::string &text = "the new licence") const
    {
        const auto tree = folder / "tree";
        write(tree / file, text);
        const Strings zip { "/usr/bin/bsdtar", "--format=zip", "--options=zip:compression=store", "-cf", archive };
        EXPECT_EQ(run(zip + Strings { "-C", tree, "." }).status, 0);
        fs::remove_all(tree);
    }

    /// Restores from the archive. Expects that the outcome is logged, then shown in an alert, then followed by a scan.
    void expectAttempt(const Strings &outcome, const SeenPanel &alert, const Strings &scan)
    {
        nextLines();
        [[controller.get() statusLabel] setStringValue:@"No scan yet."];
        const bool asks = fs::exists(licence());
        const auto panels = asks ? std::vector { replaceQuestion, alert } : std::vector { alert };
        const PanelResult chosen(NSModalResponseOK, archive);
        Strings logged;
        const AlertAnswers answers(asks ? Strings { "Replace", "OK" } : Strings { "OK" }, [&](std::size_t) {
            logged = logged + nextLines();
            EXPECT_EQ(statusLine(), "No scan yet.");
        });

        [controller.get() restoreLicense:nil];

        EXPECT_EQ(answers.seen(), panels);
        EXPECT_EQ(logged, Strings { "Restoring license from: " + archive.string() } + outcome);
        EXPECT_EQ(nextLines(), scan);
        EXPECT_EQ(temporaryFolders(), Strings());
    }
    void expectRestored()
    {
        expectAttempt({ "License restored: " + licence().string() }, restoredAlert, licenceFoundLines);
    }
    void expectNotRestored(const Strings &causes = {}, const Strings &scan = licenceFoundLines)
    {
        expectAttempt(causes + Strings { "License restore failed." }, notRestoredAlert, scan);
    }

    NSString *found() const { return [controller.get() findLicenseFileUnderPath:ns(folder)]; }

    const fs::path folder = home() / "Documents/Backups";
    const fs::path archive = folder / "backup.zip";
};

}

TEST_F(Restore, AsksForOneZipFileInThePanelAndEndsIfItIsCancelled)
{
    static NSOpenPanel *shared;
    shared = [NSOpenPanel openPanel];
    [shared setCanChooseFiles:NO];
    [shared setCanChooseDirectories:YES];
    [shared setAllowsMultipleSelection:YES];
    const SwizzledMethod open(
        object_getClass([NSOpenPanel class]), @selector(openPanel), +[](id, SEL) { return shared; });
    AlertAnswers answers({ "Cancel" }, [](std::size_t) {
        EXPECT_EQ([NSApp modalWindow], shared);
        EXPECT_EQ(utf8([shared title]), "Choose a Quorlen License Backup");
        EXPECT_EQ(utf8([shared message]), "Select a Quorlen license backup zip created by this tool.");
        EXPECT_EQ(utf8([shared prompt]), "Restore License");
        EXPECT_TRUE([shared canChooseFiles]);
        EXPECT_FALSE([shared canChooseDirectories]);
        EXPECT_FALSE([shared allowsMultipleSelection]);
        EXPECT_TRUE([[shared allowedFileTypes] isEqual:@[ @"zip" ]]);
    });

    [controller.get() restoreLicense:nil];

    EXPECT_EQ(answers.seen().size(), 1u);
    EXPECT_EQ(newLines(), Strings());
}

TEST_F(Restore, ChangesNothingUnlessThePanelReturnsOkAndAFileAndTheAlertReplace)
{
    static NSInteger answer;
    const SwizzledMethod alert([NSAlert class], @selector(runModal), +[](id, SEL) { return answer; });
    pack();
    write(licence(), "the old licence");
    const auto restoreAfter = [&](NSInteger panelCode, const fs::path &file, NSInteger alertCode) {
        const PanelResult panel(panelCode, file);
        answer = alertCode;
        [controller.get() restoreLicense:nil];
        EXPECT_EQ(newLines(), Strings()) << panelCode << file << alertCode;
        EXPECT_EQ(contents(licence()), "the old licence") << panelCode << file << alertCode;
        EXPECT_EQ(statusLine(), "Checking for Quorlen 3...") << "no scan";
    };

    for (const NSInteger other : { 0, 2, -1, 1000, -1000, -1001 }) {
        restoreAfter(other, archive, NSAlertFirstButtonReturn);
    }
    restoreAfter(NSModalResponseOK, {}, NSAlertFirstButtonReturn);
    for (const NSInteger other : { 1001, 1002, 1, 0, -1000, -1001 }) {
        restoreAfter(NSModalResponseOK, archive, other);
    }
}

TEST_F(Restore, RestoresABackupWithoutAQuestionIfThereIsNoLicence)
{
    const std::string original { "\0licence\xff\n of ann", 17 };
    write(licence(), original);
    [controller.get() backupLicenceIfPresent];
    fs::rename(onlyArchive(), archive);
    fs::remove_all(home() / "Library/Application Support");

    expectRestored();

    EXPECT_EQ(contents(licence()), original);
    EXPECT_TRUE(fs::exists(archive));
}

TEST_F(Restore, ReplacesALicenceWhetherItIsAFileOrAFolder)
{
    const StoppedClock clock(7);
    [controller.get() setLastBackupPath:@"/an/earlier.zip"];
    write(licence(), "the old licence");

    for (const std::string inside : { "", "/inside", "" }) {
        const auto path = ".licence" + inside;
        SCOPED_TRACE(path);
        pack("folder/" + path);

        expectRestored();

        EXPECT_EQ(contents(licence().parent_path() / path), "the new licence");
    }
    EXPECT_EQ(callsOf("/usr/bin/ditto").back(),
        (Strings { "-x", "-k", archive, temporaryFolder() / "Quorlen-License-Restore-20261115-000007" }));
    EXPECT_EQ(utf8([controller.get() lastBackupPath]), "/an/earlier.zip");
}

TEST_F(Restore, MakesTheFolderThatTheArchiverUnpacksInto)
{
    static bool made = false;
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

TEST_F(Restore, RefusesAFileThatIsNoWholeArchiveOrHasNoLicence)
{
    pack(".licence", std::string(5000, 'l'));
    const auto whole = contents(archive);
    auto changed = whole;
    changed[whole.size() / 2] = 'x';
    pack("folder/.license");
    const auto other = contents(archive);

    expectNotRestored({}, nothingFoundLines);
    EXPECT_FALSE(fs::exists(licence().parent_path()));

    write(licence(), "the old licence");
    for (const auto &[what, bytes] :
        std::map<std::string, std::string> { { "a text", "a text that is named like an archive" },
            { "an empty file", "" }, { "cut off", whole.substr(0, whole.size() / 2) }, { "a byte is wrong", changed },
            { "another name", other } }) {
        SCOPED_TRACE(what);
        write(archive, bytes);
        expectNotRestored();
        EXPECT_EQ(contents(licence()), "the old licence");
    }
    write(archive, whole);
    fs::permissions(archive, fs::perms::none);
    expectNotRestored();
    EXPECT_EQ(contents(licence()), "the old licence") << "an unreadable archive";
}

TEST_F(Restore, LosesTheOldLicenceAndSaysWhyWhenTheCopyFails)
{
    static NSError *failure;
    const SwizzledMethod copy(
        [NSFileManager class], @selector(copyItemAtPath:toPath:error:),
        +[](id, SEL, NSString *, NSString *, NSError **error) {
            *error = failure;
            return BOOL(NO);
        });
    NSError *noRoom = [NSError errorWithDomain:NSPOSIXErrorDomain code:ENOSPC userInfo:nil];
    pack();

    for (NSError *error : { noRoom, static_cast<NSError *>(nil) }) {
        failure = error;
        write(licence(), "the old licence");
        const auto reason = error ? utf8([error localizedDescription]) : "unknown error";
        expectNotRestored({ "License copy error: " + reason }, { "Detected 1 Quorlen 3 item(s)." });
        EXPECT_FALSE(fs::exists(licence())) << "the old licence must be removed before the copy";
    }
}

TEST_F(Restore, IsSkippedWithTheReasonWhenTheArchiverCannotBeStarted)
{
    pack();
    write(licence(), "the old licence");
    for (const auto &[mode, reason] : reasonsNotToStart) {
        SCOPED_TRACE(mode);
        const Archiver archiver(mode);
        expectNotRestored({ "License restore skipped: " + reason });
        EXPECT_EQ(contents(licence()), "the old licence");
    }
}

TEST_F(Restore, CatchesAnExceptionOfItsSearchAndNothingElse)
{
    static id thrown;
    const SwizzledMethod search(
        [AppDelegate class], @selector(findLicenseFileUnderPath:),
        +[](id, SEL, NSString *) -> NSString * { @throw thrown; });
    const SwizzledMethod reason = noReasons();
    pack();

    thrown = [NSException exceptionWithName:NSGenericException reason:nil userInfo:nil];
    expectNotRestored({ "License restore skipped: unknown error" }, nothingFoundLines);

    thrown = @"something else";
    @try {
        [controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())];
        ADD_FAILURE() << "nothing was thrown";
    } @catch (NSString *caught) {
        EXPECT_EQ(caught, thrown);
    }
    EXPECT_EQ(nextLines(), Strings());
}

TEST_F(Restore, FindsOnlyTheExactName)
{
    EXPECT_EQ(found(), nil) << "an empty folder";
    for (const char *name : { ".license", ".LICENCE", ".licence2", "x.licence", "licence", ".licence.d/file" }) {
        write(folder / name, "");
    }
    EXPECT_EQ(found(), nil);

    write(folder / "deep/deeper/.licence", "");
    EXPECT_EQ(utf8(found()), folder / "deep/deeper/.licence");

    fs::remove_all(folder);
    EXPECT_EQ(found(), nil) << "no folder";
    fs::create_directories(folder);
    fs::create_symlink("/nowhere", folder / ".licence");
    EXPECT_EQ(utf8(found()), folder / ".licence");
}

TEST_F(Restore, FindsTheFirstInTheOrderOfTheFileSystem)
{
    for (const char *name : { "m/.licence", "z/.licence", "a/.licence", "a/b/.licence" }) {
        write(folder / name, "");
    }
    const fs::recursive_directory_iterator entries(folder);
    const auto first = std::find_if(begin(entries), end(entries),
        [](const fs::directory_entry &entry) { return entry.path().filename() == ".licence"; });

    EXPECT_EQ(utf8(found()), first->path());
}

TEST_F(Restore, SimpleAlertShowsNothingForAMissingText)
{
    static Strings shown;
    constexpr auto note = +[](id, SEL, NSString *text) { shown.push_back(text ? utf8(text) : "nil"); };
    const SwizzledMethod message([NSAlert class], @selector(setMessageText:), note);
    const SwizzledMethod information([NSAlert class], @selector(setInformativeText:), note);
    const AlertAnswers answers({ "OK" });

    [controller.get() showSimpleAlertWithTitle:nil message:nil];

    EXPECT_EQ(shown, (Strings { "", "" }));
    EXPECT_EQ(answers.seen().size(), 1u);
}
