#import "detection/AppDelegate+KnownLocations.h"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/RoomTest.hpp"

namespace fs = std::filesystem;

namespace
{

class KnownLocations : public RoomTest
{
protected:
    Strings known() const { return strings([controller.get() knownQuorlenPaths]); }
    Strings existing() const { return strings([controller.get() existingQuorlenPaths]); }
    bool licenceExists() const { return [controller.get() licenseExists]; }

private:
    static Strings strings(NSArray<NSString *> *array)
    {
        EXPECT_NE(array, nil);
        EXPECT_FALSE([array isKindOfClass:[NSMutableArray class]]);
        Strings result;
        for (NSString *string in array) {
            result.push_back(utf8(string));
        }
        return result;
    }
};

/// Removes all permissions of a folder or file for its own lifetime.
class NoAccess
{
public:
    explicit NoAccess(fs::path path) : _path(std::move(path)) { fs::permissions(_path, fs::perms::none); }
    ~NoAccess() { fs::permissions(_path, fs::perms::owner_all); }

private:
    const fs::path _path;
};

}

TEST_F(KnownLocations, AreElevenInTheirOrder)
{
    EXPECT_EQ(known(),
        (Strings {
            "/Applications/Quorlen.app",
            "/Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist",
            "/Library/PrivilegedHelperTools/com.vendrel.QuorlenDaemon",
            "/Users/ann/Library/Application Support/Quorlen",
            "/Users/ann/Library/Application Support/com.vendrel.QuorlenAgent",
            "/Users/ann/Library/Application Support/Vendrel",
            "/Users/ann/Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist",
            "/Users/ann/Library/Preferences/com.vendrel.Quorlen3.plist",
            "/Users/ann/Library/Preferences/com.vendrel.Quorlen.plist",
            "/Users/ann/Library/Caches/com.vendrel.Quorlen3",
            "/Users/ann/Library/Logs/Quorlen",
        }));
    EXPECT_EQ(utf8([controller.get() licensePath]), "/Users/ann/Library/Application Support/Quorlen/.licence");
}

TEST_F(KnownLocations, AreJoinedToTheHomeByOneSlashWhetherItEndsInOneOrNot)
{
    for (const char *reported : { "/Users/bob", "/Users/bob/" }) {
        const ReportedHome home(reported);

        EXPECT_EQ(known()[3], "/Users/bob/Library/Application Support/Quorlen");
        EXPECT_EQ(known()[10], "/Users/bob/Library/Logs/Quorlen");
        EXPECT_EQ(utf8([controller.get() licensePath]), "/Users/bob/Library/Application Support/Quorlen/.licence");
    }
}

TEST_F(KnownLocations, AskForTheHomeOnceEachTime)
{
    const ReportedHome home("/Users/bob");

    known();
    EXPECT_EQ(home.timesAsked(), 1);
    [controller.get() licensePath];
    EXPECT_EQ(home.timesAsked(), 2);
}

TEST_F(KnownLocations, NothingInstalledIsAnEmptyList)
{
    EXPECT_EQ(existing(), Strings());
    EXPECT_FALSE(licenceExists());
}

TEST_F(KnownLocations, AllElevenInstalledAreFoundInTheirOrder)
{
    stage({ "plant", "--no-agent", "--no-daemon" });

    EXPECT_EQ(existing(), known());
    EXPECT_EQ(existing().size(), 11u);
    EXPECT_TRUE(licenceExists());
}

TEST_F(KnownLocations, EachIsFoundAlone)
{
    for (std::size_t index = 3; index < 11; ++index) {
        const auto location = locations()[index];
        write(location, "a file");
        EXPECT_EQ(existing(), Strings { location });
        fs::remove(location);
    }
    for (const char *number : { "1", "2", "3" }) {
        stage({ "plant", "--locations", number, "--no-daemon" });
    }
    EXPECT_EQ(existing(), (Strings { locations()[0], locations()[1], locations()[2] }));
}

TEST_F(KnownLocations, ALicenceAloneCountsItsFolderToo)
{
    write(licence(), "a licence");

    EXPECT_TRUE(licenceExists());
    EXPECT_EQ(existing(), Strings { locations()[3] });
}

TEST_F(KnownLocations, BothPreferenceFilesAreTwoItems)
{
    write(locations()[7], "one");
    write(locations()[8], "two");

    EXPECT_EQ(existing(), (Strings { locations()[7], locations()[8] }));
}

TEST_F(KnownLocations, AFolderNamedLikeTheLicenceCountsAsOne)
{
    fs::create_directories(licence());

    EXPECT_TRUE(licenceExists());
}

TEST_F(KnownLocations, ALinkToNothingIsAbsentAndALinkToSomethingIsPresent)
{
    const auto target = temporaryFolder() / "target";
    fs::create_directories(licence().parent_path());
    fs::create_symlink(target, licence());
    fs::create_symlink(target, locations()[10]);

    EXPECT_FALSE(licenceExists());
    EXPECT_EQ(existing(), Strings { locations()[3] });

    write(target, "something");
    EXPECT_TRUE(licenceExists());
    EXPECT_EQ(existing(), (Strings { locations()[3], locations()[10] }));
    fs::remove(target);
}

TEST_F(KnownLocations, AnUnreadableItemIsPresentAndAnUnreachableItemIsAbsent)
{
    write(licence(), "a licence");
    {
        const NoAccess unreadable(licence());
        EXPECT_TRUE(licenceExists());
    }
    const NoAccess unreachable(licence().parent_path());
    EXPECT_FALSE(licenceExists());
    EXPECT_EQ(existing(), Strings { locations()[3] });
}

TEST_F(KnownLocations, AreLookedUpAgainAtEveryCall)
{
    EXPECT_EQ(existing(), Strings());

    write(licence(), "a licence");
    EXPECT_EQ(existing().size(), 1u);
    EXPECT_TRUE(licenceExists());

    fs::remove_all(locations()[3]);
    EXPECT_EQ(existing(), Strings());
    EXPECT_FALSE(licenceExists());
}

TEST_F(KnownLocations, AreLookedUpWithoutTheUserSeeingAnything)
{
    write(licence(), "a licence");
    const auto status = statusLine();

    existing();
    licenceExists();

    EXPECT_EQ(newLines(), Strings());
    EXPECT_EQ(statusLine(), status);
    EXPECT_FALSE([controller.get() quorlenDetected]);
}
